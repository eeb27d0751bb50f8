#include "platform/ResourceMenu.h"

#include "platform/PrivateMessage.h"
#include "platform/Resources.h"

#include <QAction>
#include <QMenu>
#include <QPointer>
#include <QXmlStreamReader>

namespace platform {

namespace {

QAction* findCommand(QMenu* menu, int commandId) {
    if (menu == nullptr) {
        return nullptr;
    }
    for (QAction* action : menu->actions()) {
        if (action->menu() != nullptr) {
            if (QAction* found = findCommand(action->menu(), commandId)) {
                return found;
            }
        } else if (!action->isSeparator() && action->data().toInt() == commandId) {
            return action;
        }
    }
    return nullptr;
}

// Reads the children of the element the reader stands on into `menu`.
bool readItems(QXmlStreamReader& xml, QMenu* menu, QString& error) {
    while (xml.readNextStartElement()) {
        const auto name = xml.name();
        if (name == u"item") {
            bool ok = false;
            const int id = xml.attributes().value(QLatin1String("id")).toInt(&ok);
            const QString shortcut = xml.attributes().value(QLatin1String("shortcut")).toString();
            const QString text = xml.readElementText().trimmed();
            if (!ok || id <= 0) {
                error = QStringLiteral("line %1: a menu item needs a positive id")
                            .arg(xml.lineNumber());
                return false;
            }
            QAction* action = menu->addAction(shortcut.isEmpty() ? text : text + u'\t' + shortcut);
            action->setObjectName(QString::number(id));
            action->setData(id);
        } else if (name == u"separator") {
            menu->addSeparator();
            xml.skipCurrentElement();
        } else if (name == u"popup") {
            auto* popup = new QMenu(xml.attributes().value(QLatin1String("text")).toString(), menu);
            menu->addMenu(popup);
            if (!readItems(xml, popup, error)) {
                return false;
            }
        } else {
            error = QStringLiteral("line %1: unknown element <%2>")
                        .arg(xml.lineNumber())
                        .arg(name.toString());
            return false;
        }
    }
    return !xml.hasError();
}

} // namespace

ResourceMenu::ResourceMenu() = default;
ResourceMenu::~ResourceMenu() = default;

bool ResourceMenu::LoadMenu(unsigned id) {
    const QByteArray text = loadMenu(id);
    if (text.isEmpty()) {
        m_root.reset();
        const ResourceHandle* handle = currentResourceHandle();
        m_error = QStringLiteral("Menu %1 is not in the resource library %2.")
                      .arg(id)
                      .arg(handle->isHost() ? QStringLiteral("of the host") : handle->fileName());
        return false;
    }
    return LoadMenuText(text, id);
}

bool ResourceMenu::LoadMenuText(const QByteArray& text, unsigned id) {
    m_root.reset();
    m_error.clear();
    QXmlStreamReader xml(text);
    auto root = std::make_unique<QMenu>();
    QString error;
    if (!xml.readNextStartElement() || xml.name() != u"menu") {
        error = QStringLiteral("it does not start with <menu>");
    } else if (!readItems(xml, root.get(), error) && error.isEmpty()) {
        error = xml.errorString();
    }
    if (error.isEmpty() && xml.hasError()) {
        error = xml.errorString();
    }
    if (!error.isEmpty()) {
        m_error = QStringLiteral("Menu %1 cannot be read: %2").arg(id).arg(error);
        return false;
    }
    m_root = std::move(root);
    return true;
}

QMenu* ResourceMenu::GetSubMenu(int index) const {
    if (!m_root || index < 0) {
        return nullptr;
    }
    int found = 0;
    for (QAction* action : m_root->actions()) {
        if (action->menu() != nullptr && found++ == index) {
            return action->menu();
        }
    }
    return nullptr;
}

bool ResourceMenu::EnableMenuItem(QMenu* menu, int commandId, bool enable) {
    QAction* action = findCommand(menu, commandId);
    if (action == nullptr) {
        return false;
    }
    action->setEnabled(enable);
    return true;
}

bool ResourceMenu::IsMenuItemEnabled(QMenu* menu, int commandId) {
    QAction* action = findCommand(menu, commandId);
    return action != nullptr && action->isEnabled();
}

int ResourceMenu::TrackPopupMenu(QMenu* menu, QPoint screenPoint, QObject* owner) {
    if (menu == nullptr) {
        return 0;
    }
    QPointer<QObject> target(owner);
    QAction* chosen = menu->exec(screenPoint);
    if (chosen == nullptr || chosen->menu() != nullptr || !chosen->isEnabled()) {
        return 0;
    }
    const int id = chosen->data().toInt();
    if (id > 0 && target) {
        PostMessage(target, WM_COMMAND, quintptr(id), 0);
    }
    return id;
}

} // namespace platform
