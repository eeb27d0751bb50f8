#include "zelpm/ZelMDIGblManager.h"

#include "ovdb/ovut.h"
#include "zelpm/ZelPrmProjectManager.h"

#include <QDir>
#include <QHash>
#include <QStandardPaths>
#include <QString>

#include <string>

namespace {

const QString kUserFolder = QStringLiteral("GBL_WD_USR");
const QString kProjectFile = QStringLiteral("GBL_WD_PRJ");

struct Globals {
    QHash<QString, resbuf*> stored;
    // Values made at the call; each lasts until the next call for its name.
    QHash<QString, resbuf*> made;

    Globals() = default;
    Globals(const Globals&) = delete;
    Globals& operator=(const Globals&) = delete;
    ~Globals() {
        for (resbuf* chain : std::as_const(stored))
            ovutRelRb(chain);
        for (resbuf* chain : std::as_const(made))
            ovutRelRb(chain);
    }
};

Globals& globals() {
    static Globals instance;
    return instance;
}

QString keyOf(const wchar_t* name) {
    return name ? QString::fromWCharArray(name).trimmed().toUpper() : QString();
}

resbuf* stringChain(const QString& text) {
    const std::wstring wide = text.toStdWString();
    return ovutBuildList(RTSTR, wide.c_str(), 0);
}

resbuf* nilChain() {
    return ovutBuildList(RTNIL, 0);
}

const resbuf* handOut(const QString& key, resbuf* chain) {
    Globals& g = globals();
    ovutRelRb(g.made.take(key));
    if (chain)
        g.made.insert(key, chain);
    return chain;
}

const resbuf* userFolder() {
    Globals& g = globals();
    if (const resbuf* set = g.stored.value(kUserFolder, nullptr)) {
        if (set->restype == RTSTR && set->resval.rstring)
            QDir().mkpath(QString::fromWCharArray(set->resval.rstring));
        return set;
    }
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    const QString folder = base.isEmpty() ? QString() : base + QStringLiteral("/Zel/User/");
    if (folder.isEmpty() || !QDir().mkpath(folder)) {
        qWarning("Zel: the per-user folder \"%s\" cannot be made", qUtf8Printable(folder));
        return handOut(kUserFolder, nilChain());
    }
    return handOut(kUserFolder, stringChain(folder));
}

} // namespace

const resbuf* GblPm_GetGblValue(const wchar_t* name) {
    const QString key = keyOf(name);
    if (key.isEmpty())
        return nullptr;
    if (key == kUserFolder)
        return userFolder();
    if (key == kProjectFile) {
        const ZelPrmProjectManager* manager = GetProjectManager();
        const ZelPrmProject* project = manager ? manager->activeProject() : nullptr;
        return handOut(key, project ? stringChain(project->filePath()) : nilChain());
    }
    return globals().stored.value(key, nullptr);
}

bool GblPm_SetGblValue(const wchar_t* name, const resbuf* value) {
    const QString key = keyOf(name);
    if (key.isEmpty() || key == kProjectFile)
        return false;
    resbuf* copy = nullptr;
    if (value) {
        copy = ovutCopyChain(value);
        if (!copy)
            return false;
    }
    Globals& g = globals();
    ovutRelRb(g.stored.take(key));
    if (copy)
        g.stored.insert(key, copy);
    return true;
}
