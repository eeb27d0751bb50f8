#include "platform/PrivateMessage.h"

#include <QCoreApplication>
#include <QKeyEvent>

namespace platform {

PrivateMessageEvent::PrivateMessageEvent(unsigned message, quintptr wParam, qintptr lParam)
    : QEvent(eventType()), m_message(message), m_wParam(wParam), m_lParam(lParam) {}

QEvent::Type PrivateMessageEvent::eventType() {
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}

bool PostMessage(QObject* target, unsigned message, quintptr wParam, qintptr lParam) {
    if (target == nullptr) {
        return false;
    }
    QCoreApplication::postEvent(target, new PrivateMessageEvent(message, wParam, lParam));
    return true;
}

bool PostKeyPress(QObject* target, int key, Qt::KeyboardModifiers modifiers) {
    if (target == nullptr) {
        return false;
    }
    QCoreApplication::postEvent(target, new QKeyEvent(QEvent::KeyPress, key, modifiers));
    QCoreApplication::postEvent(target, new QKeyEvent(QEvent::KeyRelease, key, modifiers));
    return true;
}

} // namespace platform
