#include "platform/Clipboard.h"

#include <QClipboard>
#include <QGuiApplication>

namespace platform {

bool CanOpenClipboard() {
    return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr;
}

QString GetClipboardText(bool* opened) {
    const bool can = CanOpenClipboard();
    if (opened != nullptr) {
        *opened = can;
    }
    return can ? QGuiApplication::clipboard()->text() : QString();
}

bool ClipboardHasText() {
    return !GetClipboardText().isEmpty();
}

bool SetClipboardText(const QString& text) {
    if (!CanOpenClipboard()) {
        return false;
    }
    QGuiApplication::clipboard()->setText(text);
    return true;
}

} // namespace platform
