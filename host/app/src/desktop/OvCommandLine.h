#pragma once

#include <QStringList>
#include <QWidget>

class QCompleter;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QStringListModel;

// The command line: what the host prints, above a prompt and an input line. Enter hands
// the text over (a command name, or LISP when it starts with "(" or "!"); Up and Down walk
// the history; Tab completes command names. While a command waits for a pick, its prompt
// stands in place of "Command:".
class OvCommandLine : public QWidget {
    Q_OBJECT

public:
    explicit OvCommandLine(QWidget* parent = nullptr);

    // Text as the host prints it: new lines where the text has them, nothing added.
    void print(const QString& text);
    // Starts a new line unless the output is at the start of one.
    void startLine();
    QString output() const;

    void setPrompt(const QString& prompt);
    void resetPrompt();
    QString prompt() const;

    void setCompletions(const QStringList& names);
    const QStringList& history() const { return m_history; }

    QLineEdit* input() const { return m_input; }

    static constexpr int kMaxHistory = 200;

signals:
    void submitted(const QString& text);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void submit();
    void recall(int step);

    QPlainTextEdit* m_output;
    QLabel* m_prompt;
    QLineEdit* m_input;
    QCompleter* m_completer;
    QStringListModel* m_names;
    QStringList m_history;
    int m_historyPos = 0;
    QString m_pending; // what was typed before walking the history
    bool m_atLineStart = true;
};
