#include "OvDesktopInput.h"

#include "OvCommandLine.h"
#include "OvDrawingView.h"
#include "OvMainWindow.h"

#include "ovdb/ovdbEntityName.h"
#include "ovdb/ovut.h"
#include "ovui/OvUiFileDialog.h"

#include <QApplication>
#include <QEventLoop>
#include <QKeyEvent>
#include <QPointer>

namespace {

// Esc anywhere in the program ends the pick, as it ends any prompt of a CAD program.
class EscapeFilter : public QObject {
public:
    explicit EscapeFilter(std::function<void()> onEscape) : m_onEscape(std::move(onEscape)) {}

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::KeyPress &&
            static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
            m_onEscape();
            return true;
        }
        return false;
    }

private:
    std::function<void()> m_onEscape;
};

} // namespace

int OvDesktopInput::entSel(const QString& prompt, ov_name name, double point[3]) {
    name[0] = name[1] = 0;
    if (m_picking)
        return RTCAN; // one pick at a time: the running one holds the view
    OvDrawingView* view = m_window->activeView();
    if (!view) {
        ovutPrintf(L"\nThere is no drawing to pick in.\n");
        return RTCAN;
    }
    // Whatever ran before the pick may have changed the drawing.
    m_window->refreshActiveDrawing();

    int status = RTCAN;
    QPointF picked;
    OvDbObjectId hit;
    QEventLoop loop;
    QPointer<OvDrawingView> guard(view);
    const auto pickConnection = QObject::connect(
        view, &OvDrawingView::pointPicked, &loop, [&](const QPointF& at, double tolerance) {
            picked = at;
            hit = view->snapshot() ? view->snapshot()->pick(at, tolerance) : OvDbObjectId();
            status = hit.isNull() ? RTERROR : RTNORM;
            loop.quit();
        });
    QObject::connect(view, &QObject::destroyed, &loop, [&] {
        status = RTCAN;
        loop.quit();
    });
    QObject::connect(m_window, &OvMainWindow::pickCancelled, &loop, [&] {
        status = RTCAN;
        loop.quit();
    });
    EscapeFilter escape([&] {
        status = RTCAN;
        loop.quit();
    });
    qApp->installEventFilter(&escape);

    m_picking = true;
    m_window->commandLine()->setPrompt(prompt.isEmpty() ? QObject::tr("Select object:") : prompt);
    view->setPickMode(true);
    view->setFocus(Qt::OtherFocusReason);
    loop.exec();
    m_picking = false;

    qApp->removeEventFilter(&escape);
    QObject::disconnect(pickConnection);
    m_window->commandLine()->resetPrompt();
    if (guard)
        guard->setPickMode(false);

    if (status == RTNORM && ovdbGetOvName(name, hit) == RTNORM) {
        if (point) {
            point[0] = picked.x();
            point[1] = picked.y();
            point[2] = 0.0;
        }
        return RTNORM;
    }
    if (status == RTERROR)
        ovutPrintf(L"\nNothing found there.\n");
    return status == RTNORM ? RTERROR : status;
}

int OvDesktopInput::getFileD(const QString& title, const QString& defaultPath,
                             const QString& extension, int flags, QString& path) {
    return ovuiFileDialog(ovuiDialogParent(), title, defaultPath, extension, flags, path);
}

int OvDesktopInput::help(const QString& file, const QString& topic, int) {
    m_window->showHelp(file, topic);
    return RTNORM;
}
