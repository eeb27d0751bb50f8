#pragma once

#include "platform/ShownMessage.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <deque>
#include <functional>
#include <vector>

// Dialog automation: scripts queue procedures that drive the dialogs they open, one
// procedure per dialog in the order the dialogs open (nested ones included), through real
// input events only. The watch also decides what becomes of a dialog that nobody drives:
// in a batch run it is reported and cancelled at once, so that a run never waits for a
// person; on the desktop it waits for the person, unless it opened under a running
// procedure, which cannot go on until it closes.
//
// A "dialog" here is any modal top-level widget (module and host dialogs, message boxes,
// task dialogs, file dialogs) and any popup menu that opens.
class OvDialogAutomation : public QObject {
    Q_OBJECT
public:
    enum class Mode { Batch, Desktop };

    static OvDialogAutomation& instance();

    // Starts watching the application's windows and defines the LISP functions
    // (orvex-dialog-..., orvex-grid-..., orvex-menu-...). Needs a QApplication.
    void install(Mode mode);
    // Stops watching; procedures still queued are dropped.
    void uninstall();
    bool installed() const { return m_installed; }
    Mode mode() const { return m_mode; }

    // Where reports go, one complete line each (without its end). By default the
    // command line (ovutPrintf).
    void setLinePrinter(std::function<void(const QString&)> printer);

    // Procedures that failed or left their dialog open, and dialogs that timed out, since
    // the last reset: a batch run that had any ends with status 1.
    int failures() const { return m_failures; }
    void resetFailures() { m_failures = 0; }

    // How long a dialog may wait (in seconds) before it is reported and cancelled.
    double timeout() const { return m_timeoutSeconds; }
    void setTimeout(double seconds) { m_timeoutSeconds = seconds; }

    // A Scheme procedure of no arguments (kept from the collector while queued).
    void queue(void* procedure);
    int pending() const { return static_cast<int>(m_queue.size()); }
    void clearQueue();

    // The dialog whose procedure runs now (innermost), or null.
    QWidget* currentDialog() const;

    // The message boxes and task dialogs shown since the last clear, in order.
    const std::vector<platform::ShownMessage>& messages() const { return m_messages; }
    void clearMessages() { m_messages.clear(); }

    // Closes a dialog as by Escape: the key goes to the dialog; if it is still open after
    // that, it is rejected.
    static void cancel(QWidget* dialog);

    // Shown as a dialog's name in reports: its title, or what it is.
    static QString titleOf(const QWidget* dialog);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    OvDialogAutomation() = default;

    void attend(QPointer<QWidget> dialog, qint64 shownAt);
    void drive(QWidget* dialog);
    void watchLeftOpen(QPointer<QWidget> dialog, qint64 since);
    void waitForPerson(QPointer<QWidget> dialog);
    void report(const QString& line);
    void fail(const QString& line);
    qint64 timeoutMs() const;
    bool readyForInput(const QWidget* dialog) const;

    bool m_installed = false;
    Mode m_mode = Mode::Batch;
    std::function<void(const QString&)> m_printer;
    int m_failures = 0;
    double m_timeoutSeconds = 10.0;
    std::deque<void*> m_queue;
    std::vector<QPointer<QWidget>> m_running;
    std::vector<platform::ShownMessage> m_messages;
};
