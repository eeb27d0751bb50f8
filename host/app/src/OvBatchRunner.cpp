#include "OvBatchRunner.h"

#include "ovauto/OvDialogAutomation.h"
#include "ovcore/OvApDocManager.h"
#include "ovcore/OvHost.h"
#include "ovcore/OvLisp.h"
#include "ovcore/OvModuleLoader.h"
#include "ovdb/ovut.h"
#include "ovui/OvUi.h"
#include "platform/MessageBox.h"
#include "zelpm/ZelPrmProjectManager.h"

#include <QDir>
#include <QFileInfo>

#include <string>

namespace {

const QString kAddonModule = QStringLiteral("ZelAddonLisp.ovm");
const QString kWireTypeModule = QStringLiteral("ZelWireType.ovm");

} // namespace

OvBatchRunner::OvBatchRunner(const OvBatchOptions& options, const QString& programFolder,
                             const QString& addonFolder)
    : m_options(options), m_programFolder(programFolder), m_addonFolder(addonFolder) {}

QStringList OvBatchRunner::startupFiles(const QString& addonFolder) {
    const QDir folder(QDir(addonFolder).filePath(QStringLiteral("addon-lisp")));
    QStringList files;
    for (const QString& name :
         folder.entryList({QStringLiteral("*.scm")}, QDir::Files | QDir::Readable, QDir::Name))
        files << folder.filePath(name);
    return files;
}

int OvBatchRunner::run() {
    m_failed = false;
    ovutSetOutputSink([this](std::string_view utf8) { m_output.write(utf8); });
    // A message box prints its text and takes its default answer, on a line of its own.
    platform::setMessageBoxMode(platform::MessageBoxMode::Batch);
    platform::setMessageBoxPrinter([this](const QString& line) {
        m_output.startLine();
        m_output.write(line);
    });
    // Dialogs that no queued procedure drives are cancelled at once; a procedure that
    // fails or leaves its dialog open fails the run.
    OvDialogAutomation& automation = OvDialogAutomation::instance();
    automation.install(OvDialogAutomation::Mode::Batch);
    automation.resetFailures();
    automation.setLinePrinter([this](const QString& line) {
        m_output.startLine();
        m_output.write(line + u'\n');
    });

    {
        OvHost host;
        if (!host.init()) {
            fail(QStringLiteral("the host cannot start: another one runs in this process"));
        } else {
            // The host's own dialogs and their LISP functions, as in the desktop: in a batch
            // run they open on the offscreen screen, for a queued procedure to drive.
            InitOvUiDLL();
            runSteps(ovDocManagerPtr());
            host.shutdown();
        }
    }
    GetProjectManager()->closeProject();
    if (automation.failures() > 0)
        m_failed = true;
    if (automation.pending() > 0) {
        m_output.startLine();
        m_output.write(QStringLiteral("; %1 queued dialog procedure(s) not used: no dialog "
                                      "opened for them\n")
                           .arg(automation.pending()));
    }
    automation.uninstall();
    automation.setLinePrinter({});

    m_output.startLine();
    platform::setMessageBoxPrinter({});
    ovutResetOutputSink();
    return m_failed ? 1 : 0;
}

void OvBatchRunner::runSteps(OvApDocManager* manager) {
    openProject();
    manager->setStartupLispFiles(startupFiles(m_addonFolder));
    openDrawings(manager);

    const QString addon = QDir(m_addonFolder).filePath(kAddonModule);
    if (QFileInfo::exists(addon))
        loadModule(addon);
    if (!m_options.module.isEmpty()) {
        loadModule(m_options.module);
    } else if (!m_options.noModule) {
        const QString module = QDir(m_programFolder).filePath(kWireTypeModule);
        if (QFileInfo::exists(module))
            loadModule(module);
    }

    evaluateAll(manager);
    saveDrawings(manager);
    // loadFile has reported each failing start-up file already.
    if (manager->startupLispFailures() > 0)
        m_failed = true;
}

