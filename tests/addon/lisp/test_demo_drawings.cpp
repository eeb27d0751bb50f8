// The demo project's drawings: what the wire type module finds in them, agreement with the
// demo database, and that the committed files are what the generator writes.
#include "ovdb/OvDbBlockTableRecord.h"
#include "ovdb/OvDbBlockTableRecordIterator.h"
#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbDictionary.h"
#include "ovdb/OvDbLayerTable.h"
#include "ovdb/OvDbLayerTableIterator.h"
#include "ovdb/OvDbLayerTableRecord.h"
#include "ovdb/OvDbLine.h"
#include "ovdb/OvDbXrecord.h"
#include "ovdb/ovdbOpenObject.h"
#include "ovdb/ovut.h"
#include "zeldefun/ZelQvxBlockRef.h"
#include "zeloledb/ZelOleDbCommand.h"
#include "zeloledb/ZelOleDbConnection.h"
#include "zeloledb/ZelOleDbHelper.h"

#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

namespace {

const QString kDrawings = QStringLiteral(ZEL_SOURCE_DIR "/samples/demo/drawings/");

// An xrecord's elements, one "code:value" each; empty when the dictionary has no such key.
QStringList xrecordAt(OvDbObjectId dictionaryId, const wchar_t* key) {
    OvDbDictionary* dictionary = nullptr;
    if (ovdbOpenObject(dictionary, dictionaryId, OvDb::kForRead) != Orvex::eOk)
        return {};
    OvDbObjectId id;
    const bool has = dictionary->getAt(key, id) == Orvex::eOk;
    dictionary->close();
    OvDbXrecord* record = nullptr;
    if (!has || ovdbOpenObject(record, id, OvDb::kForRead) != Orvex::eOk)
        return {};
    resbuf* chain = nullptr;
    record->rbChain(chain);
    record->close();
    QStringList values;
    for (const resbuf* link = chain; link; link = link->rbnext) {
        const OvRbValueKind kind = ovutValueKind(link->restype);
        values << QStringLiteral("%1:%2")
                      .arg(link->restype)
                      .arg(kind == OvRbValueKind::String
                               ? QString::fromWCharArray(link->resval.rstring)
                           : kind == OvRbValueKind::Int32 ? QString::number(link->resval.rlong)
                                                          : QString::number(link->resval.rint));
    }
    ovutRelRb(chain);
    return values;
}

struct Layer {
    int color = 0;
    int weight = 0;
    QString linetype;
    QStringList record; // the wire type record; empty for none
    int lines = 0;
};

// The layers of a drawing file in table order, with their wire type records and lines.
struct Drawing {
    explicit Drawing(const QString& file) : db(false, true) {
        ok = db.readDwgFile(file.toStdWString().c_str()) == Orvex::eOk;
        if (!ok)
            return;
        OvDbLayerTable* table = nullptr;
        OvDbLayerTableIterator* rawLayers = nullptr;
        db.getLayerTable(table, OvDb::kForRead);
        table->newIterator(rawLayers);
        table->close();
        QMap<OvDbObjectId, QString> names;
        for (std::unique_ptr<OvDbLayerTableIterator> it(rawLayers); !it->done(); it->step()) {
            OvDbLayerTableRecord* record = nullptr;
            it->getRecord(record, OvDb::kForRead);
            Layer& layer = layers[record->name()];
            layer.color = record->color().colorIndex();
            layer.weight = record->lineWeight();
            OvDbSymbolTableRecord* linetype = nullptr;
            if (ovdbOpenObject(linetype, record->linetypeObjectId(), OvDb::kForRead) ==
                Orvex::eOk) {
                layer.linetype = linetype->name();
                linetype->close();
            }
            layer.record = xrecordAt(record->extensionDictionary(), L"ZEL_WIRETYPE");
            names.insert(record->objectId(), record->name());
            order << record->name();
            record->close();
        }
        OvDbBlockTableRecord* space = nullptr;
        OvDbBlockTableRecordIterator* rawEntities = nullptr;
        ovdbOpenObject(space, db.modelSpaceId(), OvDb::kForRead);
        space->newIterator(rawEntities);
        space->close();
        for (std::unique_ptr<OvDbBlockTableRecordIterator> it(rawEntities); !it->done();
             it->step()) {
            OvDbLine* line = nullptr;
            if (ovdbOpenObject(line, it->entityId(), OvDb::kForRead) != Orvex::eOk)
                continue;
            ++layers[names.value(line->layerId())].lines;
            line->close();
        }
    }
    QStringList currentWireLayer() {
        OvDbDictionary* named = nullptr;
        OvDbObjectId id;
        db.getNamedObjectsDictionary(named, OvDb::kForRead);
        named->getAt(L"ZEL_WIRETYPE", id);
        named->close();
        return xrecordAt(id, L"CURRENT_WIRELAY");
    }

