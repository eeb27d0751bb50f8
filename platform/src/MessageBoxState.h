#pragma once

#include "platform/MessageBox.h"
#include "platform/ShownMessage.h"

#include <deque>
#include <functional>
#include <vector>

namespace platform {

// The process-wide state behind messageBox() and MessageBoxScript.
struct MessageBoxState {
    MessageBoxMode mode = MessageBoxMode::Desktop;
    std::function<void(const QString&)> printer;
    std::function<bool()> windowWanted;
    std::function<void(const ShownMessage&)> observer;
    std::deque<int> scriptedAnswers;
    std::vector<ShownMessage> shown;

    static MessageBoxState& instance();
};

} // namespace platform
