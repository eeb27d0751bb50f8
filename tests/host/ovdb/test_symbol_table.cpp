// Symbol tables and their records: names, look-ups, iterators, layer properties
// and usage data.

#include "OvdbTest.h"

#include <QTemporaryDir>

namespace {

using namespace Orvex;

class SymbolTables : public OvdbTest {
protected:
    // The layers in table order, as an iterator walks them.
    std::vector<std::pair<QString, OvDbObjectId>> walkLayers(bool skipErased = true) {
        OvDbLayerTable* table = nullptr;
        EXPECT_EQ(db.getSymbolTable(table, OvDb::kForRead), eOk);
        OvDbLayerTableIterator* it = nullptr;
        table->newIterator(it, true, skipErased);
        table->close();
        std::vector<std::pair<QString, OvDbObjectId>> layers;
        for (; !it->done(); it->step(true, skipErased)) {
            OvDbLayerTableRecord* layer = nullptr;
            EXPECT_EQ(it->getRecord(layer, OvDb::kForRead, true), eOk);
            layers.emplace_back(layer->name(), layer->objectId());
            layer->close();
        }
        delete it;
        return layers;
    }
    QStringList layerNames(bool skipErased = true) {
        QStringList names;
        for (const auto& [name, id] : walkLayers(skipErased))
            names << name;
        return names;
    }
    OvDbObjectId layerAt(const wchar_t* name, bool erased = false) {
        OvDbLayerTable* table = nullptr;
        EXPECT_EQ(db.getSymbolTable(table, OvDb::kForRead), eOk);
        OvDbObjectId id;
        table->getIdAt(name, id, erased);
        table->close();
        return id;
    }
};

TEST_F(SymbolTables, NamesAreCheckedCompareWithoutCaseAndAreFreedByErasing) {
    auto* layer = new OvDbLayerTableRecord();
    for (QChar c : QStringLiteral("<>/\\\":;?*|,=`\t"))
        EXPECT_EQ(layer->setName(QStringLiteral("A") + c + 'B'), eInvalidInput) << int(c.unicode());
    EXPECT_EQ(layer->setName(QString()), eInvalidInput);
    EXPECT_EQ(layer->setName(QString(256, 'x')), eInvalidInput);
    EXPECT_EQ(layer->setName(QString(255, 'x')), eOk);
    EXPECT_EQ(layer->setName(QStringLiteral("Wire's red 1.5-mm")), eOk) << "an apostrophe is fine";
    delete layer;

    const OvDbObjectId red = addLayer(QStringLiteral("Wire_Red"));
    OvDbLayerTable* table = nullptr;
    ASSERT_EQ(db.getSymbolTable(table, OvDb::kForWrite), eOk);
    EXPECT_TRUE(table->has(red));
    EXPECT_FALSE(table->has(db.continuousLinetype()));
    auto* twin = new OvDbLayerTableRecord();
    twin->setName(L"wire_RED");
    EXPECT_EQ(table->add(twin), eDuplicateRecordName);
    auto* notALayer = new OvDbLinetypeTableRecord();
    notALayer->setName(L"Other");
    EXPECT_EQ(table->add(notALayer), eWrongObjectType);
    delete notALayer;
    auto* nameless = new OvDbLayerTableRecord();
    EXPECT_EQ(table->add(nameless), eInvalidInput);
    delete nameless;
    twin->setName(L"Other");
    ASSERT_EQ(table->add(twin), eOk);
    EXPECT_EQ(table->add(twin), eAlreadyInDb);
    twin->close();
    table->close();

    // An erased record is found only on request, and comes back only while its name is free.
    const OvDbObjectId first = addLayer(QStringLiteral("X"));
    setErased(first);
    EXPECT_TRUE(layerAt(L"X").isNull());
    EXPECT_EQ(layerAt(L"x", true), first);

    const OvDbObjectId second = addLayer(QStringLiteral("X"));
    OvDbObject* object = nullptr;
    ASSERT_EQ(ovdbOpenObject(object, first, OvDb::kForWrite, true), eOk);
    EXPECT_EQ(object->erase(false), eDuplicateRecordName);
    object->close();
    setErased(second);
    setErased(first, false);
    EXPECT_EQ(layerAt(L"X"), first);
}

// The table answers a name from its index; a walk in table order that compares without
// regard to case and passes over erased records must give the same record, whatever
// happened to the names: non-ASCII letters (one outside the basic plane), renames (refused
// ones too), erased records and new ones of an erased name.
TEST_F(SymbolTables, LookUpGivesTheRecordAWalkInTableOrderFinds) {
    const QString deseret = QString::fromUcs4(U"\U00010400X");      // capital long I
    const QString deseretSmall = QString::fromUcs4(U"\U00010428x"); // its small form
    for (const QString& name : {QStringLiteral("WIRE_RED"), QStringLiteral("Ärger_1"),
                                QStringLiteral("ΣΊΣΥΦΟΣ"), deseret, QStringLiteral("OLD")})
        addLayer(name);
    auto rename = [&](const wchar_t* from, const wchar_t* to, ErrorStatus expected = eOk) {
        OvDbLayerTableRecord* layer = nullptr;
        ASSERT_EQ(ovdbOpenObject(layer, layerAt(from), OvDb::kForWrite), eOk);
        EXPECT_EQ(layer->setName(to), expected);
        layer->close();
    };
    rename(L"OLD", L"wire_RED", eDuplicateRecordName);
    rename(L"0", L"ZERO", eInvalidInput); // layer 0 keeps its name
    rename(L"OLD", L"New");
    rename(L"wire_red", L"Wire_Red"); // a change of case only
    setErased(layerAt(L"ärger_1"));
    const OvDbObjectId again = addLayer(QStringLiteral("ÄRGER_1"));

    auto walk = [&](const QString& name) {
        for (const auto& [layerName, id] : walkLayers()) {
            if (layerName.compare(name, Qt::CaseInsensitive) == 0)
                return id;
        }
        return OvDbObjectId();
    };
    for (const QString& name :
         {QStringLiteral("wire_red"), QStringLiteral("WIRE_RED"), QStringLiteral("ärger_1"),
          QStringLiteral("σίσυφοσ"), QStringLiteral("ΣΊΣΥΦΟΣ"), deseretSmall, deseret,
          QStringLiteral("old"), QStringLiteral("NEW"), QStringLiteral("0"),
          QStringLiteral("missing")}) {
        SCOPED_TRACE(name.toStdString());
        const OvDbObjectId walked = walk(name);
        EXPECT_EQ(layerAt(name.toStdWString().c_str()), walked);
        EXPECT_EQ(walked.isNull(), name == "old" || name == "missing");
    }
    EXPECT_EQ(walk("ärger_1"), again);
    EXPECT_FALSE(addLayer(QStringLiteral("OLD")).isNull()) << "a renamed record frees its name";
}

TEST_F(SymbolTables, IteratorWalksInOrderOfAdditionAfterTheTableIsClosed) {
    for (const char* name : {"C", "A", "B"})
        addLayer(QString::fromLatin1(name));
    setErased(addLayer(QStringLiteral("GONE")));
    EXPECT_EQ(layerNames(), (QStringList{"0", "C", "A", "B"}));
    EXPECT_EQ(layerNames(false), (QStringList{"0", "C", "A", "B", "GONE"}));

    const OvDbObjectId a = layerAt(L"A");
    OvDbLayerTable* table = nullptr;
    ASSERT_EQ(db.getSymbolTable(table, OvDb::kForRead), eOk);
    OvDbSymbolTableIterator* it = nullptr;
    table->newIterator(it);
    table->close();
    // Records added during a walk are reached by it.
    const OvDbObjectId late = addLayer(QStringLiteral("LATE"));
    ASSERT_EQ(it->seek(a), eOk);
    it->step();
    it->step();
    EXPECT_EQ(it->recordId(), late);
    it->step(false);
    it->step(false);
    EXPECT_EQ(it->recordId(), a);
    EXPECT_EQ(it->seek(db.continuousLinetype()), eKeyNotFound);
    it->start(false);
    EXPECT_EQ(it->recordId(), late) << "backwards from the end";
    it->step();
    EXPECT_TRUE(it->done());
    OvDbObjectId none;
    EXPECT_EQ(it->getRecordId(none), eIteratorDone);
    delete it;

    // A database made to read a drawing into has no tables to walk until it has read one.
    OvDbDatabase side(false, true);
    OvDbLayerTable* noTable = nullptr;
    EXPECT_EQ(side.getSymbolTable(noTable, OvDb::kForRead), eNullObjectId);
    EXPECT_TRUE(side.clayer().isNull());
}

TEST_F(SymbolTables, LayerPropertiesRefuseWhatALayerCannotHave) {
    OvDbDatabase other;
    OvDbLinetypeTable* linetypes = nullptr;
    ASSERT_EQ(db.getSymbolTable(linetypes, OvDb::kForRead), eOk);
    OvDbObjectId hidden;
    linetypes->getIdAt(L"HIDDEN", hidden);
    linetypes->close();

    const OvDbObjectId id = addLayer(QStringLiteral("L"));
    OvDbLayerTableRecord* layer = nullptr;
    ASSERT_EQ(ovdbOpenObject(layer, id, OvDb::kForWrite), eOk);
    EXPECT_EQ(layer->linetypeObjectId(), db.continuousLinetype()) << "a new layer is continuous";
    EXPECT_EQ(layer->setLinetypeObjectId(db.clayer()), eWrongObjectType);
    EXPECT_EQ(layer->setLinetypeObjectId(other.continuousLinetype()), eWrongDatabase);
    EXPECT_EQ(layer->setLinetypeObjectId(OvDbObjectId::kNull), eNullObjectId);
    ASSERT_EQ(layer->setLinetypeObjectId(hidden), eOk);
    for (int weight : {-3, 0, 25, 211})
        EXPECT_EQ(layer->setLineWeight(static_cast<OvDb::LineWeight>(weight)), eOk) << weight;
    for (int weight : {-4, -2, -1, 1, 24, 212})
        EXPECT_EQ(layer->setLineWeight(static_cast<OvDb::LineWeight>(weight)), eInvalidInput)
            << weight;
    EXPECT_EQ(layer->lineWeight(), OvDb::kLnWt211);
    layer->close();

    OvDbLinetypeTableRecord* linetype = nullptr;
    ASSERT_EQ(ovdbOpenObject(linetype, hidden, OvDb::kForWrite), eOk);
    EXPECT_DOUBLE_EQ(linetype->patternLength(), 0.375) << "dashes and gaps alike";
    EXPECT_EQ(linetype->setDashes({1.0, std::numeric_limits<double>::infinity()}), eInvalidInput);
    EXPECT_EQ(linetype->numDashes(), 2) << "a refused pattern leaves the old one";
    ASSERT_EQ(linetype->erase(), eOk);
    linetype->close();
    ASSERT_EQ(ovdbOpenObject(layer, id, OvDb::kForWrite), eOk);
    EXPECT_EQ(layer->setLinetypeObjectId(hidden), eWasErased);
    layer->close();
}

TEST_F(SymbolTables, UsageDataMarksLayersThatLiveEntitiesUse) {
    const OvDbObjectId lines = addLayer(QStringLiteral("LINES"));
    const OvDbObjectId attrs = addLayer(QStringLiteral("ATTRS"));
    const OvDbObjectId erased = addLayer(QStringLiteral("ERASED_ONLY"));
    const OvDbObjectId inBlock = addLayer(QStringLiteral("IN_BLOCK"));
    const OvDbObjectId empty = addLayer(QStringLiteral("EMPTY"));
    const OvDbObjectId current = addLayer(QStringLiteral("CURRENT"));

    auto isInUse = [&](OvDbObjectId id) {
        OvDbLayerTableRecord* layer = nullptr;
        EXPECT_EQ(ovdbOpenObject(layer, id, OvDb::kForRead), eOk);
        const bool used = layer->isInUse();
        layer->close();
        return used;
    };
    auto generate = [&](OvDbDatabase& database) {
        OvDbLayerTable* table = nullptr;
        ASSERT_EQ(database.getSymbolTable(table, OvDb::kForRead), eOk);
        ASSERT_EQ(table->generateUsageData(), eOk);
        table->close();
    };

    const OvDbObjectId line = ovdbtest::append(db, new OvDbLine(), lines);
    setErased(ovdbtest::append(db, new OvDbLine(), erased));
    const OvDbObjectId referenceId = ovdbtest::append(db, new OvDbBlockReference(), db.clayer());
    OvDbBlockReference* reference = nullptr;
    ASSERT_EQ(ovdbOpenObject(reference, referenceId, OvDb::kForWrite), eOk);
    auto* attribute = new OvDbAttribute(OvGePoint3d(), QStringLiteral("v"), QStringLiteral("TAG"));
    attribute->setLayer(attrs);
    reference->appendAttribute(attribute);
    attribute->close();
    reference->close();

    const OvDbObjectId symbol = ovdbtest::addBlock(db, "SYMBOL");
    ovdbtest::addLine(db, OvGePoint3d(), OvGePoint3d(), inBlock, symbol);

    ASSERT_EQ(db.setClayer(current), eOk);
    generate(db);
    EXPECT_TRUE(isInUse(lines));
    EXPECT_TRUE(isInUse(attrs));
    EXPECT_TRUE(isInUse(inBlock));
    EXPECT_TRUE(isInUse(current));
    EXPECT_FALSE(isInUse(erased));
    EXPECT_FALSE(isInUse(empty));

    // The marks stay as they were until the next call.
    setErased(referenceId);
    EXPECT_TRUE(isInUse(attrs));
    generate(db);
    EXPECT_FALSE(isInUse(attrs)) << "an erased reference takes its attributes along";

    // Revived, moved to another layer, erased with its block: what the marks follow is
    // kept as it changes, not walked again.
    setErased(referenceId, false);
    OvDbEntity* moved = nullptr;
    ASSERT_EQ(ovdbOpenObject(moved, line, OvDb::kForWrite), eOk);
    ASSERT_EQ(moved->setLayer(empty), eOk);
    moved->close();
    setErased(symbol);
    generate(db);
    EXPECT_TRUE(isInUse(attrs));
    EXPECT_TRUE(isInUse(empty));
    EXPECT_FALSE(isInUse(lines));
    EXPECT_FALSE(isInUse(inBlock)) << "a block's entities go with it";
    setErased(symbol, false);
    generate(db);
    EXPECT_TRUE(isInUse(inBlock));

    // A drawing read from a file knows the same.
    QTemporaryDir dir;
    const std::wstring file = dir.filePath(QStringLiteral("usage.dwg")).toStdWString();
    ASSERT_EQ(db.saveAs(file.c_str()), eOk);
    OvDbDatabase side(false, true);
    ASSERT_EQ(side.readDwgFile(file.c_str()), eOk);
    generate(side);
    for (OvDbObjectId id : {lines, attrs, erased, inBlock, empty, current}) {
        OvDbObjectId same;
        ASSERT_EQ(side.getOvDbObjectId(same, false, id.handle()), eOk);
        EXPECT_EQ(isInUse(same), isInUse(id)) << id.handle().toString().toStdString();
    }
}

} // namespace
