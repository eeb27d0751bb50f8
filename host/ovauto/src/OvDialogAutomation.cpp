#include "ovauto/OvDialogAutomation.h"

#include "OvAutoLisp.h"

#include "ovcore/OvEdBatchInput.h"
#include "ovcore/OvLispExtension.h"
#include "ovdb/ovut.h"
#include "platform/MessageBox.h"

#include <QApplication>
#include <QDateTime>
#include <QDialog>
#include <QElapsedTimer>
#include <QEvent>
#include <QFileDialog>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

#include <libguile.h>

#include <string>

namespace {

// One clock for every dialog's wait.
qint64 now() {
    static QElapsedTimer clock;
    if (!clock.isValid())
        clock.start();
    return clock.elapsed();
}

bool isPopupMenu(const QWidget* widget) {
    return qobject_cast<const QMenu*>(widget) != nullptr && widget->isWindow();
}

bool isModalWindow(const QWidget* widget) {
    return widget->isWindow() && widget->isModal() && !isPopupMenu(widget);
}

// A task dialog of the host says so with this property; its texts are recorded with the
// message boxes.
bool isTaskDialog(const QWidget* widget) {
    return widget->property("orvexTaskDialog").toBool();
}

QString visibleTexts(const QWidget* dialog) {
    QStringList texts;
    for (const QLabel* label : dialog->findChildren<QLabel*>()) {
        if (!label->text().isEmpty() && label->isVisibleTo(dialog))
            texts << label->text();
    }
    return texts.join(u'\n');
}

QString secondsText(double seconds) {
    return QString::number(seconds, 'g', 4);
}

} // namespace

OvDialogAutomation& OvDialogAutomation::instance() {
    static auto* automation = new OvDialogAutomation;
    return *automation;
}

void OvDialogAutomation::install(Mode mode) {
    m_mode = mode;
    if (m_installed)
        return;
    m_installed = true;
    qApp->installEventFilter(this);
    ovauto::defineLispFunctions();

    platform::setMessageBoxWindowWanted([this] { return !m_queue.empty(); });
    platform::setMessageBoxObserver(
        [this](const platform::ShownMessage& shown) { m_messages.push_back(shown); });

    // With nothing queued but a procedure waiting, the file dialog really opens, so that
    // the procedure can choose in it; otherwise it is cancelled as before.
    OvEdBatchInput::instance().setFileDialogRunner(
        [this](const QString& title, const QString& defaultPath, const QString& extension, int,
               QString& path) -> std::optional<int> {
            if (m_queue.empty())
                return std::nullopt;
            QFileDialog dialog(QApplication::activeModalWidget(), title, defaultPath);
            dialog.setOption(QFileDialog::DontUseNativeDialog);
            QStringList filters;
            for (const QString& ext : extension.split(u';', Qt::SkipEmptyParts))
                filters << QStringLiteral("*.") + ext.trimmed();
            if (!filters.isEmpty())
                dialog.setNameFilter(filters.join(u' '));
            if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
                return RTCAN;
            path = dialog.selectedFiles().constFirst();
            return RTNORM;
        });
}

void OvDialogAutomation::uninstall() {
    if (!m_installed)
        return;
    m_installed = false;
    qApp->removeEventFilter(this);
    platform::setMessageBoxWindowWanted({});
    platform::setMessageBoxObserver({});
    OvEdBatchInput::instance().setFileDialogRunner({});
    clearQueue();
}

void OvDialogAutomation::setLinePrinter(std::function<void(const QString&)> printer) {
    m_printer = std::move(printer);
}

void OvDialogAutomation::queue(void* procedure) {
    const SCM value = static_cast<SCM>(procedure);
    scm_gc_protect_object(value);
    m_queue.push_back(procedure);
}

void OvDialogAutomation::clearQueue() {
    for (void* procedure : m_queue)
        scm_gc_unprotect_object(static_cast<SCM>(procedure));
    m_queue.clear();
}

QWidget* OvDialogAutomation::currentDialog() const {
    return m_running.empty() ? nullptr : m_running.back().data();
}

QString OvDialogAutomation::titleOf(const QWidget* dialog) {
    if (!dialog)
        return QString();
    if (isPopupMenu(dialog))
        return dialog->windowTitle().isEmpty() ? QStringLiteral("popup menu")
                                               : dialog->windowTitle();
    return dialog->windowTitle();
}

bool OvDialogAutomation::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Show && watched->isWidgetType()) {
        auto* widget = static_cast<QWidget*>(watched);
        if (isModalWindow(widget) || isPopupMenu(widget)) {
            if (isTaskDialog(widget))
                m_messages.push_back({visibleTexts(widget), widget->windowTitle(), 0, 0, false});
            // Shown is not yet waiting: the procedure runs once the dialog's own loop runs.
            QTimer::singleShot(0, this, [this, dialog = QPointer<QWidget>(widget), at = now()] {
                attend(dialog, at);
            });
        }
    }
    return QObject::eventFilter(watched, event);
}

