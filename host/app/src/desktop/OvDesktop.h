#pragma once

#include "OvDesktopOptions.h"

#include <QString>

#include <memory>

class OvDesktopInput;
class OvHost;
class OvMainWindow;

// One session of the desktop program, inside a QApplication that the caller made: the
// host, the main window as the command line and the editor's input, the project, the
// add-on and the wire type module, and the drawings named. Ending it closes the drawings,
// unloads the modules and closes the project.
class OvDesktop {
public:
    // `programFolder` holds the default wire type module; `addonFolder` ZelAddonLisp.ovm
    // and the Scheme start-up files in addon-lisp/.
    OvDesktop(const QString& programFolder, const QString& addonFolder);
    ~OvDesktop();
    OvDesktop(const OvDesktop&) = delete;
    OvDesktop& operator=(const OvDesktop&) = delete;

    // False when the host cannot start; everything else that fails is reported in the
    // window and the session goes on.
    bool start(const OvDesktopOptions& options);
    void stop();

    OvMainWindow* window() const { return m_window.get(); }

    // The whole program: a QApplication, a session, the event loop. The exit status.
    static int run(int& argc, char** argv);

private:
    QString m_programFolder;
    QString m_addonFolder;
    std::unique_ptr<OvHost> m_host;
    std::unique_ptr<OvMainWindow> m_window;
    std::unique_ptr<OvDesktopInput> m_input;
};