    OvDbDatabase db;
    bool ok = false;
    QMap<QString, Layer> layers;
    QStringList order;
};

QString wirelaysOf(const QString& file) {
    ZelQvxBlockRef wdm;
    QString value = QStringLiteral("(no WD_M)");
    if (wdm.open(file, 32, false) && wdm.find(QStringLiteral("WD_M"), 0, 0))
        wdm.getAttributeTextString(QStringLiteral("WIRELAYS"), value, true);
    return value;
}

bool listedIn(const QString& wirelays, const QString& layer) {
    for (const QString& pattern : wirelays.split(u',', Qt::SkipEmptyParts)) {
        if (ovutWcMatch(layer.toStdWString().c_str(), pattern.toStdWString().c_str()))
            return true;
    }
    return false;
}

TEST(DemoDrawings, DemoHasEachKindOfLayerWithLines) {
    Drawing demo(kDrawings + QStringLiteral("demo.dwg"));
    ASSERT_TRUE(demo.ok) << demo.db.lastErrorMessage().toStdString();
    const QString wirelays = wirelaysOf(kDrawings + QStringLiteral("demo.dwg"));
    EXPECT_EQ(wirelays, QStringLiteral("BK*,BU*,GNYE*,RD*"));
    EXPECT_EQ(demo.order, QStringList({"0", "TITLE", "DIM", "BK_1.5", "BU_0.75", "GNYE_2.5",
                                       "RD_1.5", "BK_2.5"}));
    for (const QString& name : demo.order) {
        const Layer& layer = demo.layers[name];
        const bool ordinary = name == u"0" || name == u"TITLE" || name == u"DIM";
        // BK_2.5 is a wire layer by WIRELAYS alone, without a record.
        EXPECT_EQ(!layer.record.isEmpty(), !ordinary && name != u"BK_2.5") << name.toStdString();
        EXPECT_EQ(listedIn(wirelays, name), !ordinary) << name.toStdString();
        EXPECT_GT(layer.lines, 0) << name.toStdString();
    }
    EXPECT_EQ(demo.currentWireLayer(), QStringList({"1:BK_1.5", "1:BU_0.75", "1:%C_%S", "290:0"}));
}

TEST(DemoDrawings, TemplateHasTheWdmBlockAndNoWireTypes) {
    Drawing templ(kDrawings + QStringLiteral("template.dwt"));
    ASSERT_TRUE(templ.ok) << templ.db.lastErrorMessage().toStdString();
    EXPECT_EQ(wirelaysOf(kDrawings + QStringLiteral("template.dwt")), QString());
    EXPECT_TRUE(templ.currentWireLayer().isEmpty());
    for (const Layer& layer : std::as_const(templ.layers))
        EXPECT_TRUE(layer.record.isEmpty());
}

// Every wire type record of the drawing has its row in the demo database with the same
// values, the layer's look included, and no row lacks its record.
void expectAgreesWithDatabase(const QString& file, int drawingIndex) {
    Drawing drawing(file);
    ASSERT_TRUE(drawing.ok) << drawing.db.lastErrorMessage().toStdString();
    QString connect;
    ZelOleDbHelper::FormatConnectString(connect, QStringLiteral(ZEL_DEMO_DIR "/demo.db"), nullptr,
                                        nullptr, L"Microsoft.ACE.OLEDB.12.0",
                                        L"Jet OLEDB:Engine Type=5", nullptr);
    ZelOleDbConnection connection;
    ASSERT_EQ(connection.OpenFromInitializationString(connect), 0)
        << connection.GetErrorInfo().toStdString();
    const auto query = [&connection](ZelOleDbCommand& command, const QString& sql) {
        command.SetCommandText(sql);
        command.SetConnection(&connection);
        ASSERT_EQ(command.Execute(), 0) << command.GetErrorInfo().toStdString();
    };

    ZelOleDbCommand rows;
    query(rows, QStringLiteral("SELECT LAYNAME, WIRECOLOR, WIRESIZE, GRIDROW, FLAG, LAYCOLOR, "
                               "LINETYPE, LINEWEIGHT FROM WIRETYPE WHERE DWGIX = %1")
                    .arg(drawingIndex));
    int count = 0;
    while (rows.FetchNext() == 1) {
        const QString name = rows.FieldAsString(1);
        QStringList expected{"1:" + rows.FieldAsString(2), "2:" + rows.FieldAsString(3), "3:WIRE"};
        QMap<long, QString> user;
        ZelOleDbCommand values;
        query(values, QStringLiteral("SELECT [USER], [VALUE] FROM WIRETYPE_USR WHERE DWGIX = %1 "
                                     "AND LAYNAME = '%2'")
                          .arg(drawingIndex)
                          .arg(name));
        while (values.FetchNext() == 1)
            user.insert(values.FieldAsLong(1), values.FieldAsString(2));
        for (long i = 1; i <= 20; ++i)
            expected << "4:" + user.value(i);
        expected << "90:" + rows.FieldAsString(4) << "290:" + rows.FieldAsString(5);

        const Layer& layer = drawing.layers[name];
        EXPECT_EQ(layer.record, expected) << name.toStdString();
        EXPECT_EQ(layer.color, rows.FieldAsLong(6)) << name.toStdString();
        EXPECT_EQ(layer.linetype.toUpper(), rows.FieldAsString(7)) << name.toStdString();
        EXPECT_EQ(layer.weight, rows.FieldAsLong(8)) << name.toStdString();
        ++count;
    }
    int records = 0;
    for (const Layer& layer : std::as_const(drawing.layers))
        records += layer.record.isEmpty() ? 0 : 1;
    EXPECT_EQ(records, count);

    ZelOleDbCommand wirelays;
    query(wirelays, QStringLiteral("SELECT ATTR_VAL FROM WD_M WHERE DWGIX = %1 AND "
                                   "ATTR_NAME = 'WIRELAYS'")
                        .arg(drawingIndex));
    ASSERT_EQ(wirelays.FetchNext(), 1);
    EXPECT_EQ(wirelays.FieldAsString(1), wirelaysOf(file));
}

TEST(DemoDrawings, AgreeWithTheDemoDatabase) {
    expectAgreesWithDatabase(kDrawings + QStringLiteral("demo.dwg"), 1);
    expectAgreesWithDatabase(kDrawings + QStringLiteral("import.dwg"), 2);
}

TEST(DemoDrawings, CommittedFilesAreWhatTheGeneratorWrites) {
    QTemporaryDir out;
    ASSERT_TRUE(out.isValid());
    const QString bin =
        QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/self/exe"))).absolutePath();
    QProcess generator;
    generator.start(bin + QStringLiteral("/zel-demo-drawings"), {out.path()});
    ASSERT_TRUE(generator.waitForFinished(60000));
    ASSERT_EQ(generator.exitCode(), 0) << generator.readAllStandardError().toStdString();
    for (const char* name : {"demo.dwg", "import.dwg", "template.dwt"}) {
        QFile made(out.filePath(name));
        QFile committed(kDrawings + name);
        ASSERT_TRUE(made.open(QIODevice::ReadOnly) && committed.open(QIODevice::ReadOnly));
        EXPECT_TRUE(made.readAll() == committed.readAll())
            << name << " differs: run zel-demo-drawings samples/demo/drawings";
    }
}

} // namespace
