// The open and close protocol, erase and unerase, and the modified status.

#include "OvdbTest.h"

namespace {

using namespace Orvex;

using OpenClose = OvdbTest;

TEST_F(OpenClose, ManyReadersOrOneWriter) {
    const OvDbObjectId id = addLayer(QStringLiteral("A"));
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
    ASSERT_EQ(r1->upgradeOpen(), eOk);
    r1->close();

    ASSERT_EQ(ovdbOpenObject(w, id, OvDb::kForWrite), eOk);
    EXPECT_EQ(ovdbOpenObject(r1, id, OvDb::kForRead), eWasOpenForWrite);
    EXPECT_EQ(ovdbOpenObject(r1, id, OvDb::kForWrite), eWasOpenForWrite);
    // Open objects are listed with handle, name and mode, for the reports of the host.
    const QStringList open = ovdbOpenObjectDescriptions();
    ASSERT_EQ(open.size(), 1);
    EXPECT_TRUE(open[0].contains(id.handle().toString()) && open[0].contains("\"A\"") &&
                open[0].contains("write"))
        << open[0].toStdString();
    EXPECT_EQ(db.numOpenObjects(), 1u);
    w->close();
    EXPECT_FALSE(w->isReadEnabled());
}

TEST_F(OpenClose, NewObjectIsItsMakersUntilAdded) {
    auto* layer = new OvDbLayerTableRecord();
    EXPECT_EQ(layer->erase(), eNotInDatabase);
    EXPECT_EQ(ovdbOpenObjectCount(), 0u) << "a new object is nobody's open object";
    delete layer;

    OvDbBlockTableRecord* model = nullptr;
    ASSERT_EQ(ovdbOpenObject(model, db.modelSpaceId(), OvDb::kForWrite), eOk);
    auto* line = new OvDbLine(OvGePoint3d(0, 0, 0), OvGePoint3d(1, 0, 0));
    ASSERT_EQ(model->appendOvDbEntity(line), eOk);
    EXPECT_EQ(ovdbOpenObjectCount(), 2u) << "an added object is open for write";
    EXPECT_EQ(model->appendOvDbEntity(line), eAlreadyInDb);
    line->close();
    model->close();
}

TEST_F(OpenClose, MisuseIsRecordedNotFatalAndBadOpensAreRefused) {
    const OvDbObjectId id = addLayer(QStringLiteral("B"));
    OvDbLayerTableRecord* layer = nullptr;
    ASSERT_EQ(ovdbOpenObject(layer, id, OvDb::kForRead), eOk);
    EXPECT_EQ(layer->setIsOff(true), eNotOpenForWrite);
    layer->close();
    EXPECT_EQ(layer->close(), eNotOpen);
    (void)layer->color();
    EXPECT_EQ(ovdbProtocolViolationCount(), 3u);
    EXPECT_TRUE(ovdbTakeProtocolViolations().join('\n').contains(QStringLiteral("\"B\"")));

    // Deleting an object of the database leaves a dead id.
    ASSERT_EQ(ovdbOpenObject(layer, id, OvDb::kForWrite), eOk);
    delete layer;
    EXPECT_EQ(ovdbTakeProtocolViolations().size(), 1);
    EXPECT_FALSE(id.isValid());
    EXPECT_EQ(ovdbOpenObject(layer, id, OvDb::kForRead), eInvalidObjectId);

    OvDbLinetypeTableRecord* linetype = nullptr;
    EXPECT_EQ(ovdbOpenObject(linetype, OvDbObjectId::kNull, OvDb::kForRead), eNullObjectId);
    EXPECT_EQ(ovdbOpenObject(linetype, db.clayer(), OvDb::kForRead), eWrongObjectType);
    EXPECT_EQ(linetype, nullptr);
}

TEST_F(OpenClose, EraseAndReviveGoAlongOwnership) {
    const OvDbObjectId layerId = addLayer(QStringLiteral("WIRE"));
    OvDbLayerTableRecord* layer = nullptr;
    ASSERT_EQ(ovdbOpenObject(layer, layerId, OvDb::kForRead), eOk);
    EXPECT_EQ(layer->erase(), eNotOpenForWrite);
    EXPECT_EQ(layer->createExtensionDictionary(), eNotOpenForWrite);
    ovdbTakeProtocolViolations();
    ASSERT_EQ(layer->upgradeOpen(), eOk);
    ASSERT_EQ(layer->createExtensionDictionary(), eOk);
    EXPECT_EQ(layer->createExtensionDictionary(), eAlreadyInDb);
    const OvDbObjectId dictId = layer->extensionDictionary();
    layer->close();
    const OvDbObjectId xrecId = putXrecord(dictId, L"DATA", nullptr);
    OvDbObject* dict = nullptr;
    ASSERT_EQ(ovdbOpenObject(dict, dictId, OvDb::kForRead), eOk);
    EXPECT_EQ(dict->ownerId(), layerId);
    dict->close();

    ASSERT_EQ(ovdbOpenObject(layer, layerId, OvDb::kForWrite), eOk);
    ASSERT_EQ(layer->erase(), eOk);
    EXPECT_EQ(layer->erase(), eWasErased);
    layer->close();
    EXPECT_TRUE(dictId.isErased()) << "the extension dictionary goes with its object";
    EXPECT_TRUE(xrecId.isErased()) << "and so do its entries";
    EXPECT_EQ(ovdbOpenObject(layer, layerId, OvDb::kForRead), eWasErased);

    ASSERT_EQ(ovdbOpenObject(layer, layerId, OvDb::kForWrite, true), eOk);
    ASSERT_EQ(layer->erase(false), eOk);
    EXPECT_EQ(layer->erase(false), eWasNotErased);
    layer->close();
    EXPECT_FALSE(dictId.isErased());
    EXPECT_FALSE(xrecId.isErased());

    // Erased on its own before, an entry stays erased when its owner comes back.
    setErased(xrecId);
    setErased(layerId);
    setErased(layerId, false);
    EXPECT_FALSE(dictId.isErased());
    EXPECT_TRUE(xrecId.isErased());
}

TEST_F(OpenClose, ObjectsTheDrawingNeedsRefuseErase) {
    const OvDbObjectId current = addLayer(QStringLiteral("CURRENT"));
    const OvDbObjectId zero = db.clayer();
    ASSERT_EQ(db.setClayer(current), eOk);
    for (OvDbObjectId id :
         {zero, current, db.continuousLinetype(), db.byLayerLinetype(), db.modelSpaceId(),
          db.paperSpaceId(), db.layerTableId(), db.namedObjectsDictionaryId()}) {
        OvDbObject* object = nullptr;
        ASSERT_EQ(ovdbOpenObject(object, id, OvDb::kForWrite), eOk);
        EXPECT_EQ(object->erase(), eCannotBeErasedByCaller) << id.handle().toString().toStdString();
        object->close();
    }
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

    const OvDbObjectId id = addLayer(QStringLiteral("D"));
    ovdbSetDbmod(&db, 0);
    ASSERT_EQ(db.setClayer(id), eOk);
    EXPECT_TRUE(db.isModified());

    // A saved flag put back keeps the drawing looking unchanged, whatever was written.
    const int kept = ovdbSetDbmod(&db, 0);
    addLayer(QStringLiteral("E"));
    ovdbSetDbmod(&db, kept);
    EXPECT_EQ(db.dbmod(), kept);
    EXPECT_EQ(ovdbSetDbmod(nullptr, 1), 0);
}

TEST_F(OpenClose, ClayerTakesOnlyLiveLayersOfItsDrawing) {
    OvDbDatabase other;
    EXPECT_EQ(db.setClayer(OvDbObjectId::kNull), eInvalidInput);
    EXPECT_EQ(db.setClayer(db.continuousLinetype()), eInvalidInput);
    EXPECT_EQ(db.setClayer(other.clayer()), eInvalidInput);
    const OvDbObjectId id = addLayer(QStringLiteral("GONE"));
    setErased(id);
    EXPECT_EQ(db.setClayer(id), eInvalidInput);
}

TEST_F(OpenClose, DeletedDatabaseIsNoLongerWorking) {
    auto* services = OvDbHostApplicationServices::getRefPtr();
    auto* doomed = new OvDbDatabase();
    services->setWorkingDatabase(doomed);
    OvDbObject* layer = nullptr;
    ASSERT_EQ(ovdbOpenObject(layer, doomed->clayer(), OvDb::kForRead), eOk);
    delete doomed;
    EXPECT_EQ(services->workingDatabase(), nullptr);
    EXPECT_EQ(ovdbTakeProtocolViolations().size(), 1) << "an object left open is reported";
    EXPECT_EQ(ovdbOpenObjectCount(), 0u);
}

} // namespace
