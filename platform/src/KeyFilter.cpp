#include "platform/KeyFilter.h"

#include <QApplication>
#include <QKeyEvent>
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
        for (auto* widget = static_cast<QWidget*>(watched); widget != nullptr;
             widget = widget->parentWidget()) {
            if (auto* filter = dynamic_cast<KeyFilter*>(widget)) {
                if (filter->PreTranslateKey(static_cast<QKeyEvent*>(event))) {
                    return true;
                }
            }
            if (widget->isWindow()) {
                break;
            }
        }
        return false;
    }
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
