#include "OvMainWindow.h"

#include "OvCommandLine.h"
#include "OvDrawingItem.h"
#include "OvDrawingSnapshot.h"
#include "OvDrawingView.h"
#include "OvLayerPanel.h"
#include "OvLispConsole.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvEdCommandStack.h"
#include "ovcore/OvModuleLoader.h"
#include "ovcore/OvRxSystemRegistry.h"
#include "ovdb/OvDbDatabase.h"
#include "ovui/OvUiHelp.h"
#include "platform/MessageBox.h"
#include "zelpm/ZelPrmProjectManager.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QDockWidget>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMenuBar>
#include <QProgressDialog>
#include <QSettings>
#include <QStatusBar>
#include <QTabWidget>
#include <QVBoxLayout>

namespace {

const QString kSettingsGroup = QStringLiteral("Desktop");
// Files above this size take long enough to read that the user should see that we work.
constexpr qint64 kLargeFile = 4 * 1024 * 1024;

OvEdCommandStack* commandStack() {
    return OvEdCommandStack::cast(ovrxSysRegistry()->at(L"ORVEX_REGISTERED_COMMANDS"));
}

QString drawingFilter() {
    return QObject::tr("Drawings and templates (*.dwg *.dwt);;Drawings (*.dwg);;"
                       "Templates (*.dwt);;All files (*)");
}

// Where the user documentation lies: in share/doc/orvex of an installation (the program
// is in lib/orvex), or in the source tree of a build.

} // namespace

OvMainWindow::OvMainWindow(QWidget* parent)
    : QMainWindow(parent), m_commandLine(new OvCommandLine), m_layerPanel(new OvLayerPanel),
      m_console(new OvLispConsole), m_tabs(new QTabWidget) {
    setObjectName(QStringLiteral("orvexMainWindow"));
    setWindowTitle(QStringLiteral("Orvex"));
    m_tabs->setObjectName(QStringLiteral("documentTabs"));
    m_tabs->setDocumentMode(true);
    m_tabs->setTabsClosable(true);
    m_tabs->setMovable(true);
    setCentralWidget(m_tabs);
    connect(m_tabs, &QTabWidget::currentChanged, this, &OvMainWindow::currentTabChanged);
    connect(m_tabs, &QTabWidget::tabCloseRequested, this, [this](int index) {
        if (auto* view = qobject_cast<OvDrawingView*>(m_tabs->widget(index)))
            closeDocument(view->document());
    });

    buildDocks();
    buildMenus();
    m_statusProject = new QLabel(this);
    statusBar()->addPermanentWidget(m_statusProject);

    connect(m_commandLine, &OvCommandLine::submitted, this, &OvMainWindow::runInput);
    m_console->setEvaluator([this](const QString& text) {
        const auto result = evaluate(text, false);
        return OvLispConsole::Result{result.ok, result.value, result.error};
    });
    m_console->setLoader([this](const QString& path) {
        if (OvApDocManager* manager = ovDocManagerPtr(); manager && manager->mdiActiveDocument())
            manager->setCurDocument(manager->mdiActiveDocument());
        ++m_busy;
        const auto result = ovcore::lisp::loadFile(path);
        --m_busy;
        afterChange();
        return OvLispConsole::Result{result.ok, result.value, result.error};
    });

    m_watcher.created = [this](OvApDocument* doc) { documentCreated(doc); };
    m_watcher.toBeDestroyed = [this](OvApDocument* doc) { documentToBeDestroyed(doc); };
    m_watcher.activated = [this](OvApDocument* doc) { documentActivated(doc); };
    if (OvApDocManager* manager = ovDocManagerPtr()) {
        manager->addReactor(&m_watcher);
        for (OvApDocument* doc : manager->documents())
            documentCreated(doc);
    }

    m_ownCommands = {
        {QStringLiteral("NEW"), [this] { newDrawing(); }},
        {QStringLiteral("OPEN"), [this] { chooseAndOpen(); }},
        {QStringLiteral("QSAVE"), [this] { saveDocument(activeDocument()); }},
        {QStringLiteral("SAVEAS"), [this] { saveDocumentAs(activeDocument()); }},
        {QStringLiteral("CLOSE"), [this] { closeDocument(activeDocument()); }},
        {QStringLiteral("ZOOM"),
         [this] {
             if (OvDrawingView* view = activeView())
                 view->zoomExtents();
         }},
        {QStringLiteral("HELP"), [this] { showHelp(QStringLiteral("user-guide"), {}); }},
        {QStringLiteral("QUIT"), [this] { close(); }},
    };
    refreshCompletions();
    restoreSettings();
    refreshTitles();
}