void OvBatchRunner::openProject() {
    if (m_options.project.isEmpty())
        return;
    QString error;
    if (!GetProjectManager()->openProject(m_options.project, &error))
        fail(error.isEmpty()
                 ? QStringLiteral("cannot open the project \"%1\"").arg(m_options.project)
                 : error);
}

void OvBatchRunner::openDrawings(OvApDocManager* manager) {
    OvApDocument* first = nullptr;
    for (const QString& path : m_options.drawings) {
        if (OvApDocument* open = manager->documentForFile(path)) {
            // A second document on the same file would only be a read-only copy.
            m_output.startLine();
            ovutPrintf(L"; \"%ls\" is named twice: opened once\n", path.toStdWString().c_str());
            if (!first)
                first = open;
            continue;
        }
        OvApDocument* doc = nullptr;
        if (manager->openDocument(path, &doc) != Orvex::eOk || !doc) {
            fail(manager->lastErrorMessage().isEmpty()
                     ? QStringLiteral("cannot open \"%1\"").arg(path)
                     : manager->lastErrorMessage());
            continue;
        }
        if (!first)
            first = doc;
    }
    if (!first) {
        if (manager->newDocument({}, &first) != Orvex::eOk || !first) {
            fail(QStringLiteral("cannot make a new drawing: %1").arg(manager->lastErrorMessage()));
            return;
        }
    }
    if (manager->mdiActiveDocument() != first)
        manager->activateDocument(first);
}

void OvBatchRunner::loadModule(const QString& path) {
    // The loader reports why a module could not be loaded.
    m_output.startLine();
    if (!OvModuleLoader::instance().load(path))
        m_failed = true;
}

void OvBatchRunner::evaluateAll(OvApDocManager* manager) {
    const auto inActiveDocument = [manager] {
        // A module or an earlier expression may have left another document current.
        if (OvApDocument* active = manager->mdiActiveDocument();
            active && manager->curDocument() != active)
            manager->setCurDocument(active);
    };
    for (const QString& expression : m_options.evals) {
        inActiveDocument();
        const ovcore::lisp::EvalResult result = ovcore::lisp::evalString(expression);
        if (result.ok)
            printValue(result.value);
        else
            m_failed = true; // the bridge printed "; error: ..."
    }
    for (const QString& script : m_options.scripts) {
        inActiveDocument();
        const QFileInfo file(script);
        if (!file.isFile() || !file.isReadable()) {
            fail(QStringLiteral("cannot read the LISP file \"%1\"").arg(script));
            continue;
        }
        const ovcore::lisp::EvalResult result = ovcore::lisp::loadFile(script);
        if (result.ok)
            printValue(result.value);
        else
            m_failed = true;
    }
}

void OvBatchRunner::printValue(const QString& value) {
    // A value that prints as nothing, such as that of (princ), gives no line at all.
    if (value.isEmpty())
        return;
    m_output.startLine();
    m_output.write(value + u'\n');
}

void OvBatchRunner::saveDrawings(OvApDocManager* manager) {
    if (m_options.save) {
        for (OvApDocument* doc : manager->documents()) {
            if (doc->fileName().isEmpty())
                continue; // a new drawing has no file to go back to
            if (manager->saveDocument(doc) != Orvex::eOk)
                fail(manager->lastErrorMessage());
        }
    }
    if (!m_options.saveAs.isEmpty()) {
        OvApDocument* active = manager->mdiActiveDocument();
        if (!active)
            fail(QStringLiteral("cannot save as \"%1\": no drawing is open").arg(m_options.saveAs));
        else if (manager->saveDocumentAs(active, m_options.saveAs) != Orvex::eOk)
            fail(manager->lastErrorMessage());
    }
}

void OvBatchRunner::fail(const QString& message) {
    m_failed = true;
    m_output.startLine();
    const std::wstring text = message.toStdWString();
    ovutPrintf(L"; error: %ls\n", text.c_str());
}
