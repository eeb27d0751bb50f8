#pragma once

#include <QString>

namespace platform {

// One message box as a script recorded it.
struct ShownMessage {
    QString text;
    QString caption;
    unsigned flags = 0;
    int answer = 0;
    // False when the queue was empty and the default answer was taken.
    bool answeredFromQueue = false;
};

} // namespace platform