bool OvDialogAutomation::readyForInput(const QWidget* dialog) const {
    if (isPopupMenu(dialog))
        return QApplication::activePopupWidget() == dialog;
    return QApplication::activeModalWidget() == dialog && !QApplication::activePopupWidget();
}

qint64 OvDialogAutomation::timeoutMs() const {
    return static_cast<qint64>(m_timeoutSeconds * 1000.0);
}

void OvDialogAutomation::attend(QPointer<QWidget> dialog, qint64 shownAt) {
    if (!dialog || !dialog->isVisible())
        return;
    if (!readyForInput(dialog)) {
        // Another window is still in front of it (a dialog that opened in the same turn of
        // the loop): try again shortly, and no longer than a dialog may wait.
        if (now() - shownAt < timeoutMs()) {
            QTimer::singleShot(10, this, [this, dialog, shownAt] { attend(dialog, shownAt); });
        } else if (m_mode == Mode::Batch || !m_running.empty()) {
            fail(QStringLiteral("dialog \"%1\" did not get the input within %2 s: cancelled")
                     .arg(titleOf(dialog), secondsText(m_timeoutSeconds)));
            cancel(dialog);
        }
        return;
    }
    if (!m_queue.empty()) {
        drive(dialog);
        return;
    }
    if (m_mode == Mode::Batch) {
        report(QStringLiteral("dialog \"%1\" not driven: cancelled").arg(titleOf(dialog)));
        cancel(dialog);
        return;
    }
    // On the desktop a person answers, unless a procedure waits behind this dialog.
    if (!m_running.empty())
        waitForPerson(dialog);
}

void OvDialogAutomation::waitForPerson(QPointer<QWidget> dialog) {
    QTimer::singleShot(timeoutMs(), this, [this, dialog] {
        if (!dialog || !dialog->isVisible())
            return;
        fail(QStringLiteral("dialog \"%1\" waited %2 s without a procedure: cancelled")
                 .arg(titleOf(dialog), secondsText(m_timeoutSeconds)));
        cancel(dialog);
    });
}

void OvDialogAutomation::drive(QWidget* widget) {
    const QPointer<QWidget> dialog(widget);
    const SCM procedure = static_cast<SCM>(m_queue.front());
    m_queue.pop_front();
    // Keys go where a person's would: to the dialog in front.
    if (!isPopupMenu(widget)) {
        widget->activateWindow();
        if (QApplication::activeWindow() != widget)
            QApplication::setActiveWindow(widget);
    }
    const QString title = titleOf(widget);

    m_running.push_back(dialog);
    const ovcore::lisp::ProcedureOutcome outcome = ovcore::lisp::callProcedure(procedure);
    m_running.pop_back();
    scm_gc_unprotect_object(procedure);

    if (!outcome.ok) {
        fail(
            QStringLiteral("the procedure for dialog \"%1\" failed: %2").arg(title, outcome.error));
        if (dialog && dialog->isVisible())
            cancel(dialog);
        return;
    }
    if (dialog && dialog->isVisible())
        watchLeftOpen(dialog, now());
}

// A dialog still open when its procedure returned is a fault of the procedure, unless a
// dialog that the procedure opened stands in front of it: then the verdict waits until
// that one has closed.
void OvDialogAutomation::watchLeftOpen(QPointer<QWidget> dialog, qint64 since) {
    if (!dialog || !dialog->isVisible())
        return;
    QWidget* front =
        isPopupMenu(dialog) ? QApplication::activePopupWidget() : QApplication::activeModalWidget();
    const bool nestedInFront = front && front != dialog && front->isVisible();
    if (nestedInFront && now() - since < timeoutMs()) {
        QTimer::singleShot(10, this, [this, dialog, since] { watchLeftOpen(dialog, since); });
        return;
    }
    fail(QStringLiteral("dialog \"%1\" was left open by its procedure: cancelled")
             .arg(titleOf(dialog)));
    cancel(dialog);
}

void OvDialogAutomation::cancel(QWidget* widget) {
    const QPointer<QWidget> dialog(widget);
    QTest::keyClick(widget, Qt::Key_Escape);
    if (!dialog || !dialog->isVisible())
        return;
    if (auto* box = qobject_cast<QDialog*>(dialog.data()))
        box->reject();
    else
        dialog->close();
}

void OvDialogAutomation::report(const QString& line) {
    if (m_printer) {
        m_printer(line);
        return;
    }
    const std::wstring wide = line.toStdWString();
    ovutPrintf(L"\n%ls\n", wide.c_str());
}

void OvDialogAutomation::fail(const QString& line) {
    ++m_failures;
    report(QStringLiteral("; error: ") + line);
}
