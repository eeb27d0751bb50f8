#pragma once

#include "platform/MessageBox.h"
#include "platform/ShownMessage.h"

#include <vector>

namespace platform {

// For tests: while an object lives, every message box is answered from its queue,
// in order, and recorded; an empty queue gives the box's default answer, which is
// recorded too. The previous mode comes back when the object goes. The queue is
// process-wide, so only one script is active at a time.
class MessageBoxScript {
public:
    MessageBoxScript();
    ~MessageBoxScript();

    MessageBoxScript(const MessageBoxScript&) = delete;
    MessageBoxScript& operator=(const MessageBoxScript&) = delete;

    // Queues the answer for the next box not yet answered.
    void answer(int answer);
    int pendingAnswers() const;

    const std::vector<ShownMessage>& shown() const;
    // The texts shown so far, in order.
    std::vector<QString> shownTexts() const;
    void clearShown();

private:
    MessageBoxMode m_previousMode;
};

} // namespace platform
