#pragma once

// Private window messages between a grid and its dialog. They are always posted:
// QCoreApplication::postEvent with an event that carries the number and the two
// parameters, so that a message takes effect after the handler that posted it has
// returned to the event loop, never inside it.

#include <QEvent>
#include <QPoint>

namespace platform {

inline constexpr unsigned WM_USER = 0x400;
// The command message: wParam is the command number (a control or menu command).
inline constexpr unsigned WM_COMMAND = 0x111;

class PrivateMessageEvent : public QEvent {
public:
    PrivateMessageEvent(unsigned message, quintptr wParam, qintptr lParam);

    static QEvent::Type eventType();

    unsigned message() const { return m_message; }
    quintptr wParam() const { return m_wParam; }
    qintptr lParam() const { return m_lParam; }

private:
    unsigned m_message;
    quintptr m_wParam;
    qintptr m_lParam;
};

// Posts `message` to `target`; false when there is no target. A TemplateDialog and a
// GridWindow hand it to their OnPrivateMessage.
bool PostMessage(QObject* target, unsigned message, quintptr wParam = 0, qintptr lParam = 0);

// Posts a key press (and its release) to `target`, as a person's key would arrive.
bool PostKeyPress(QObject* target, int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);

// A screen point packed as Windows packs it: x in the low 16 bits, y in the high 16
// bits, each a signed 16-bit word.
inline qintptr MakePointLParam(QPoint p) {
    return qintptr((quint32(quint16(qint16(p.y()))) << 16) | quint32(quint16(qint16(p.x()))));
}
inline QPoint PointFromLParam(qintptr lParam) {
    return QPoint(qint16(quint16(quint32(lParam) & 0xFFFF)),
                  qint16(quint16((quint32(lParam) >> 16) & 0xFFFF)));
}

} // namespace platform
