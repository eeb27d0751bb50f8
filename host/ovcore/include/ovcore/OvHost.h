#pragma once

#include <QString>

// Start and end of the host core, for the orvex program and for tests.
//
// init: the LISP machine, the class registry, the system registry and the document
// manager, in that order; then modules may be loaded and documents opened.
// shutdown: every document is closed (kUnloadDwgMsg, reactors), the document manager
// goes (ovDocManagerPtr() is null from then on), every module is unloaded (kUnloadAppMsg,
// library entry 0, dlclose), and the command stack and class registry are emptied, so
// that init can start afresh.
class OvHost {
public:
    OvHost() = default;
    ~OvHost();
    OvHost(const OvHost&) = delete;
    OvHost& operator=(const OvHost&) = delete;

    // False when a host is running already.
    bool init();
    void shutdown();
    bool isRunning() const { return m_running; }

    static bool isAnyRunning();

private:
    bool m_running = false;
};
