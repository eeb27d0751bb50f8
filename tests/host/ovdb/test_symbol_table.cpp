// Symbol tables and their records: the new drawing, names, iterators, layer properties,
// lineweights and usage data.

#include "ovdb/ovdb.h"

#include <gtest/gtest.h>

namespace {

using namespace Orvex;

class SymbolTables : public ::testing::Test {
protected:
    void TearDown() override {
        EXPECT_EQ(ovdbOpenObjectCount(), 0u)
            << ovdbOpenObjectDescriptions().join('\n').toStdString();
        EXPECT_EQ(ovdbTakeProtocolViolations(), QStringList());
    }

    OvDbObjectId addLayer(const QString& name, OvDbDatabase* database = nullptr) {
        OvDbLayerTable* table = nullptr;
        EXPECT_EQ((database ? database : &db)->getSymbolTable(table, OvDb::kForWrite), eOk);
        auto* layer = new OvDbLayerTableRecord();
        EXPECT_EQ(layer->setName(name), eOk);
        OvDbObjectId id;
        if (table->add(id, layer) == eOk)
            layer->close();
        else
            delete layer;
        table->close();
        return id;
    }

    QStringList layerNames(bool skipDeleted = true) {
        OvDbLayerTable* table = nullptr;
        EXPECT_EQ(db.getSymbolTable(table, OvDb::kForRead), eOk);
        OvDbLayerTableIterator* it = nullptr;
        table->newIterator(it, true, skipDeleted);
        table->close();
        QStringList names;
        for (; !it->done(); it->step(true, skipDeleted)) {
            OvDbLayerTableRecord* layer = nullptr;
            EXPECT_EQ(it->getRecord(layer, OvDb::kForRead, true), eOk);
            names << layer->name();
            layer->close();
        }
        delete it;
        return names;
    }

    void eraseObject(OvDbObjectId id, bool erasing = true) {
        OvDbObject* object = nullptr;
        ASSERT_EQ(ovdbOpenObject(object, id, OvDb::kForWrite, true), eOk);
        EXPECT_EQ(object->erase(erasing), eOk);
        object->close();
    }

