#include "ovui/OvUi.h"

#include "OvUiInput.h"
#include "OvUiLisp.h"

#include "ovcore/OvEdBatchInput.h"
#include "ovcore/OvEdInput.h"

#include <QApplication>
#include <QPointer>
#include <QWidget>

namespace {

QPointer<QWidget> g_mainWindow;
QPointer<QWidget> g_hiddenFrame;

bool hasWidgetApplication() {
    return qobject_cast<QApplication*>(QCoreApplication::instance()) != nullptr;
}

} // namespace

bool InitOvUiDLL() {
    static bool lispRegistered = false;
    if (!lispRegistered) {
        ovuiRegisterLisp();
        lispRegistered = true;
    }
    // A core application (a batch run without dialogs) keeps the batch provider; the desktop
    // puts its own provider in place after this, and that one stays.
    static OvUiInput input;
    static bool installed = false;
    if (!installed && hasWidgetApplication()) {
        installed = true;
        if (ovedInputProvider() == &OvEdBatchInput::instance())
            ovedSetInputProvider(&input);
    }
    return true;
}

QWidget* ovedGetOrvexFrame() {
    if (g_mainWindow)
        return g_mainWindow;
    if (!hasWidgetApplication())
        return nullptr;
    if (!g_hiddenFrame) {
        // Never shown: it only gives batch dialogs a parent and a place on the screen.
        g_hiddenFrame = new QWidget(nullptr, Qt::Window);
        g_hiddenFrame->setObjectName(QStringLiteral("orvexHiddenFrame"));
        g_hiddenFrame->setWindowTitle(QStringLiteral("Orvex"));
        g_hiddenFrame->setAttribute(Qt::WA_DontShowOnScreen);
        g_hiddenFrame->resize(1024, 768);
        QObject::connect(qApp, &QCoreApplication::aboutToQuit, g_hiddenFrame.data(),
                         &QObject::deleteLater);
    }
    return g_hiddenFrame;
}

QWidget* ovqw_orvexMainWnd() {
    return ovedGetOrvexFrame();
}

void ovuiSetMainWindow(QWidget* window) {
    g_mainWindow = window;
}

QWidget* ovuiDialogParent() {
    if (QWidget* modal = QApplication::activeModalWidget())
        return modal;
    return ovedGetOrvexFrame();
}
