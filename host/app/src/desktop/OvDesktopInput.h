#pragma once

#include "ovcore/OvEdInputProvider.h"

class OvMainWindow;

// The editor's input at the desktop: a pick is a click in the active drawing view, in a
// nested event loop that Esc (or closing the drawing) cancels, with the prompt standing in
// the command line; files come from the file dialog, help from the help window.
class OvDesktopInput : public OvEdInputProvider {
public:
    explicit OvDesktopInput(OvMainWindow* window) : m_window(window) {}

    int entSel(const QString& prompt, ov_name name, double point[3]) override;
    int getFileD(const QString& title, const QString& defaultPath, const QString& extension,
                 int flags, QString& path) override;
    int help(const QString& file, const QString& topic, int command) override;

    bool isPicking() const { return m_picking; }

private:
    OvMainWindow* m_window;
    bool m_picking = false;
};
