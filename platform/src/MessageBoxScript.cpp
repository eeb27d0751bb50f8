#include "platform/MessageBoxScript.h"

#include "MessageBoxState.h"

namespace platform {

MessageBoxScript::MessageBoxScript() : m_previousMode(messageBoxMode()) {
    auto& state = MessageBoxState::instance();
    state.scriptedAnswers.clear();
    state.shown.clear();
    state.mode = MessageBoxMode::Scripted;
}

MessageBoxScript::~MessageBoxScript() {
    auto& state = MessageBoxState::instance();
    state.scriptedAnswers.clear();
    state.shown.clear();
    state.mode = m_previousMode;
}

void MessageBoxScript::answer(int answer) {
    MessageBoxState::instance().scriptedAnswers.push_back(answer);
}

int MessageBoxScript::pendingAnswers() const {
    return static_cast<int>(MessageBoxState::instance().scriptedAnswers.size());
}

const std::vector<ShownMessage>& MessageBoxScript::shown() const {
    return MessageBoxState::instance().shown;
}

std::vector<QString> MessageBoxScript::shownTexts() const {
    std::vector<QString> texts;
    for (const ShownMessage& message : MessageBoxState::instance().shown) {
        texts.push_back(message.text);
    }
    return texts;
}

void MessageBoxScript::clearShown() {
    MessageBoxState::instance().shown.clear();
}

} // namespace platform