OvMainWindow::~OvMainWindow() {
    if (OvApDocManager* manager = ovDocManagerPtr())
        manager->removeReactor(&m_watcher);
}

void OvMainWindow::buildDocks() {
    m_commandDock = new QDockWidget(tr("Command line"), this);
    m_commandDock->setObjectName(QStringLiteral("commandLineDock"));
    m_commandDock->setWidget(m_commandLine);
    m_commandDock->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable);
    addDockWidget(Qt::BottomDockWidgetArea, m_commandDock);

    m_layerDock = new QDockWidget(tr("Layers"), this);
    m_layerDock->setObjectName(QStringLiteral("layerDock"));
    m_layerDock->setWidget(m_layerPanel);
    addDockWidget(Qt::RightDockWidgetArea, m_layerDock);

    m_consoleDock = new QDockWidget(tr("LISP console"), this);
    m_consoleDock->setObjectName(QStringLiteral("lispConsoleDock"));
    m_consoleDock->setWidget(m_console);
    addDockWidget(Qt::RightDockWidgetArea, m_consoleDock);
    tabifyDockWidget(m_layerDock, m_consoleDock);
    m_layerDock->raise();
    resizeDocks({m_commandDock}, {170}, Qt::Vertical);
    resizeDocks({m_layerDock}, {600}, Qt::Horizontal);
}

