#pragma once

#include <memory>

class QWidget;

// A task dialog of the host: a title, a main instruction, a text and numbered buttons, read
// by key from a task dialog resource (an XML file of the host, see docs/task-dialogs.md).
class NqTaskDialog {
public:
    NqTaskDialog();
    ~NqTaskDialog();
    NqTaskDialog(const NqTaskDialog&) = delete;
    NqTaskDialog& operator=(const NqTaskDialog&) = delete;

    // Non-zero when `key` was found in the task dialog resource `resource`. The module names
    // its resource "/ZelTaskDialogsRes;component/TaskDialogs.xaml": any resource whose file
    // name is TaskDialogs maps to the host's TaskDialogs.xml; a path of an existing XML file
    // is read as it is. `values` (`count` of them, may be null) fill the placeholders {0},
    // {1}... of the texts.
    int LoadFromFile(const wchar_t* resource, const wchar_t* key, const wchar_t* const* values,
                     int count);

    // Shows the dialog loaded, modal over `owner` (null: the host's frame), and returns the
    // id of the button chosen; Esc or closing the window gives the id of the cancel button
    // when there is one, else 0. 0 when nothing was loaded.
    int ShowDialog(QWidget* owner);

    // What was loaded (defined in the source).
    struct Entry;

private:
    std::unique_ptr<Entry> m_entry;
};
