#include "OvLispConsole.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSplitter>
#include <QVBoxLayout>

OvLispConsole::OvLispConsole(QWidget* parent)
    : QWidget(parent), m_editor(new QPlainTextEdit(this)), m_transcript(new QPlainTextEdit(this)),
      m_evaluateButton(new QPushButton(tr("&Evaluate"), this)),
      m_loadButton(new QPushButton(tr("&Load file..."), this)),
      m_clearButton(new QPushButton(tr("C&lear"), this)) {
    setObjectName(QStringLiteral("lispConsole"));
    const QFont mono = QFontDatabase::systemFont(QFontDatabase::FixedFont);

    m_editor->setObjectName(QStringLiteral("lispInput"));
    m_editor->setAccessibleName(tr("LISP to evaluate"));
    m_editor->setFont(mono);
    m_editor->setPlaceholderText(tr("(princ \"Hello\")  ; Ctrl+Return evaluates"));
    m_editor->setTabChangesFocus(true);

    m_transcript->setObjectName(QStringLiteral("lispOutput"));
    m_transcript->setAccessibleName(tr("LISP results"));
    m_transcript->setFont(mono);
    m_transcript->setReadOnly(true);
    m_transcript->setMaximumBlockCount(5000);

    m_evaluateButton->setObjectName(QStringLiteral("lispEvaluate"));
    m_evaluateButton->setToolTip(tr("Evaluate the selection, or all of it (Ctrl+Return)"));
    m_loadButton->setObjectName(QStringLiteral("lispLoad"));
    m_clearButton->setObjectName(QStringLiteral("lispClear"));
    connect(m_evaluateButton, &QPushButton::clicked, this, &OvLispConsole::evaluate);
    connect(m_loadButton, &QPushButton::clicked, this, &OvLispConsole::chooseFile);
    connect(m_clearButton, &QPushButton::clicked, m_transcript, &QPlainTextEdit::clear);
    // The editor takes Ctrl+Return as a line break before any shortcut sees it.
    m_editor->installEventFilter(this);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_evaluateButton);
    buttons->addWidget(m_loadButton);
    buttons->addStretch(1);
    buttons->addWidget(m_clearButton);
    auto* splitter = new QSplitter(Qt::Vertical, this);
    splitter->addWidget(m_editor);
    splitter->addWidget(m_transcript);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->addWidget(splitter, 1);
    layout->addLayout(buttons);
}

void OvLispConsole::print(const QString& text) {
    if (text.isEmpty())
        return;
    QTextCursor end(m_transcript->document());
    end.movePosition(QTextCursor::End);
    end.insertText(text);
    m_atLineStart = text.endsWith(u'\n');
    m_transcript->verticalScrollBar()->setValue(m_transcript->verticalScrollBar()->maximum());
}

QString OvLispConsole::transcript() const {
    return m_transcript->toPlainText();
}

void OvLispConsole::evaluate() {
    if (m_running || !m_evaluate)
        return;
    const QTextCursor cursor = m_editor->textCursor();
    // A selection's paragraph breaks come as U+2029.
    QString text = cursor.hasSelection() ? cursor.selectedText().replace(QChar(0x2029), u'\n')
                                         : m_editor->toPlainText();
    if (text.trimmed().isEmpty())
        return;
    if (!m_atLineStart)
        print(QStringLiteral("\n"));
    QString echo = text.trimmed();
    echo.replace(u'\n', QStringLiteral("\n  "));
    print(QStringLiteral("> %1\n").arg(echo));
    m_running = true;
    const Result result = m_evaluate(text);
    m_running = false;
    show(result);
}

void OvLispConsole::loadFile(const QString& path) {
    if (m_running || !m_load)
        return;
    if (!m_atLineStart)
        print(QStringLiteral("\n"));
    print(tr("> load %1\n").arg(QFileInfo(path).fileName()));
    m_running = true;
    const Result result = m_load(path);
    m_running = false;
    show(result);
}

void OvLispConsole::chooseFile() {
    const QString path = QFileDialog::getOpenFileName(this, tr("Load a LISP file"), QString(),
                                                      tr("LISP files (*.lsp *.scm);;All files (*)"),
                                                      nullptr, QFileDialog::DontUseNativeDialog);
    if (!path.isEmpty())
        loadFile(path);
}

void OvLispConsole::show(const Result& result) {
    if (!m_atLineStart)
        print(QStringLiteral("\n"));
    if (result.ok) {
        print(result.value.isEmpty() ? QString() : result.value + u'\n');
        return;
    }
    // The host prints most errors itself as they happen, and they reached us already.
    const QString line = QStringLiteral("; error: %1").arg(result.error);
    if (!transcript().trimmed().endsWith(line))
        print(line + u'\n');
}

bool OvLispConsole::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_editor && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if ((key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) &&
            key->modifiers().testFlag(Qt::ControlModifier)) {
            evaluate();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}