void OvMainWindow::buildMenus() {
    const auto action = [this](QMenu* menu, const QString& text, const char* name,
                               const QKeySequence& keys, std::function<void()> slot) {
        QAction* a = menu->addAction(text);
        a->setObjectName(QString::fromLatin1(name));
        if (!keys.isEmpty())
            a->setShortcut(keys);
        connect(a, &QAction::triggered, this, std::move(slot));
        return a;
    };

    // Keys spelled out rather than the platform's standard ones, which a platform without
    // a theme leaves empty.
    QMenu* file = menuBar()->addMenu(tr("&File"));
    action(file, tr("&New"), "fileNew", QKeySequence(Qt::CTRL | Qt::Key_N),
           [this] { newDrawing(); });
    action(file, tr("New from &template..."), "fileNewFromTemplate", {}, [this] {
        const QString path = QFileDialog::getOpenFileName(
            this, tr("New drawing from a template"), {}, tr("Templates (*.dwt);;Drawings (*.dwg)"),
            nullptr, QFileDialog::DontUseNativeDialog);
        if (!path.isEmpty())
            newDrawing(path);
    });
    action(file, tr("&Open..."), "fileOpen", QKeySequence(Qt::CTRL | Qt::Key_O),
           [this] { chooseAndOpen(); });
    m_recentMenu = file->addMenu(tr("Open &recent"));
    m_recentMenu->setObjectName(QStringLiteral("fileRecent"));
    file->addSeparator();
    action(file, tr("&Save"), "fileSave", QKeySequence(Qt::CTRL | Qt::Key_S),
           [this] { saveDocument(activeDocument()); });
    action(file, tr("Save &as..."), "fileSaveAs", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S),
           [this] { saveDocumentAs(activeDocument()); });
    action(file, tr("&Close"), "fileClose", QKeySequence(Qt::CTRL | Qt::Key_W),
           [this] { closeDocument(activeDocument()); });
    file->addSeparator();
    action(file, tr("&Quit"), "fileQuit", QKeySequence(Qt::CTRL | Qt::Key_Q), [this] { close(); });

    QMenu* project = menuBar()->addMenu(tr("&Project"));
    action(project, tr("&Open project..."), "projectOpen", {}, [this] { chooseAndOpenProject(); });
    QMenu* drawings = project->addMenu(tr("Project &drawings"));
    drawings->setObjectName(QStringLiteral("projectDrawings"));
    connect(drawings, &QMenu::aboutToShow, this, [this, drawings] {
        drawings->clear();
        ZelPrmProject* active = GetProjectManager()->activeProject();
        if (!active || active->drawings().isEmpty()) {
            drawings->addAction(tr("(no project drawings)"))->setEnabled(false);
            return;
        }
        for (const QString& path : active->drawings()) {
            QAction* a = drawings->addAction(QFileInfo(path).fileName());
            a->setToolTip(path);
            connect(a, &QAction::triggered, this, [this, path] { openDrawing(path); });
        }
    });
    action(project, tr("&Close project"), "projectClose", {}, [this] { closeProject(); });

    QMenu* view = menuBar()->addMenu(tr("&View"));
    action(view, tr("Zoom &extents"), "viewExtents", QKeySequence(Qt::Key_Home), [this] {
        if (OvDrawingView* v = activeView())
            v->zoomExtents();
    });
    action(view, tr("Zoom &in"), "viewZoomIn", QKeySequence(Qt::CTRL | Qt::Key_Plus), [this] {
        if (OvDrawingView* v = activeView())
            v->zoomBy(1.25);
    });
    action(view, tr("Zoom &out"), "viewZoomOut", QKeySequence(Qt::CTRL | Qt::Key_Minus), [this] {
        if (OvDrawingView* v = activeView())
            v->zoomBy(0.8);
    });
    view->addSeparator();
    view->addAction(m_commandDock->toggleViewAction());
    view->addAction(m_layerDock->toggleViewAction());
    view->addAction(m_consoleDock->toggleViewAction());

    // The add-on's own menu entries, as its menus call the wire type module.
    m_wireTypeMenu = menuBar()->addMenu(tr("&Wire types"));
    m_wireTypeMenu->setObjectName(QStringLiteral("wireTypeMenu"));
    action(m_wireTypeMenu, tr("&Manage wire types..."), "wireTypesManage", {},
           [this] { runInput(QStringLiteral("WireTypeSel1")); });
    action(m_wireTypeMenu, tr("&Set the wire type..."), "wireTypesSet", {},
           [this] { runWireTypeLisp(QStringLiteral("(zel_wire_type_sel \"1\")")); });
    action(m_wireTypeMenu, tr("&Change wires by picking..."), "wireTypesChange", {}, [this] {
        runWireTypeLisp(
            QStringLiteral("(zel_wire_type_sel \"0\" (entsel \"\\nSelect a wire: \"))"));
    });
    action(m_wireTypeMenu, tr("&Import wire types from a drawing..."), "wireTypesImport", {},
           [this] {
               runWireTypeLisp(QStringLiteral(
                   "(let ((source (getfiled \"Import wire types from\" \"\" \"dwg;dwt\" 0)))"
                   " (if source (zel_invoke_importwt_dlg source 1 (list source))))"));
           });
    action(m_wireTypeMenu, tr("&Rename user properties..."), "wireTypesRename", {}, [this] {
        runWireTypeLisp(QStringLiteral("(zel_rename_wire_properties (zel_project_setting 33))"));
    });
    connect(m_wireTypeMenu, &QMenu::aboutToShow, this, [this] {
        const bool loaded = isModuleLoaded();
        for (QAction* a : m_wireTypeMenu->actions())
            a->setEnabled(loaded && activeDocument());
    });

    QMenu* help = menuBar()->addMenu(tr("&Help"));
    action(help, tr("&User guide"), "helpGuide", QKeySequence(Qt::Key_F1),
           [this] { showHelp(QStringLiteral("user-guide"), {}); });
    action(help, tr("&About Orvex"), "helpAbout", {}, [this] {
        platform::messageBox(tr("Orvex %1, the CAD host of the Zel electrical add-on.")
                                 .arg(QCoreApplication::applicationVersion()),
                             tr("About Orvex"), platform::MB_OK | platform::MB_ICONINFORMATION);
    });
    rebuildRecentMenu();
}

