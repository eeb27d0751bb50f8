#include "OvDesktop.h"

#include "OvCommandLine.h"
#include "OvDesktopInput.h"
#include "OvDrawingView.h"
#include "OvMainWindow.h"

#include "ovauto/OvDialogAutomation.h"
#include "ovcore/OvApDocManager.h"
#include "ovcore/OvEdInput.h"
#include "ovcore/OvHost.h"
#include "ovcore/OvModuleLoader.h"
#include "ovdb/ovut.h"
#include "platform/MessageBox.h"
#include "zelpm/ZelPrmProjectManager.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>

#include <cstdio>

namespace {

const QString kAddonModule = QStringLiteral("ZelAddonLisp.ovm");
const QString kWireTypeModule = QStringLiteral("ZelWireType.ovm");

QStringList startupFiles(const QString& addonFolder) {
    const QDir folder(QDir(addonFolder).filePath(QStringLiteral("addon-lisp")));
    QStringList files;
    for (const QString& name :
         folder.entryList({QStringLiteral("*.scm")}, QDir::Files | QDir::Readable, QDir::Name))
        files << folder.filePath(name);
    return files;
}

QString addonFolderOf(const QString& programFolder) {
    const QString fromEnvironment = qEnvironmentVariable("ORVEX_ADDON_DIR");
    return fromEnvironment.isEmpty() ? programFolder : QDir(fromEnvironment).absolutePath();
}

bool hasDisplay() {
    return !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") ||
           !qEnvironmentVariableIsEmpty("DISPLAY") ||
           !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

} // namespace

OvDesktop::OvDesktop(const QString& programFolder, const QString& addonFolder)
    : m_programFolder(programFolder), m_addonFolder(addonFolder) {}

OvDesktop::~OvDesktop() {
    stop();
}

bool OvDesktop::start(const OvDesktopOptions& options) {
    m_host = std::make_unique<OvHost>();
    if (!m_host->init()) {
        m_host.reset();
        return false;
    }
    m_window = std::make_unique<OvMainWindow>();
    OvMainWindow* window = m_window.get();
    ovutSetOutputSink([window](std::string_view utf8) {
        window->print(QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size())));
    });
    platform::setMessageBoxMode(platform::MessageBoxMode::Desktop);
    m_input = std::make_unique<OvDesktopInput>(window);
    ovedSetInputProvider(m_input.get());
    // Scripts typed at the console or loaded may drive the dialogs they open; a person
    // answers the others.
    OvDialogAutomation::instance().install(OvDialogAutomation::Mode::Desktop);
    window->show();

    if (!options.project.isEmpty())
        window->openProject(options.project);
    ovDocManagerPtr()->setStartupLispFiles(startupFiles(m_addonFolder));

    const QString addon = QDir(m_addonFolder).filePath(kAddonModule);
    if (QFileInfo::exists(addon))
        OvModuleLoader::instance().load(addon);
    if (!options.module.isEmpty()) {
        OvModuleLoader::instance().load(options.module);
    } else if (!options.noModule) {
        const QString module = QDir(m_programFolder).filePath(kWireTypeModule);
        if (QFileInfo::exists(module))
            OvModuleLoader::instance().load(module);
    }

    for (const QString& drawing : options.drawings)
        window->openDrawing(drawing);
    if (ovDocManagerPtr()->documentCount() == 0)
        window->newDrawing();
    // The first drawing named is the one to work in.
    if (!options.drawings.isEmpty()) {
        if (OvApDocument* first = ovDocManagerPtr()->documentForFile(options.drawings.first()))
            ovDocManagerPtr()->activateDocument(first);
    }
    window->refreshActiveDrawing();
    window->commandLine()->setFocus();
    return true;
}

void OvDesktop::stop() {
    if (!m_host)
        return;
    if (OvApDocManager* manager = ovDocManagerPtr())
        manager->closeAllDocuments();
    m_window.reset();
    OvDialogAutomation::instance().uninstall();
    ovedSetInputProvider(nullptr);
    m_input.reset();
    m_host->shutdown();
    m_host.reset();
    GetProjectManager()->closeProject();
    ovutResetOutputSink();
}

int OvDesktop::run(int& argc, char** argv) {
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    OvDesktopOptions options;
    QString error;
    if (!options.parse(arguments, &error)) {
        std::fprintf(stderr, "orvex: %s\n\n%s", qPrintable(error),
                     qPrintable(OvDesktopOptions::usage()));
        return 2;
    }
    if (!hasDisplay()) {
        std::fprintf(stderr, "orvex: there is no display for the desktop program (DISPLAY is "
                             "not set). Run the batch form instead, for example:\n"
                             "  orvex --batch --eval \"(+ 1 2)\" drawing.dwg\n"
                             "See orvex --help.\n");
        return 2;
    }

    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Orvex"));
    QApplication::setApplicationName(QStringLiteral("Orvex"));
    QApplication::setApplicationVersion(QStringLiteral("26.0"));
    QGuiApplication::setDesktopFileName(QStringLiteral("orvex"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/orvex/orvex.png")));

    const QString programFolder = QCoreApplication::applicationDirPath();
    OvDesktop desktop(programFolder, addonFolderOf(programFolder));
    if (!desktop.start(options)) {
        std::fprintf(stderr, "orvex: the host cannot start\n");
        return 1;
    }
    QObject::connect(&app, &QApplication::lastWindowClosed, &app, &QApplication::quit);
    const int status = QApplication::exec();
    desktop.stop();
    return status;
}
