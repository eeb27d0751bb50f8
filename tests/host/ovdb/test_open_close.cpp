// The open and close protocol, erase and unerase, and the modified status.

#include "ovdb/ovdb.h"

#include <gtest/gtest.h>

namespace {

using namespace Orvex;

class OpenClose : public ::testing::Test {
protected:
    void SetUp() override { ovdbTakeProtocolViolations(); }
    void TearDown() override {
        EXPECT_EQ(ovdbOpenObjectCount(), 0u)
            << ovdbOpenObjectDescriptions().join('\n').toStdString();
    }

    // A new layer, added and closed.
    OvDbObjectId addLayer(const wchar_t* name) {
        OvDbLayerTable* table = nullptr;
        EXPECT_EQ(db.getSymbolTable(table, OvDb::kForWrite), eOk);
        auto* layer = new OvDbLayerTableRecord();
        EXPECT_EQ(layer->setName(name), eOk);
        OvDbObjectId id;
        EXPECT_EQ(table->add(id, layer), eOk);
        layer->close();
        table->close();
        return id;
    }

    // An extension dictionary on `owner` with one xrecord under "DATA"; gives the xrecord.
    OvDbObjectId addXrecord(OvDbObjectId owner) {
        OvDbObject* object = nullptr;
        EXPECT_EQ(ovdbOpenObject(object, owner, OvDb::kForWrite), eOk);
        EXPECT_EQ(object->createExtensionDictionary(), eOk);
        OvDbDictionary* dict = nullptr;
        EXPECT_EQ(ovdbOpenObject(dict, object->extensionDictionary(), OvDb::kForWrite), eOk);
        OvDbObjectId id;
        auto* xrec = new OvDbXrecord();
        EXPECT_EQ(dict->setAt(L"DATA", xrec, id), eOk);
        xrec->close();
        dict->close();
        object->close();
        return id;
    }