OvApDocument* OvMainWindow::activeDocument() const {
    OvApDocManager* manager = ovDocManagerPtr();
    return manager ? manager->mdiActiveDocument() : nullptr;
}

OvDrawingView* OvMainWindow::activeView() const {
    return viewOf(activeDocument());
}

OvDrawingView* OvMainWindow::viewOf(const OvApDocument* document) const {
    return m_views.value(document, nullptr);
}

void OvMainWindow::print(const QString& text) {
    m_commandLine->print(text);
    if (m_console->isRunning())
        m_console->print(text);
}

bool OvMainWindow::isModuleLoaded() const {
    return OvModuleLoader::instance().find(QStringLiteral("ZelWireType.ovm")) != nullptr;
}

// --- documents ---------------------------------------------------------------------------

void OvMainWindow::documentCreated(OvApDocument* document) {
    if (m_views.contains(document))
        return;
    auto* view = new OvDrawingView(document);
    m_views.insert(document, view);
    m_syncingTabs = true;
    m_tabs->addTab(view, document->docTitle());
    m_syncingTabs = false;
    view->setSnapshot(std::make_shared<OvDrawingSnapshot>(document->database()));
    if (document->isReadOnly())
        statusBar()->showMessage(
            tr("%1 is open read-only: another session holds it").arg(document->docTitle()), 10000);
    refreshTitles();
}

void OvMainWindow::documentToBeDestroyed(OvApDocument* document) {
    OvDrawingView* view = m_views.take(document);
    if (!view)
        return;
    // A pick waiting in this view ends as cancelled when the view goes.
    m_syncingTabs = true;
    m_tabs->removeTab(m_tabs->indexOf(view));
    m_syncingTabs = false;
    view->deleteLater();
    if (m_views.isEmpty())
        m_layerPanel->setSnapshot(nullptr);
    refreshTitles();
}

void OvMainWindow::documentActivated(OvApDocument* document) {
    OvDrawingView* view = viewOf(document);
    if (!view || m_tabs->currentWidget() == view)
        return;
    m_syncingTabs = true;
    m_tabs->setCurrentWidget(view);
    m_syncingTabs = false;
    refreshActiveDrawing();
    refreshTitles();
}

void OvMainWindow::currentTabChanged(int index) {
    if (m_syncingTabs || m_closing)
        return;
    auto* view = qobject_cast<OvDrawingView*>(m_tabs->widget(index));
    OvApDocManager* manager = ovDocManagerPtr();
    if (!view || !manager)
        return;
    if (manager->mdiActiveDocument() != view->document())
        manager->activateDocument(view->document());
    refreshActiveDrawing();
    refreshTitles();
}

void OvMainWindow::refreshActiveDrawing() {
    OvApDocument* document = activeDocument();
    OvDrawingView* view = viewOf(document);
    if (!view)
        return;
    auto snapshot = std::make_shared<OvDrawingSnapshot>(document->database());
    view->setSnapshot(snapshot);
    m_layerPanel->setSnapshot(std::move(snapshot));
}

void OvMainWindow::refreshTitles() {
    for (auto it = m_views.cbegin(); it != m_views.cend(); ++it) {
        const OvApDocument* doc = it.key();
        QString title = doc->docTitle();
        if (doc->database() && doc->database()->isModified())
            title += u'*';
        if (doc->isReadOnly())
            title += tr(" [read-only]");
        const int index = m_tabs->indexOf(it.value());
        m_tabs->setTabText(index, title);
        m_tabs->setTabToolTip(index,
                              doc->fileName().isEmpty() ? tr("Not saved yet") : doc->fileName());
    }
    ZelPrmProject* project = GetProjectManager()->activeProject();
    const QString projectName = project ? project->name() : tr("no project");
    m_statusProject->setText(project ? tr("Project: %1").arg(project->name()) : tr("No project"));
    OvApDocument* active = activeDocument();
    QString title = QStringLiteral("%1 - Orvex").arg(projectName);
    if (active) {
        title = QStringLiteral("%1%2%3 - %4")
                    .arg(active->docTitle(), QStringLiteral("[*]"),
                         active->isReadOnly() ? tr(" (read-only)") : QString(), title);
        setWindowModified(active->database() && active->database()->isModified());
    } else {
        setWindowModified(false);
    }
    setWindowTitle(title);
}

