#pragma once

#include <QWidget>

#include <functional>

class QPlainTextEdit;
class QPushButton;

// A place for LISP longer than a command line: an editor, Evaluate (Ctrl+Return) for the
// whole text or the selection, Load file, and a transcript of what was evaluated, what it
// printed, its value and its errors.
class OvLispConsole : public QWidget {
    Q_OBJECT

public:
    struct Result {
        bool ok = false;
        QString value;
        QString error;
    };
    using Evaluator = std::function<Result(const QString& text)>;
    using Loader = std::function<Result(const QString& path)>;

    explicit OvLispConsole(QWidget* parent = nullptr);

    void setEvaluator(Evaluator evaluate) { m_evaluate = std::move(evaluate); }
    void setLoader(Loader load) { m_load = std::move(load); }

    // What a script prints while it runs also goes to the transcript.
    void print(const QString& text);
    bool isRunning() const { return m_running; }

    QPlainTextEdit* editor() const { return m_editor; }
    QString transcript() const;

    void evaluate();
    void loadFile(const QString& path);
    void chooseFile();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void show(const Result& result);

    QPlainTextEdit* m_editor;
    QPlainTextEdit* m_transcript;
    QPushButton* m_evaluateButton;
    QPushButton* m_loadButton;
    QPushButton* m_clearButton;
    Evaluator m_evaluate;
    Loader m_load;
    bool m_running = false;
    bool m_atLineStart = true;
};