    OvDbDatabase db;
};

TEST_F(OpenClose, ManyReadersOrOneWriter) {
    const OvDbObjectId id = addLayer(L"A");
    OvDbObject* r1 = nullptr;
    OvDbObject* r2 = nullptr;
    OvDbObject* w = nullptr;
    ASSERT_EQ(ovdbOpenObject(r1, id, OvDb::kForRead), eOk);
    ASSERT_EQ(ovdbOpenObject(r2, id, OvDb::kForRead), eOk);
    EXPECT_EQ(r1, r2);
    EXPECT_EQ(ovdbOpenObject(w, id, OvDb::kForWrite), eWasOpenForRead);
    EXPECT_EQ(w, nullptr);
    EXPECT_EQ(r1->upgradeOpen(), eWasOpenForRead) << "two readers hold it";
    r2->close();
    EXPECT_TRUE(r1->isReadEnabled());
    ASSERT_EQ(r1->upgradeOpen(), eOk);
    EXPECT_TRUE(r1->isWriteEnabled());
    r1->close();

    ASSERT_EQ(ovdbOpenObject(w, id, OvDb::kForWrite), eOk);
    EXPECT_EQ(ovdbOpenObject(r1, id, OvDb::kForRead), eWasOpenForWrite);
    EXPECT_EQ(ovdbOpenObject(r1, id, OvDb::kForWrite), eWasOpenForWrite);
    EXPECT_EQ(ovdbOpenObjectCount(), 1u);
    w->close();
    EXPECT_FALSE(w->isReadEnabled());
    EXPECT_EQ(ovdbProtocolViolationCount(), 0u);
}

TEST_F(OpenClose, OpenChecksIdAndClass) {
    OvDbObject* object = nullptr;
    EXPECT_EQ(ovdbOpenObject(object, OvDbObjectId::kNull, OvDb::kForRead), eNullObjectId);
    OvDbLinetypeTableRecord* linetype = nullptr;
    EXPECT_EQ(ovdbOpenObject(linetype, db.clayer(), OvDb::kForRead), eWrongObjectType);
    EXPECT_EQ(linetype, nullptr);
    EXPECT_EQ(ovdbOpenObject(object, db.clayer(), OvDbLinetypeTableRecord::desc(), OvDb::kForRead),
              eWrongObjectType);
    OvDbSymbolTableRecord* record = nullptr;
    ASSERT_EQ(ovdbOpenObject(record, db.clayer(), OvDb::kForRead), eOk);
    EXPECT_TRUE(record->isKindOf(OvDbLayerTableRecord::desc()));
    EXPECT_EQ(record->isA(), OvDbLayerTableRecord::desc());
    EXPECT_NE(OvDbLayerTableRecord::cast(record), nullptr);
    EXPECT_EQ(OvDbXrecord::cast(record), nullptr);
    record->close();
}

TEST_F(OpenClose, NewObjectIsItsMakersUntilAdded) {
    auto* layer = new OvDbLayerTableRecord();
    EXPECT_TRUE(layer->objectId().isNull());
    EXPECT_TRUE(layer->isWriteEnabled());
    EXPECT_EQ(layer->setName(L"NEVER_ADDED"), eOk);
    EXPECT_EQ(layer->erase(), eNotInDatabase);
    EXPECT_EQ(ovdbOpenObjectCount(), 0u) << "a new object is nobody's open object";
    delete layer;

    OvDbBlockTableRecord* model = nullptr;
    ASSERT_EQ(ovdbOpenObject(model, db.modelSpaceId(), OvDb::kForWrite), eOk);
    auto* line = new OvDbLine(OvGePoint3d(0, 0, 0), OvGePoint3d(1, 0, 0));
    ASSERT_EQ(model->appendOvDbEntity(line), eOk);
    EXPECT_FALSE(line->objectId().isNull());
    EXPECT_TRUE(line->isWriteEnabled()) << "an added object is open for write";
    EXPECT_EQ(ovdbOpenObjectCount(), 2u);
    EXPECT_EQ(model->appendOvDbEntity(line), eAlreadyInDb);
    line->close();
    model->close();
}

TEST_F(OpenClose, UseAfterCloseIsRecordedNotFatal) {
    const OvDbObjectId id = addLayer(L"B");
    OvDbLayerTableRecord* layer = nullptr;
    ASSERT_EQ(ovdbOpenObject(layer, id, OvDb::kForRead), eOk);
    EXPECT_EQ(layer->setIsOff(true), eNotOpenForWrite);
    layer->close();
    EXPECT_EQ(layer->close(), eNotOpen);
    (void)layer->color();
    EXPECT_EQ(ovdbProtocolViolationCount(), 3u);
    const QStringList seen = ovdbTakeProtocolViolations();
    EXPECT_TRUE(seen.join('\n').contains(QStringLiteral("\"B\""))) << seen.join('\n').toStdString();
    EXPECT_EQ(ovdbProtocolViolationCount(), 0u);
}

TEST_F(OpenClose, OpenObjectsAreListedWithHandleAndName) {
    const OvDbObjectId id = addLayer(L"WIRE_RED");
    OvDbObject* layer = nullptr;
    ASSERT_EQ(ovdbOpenObject(layer, id, OvDb::kForWrite), eOk);
    const QStringList open = ovdbOpenObjectDescriptions();
    ASSERT_EQ(open.size(), 1);
    EXPECT_TRUE(open[0].contains(id.handle().toString()));
    EXPECT_TRUE(open[0].contains(QStringLiteral("WIRE_RED")));
    EXPECT_TRUE(open[0].contains(QStringLiteral("write")));
    EXPECT_EQ(db.numOpenObjects(), 1u);
    layer->close();
}

TEST_F(OpenClose, DeletingAnObjectOfTheDatabaseLeavesADeadId) {
    const OvDbObjectId id = addLayer(L"C");
    OvDbObject* layer = nullptr;
    ASSERT_EQ(ovdbOpenObject(layer, id, OvDb::kForWrite), eOk);
    delete layer;
    EXPECT_EQ(ovdbProtocolViolationCount(), 1u);
    EXPECT_FALSE(id.isValid());
    EXPECT_EQ(ovdbOpenObject(layer, id, OvDb::kForRead), eInvalidObjectId);
    ovdbTakeProtocolViolations();
}

TEST_F(OpenClose, EraseAndReviveGoAlongOwnership) {
    const OvDbObjectId layerId = addLayer(L"WIRE");
    const OvDbObjectId xrecId = addXrecord(layerId);
    OvDbLayerTableRecord* layer = nullptr;
    ASSERT_EQ(ovdbOpenObject(layer, layerId, OvDb::kForRead), eOk);
    EXPECT_EQ(layer->erase(), eNotOpenForWrite);
    const OvDbObjectId dictId = layer->extensionDictionary();
    layer->close();
    ovdbTakeProtocolViolations();

    ASSERT_EQ(ovdbOpenObject(layer, layerId, OvDb::kForWrite), eOk);
    ASSERT_EQ(layer->erase(), eOk);
    EXPECT_EQ(layer->erase(), eWasErased);
    layer->close();
    EXPECT_TRUE(layerId.isErased());
    EXPECT_TRUE(dictId.isErased()) << "the extension dictionary goes with its object";
    EXPECT_TRUE(xrecId.isErased()) << "and so do its entries";
    EXPECT_EQ(ovdbOpenObject(layer, layerId, OvDb::kForRead), eWasErased);

    ASSERT_EQ(ovdbOpenObject(layer, layerId, OvDb::kForWrite, true), eOk);
    EXPECT_TRUE(layer->isErased());
    ASSERT_EQ(layer->erase(false), eOk);
    EXPECT_EQ(layer->erase(false), eWasNotErased);
    layer->close();
    EXPECT_FALSE(dictId.isErased());
    EXPECT_FALSE(xrecId.isErased());
}

TEST_F(OpenClose, ReviveBringsBackOnlyWhatWentAlong) {
    const OvDbObjectId layerId = addLayer(L"WIRE");
    const OvDbObjectId xrecId = addXrecord(layerId);
    OvDbObject* xrec = nullptr;
    ASSERT_EQ(ovdbOpenObject(xrec, xrecId, OvDb::kForWrite), eOk);
    ASSERT_EQ(xrec->erase(), eOk);
    xrec->close();

    OvDbObject* layer = nullptr;
    ASSERT_EQ(ovdbOpenObject(layer, layerId, OvDb::kForWrite), eOk);
    ASSERT_EQ(layer->erase(), eOk);
    ASSERT_EQ(layer->erase(false), eOk);
    EXPECT_FALSE(layer->extensionDictionary().isErased());
    layer->close();
    EXPECT_TRUE(xrecId.isErased()) << "erased on its own before, it stays erased";
}

TEST_F(OpenClose, ObjectsTheDrawingNeedsRefuseErase) {
    const OvDbObjectId current = addLayer(L"CURRENT");
    ASSERT_EQ(db.setClayer(current), eOk);
    OvDbLinetypeTable* linetypes = nullptr;
    ASSERT_EQ(db.getSymbolTable(linetypes, OvDb::kForRead), eOk);
    OvDbObjectId dashed;
    ASSERT_EQ(linetypes->getIdAt(L"DASHED", dashed), eOk);
    linetypes->close();
    OvDbLayerTable* layers = nullptr;
    ASSERT_EQ(db.getSymbolTable(layers, OvDb::kForRead), eOk);
    OvDbObjectId zero;
    ASSERT_EQ(layers->getIdAt(L"0", zero), eOk);
    layers->close();

    for (OvDbObjectId id :
         {zero, current, db.continuousLinetype(), db.byLayerLinetype(), db.modelSpaceId(),
          db.paperSpaceId(), db.layerTableId(), db.namedObjectsDictionaryId()}) {
        OvDbObject* object = nullptr;
        ASSERT_EQ(ovdbOpenObject(object, id, OvDb::kForWrite), eOk);
        EXPECT_EQ(object->erase(), eCannotBeErasedByCaller) << id.handle().toString().toStdString();
        object->close();
        EXPECT_FALSE(id.isErased());
    }
    OvDbObject* object = nullptr;
    ASSERT_EQ(ovdbOpenObject(object, dashed, OvDb::kForWrite), eOk);
    EXPECT_EQ(object->erase(), eOk) << "an ordinary linetype may go";
    object->close();
}

TEST_F(OpenClose, EveryWriteMarksTheDrawing) {
    EXPECT_FALSE(db.isModified()) << "a new drawing is unchanged";
    OvDbObject* object = nullptr;
    ASSERT_EQ(ovdbOpenObject(object, db.clayer(), OvDb::kForRead), eOk);
    object->close();
    EXPECT_FALSE(db.isModified()) << "reading is not writing";

    ASSERT_EQ(ovdbOpenObject(object, db.clayer(), OvDb::kForWrite), eOk);
    object->close();
    EXPECT_TRUE(db.isModified());
    EXPECT_EQ(ovdbSetDbmod(&db, 0), 1);
    EXPECT_EQ(ovdbSetDbmod(&db, 0), 0);

    const OvDbObjectId id = addLayer(L"D");
    EXPECT_TRUE(db.isModified());
    ovdbSetDbmod(&db, 0);
    ASSERT_EQ(db.setClayer(id), eOk);
    EXPECT_TRUE(db.isModified());

    // A saved flag put back keeps the drawing looking unchanged, whatever was written.
    const int kept = ovdbSetDbmod(&db, 0);
    addLayer(L"E");
    ovdbSetDbmod(&db, kept);
    EXPECT_EQ(db.dbmod(), kept);
    EXPECT_EQ(ovdbSetDbmod(nullptr, 1), 0);
}

TEST_F(OpenClose, ClayerTakesOnlyLiveLayersOfItsDrawing) {
    OvDbDatabase other;
    EXPECT_EQ(db.setClayer(OvDbObjectId::kNull), eInvalidInput);
    EXPECT_EQ(db.setClayer(db.continuousLinetype()), eInvalidInput);
    EXPECT_EQ(db.setClayer(other.clayer()), eInvalidInput);
    const OvDbObjectId id = addLayer(L"GONE");
    OvDbObject* layer = nullptr;
    ASSERT_EQ(ovdbOpenObject(layer, id, OvDb::kForWrite), eOk);
    ASSERT_EQ(layer->erase(), eOk);
    layer->close();
    EXPECT_EQ(db.setClayer(id), eInvalidInput);
}

TEST_F(OpenClose, DeletedDatabaseIsNoLongerWorking) {
    auto* services = OvDbHostApplicationServices::getRefPtr();
    EXPECT_EQ(services, OvDbHostApplicationServices::getRefPtr());
    auto* doomed = new OvDbDatabase();
    services->setWorkingDatabase(doomed);
    OvDbObject* layer = nullptr;
    ASSERT_EQ(ovdbOpenObject(layer, doomed->clayer(), OvDb::kForRead), eOk);
    delete doomed;
    EXPECT_EQ(services->workingDatabase(), nullptr);
    EXPECT_EQ(ovdbProtocolViolationCount(), 1u) << "an object left open is reported";
    EXPECT_EQ(ovdbOpenObjectCount(), 0u);
    ovdbTakeProtocolViolations();
}

} // namespace