void OvMainWindow::refreshCompletions() {
    QStringList names;
    for (const auto& own : m_ownCommands)
        names << own.first;
    if (OvEdCommandStack* stack = commandStack()) {
        for (const QString& group : stack->groupNames()) {
            for (OvEdCommand* command : stack->commands(group)) {
                names << command->globalName();
                if (command->localName() != command->globalName())
                    names << command->localName();
            }
        }
    }
    names.removeDuplicates();
    names.sort(Qt::CaseInsensitive);
    m_commandLine->setCompletions(names);
}

void OvMainWindow::afterChange() {
    refreshActiveDrawing();
    refreshTitles();
    refreshCompletions();
}

bool OvMainWindow::openDrawing(const QString& path) {
    OvApDocManager* manager = ovDocManagerPtr();
    if (!manager)
        return false;
    if (OvApDocument* open = manager->documentForFile(path)) {
        manager->activateDocument(open);
        addRecent(QFileInfo(path).absoluteFilePath());
        return true;
    }
    std::unique_ptr<QProgressDialog> progress;
    if (QFileInfo(path).size() > kLargeFile) {
        progress = std::make_unique<QProgressDialog>(
            tr("Reading %1...").arg(QFileInfo(path).fileName()), QString(), 0, 0, this);
        progress->setWindowTitle(tr("Opening a drawing"));
        progress->setWindowModality(Qt::WindowModal);
        progress->setMinimumDuration(0);
        progress->show();
        // Let the dialog paint before the read holds the event loop.
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    }
    OvApDocument* document = nullptr;
    const Orvex::ErrorStatus status = manager->openDocument(path, &document);
    progress.reset();
    if (status != Orvex::eOk || !document) {
        complain(manager->lastErrorMessage().isEmpty() ? tr("Cannot open \"%1\".").arg(path)
                                                       : manager->lastErrorMessage());
        return false;
    }
    addRecent(QFileInfo(path).absoluteFilePath());
    if (document->isReadOnly())
        platform::messageBox(tr("%1 is in use by another session, so it is open read-only. "
                                "Save it under another name to keep your changes.")
                                 .arg(document->docTitle()),
                             QStringLiteral("Orvex"),
                             platform::MB_OK | platform::MB_ICONINFORMATION);
    afterChange();
    return true;
}

bool OvMainWindow::newDrawing(const QString& templatePath) {
    OvApDocManager* manager = ovDocManagerPtr();
    if (!manager)
        return false;
    if (manager->newDocument(templatePath) != Orvex::eOk) {
        complain(manager->lastErrorMessage());
        return false;
    }
    afterChange();
    return true;
}

bool OvMainWindow::saveDocument(OvApDocument* document) {
    OvApDocManager* manager = ovDocManagerPtr();
    if (!manager || !document)
        return false;
    if (document->fileName().isEmpty() || document->isReadOnly())
        return saveDocumentAs(document);
    if (manager->saveDocument(document) != Orvex::eOk) {
        complain(manager->lastErrorMessage());
        return false;
    }
    print(tr("Saved %1\n").arg(document->fileName()));
    refreshTitles();
    return true;
}

