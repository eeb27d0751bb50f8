// getvar and setvar: the system variables that scripts need.
#include "cadChain.h"
#include "cadDrawing.h"

#include "ovcore/OvApDocManager.h"
#include "ovdb/ovdb.h"

#include <QDir>
#include <QFileInfo>

namespace ovcore::cad {

namespace {

// The drawing's file as its document knows it; a drawing never saved has only a title.
void drawingFile(OvDbDatabase* db, QString& name, QString& folder) {
    const OvApDocManager* documents = ovDocManagerPtr();
    const OvApDocument* document = documents ? documents->document(db) : nullptr;
    const QString path = document ? document->fileName() : db->fileName();
    if (!path.isEmpty()) {
        const QFileInfo file(path);
        name = file.fileName();
        folder = file.absolutePath();
    } else {
        name = document ? document->docTitle() : QStringLiteral("Drawing1.dwg");
        folder = QDir::currentPath();
    }
    if (!folder.endsWith(QLatin1Char('/')))
        folder += QLatin1Char('/');
}

QString layerName(OvDbObjectId id) {
    Opened<OvDbLayerTableRecord> layer;
    return layer.open(id, OvDb::kForRead) == Orvex::eOk ? layer->name() : QString();
}

bool readOnly(const QString& name, QString* error) {
    *error = QStringLiteral("%1 is read-only").arg(name);
    return false;
}

} // namespace

Chain getVar(const QString& name, QString* error) {
    OvDbDatabase* db = workingDatabase(error);
    if (!db)
        return {};
    const QString upper = name.toUpper();
    ChainWriter out;
    if (upper == u"CLAYER") {
        out.text(RTSTR, layerName(db->clayer()));
    } else if (upper == u"DBMOD") {
        out.int16(RTSHORT, db->dbmod());
    } else if (upper == u"DWGNAME" || upper == u"DWGPREFIX") {
        QString file;
        QString folder;
        drawingFile(db, file, folder);
        out.text(RTSTR, upper == u"DWGNAME" ? file : folder);
    } else {
        *error = QStringLiteral("there is no system variable %1").arg(quotedText(name));
        return {};
    }
    Chain value = out.take();
    if (!value)
        *error = QStringLiteral("out of memory");
    return value;
}

bool setVar(const QString& name, const resbuf* value, QString* error) {
    OvDbDatabase* db = workingDatabase(error);
    if (!db)
        return false;
    const QString upper = name.toUpper();
    if (upper == u"CLAYER") {
        if (!value || value->restype != RTSTR) {
            *error = QStringLiteral("CLAYER takes a layer name");
            return false;
        }
        const QString layer = QString::fromWCharArray(value->resval.rstring);
        const OvDbObjectId id = findRecord(db, Table::Layer, layer);
        if (id.isNull()) {
            *error = QStringLiteral("there is no layer %1").arg(quotedText(layer));
            return false;
        }
        Opened<OvDbLayerTableRecord> record;
        if (record.open(id, OvDb::kForRead) == Orvex::eOk && record->isFrozen()) {
            *error =
                QStringLiteral("layer %1 is frozen and cannot be current").arg(quotedText(layer));
            return false;
        }
        record.reset();
        if (db->setClayer(id) != Orvex::eOk) {
            *error = QStringLiteral("layer %1 cannot be current").arg(quotedText(layer));
            return false;
        }
        return true;
    }
    if (upper == u"DBMOD") {
        // Only marking the drawing clean, so that a script can say its changes are saved
        // or do not count.
        const bool zero = value && ((value->restype == RTSHORT && value->resval.rint == 0) ||
                                    (value->restype == RTLONG && value->resval.rlong == 0));
        if (!zero) {
            *error = QStringLiteral("DBMOD can only be set to 0");
            return false;
        }
        ovdbSetDbmod(db, 0);
        return true;
    }
    if (upper == u"DWGNAME" || upper == u"DWGPREFIX")
        return readOnly(upper, error);
    *error = QStringLiteral("there is no system variable %1").arg(quotedText(name));
    return false;
}

} // namespace ovcore::cad
