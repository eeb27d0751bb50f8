#include "platform/MessageBox.h"

#include "MessageBoxState.h"
#include "platform/Resources.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCoreApplication>
#include <QMessageBox>

#include <array>
#include <cstdio>
#include <utility>

namespace platform {

namespace {

struct ButtonSet {
    std::array<int, 3> answers;
    int count;
};

ButtonSet buttonsOf(unsigned flags) {
    switch (flags & 0xFu) {
    case MB_OKCANCEL:
        return {{IDOK, IDCANCEL, 0}, 2};
    case MB_ABORTRETRYIGNORE:
        return {{IDABORT, IDRETRY, IDIGNORE}, 3};
    case MB_YESNOCANCEL:
        return {{IDYES, IDNO, IDCANCEL}, 3};
    case MB_YESNO:
        return {{IDYES, IDNO, 0}, 2};
    case MB_RETRYCANCEL:
        return {{IDRETRY, IDCANCEL, 0}, 2};
    default:
        return {{IDOK, 0, 0}, 1};
    }
}

QMessageBox::StandardButton standardButtonOf(int answer) {
    switch (answer) {
    case IDOK:
        return QMessageBox::Ok;
    case IDCANCEL:
        return QMessageBox::Cancel;
    case IDABORT:
        return QMessageBox::Abort;
    case IDRETRY:
        return QMessageBox::Retry;
    case IDIGNORE:
        return QMessageBox::Ignore;
    case IDYES:
        return QMessageBox::Yes;
    case IDNO:
        return QMessageBox::No;
    default:
        return QMessageBox::NoButton;
    }
}

int answerOf(QMessageBox::StandardButton button) {
    for (int answer = IDOK; answer <= IDNO; ++answer) {
        if (standardButtonOf(answer) == button) {
            return answer;
        }
    }
    return 0;
}

QMessageBox::Icon iconOf(unsigned flags) {
    switch (flags & 0xF0u) {
    case MB_ICONERROR:
        return QMessageBox::Critical;
    case MB_ICONQUESTION:
        return QMessageBox::Question;
    case MB_ICONWARNING:
        return QMessageBox::Warning;
    case MB_ICONINFORMATION:
        return QMessageBox::Information;
    default:
        return QMessageBox::NoIcon;
    }
}

void printLine(const QString& line) {
    const auto& printer = MessageBoxState::instance().printer;
    if (printer) {
        printer(line);
        return;
    }
    std::fputs(line.toUtf8().constData(), stdout);
    std::fflush(stdout);
}

int answerInBatch(const QString& text, const QString& caption, unsigned flags, int answer) {
    QString line = caption.isEmpty() ? text : caption + QStringLiteral(": ") + text;
    // A question's answer belongs in the log; a plain notice has only the one.
    if (buttonsOf(flags).count > 1) {
        line += QStringLiteral(" [") + messageBoxAnswerName(answer) + u']';
    }
    printLine(line + u'\n');
    return answer;
}

int answerFromScript(const QString& text, const QString& caption, unsigned flags,
                     int defaultAnswer) {
    auto& state = MessageBoxState::instance();
    ShownMessage shown{text, caption, flags, defaultAnswer, false};
    if (!state.scriptedAnswers.empty()) {
        shown.answer = state.scriptedAnswers.front();
        shown.answeredFromQueue = true;
        state.scriptedAnswers.pop_front();
    }
    state.shown.push_back(shown);
    return shown.answer;
}

int answerOnDesktop(const QString& text, const QString& caption, unsigned flags,
                    int defaultAnswer) {
    const ButtonSet buttons = buttonsOf(flags);
    QMessageBox box(iconOf(flags), caption, text, QMessageBox::NoButton,
                    QApplication::activeWindow());
    for (int i = 0; i < buttons.count; ++i) {
        box.addButton(standardButtonOf(buttons.answers[i]));
    }
    box.setDefaultButton(standardButtonOf(defaultMessageBoxAnswer(flags)));
    // Qt makes Esc and the close button Cancel where there is one, No where
    // there is no Cancel, and the only button of a notice.
    box.exec();
    const int answer = answerOf(box.standardButton(box.clickedButton()));
    return answer != 0 ? answer : defaultAnswer;
}

} // namespace

MessageBoxState& MessageBoxState::instance() {
    static MessageBoxState state;
    return state;
}

namespace {

int answer(const QString& text, const QString& caption, unsigned flags, int defaultAnswer) {
    const auto& state = MessageBoxState::instance();
    const bool widgets = qobject_cast<QApplication*>(QCoreApplication::instance()) != nullptr;
    switch (state.mode) {
    case MessageBoxMode::Scripted:
        return answerFromScript(text, caption, flags, defaultAnswer);
    case MessageBoxMode::Desktop:
        // Without a widget application there is no one to ask: the host runs in
        // batch then, whatever mode it was left in.
        if (widgets) {
            return answerOnDesktop(text, caption, flags, defaultAnswer);
        }
        return answerInBatch(text, caption, flags, defaultAnswer);
    case MessageBoxMode::Batch:
        // A script that waits to answer this box gets a real one.
        if (widgets && state.windowWanted && state.windowWanted()) {
            return answerOnDesktop(text, caption, flags, defaultAnswer);
        }
        break;
    }
    return answerInBatch(text, caption, flags, defaultAnswer);
}

} // namespace

int messageBox(const QString& text, const QString& caption, unsigned flags, int defaultAnswer) {
    if (defaultAnswer == 0) {
        defaultAnswer = defaultMessageBoxAnswer(flags);
    }
    const int given = answer(text, caption, flags, defaultAnswer);
    // A copy: the observer may replace itself.
    if (const auto observer = MessageBoxState::instance().observer) {
        observer(ShownMessage{text, caption, flags, given, false});
    }
    return given;
}

int appMessageBox(const QString& text, unsigned flags) {
    return messageBox(text, QCoreApplication::applicationName(), flags);
}

int appMessageBoxById(unsigned stringId, unsigned flags) {
    return appMessageBox(loadString(stringId), flags);
}

int defaultMessageBoxAnswer(unsigned flags) {
    const ButtonSet buttons = buttonsOf(flags);
    const unsigned index = (flags & 0xF00u) >> 8;
    return index < static_cast<unsigned>(buttons.count) ? buttons.answers[index]
                                                        : buttons.answers[0];
}

QString messageBoxAnswerName(int answer) {
    switch (answer) {
    case IDOK:
        return QStringLiteral("OK");
    case IDCANCEL:
        return QStringLiteral("Cancel");
    case IDABORT:
        return QStringLiteral("Abort");
    case IDRETRY:
        return QStringLiteral("Retry");
    case IDIGNORE:
        return QStringLiteral("Ignore");
    case IDYES:
        return QStringLiteral("Yes");
    case IDNO:
        return QStringLiteral("No");
    default:
        return QString::number(answer);
    }
}

MessageBoxMode messageBoxMode() {
    return MessageBoxState::instance().mode;
}

void setMessageBoxMode(MessageBoxMode mode) {
    MessageBoxState::instance().mode = mode;
}

void setMessageBoxPrinter(std::function<void(const QString&)> printer) {
    MessageBoxState::instance().printer = std::move(printer);
}

void setMessageBoxWindowWanted(std::function<bool()> wanted) {
    MessageBoxState::instance().windowWanted = std::move(wanted);
}

void setMessageBoxObserver(std::function<void(const ShownMessage&)> observer) {
    MessageBoxState::instance().observer = std::move(observer);
}

} // namespace platform