bool OvMainWindow::saveDocumentAs(OvApDocument* document, const QString& givenPath) {
    OvApDocManager* manager = ovDocManagerPtr();
    if (!manager || !document)
        return false;
    QString path = givenPath;
    if (path.isEmpty()) {
        const QString start =
            document->fileName().isEmpty() ? document->docTitle() : document->fileName();
        path = QFileDialog::getSaveFileName(this, tr("Save the drawing as"), start,
                                            tr("Drawings (*.dwg);;Templates (*.dwt)"), nullptr,
                                            QFileDialog::DontUseNativeDialog);
        if (path.isEmpty())
            return false;
        if (QFileInfo(path).suffix().isEmpty())
            path += QStringLiteral(".dwg");
    }
    if (manager->saveDocumentAs(document, path) != Orvex::eOk) {
        complain(manager->lastErrorMessage());
        return false;
    }
    print(tr("Saved %1\n").arg(document->fileName()));
    addRecent(document->fileName());
    refreshTitles();
    return true;
}

bool OvMainWindow::askToSave(OvApDocument* document) {
    if (!document->database() || !document->database()->isModified())
        return true;
    const int answer = platform::messageBox(tr("Save the changes to %1?").arg(document->docTitle()),
                                            QStringLiteral("Orvex"),
                                            platform::MB_YESNOCANCEL | platform::MB_ICONQUESTION);
    if (answer == platform::IDCANCEL)
        return false;
    if (answer == platform::IDYES)
        return saveDocument(document);
    return true;
}

bool OvMainWindow::closeDocument(OvApDocument* document) {
    OvApDocManager* manager = ovDocManagerPtr();
    if (!manager || !document)
        return false;
    if (m_busy) {
        print(tr("\nA command is running: finish it or press Esc first.\n"));
        return false;
    }
    if (!askToSave(document))
        return false;
    manager->closeDocument(document);
    afterChange();
    return true;
}

bool OvMainWindow::openProject(const QString& path) {
    QString error;
    if (!GetProjectManager()->openProject(path, &error)) {
        complain(error.isEmpty() ? tr("Cannot open the project \"%1\".").arg(path) : error);
        refreshTitles();
        return false;
    }
    print(tr("Project %1 is active.\n").arg(GetProjectManager()->activeProject()->name()));
    refreshTitles();
    return true;
}

void OvMainWindow::closeProject() {
    GetProjectManager()->closeProject();
    refreshTitles();
}

void OvMainWindow::chooseAndOpen() {
    const QStringList paths = QFileDialog::getOpenFileNames(
        this, tr("Open drawings"), {}, drawingFilter(), nullptr, QFileDialog::DontUseNativeDialog);
    for (const QString& path : paths)
        openDrawing(path);
}

void OvMainWindow::chooseAndOpenProject() {
    const QString path =
        QFileDialog::getOpenFileName(this, tr("Open a project"), {}, tr("Projects (*.zpj)"),
                                     nullptr, QFileDialog::DontUseNativeDialog);
    if (!path.isEmpty())
        openProject(path);
}

void OvMainWindow::complain(const QString& message) {
    m_commandLine->startLine();
    print(QStringLiteral("; error: %1\n").arg(message));
    platform::messageBox(message, QStringLiteral("Orvex"),
                         platform::MB_OK | platform::MB_ICONERROR);
}

// --- the command line ----------------------------------------------------------------------

void OvMainWindow::runInput(const QString& typed) {
    if (m_busy) {
        print(tr("\nBusy: finish what runs, or press Esc.\n"));
        return;
    }
    const QString text = typed.trimmed().isEmpty() ? m_lastCommand : typed.trimmed();
    if (text.isEmpty())
        return;
    m_commandLine->startLine();
    print(QStringLiteral("Command: %1\n").arg(text));
    if (text.startsWith(u'(') || text.startsWith(u'!')) {
        evaluate(text.startsWith(u'!') ? text.mid(1) : text);
        return;
    }
    m_lastCommand = text;
    runCommand(text);
}

void OvMainWindow::runCommand(const QString& name) {
    OvEdCommandStack* stack = commandStack();
    if (stack && stack->lookupCmd(name)) {
        if (OvApDocManager* manager = ovDocManagerPtr(); manager && manager->mdiActiveDocument())
            manager->setCurDocument(manager->mdiActiveDocument());
        ++m_busy;
        stack->runCommand(name);
        --m_busy;
        m_commandLine->startLine();
        afterChange();
        return;
    }
    const auto own = m_ownCommands.find(name.toUpper());
    if (own != m_ownCommands.end()) {
        own->second();
        return;
    }
    print(tr("Unknown command \"%1\". Tab completes a command name; LISP starts with \"(\".\n")
              .arg(name));
}

