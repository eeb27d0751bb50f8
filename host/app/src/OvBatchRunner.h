#pragma once

#include "OvBatchOptions.h"
#include "OvBatchOutput.h"

#include <QString>
#include <QStringList>

class OvApDocManager;

// One batch run of orvex: a host without a display, driven by the command line. What the
// command line gets (ovutPrintf, message boxes, the values of the expressions) goes to
// standard output in the order it comes.
//
// The order of the run: the project; the drawings named (each one gets the add-on's Scheme
// start-up files as it opens), the first made the active one; the add-on module and the
// wire type module, which then hear of every open drawing with a drawing active; each
// --eval, then each --script, in the active drawing; the saves; the host's shutdown.
// A step that fails is reported and the run goes on.
class OvBatchRunner {
public:
    // `programFolder` holds the default modules; `addonFolder` holds ZelAddonLisp.ovm and
    // the Scheme start-up files in its sub-folder addon-lisp.
    OvBatchRunner(const OvBatchOptions& options, const QString& programFolder,
                  const QString& addonFolder);

    // The exit status: 0 when every expression ran without a LISP error and every file
    // could be read, loaded and saved; 1 otherwise.
    int run();

    // The add-on's Scheme start-up files of a folder: addon-lisp/*.scm, sorted by name.
    static QStringList startupFiles(const QString& addonFolder);

private:
    void runSteps(OvApDocManager* manager);
    void openProject();
    void openDrawings(OvApDocManager* manager);
    void loadModule(const QString& path);
    void evaluateAll(OvApDocManager* manager);
    void printValue(const QString& value);
    void saveDrawings(OvApDocManager* manager);
    // "; error: <message>" on a line of its own; the run will end with status 1.
    void fail(const QString& message);

    OvBatchOptions m_options;
    QString m_programFolder;
    QString m_addonFolder;
    OvBatchOutput m_output;
    bool m_failed = false;
};
