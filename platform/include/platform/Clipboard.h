#pragma once

#include <QString>

namespace platform {

// The system clipboard as plain text.

// False when there is no clipboard to open (no GUI application).
bool CanOpenClipboard();
// The clipboard's text; empty when it holds none. `opened` says whether the
// clipboard could be read at all.
QString GetClipboardText(bool* opened = nullptr);
// True when the clipboard holds text of length above 0.
bool ClipboardHasText();
bool SetClipboardText(const QString& text);

} // namespace platform
