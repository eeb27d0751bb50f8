#pragma once

#include "OvDocumentWatcher.h"

#include "ovcore/OvLisp.h"

#include <QHash>
#include <QMainWindow>
#include <QStringList>

#include <functional>
#include <map>

class OvApDocument;
class OvCommandLine;
class OvDrawingView;
class OvLayerPanel;
class OvLispConsole;
class QDockWidget;
class QLabel;
class QMenu;
class QTabWidget;

// The desktop program's window: the open drawings as tabs, the command line, the layer
// panel and the LISP console as docks, and the menus. It follows the document manager
// (documents may come and go through LISP and modules too) and re-reads the active drawing
// after everything that may have changed it: a command, an evaluation, a menu entry.
class OvMainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit OvMainWindow(QWidget* parent = nullptr);
    ~OvMainWindow() override;

    OvCommandLine* commandLine() const { return m_commandLine; }
    OvLayerPanel* layerPanel() const { return m_layerPanel; }
    OvLispConsole* lispConsole() const { return m_console; }
    QTabWidget* tabs() const { return m_tabs; }
    OvDrawingView* activeView() const;
    OvDrawingView* viewOf(const OvApDocument* document) const;

    // What the host prints at the command line.
    void print(const QString& text);

    // The File menu's work, also for the command line and tests. Each reports a failure
    // at the command line and in a message box.
    bool openDrawing(const QString& path);
    bool newDrawing(const QString& templatePath = {});
    bool saveDocument(OvApDocument* document);
    // With no path, asks for one.
    bool saveDocumentAs(OvApDocument* document, const QString& path = {});
    // Asks about unsaved changes first; false when the user keeps the drawing open.
    bool closeDocument(OvApDocument* document);
    bool openProject(const QString& path);
    void closeProject();

    // A line of the command line: a command name, or LISP when it starts with "(" or "!";
    // an empty line repeats the last command.
    void runInput(const QString& text);
    void runCommand(const QString& name);
    ovcore::lisp::EvalResult evaluate(const QString& text, bool echoValue = true);

    // Re-reads the active drawing into its view and the layer panel.
    void refreshActiveDrawing();
    void showHelp(const QString& file, const QString& topic);
    // Ends a pick that waits, as Esc does.
    void cancelPick();

    QStringList recentFiles() const { return m_recent; }
    static constexpr int kMaxRecentFiles = 8;

signals:
    void pickCancelled();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildMenus();
    void buildDocks();
    void documentCreated(OvApDocument* document);
    void documentToBeDestroyed(OvApDocument* document);
    void documentActivated(OvApDocument* document);
    void currentTabChanged(int index);
    void refreshTitles();
    void refreshCompletions();
    void afterChange();
    void addRecent(const QString& path);
    void rebuildRecentMenu();
    void restoreSettings();
    void saveSettings() const;
    bool askToSave(OvApDocument* document);
    void complain(const QString& message);
    void chooseAndOpen();
    void chooseAndOpenProject();
    void runWireTypeLisp(const QString& expression);
    bool isModuleLoaded() const;
    OvApDocument* activeDocument() const;

    OvDocumentWatcher m_watcher;
    OvCommandLine* m_commandLine;
    OvLayerPanel* m_layerPanel;
    OvLispConsole* m_console;
    QTabWidget* m_tabs;
    QDockWidget* m_commandDock = nullptr;
    QDockWidget* m_layerDock = nullptr;
    QDockWidget* m_consoleDock = nullptr;
    QMenu* m_recentMenu = nullptr;
    QMenu* m_wireTypeMenu = nullptr;
    QLabel* m_statusProject = nullptr;
    QHash<const OvApDocument*, OvDrawingView*> m_views;
    std::map<QString, std::function<void()>> m_ownCommands;
    QStringList m_recent;
    QString m_lastCommand;
    QString m_lastHelpFolder;
    int m_busy = 0;
    bool m_syncingTabs = false;
    bool m_closing = false;
};