ovcore::lisp::EvalResult OvMainWindow::evaluate(const QString& text, bool echoValue) {
    if (m_busy) {
        ovcore::lisp::EvalResult busy;
        busy.error = tr("busy: finish what runs, or press Esc");
        return busy;
    }
    if (OvApDocManager* manager = ovDocManagerPtr(); manager && manager->mdiActiveDocument())
        manager->setCurDocument(manager->mdiActiveDocument());
    ++m_busy;
    const ovcore::lisp::EvalResult result = ovcore::lisp::evalString(text);
    --m_busy;
    if (echoValue && result.ok && !result.value.isEmpty()) {
        m_commandLine->startLine();
        print(result.value + u'\n');
    }
    afterChange();
    return result;
}

void OvMainWindow::runWireTypeLisp(const QString& expression) {
    if (m_busy)
        return;
    m_commandLine->startLine();
    evaluate(expression);
}

void OvMainWindow::cancelPick() {
    emit pickCancelled();
}

// --- help ----------------------------------------------------------------------------------

void OvMainWindow::showHelp(const QString& file, const QString& topic) {
    // The host's help window; it says itself when there is no page to show.
    ovuiShowHelp(file, topic);
}

// --- settings and closing --------------------------------------------------------------------

void OvMainWindow::addRecent(const QString& path) {
    m_recent.removeAll(path);
    m_recent.prepend(path);
    while (m_recent.size() > kMaxRecentFiles)
        m_recent.removeLast();
    rebuildRecentMenu();
    saveSettings();
}

void OvMainWindow::rebuildRecentMenu() {
    m_recentMenu->clear();
    for (int i = 0; i < m_recent.size(); ++i) {
        const QString path = m_recent.at(i);
        QAction* a = m_recentMenu->addAction(
            QStringLiteral("&%1 %2").arg(i + 1).arg(QFileInfo(path).fileName()));
        a->setToolTip(path);
        a->setData(path);
        connect(a, &QAction::triggered, this, [this, path] {
            if (!QFileInfo::exists(path)) {
                m_recent.removeAll(path);
                rebuildRecentMenu();
                saveSettings();
                complain(tr("\"%1\" is no longer there.").arg(path));
                return;
            }
            openDrawing(path);
        });
    }
    m_recentMenu->setEnabled(!m_recent.isEmpty());
}

void OvMainWindow::restoreSettings() {
    QSettings settings;
    settings.beginGroup(kSettingsGroup);
    m_recent = settings.value(QStringLiteral("recentFiles")).toStringList();
    if (!restoreGeometry(settings.value(QStringLiteral("geometry")).toByteArray()))
        resize(1280, 860);
    restoreState(settings.value(QStringLiteral("windowState")).toByteArray());
    rebuildRecentMenu();
}

void OvMainWindow::saveSettings() const {
    QSettings settings;
    settings.beginGroup(kSettingsGroup);
    settings.setValue(QStringLiteral("recentFiles"), m_recent);
    settings.setValue(QStringLiteral("geometry"), saveGeometry());
    settings.setValue(QStringLiteral("windowState"), saveState());
}

void OvMainWindow::closeEvent(QCloseEvent* event) {
    if (m_busy) {
        // A command waits in a nested loop below us: end its pick, keep the window.
        cancelPick();
        print(tr("\nA command is running: finish it, then quit.\n"));
        event->ignore();
        return;
    }
    OvApDocManager* manager = ovDocManagerPtr();
    if (manager) {
        for (OvApDocument* doc : manager->documents()) {
            if (!askToSave(doc)) {
                event->ignore();
                return;
            }
        }
    }
    saveSettings();
    m_closing = true;
    if (manager)
        manager->closeAllDocuments();
    event->accept();
}
