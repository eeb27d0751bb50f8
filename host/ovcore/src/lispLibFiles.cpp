// Files and settings: findfile, open and its kin, getcfg and setcfg on the settings store,
// and ver.
//
// The settings store is the per-user configuration file under the host's product root
// ("Orvex/R26" gives ~/.config/Orvex/R26.ini). Scripts keep their values under "AppData/";
// the host's own "Support/Folders" lists the folders findfile looks in after the current
// folder and the drawing's.
#include "lispLib.h"

#include "cadDrawing.h"
#include "cadLispArgs.h"
#include "lispGuile.h"

#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbHostApplicationServices.h"
#include "ovdb/ovut.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSettings>

#include <memory>

namespace ovcore::lisp::detail {

namespace {

std::unique_ptr<QSettings> settingsStore() {
    const QString root = OvDbHostApplicationServices::getRefPtr()->getRegistryProductRootKey();
    const QString organization = root.section(u'/', 0, 0);
    const QString product = root.section(u'/', 1);
    return std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope, organization,
                                       product.isEmpty() ? organization : product);
}

// The folders findfile searches, in order.
QStringList searchFolders() {
    QStringList folders{QDir::currentPath()};
    if (OvDbDatabase* db = cad::workingDatabase(nullptr)) {
        const QString file = db->fileName();
        if (!file.isEmpty())
            folders << QFileInfo(file).absolutePath();
    }
    const QVariant support = settingsStore()->value(QStringLiteral("Support/Folders"));
    const QStringList listed = support.typeId() == QMetaType::QStringList
                                   ? support.toStringList()
                                   : support.toString().split(u';', Qt::SkipEmptyParts);
    for (const QString& folder : listed) {
        if (!folder.trimmed().isEmpty())
            folders << QDir(folder.trimmed()).absolutePath();
    }
    return folders;
}

SCM findfile(SCM name) {
    return run("findfile", [&]() -> SCM {
        const QString text = fromScheme(name);
        if (text.isEmpty())
            return SCM_EOL;
        const QFileInfo given(text);
        if (given.isAbsolute())
            return given.exists() ? toScheme(QDir::cleanPath(given.absoluteFilePath())) : SCM_EOL;
        for (const QString& folder : searchFolders()) {
            const QFileInfo candidate(QDir(folder), text);
            if (candidate.exists())
                return toScheme(QDir::cleanPath(candidate.absoluteFilePath()));
        }
        return SCM_EOL;
    });
}

// Names are "AppData/..." (checked by the Scheme side); the store keeps them as they are.
SCM getcfg(SCM name) {
    return run("getcfg", [&]() -> SCM {
        const QVariant value = settingsStore()->value(fromScheme(name));
        return value.isValid() ? toScheme(value.toString()) : SCM_EOL;
    });
}

SCM setcfg(SCM name, SCM value) {
    return run("setcfg", [&]() -> SCM {
        auto store = settingsStore();
        store->setValue(fromScheme(name), fromScheme(value));
        store->sync();
        if (store->status() != QSettings::NoError)
            return failed(
                "setcfg",
                QStringLiteral("the settings file %1 cannot be written").arg(store->fileName()));
        return value;
    });
}

// (vl-directory-files folder [pattern [what]]): the names in a folder that match a wildcard
// pattern, without regard to case; `what` 1 lists only folders, -1 only files, else both.
// nil for a folder that is not there.
SCM directoryFiles(SCM folder, SCM pattern, SCM what) {
    return run("vl-directory-files", [&]() -> SCM {
        const QDir dir(scm_is_string(folder) ? fromScheme(folder) : QDir::currentPath());
        if (!dir.exists())
            return SCM_EOL;
        const std::wstring wanted =
            (scm_is_string(pattern) ? fromScheme(pattern) : QStringLiteral("*"))
                .toUpper()
                .toStdWString();
        const int kind = scm_is_integer(what) ? scm_to_int(what) : 0;
        QDir::Filters filters = QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
        if (kind == 1)
            filters |= QDir::Dirs;
        else if (kind == -1)
            filters |= QDir::Files;
        else
            filters |= QDir::Dirs | QDir::Files;
        SCM names = SCM_EOL;
        const QStringList entries = dir.entryList(filters, QDir::Name);
        for (auto it = entries.rbegin(); it != entries.rend(); ++it) {
            const std::wstring name = it->toUpper().toStdWString();
            if (ovutWcMatch(name.c_str(), wanted.c_str()) == RTNORM)
                names = scm_cons(toScheme(*it), names);
        }
        return names;
    });
}

SCM ver() {
    QString version = QCoreApplication::applicationVersion();
    if (version.isEmpty())
        version = QStringLiteral("26.0");
    return toScheme(QStringLiteral("Orvex LISP %1 (en)").arg(version));
}

} // namespace

void defineLibraryFilePrimitives() {
    scm_c_define_gsubr("%findfile", 1, 0, 0, reinterpret_cast<scm_t_subr>(findfile));
    scm_c_define_gsubr("%getcfg", 1, 0, 0, reinterpret_cast<scm_t_subr>(getcfg));
    scm_c_define_gsubr("%setcfg", 2, 0, 0, reinterpret_cast<scm_t_subr>(setcfg));
    scm_c_define_gsubr("ver", 0, 0, 0, reinterpret_cast<scm_t_subr>(ver));
    scm_c_define_gsubr("%directory-files", 3, 0, 0, reinterpret_cast<scm_t_subr>(directoryFiles));
}

} // namespace ovcore::lisp::detail
