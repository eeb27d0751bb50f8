#pragma once

class QKeyEvent;

namespace platform {

// A window that looks at key presses before Qt handles them, as a dialog and a grid
// do. When a key is pressed in a window, the filter of that window and then those of
// its parents, up to its dialog, see it in turn; the first that returns true
// swallows it, so that it reaches neither the focused widget nor Qt's own dialog
// handling (Esc rejecting, Enter pressing the default button, Tab moving focus).
class KeyFilter {
public:
    virtual ~KeyFilter();

    // True when the key was handled here and is to go no further.
    virtual bool PreTranslateKey(QKeyEvent* event) = 0;

    // Installed once on the application by the first dialog or grid; exposed for
    // programs that make windows of their own with filters.
    static void installRouter();
};

} // namespace platform
