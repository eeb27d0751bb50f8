#include "OvCommandLine.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QStringListModel>
#include <QVBoxLayout>

#include <algorithm>

namespace {

const QString kCommandPrompt = QObject::tr("Command:");
// Enough to scroll back through a long session without the widget growing without end.
constexpr int kMaxOutputLines = 5000;

} // namespace

OvCommandLine::OvCommandLine(QWidget* parent)
    : QWidget(parent), m_output(new QPlainTextEdit(this)), m_prompt(new QLabel(this)),
      m_input(new QLineEdit(this)), m_completer(new QCompleter(this)),
      m_names(new QStringListModel(this)) {
    setObjectName(QStringLiteral("commandLine"));
    const QFont mono = QFontDatabase::systemFont(QFontDatabase::FixedFont);

    m_output->setObjectName(QStringLiteral("commandOutput"));
    m_output->setAccessibleName(tr("Command line output"));
    m_output->setReadOnly(true);
    m_output->setFont(mono);
    m_output->setMaximumBlockCount(kMaxOutputLines);
    m_output->setFocusPolicy(Qt::ClickFocus);

    m_prompt->setObjectName(QStringLiteral("commandPrompt"));
    m_prompt->setFont(mono);
    m_prompt->setText(kCommandPrompt);
    m_prompt->setBuddy(m_input);

    m_input->setObjectName(QStringLiteral("commandInput"));
    m_input->setAccessibleName(tr("Command line"));
    m_input->setFont(mono);
    m_input->setClearButtonEnabled(true);
    m_input->installEventFilter(this);
    m_completer->setModel(m_names);
    m_completer->setCaseSensitivity(Qt::CaseInsensitive);
    m_completer->setCompletionMode(QCompleter::PopupCompletion);
    m_input->setCompleter(m_completer);
    connect(m_input, &QLineEdit::returnPressed, this, &OvCommandLine::submit);

    auto* row = new QHBoxLayout;
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(m_prompt);
    row->addWidget(m_input, 1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(2);
    layout->addWidget(m_output, 1);
    layout->addLayout(row);
    setFocusProxy(m_input);
}

void OvCommandLine::print(const QString& text) {
    if (text.isEmpty())
        return;
    QTextCursor end(m_output->document());
    end.movePosition(QTextCursor::End);
    end.insertText(text);
    m_atLineStart = text.endsWith(u'\n');
    m_output->verticalScrollBar()->setValue(m_output->verticalScrollBar()->maximum());
}

void OvCommandLine::startLine() {
    if (!m_atLineStart)
        print(QStringLiteral("\n"));
}

QString OvCommandLine::output() const {
    return m_output->toPlainText();
}

void OvCommandLine::setPrompt(const QString& prompt) {
    // A prompt of the CAD kind often starts with a new line of its own.
    m_prompt->setText(prompt.trimmed().isEmpty() ? kCommandPrompt : prompt.trimmed());
}

void OvCommandLine::resetPrompt() {
    m_prompt->setText(kCommandPrompt);
}

QString OvCommandLine::prompt() const {
    return m_prompt->text();
}

void OvCommandLine::setCompletions(const QStringList& names) {
    m_names->setStringList(names);
}

void OvCommandLine::submit() {
    const QString text = m_input->text().trimmed();
    m_input->clear();
    if (!text.isEmpty() && (m_history.isEmpty() || m_history.last() != text)) {
        m_history << text;
        if (m_history.size() > kMaxHistory)
            m_history.removeFirst();
    }
    m_historyPos = static_cast<int>(m_history.size());
    m_pending.clear();
    emit submitted(text);
}

void OvCommandLine::recall(int step) {
    if (m_history.isEmpty())
        return;
    if (m_historyPos == m_history.size())
        m_pending = m_input->text();
    m_historyPos = std::clamp(m_historyPos + step, 0, static_cast<int>(m_history.size()));
    m_input->setText(m_historyPos == m_history.size() ? m_pending : m_history.at(m_historyPos));
}

bool OvCommandLine::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_input && event->type() == QEvent::KeyPress) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool popupOpen = m_completer->popup() && m_completer->popup()->isVisible();
        if (!popupOpen && key->key() == Qt::Key_Up) {
            recall(-1);
            return true;
        }
        if (!popupOpen && key->key() == Qt::Key_Down) {
            recall(+1);
            return true;
        }
        if (key->key() == Qt::Key_Tab) {
            // Complete to the first name that starts with what is typed.
            m_completer->setCompletionPrefix(m_input->text());
            if (m_completer->completionCount() > 0) {
                m_completer->setCurrentRow(0);
                m_input->setText(m_completer->currentCompletion());
            }
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}
