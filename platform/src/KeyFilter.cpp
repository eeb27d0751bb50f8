#include "platform/KeyFilter.h"
#include "platform/HandlerGuard.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPointer>
#include <QWidget>

namespace platform {

namespace {

// Walks a key press from the widget it is meant for up to its window, as Windows
// walks PreTranslateMessage: the grid's filter first, then its dialog's.
class KeyRouter : public QObject {
public:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::KeyPress || !watched->isWidgetType()) {
            return false;
        }
        auto* key = static_cast<QKeyEvent*>(event);
        auto* receiver = static_cast<QWidget*>(watched);
        // A key that its widget ignores goes on to the parents, passing the
        // application's filters each time; the filters see it once, at its receiver.
        if (key == m_lastKey && m_lastReceiver && receiver->isAncestorOf(m_lastReceiver) &&
            key->key() == m_lastCode && key->modifiers() == m_lastModifiers &&
            key->timestamp() == m_lastTimestamp) {
            return false;
        }
        m_lastKey = key;
        m_lastReceiver = receiver;
        m_lastCode = key->key();
        m_lastModifiers = key->modifiers();
        m_lastTimestamp = key->timestamp();
        for (QWidget* widget = receiver; widget != nullptr; widget = widget->parentWidget()) {
            if (auto* filter = dynamic_cast<KeyFilter*>(widget)) {
                // A filter that throws has ended this key's handling, as if it took it.
                if (runHandler("a key press", true, [&] { return filter->PreTranslateKey(key); })) {
                    // Accepted, or Qt would offer it to the parents all the same.
                    key->accept();
                    return true;
                }
            }
            if (widget->isWindow()) {
                break;
            }
        }
        return false;
    }

private:
    const QKeyEvent* m_lastKey = nullptr;
    QPointer<QWidget> m_lastReceiver;
    int m_lastCode = 0;
    Qt::KeyboardModifiers m_lastModifiers;
    quint64 m_lastTimestamp = 0;
};

} // namespace

KeyFilter::~KeyFilter() = default;

void KeyFilter::installRouter() {
    static KeyRouter* router = nullptr;
    if (router == nullptr && QCoreApplication::instance() != nullptr) {
        router = new KeyRouter;
        router->setParent(QCoreApplication::instance());
        QCoreApplication::instance()->installEventFilter(router);
    }
}

} // namespace platform