    OvDbDatabase db;
};

TEST_F(SymbolTables, NewDrawingHasTheStandardRecords) {
    EXPECT_EQ(layerNames(), QStringList{QStringLiteral("0")});
    OvDbLayerTableRecord* zero = nullptr;
    ASSERT_EQ(ovdbOpenObject(zero, db.clayer(), OvDb::kForRead), eOk);
    EXPECT_EQ(zero->name(), QStringLiteral("0"));
    EXPECT_EQ(zero->color().colorIndex(), 7);
    EXPECT_EQ(zero->linetypeObjectId(), db.continuousLinetype());
    EXPECT_EQ(zero->lineWeight(), OvDb::kLnWtByLwDefault);
    zero->close();

    OvDbLinetypeTable* linetypes = nullptr;
    ASSERT_EQ(db.getSymbolTable(linetypes, OvDb::kForRead), eOk);
    for (const wchar_t* name : {L"ByBlock", L"ByLayer", L"Continuous", L"DASHED", L"HIDDEN",
                                L"CENTER", L"PHANTOM", L"DOT"})
        EXPECT_TRUE(linetypes->has(name)) << QString::fromWCharArray(name).toStdString();
    OvDbLinetypeTableRecord* dashed = nullptr;
    ASSERT_EQ(linetypes->getAt(L"dashed", dashed, OvDb::kForRead), eOk);
    linetypes->close();
    EXPECT_EQ(dashed->dashes(), (std::vector<double>{0.5, -0.25}));
    EXPECT_DOUBLE_EQ(dashed->patternLength(), 0.75);
    EXPECT_FALSE(dashed->comments().isEmpty());
    dashed->close();

    OvDbBlockTable* blocks = nullptr;
    ASSERT_EQ(db.getSymbolTable(blocks, OvDb::kForRead), eOk);
    OvDbObjectId model;
    EXPECT_EQ(blocks->getIdAt(L"*MODEL_SPACE", model), eOk);
    EXPECT_EQ(model, db.currentSpaceId());
    EXPECT_TRUE(blocks->has(L"*Paper_Space"));
    blocks->close();

    OvDbDatabase side(false, true);
    OvDbLayerTable* none = nullptr;
    EXPECT_EQ(side.getSymbolTable(none, OvDb::kForRead), eNullObjectId);
    EXPECT_TRUE(side.clayer().isNull());
}

TEST_F(SymbolTables, NamesAreCheckedAndCompareWithoutCase) {
    auto* layer = new OvDbLayerTableRecord();
    for (const QString& bad :
         {QString(), QStringLiteral("A<B"), QStringLiteral("A>B"), QStringLiteral("A/B"),
          QStringLiteral("A\\B"), QStringLiteral("A\"B"), QStringLiteral("A:B"),
          QStringLiteral("A;B"), QStringLiteral("A?B"), QStringLiteral("A*B"),
          QStringLiteral("A|B"), QStringLiteral("A,B"), QStringLiteral("A=B"),
          QStringLiteral("A`B"), QStringLiteral("A\tB"), QString(256, QLatin1Char('x'))})
        EXPECT_EQ(layer->setName(bad), eInvalidInput) << bad.toStdString();
    EXPECT_EQ(layer->setName(QString(255, QLatin1Char('x'))), eOk);
    EXPECT_EQ(layer->setName(QStringLiteral("Wire's red 1.5-mm")), eOk) << "an apostrophe is fine";
    delete layer;

    const OvDbObjectId red = addLayer(QStringLiteral("Wire_Red"));
    EXPECT_TRUE(addLayer(QStringLiteral("WIRE_RED")).isNull()) << "a duplicate under another case";
    OvDbLayerTable* table = nullptr;
    ASSERT_EQ(db.getSymbolTable(table, OvDb::kForWrite), eOk);
    OvDbObjectId id;
    ASSERT_EQ(table->getIdAt(L"wire_red", id), eOk);
    EXPECT_EQ(id, red);
    EXPECT_TRUE(table->has(red));
    EXPECT_FALSE(table->has(db.continuousLinetype()));
    auto* twin = new OvDbLayerTableRecord();
    twin->setName(L"wire_RED");
    EXPECT_EQ(table->add(twin), eDuplicateRecordName);
    twin->setName(L"Other");
    OvDbLinetypeTableRecord* notALayer = new OvDbLinetypeTableRecord();
    notALayer->setName(L"Other");
    EXPECT_EQ(table->add(notALayer), eWrongObjectType);
    delete notALayer;
    auto* nameless = new OvDbLayerTableRecord();
    EXPECT_EQ(table->add(nameless), eInvalidInput);
    delete nameless;
    ASSERT_EQ(table->add(twin), eOk);
    EXPECT_EQ(table->add(twin), eAlreadyInDb);
    twin->close();
    table->close();
}

TEST_F(SymbolTables, RenameMovesTheNameAndKeepsTheRecord) {
    const OvDbObjectId id = addLayer(QStringLiteral("OLD"));
    addLayer(QStringLiteral("TAKEN"));
    OvDbLayerTableRecord* layer = nullptr;
    ASSERT_EQ(ovdbOpenObject(layer, id, OvDb::kForWrite), eOk);
    EXPECT_EQ(layer->setName(L"taken"), eDuplicateRecordName);
    EXPECT_EQ(layer->setName(L"NEW"), eOk);
    const wchar_t* name = nullptr;
    ASSERT_EQ(layer->getName(name), eOk);
    EXPECT_EQ(QString::fromWCharArray(name), QStringLiteral("NEW"));
    EXPECT_EQ(layer->setName(L"new"), eOk) << "a change of case only";
    layer->close();

    OvDbLayerTable* table = nullptr;
    ASSERT_EQ(db.getSymbolTable(table, OvDb::kForRead), eOk);
    OvDbObjectId found;
    EXPECT_EQ(table->getIdAt(L"OLD", found), eKeyNotFound);
    EXPECT_EQ(table->getIdAt(L"NEW", found), eOk);
    EXPECT_EQ(found, id);
    table->close();
    EXPECT_EQ(addLayer(QStringLiteral("OLD")).isNull(), false) << "the old name is free again";

    ASSERT_EQ(ovdbOpenObject(layer, db.clayer(), OvDb::kForWrite), eOk);
    EXPECT_EQ(layer->setName(L"ZERO"), eInvalidInput) << "layer 0 keeps its name";
    layer->close();
}

TEST_F(SymbolTables, ErasedRecordsAreFoundOnlyOnRequest) {
    const OvDbObjectId first = addLayer(QStringLiteral("X"));
    eraseObject(first);
    OvDbLayerTable* table = nullptr;
    ASSERT_EQ(db.getSymbolTable(table, OvDb::kForRead), eOk);
    OvDbObjectId id;
    EXPECT_EQ(table->getIdAt(L"X", id), eKeyNotFound);
    EXPECT_FALSE(table->has(L"X"));
    EXPECT_EQ(table->getIdAt(L"x", id, true), eOk);
    EXPECT_EQ(id, first);
    table->close();
    EXPECT_EQ(layerNames(false), (QStringList{"0", "X"}));

    const OvDbObjectId second = addLayer(QStringLiteral("X"));
    ASSERT_FALSE(second.isNull()) << "an erased record's name is free";
    OvDbObject* object = nullptr;
    ASSERT_EQ(ovdbOpenObject(object, first, OvDb::kForWrite, true), eOk);
    EXPECT_EQ(object->erase(false), eDuplicateRecordName);
    object->close();
    eraseObject(second);
    eraseObject(first, false);
    ASSERT_EQ(db.getSymbolTable(table, OvDb::kForRead), eOk);
    EXPECT_EQ(table->getIdAt(L"X", id), eOk);
    EXPECT_EQ(id, first);
    table->close();
}

TEST_F(SymbolTables, IteratorWalksInOrderOfAdditionAfterTheTableIsClosed) {
    for (const char* name : {"C", "A", "B"})
        addLayer(QString::fromLatin1(name));
    eraseObject(addLayer(QStringLiteral("GONE")));
    EXPECT_EQ(layerNames(), (QStringList{"0", "C", "A", "B"}));
    EXPECT_EQ(layerNames(false), (QStringList{"0", "C", "A", "B", "GONE"}));

    OvDbLayerTable* table = nullptr;
    ASSERT_EQ(db.getSymbolTable(table, OvDb::kForRead), eOk);
    OvDbObjectId a;
    table->getIdAt(L"A", a);
    OvDbSymbolTableIterator* it = nullptr;
    table->newIterator(it);
    table->close();
    // Records added during a walk are reached by it.
    addLayer(QStringLiteral("LATE"));
    ASSERT_EQ(it->seek(a), eOk);
    EXPECT_EQ(it->recordId(), a);
    it->step();
    it->step();
    OvDbSymbolTableRecord* record = nullptr;
    ASSERT_EQ(it->getRecord(record, OvDb::kForRead), eOk);
    EXPECT_EQ(record->name(), QStringLiteral("LATE"));
    record->close();
    it->step(false);
    it->step(false);
    EXPECT_EQ(it->recordId(), a);
    EXPECT_EQ(it->seek(db.continuousLinetype()), eKeyNotFound);
    it->start(false);
    ASSERT_EQ(it->getRecord(record, OvDb::kForRead), eOk);
    EXPECT_EQ(record->name(), QStringLiteral("LATE"));
    record->close();
    it->step();
    EXPECT_TRUE(it->done());
    OvDbObjectId none;
    EXPECT_EQ(it->getRecordId(none), eIteratorDone);
    delete it;
}

TEST_F(SymbolTables, LayerPropertiesRefuseWhatALayerCannotHave) {
    OvDbDatabase other;
    const OvDbObjectId id = addLayer(QStringLiteral("L"));
    OvDbLayerTableRecord* layer = nullptr;
    ASSERT_EQ(ovdbOpenObject(layer, id, OvDb::kForWrite), eOk);
    EXPECT_EQ(layer->linetypeObjectId(), db.continuousLinetype()) << "a new layer is continuous";

    OvCmColor red;
    red.setColorIndex(1);
    ASSERT_EQ(layer->setColor(red), eOk);
    EXPECT_EQ(layer->color(), red);

    OvDbLinetypeTable* linetypes = nullptr;
    ASSERT_EQ(db.getSymbolTable(linetypes, OvDb::kForRead), eOk);
    OvDbObjectId hidden;
    linetypes->getIdAt(L"HIDDEN", hidden);
    linetypes->close();
    EXPECT_EQ(layer->setLinetypeObjectId(db.clayer()), eWrongObjectType);
    EXPECT_EQ(layer->setLinetypeObjectId(other.continuousLinetype()), eWrongDatabase);
    EXPECT_EQ(layer->setLinetypeObjectId(OvDbObjectId::kNull), eNullObjectId);
    ASSERT_EQ(layer->setLinetypeObjectId(hidden), eOk);
    EXPECT_EQ(layer->linetypeObjectId(), hidden);

    for (int weight : {-3, 0, 25, 211})
        EXPECT_EQ(layer->setLineWeight(static_cast<OvDb::LineWeight>(weight)), eOk) << weight;
    for (int weight : {-4, -2, -1, 1, 24, 212})
        EXPECT_EQ(layer->setLineWeight(static_cast<OvDb::LineWeight>(weight)), eInvalidInput)
            << weight;
    EXPECT_EQ(layer->lineWeight(), OvDb::kLnWt211);
    layer->close();

    for (int any : {-100, -3, -2, 7, 24, 26, 1000}) {
        const OvDb::LineWeight nearest = db.getNearestLineWeight(any);
        EXPECT_TRUE(OvDb::isLegalLineWeight(nearest)) << any;
        EXPECT_EQ(nearest, OvDb::nearestLineWeight(any));
    }
    EXPECT_EQ(db.getNearestLineWeight(25), OvDb::kLnWt025);

    OvDbLinetypeTableRecord* linetype = nullptr;
    ASSERT_EQ(ovdbOpenObject(linetype, hidden, OvDb::kForWrite), eOk);
    EXPECT_EQ(linetype->setDashes({1.0, std::numeric_limits<double>::infinity()}), eInvalidInput);
    EXPECT_EQ(linetype->numDashes(), 2);
    EXPECT_DOUBLE_EQ(linetype->dashLengthAt(1), -0.125);
    EXPECT_DOUBLE_EQ(linetype->dashLengthAt(5), 0.0);
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
    auto generate = [&] {
        OvDbLayerTable* table = nullptr;
        ASSERT_EQ(db.getSymbolTable(table, OvDb::kForRead), eOk);
        ASSERT_EQ(table->generateUsageData(), eOk);
        table->close();
    };

    OvDbBlockTableRecord* model = nullptr;
    ASSERT_EQ(ovdbOpenObject(model, db.modelSpaceId(), OvDb::kForWrite), eOk);
    auto* line = new OvDbLine();
    line->setLayer(lines);
    model->appendOvDbEntity(line);
    line->close();
    auto* doomed = new OvDbLine();
    doomed->setLayer(erased);
    model->appendOvDbEntity(doomed);
    doomed->erase();
    doomed->close();
    auto* reference = new OvDbBlockReference();
    OvDbObjectId referenceId;
    model->appendOvDbEntity(referenceId, reference);
    auto* attribute = new OvDbAttribute(OvGePoint3d(), QStringLiteral("v"), QStringLiteral("TAG"));
    attribute->setLayer(attrs);
    reference->appendAttribute(attribute);
    attribute->close();
    reference->close();
    model->close();

    OvDbBlockTable* blocks = nullptr;
    ASSERT_EQ(db.getSymbolTable(blocks, OvDb::kForWrite), eOk);
    auto* definition = new OvDbBlockTableRecord();
    definition->setName(L"SYMBOL");
    blocks->add(definition);
    blocks->close();
    auto* inside = new OvDbLine();
    inside->setLayer(inBlock);
    definition->appendOvDbEntity(inside);
    inside->close();
    definition->close();

    EXPECT_FALSE(isInUse(lines)) << "nothing is in use before usage data are made";
    ASSERT_EQ(db.setClayer(current), eOk);
    generate();
    EXPECT_TRUE(isInUse(lines));
    EXPECT_TRUE(isInUse(attrs));
    EXPECT_TRUE(isInUse(inBlock));
    EXPECT_TRUE(isInUse(current));
    EXPECT_FALSE(isInUse(erased));
    EXPECT_FALSE(isInUse(empty));

    // The marks stay as they were until the next call.
    OvDbObject* object = nullptr;
    ASSERT_EQ(ovdbOpenObject(object, referenceId, OvDb::kForWrite), eOk);
    object->erase();
    object->close();
    EXPECT_TRUE(isInUse(attrs));
    generate();
    EXPECT_FALSE(isInUse(attrs)) << "an erased reference takes its attributes along";
}

} // namespace
