#pragma once

#include <QPoint>
#include <QString>

#include <memory>
#include <vector>

class QMenu;
class QObject;

namespace platform {

// A menu of the resource library: an XML description of our own (see
// resources/menus/README.md) turned into QMenus. Each command is a QAction whose
// object name is the command number in decimal and whose data() is that number.
class ResourceMenu {
public:
    ResourceMenu();
    ~ResourceMenu();
    ResourceMenu(const ResourceMenu&) = delete;
    ResourceMenu& operator=(const ResourceMenu&) = delete;

    // Loads menu `id` from the current resource handle. False when it is missing or
    // unreadable, with GetError() saying which and why.
    bool LoadMenu(unsigned id);
    // Loads from a description in hand (tests, and programs with their own menus).
    bool LoadMenuText(const QByteArray& text, unsigned id = 0);
    QString GetError() const { return m_error; }

    // The top level of the menu, and its popups by position.
    QMenu* GetMenu() const { return m_root.get(); }
    QMenu* GetSubMenu(int index) const;

    // Enables or greys one command (in any of the menu's popups); false when the
    // menu has no such command.
    static bool EnableMenuItem(QMenu* menu, int commandId, bool enable);
    static bool IsMenuItemEnabled(QMenu* menu, int commandId);

    // Shows `menu` at a screen point in a nested loop. The chosen command, if any,
    // is posted to `owner` as a WM_COMMAND and reaches it after the caller returns;
    // the result is that command, 0 when none was chosen.
    static int TrackPopupMenu(QMenu* menu, QPoint screenPoint, QObject* owner);

private:
    std::unique_ptr<QMenu> m_root;
    QString m_error;
};

} // namespace platform
