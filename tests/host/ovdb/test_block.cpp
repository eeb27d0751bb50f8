// Blocks, their entities, and block references with attributes.

#include "OvdbTest.h"

#include <cmath>

namespace {

using namespace Orvex;

class Blocks : public OvdbTest {
protected:
    void SetUp() override {
        OvdbTest::SetUp();
        wireLayer = addLayer(QStringLiteral("WIRE_RED"));
    }
    OvDbObjectId wireLayer;
};

TEST_F(Blocks, EntitiesGoOnTheirLayerOrTheCurrentOne) {
    OvDbBlockTableRecord* model = nullptr;
    ASSERT_EQ(ovdbOpenObject(model, db.currentSpaceId(), OvDb::kForWrite), eOk);
    EXPECT_TRUE(model->isModelSpace());
    auto* plain = new OvDbLine(OvGePoint3d(0, 0, 0), OvGePoint3d(10, 0, 0));
    OvDbObjectId plainId;
    ASSERT_EQ(model->appendOvDbEntity(plainId, plain), eOk);
    EXPECT_EQ(plain->layer(), QStringLiteral("0"));
    EXPECT_EQ(plain->layerId(), db.clayer());
    EXPECT_EQ(plain->setLayer(L"wire_red"), eOk);
    EXPECT_EQ(plain->layer(), QStringLiteral("WIRE_RED"));
    EXPECT_EQ(plain->setLayer(L"NO_SUCH"), eKeyNotFound);
    EXPECT_EQ(plain->setLayer(db.continuousLinetype()), eWrongObjectType);
    EXPECT_EQ(plain->setEndPoint(OvGePoint3d(std::nan(""), 0, 0)), eInvalidInput);
    EXPECT_EQ(plain->endPoint(), OvGePoint3d(10, 0, 0));
    plain->close();

    OvDbDatabase other;
    auto* foreign = new OvDbLine();
    ASSERT_EQ(foreign->setLayer(other.clayer()), eOk);
    EXPECT_EQ(model->appendOvDbEntity(foreign), eWrongDatabase);
    delete foreign;
    model->close();

    // A new entity finds its layer by name in the working database.
    OvDbHostApplicationServices::getRefPtr()->setWorkingDatabase(&db);
    auto* loose = new OvDbLine();
    EXPECT_EQ(loose->setLayer(QStringLiteral("WIRE_RED")), eOk);
    EXPECT_EQ(loose->layerId(), wireLayer);
    delete loose;
    OvDbHostApplicationServices::getRefPtr()->setWorkingDatabase(nullptr);
}

TEST_F(Blocks, IteratorWalksEntitiesInDrawingOrder) {
    std::vector<OvDbObjectId> ids;
    for (int i = 0; i < 4; ++i)
        ids.push_back(addLine(db, i));
    setErased(ids[1]);
    OvDbBlockTableRecord* model = nullptr;
    ASSERT_EQ(ovdbOpenObject(model, db.modelSpaceId(), OvDb::kForRead), eOk);
    OvDbBlockTableRecordIterator* it = nullptr;
    ASSERT_EQ(model->newIterator(it), eOk);
    model->close();

    std::vector<double> xs;
    for (; !it->done(); it->step()) {
        OvDbLine* line = nullptr;
        OvDbEntity* entity = nullptr;
        ASSERT_EQ(it->getEntity(entity, OvDb::kForRead), eOk);
        line = OvDbLine::cast(entity);
        ASSERT_NE(line, nullptr);
        xs.push_back(line->startPoint().x);
        line->close();
    }
    EXPECT_EQ(xs, (std::vector<double>{0, 2, 3}));
    it->start(true, false);
    EXPECT_EQ(it->entityId(), ids[0]);
    it->step(true, false);
    EXPECT_EQ(it->entityId(), ids[1]) << "erased entities show when asked for";
    OvDbEntity* entity = nullptr;
    EXPECT_EQ(it->getEntity(entity, OvDb::kForRead), eWasErased);
    ASSERT_EQ(it->getEntity(entity, OvDb::kForRead, true), eOk);
    entity->close();
    ASSERT_EQ(it->seek(ids[3]), eOk);
    it->step();
    EXPECT_TRUE(it->done());
    delete it;
}

TEST_F(Blocks, ReferenceOwnsItsAttributes) {
    OvDbBlockTable* blocks = nullptr;
    ASSERT_EQ(db.getSymbolTable(blocks, OvDb::kForWrite), eOk);
    auto* definition = new OvDbBlockTableRecord();
    EXPECT_EQ(definition->setName(L"WD_M"), eOk);
    OvDbObjectId wdm;
    ASSERT_EQ(blocks->add(wdm, definition), eOk);
    definition->close();
    blocks->close();

    // Attributes given to a reference that is not in the drawing yet come along with it.
    auto* reference = new OvDbBlockReference(OvGePoint3d(1, 2, 0), wdm);
    auto* wirelays =
        new OvDbAttribute(OvGePoint3d(1, 2, 0), QStringLiteral("WIR*"), QStringLiteral("WIRELAYS"));
    ASSERT_EQ(reference->appendAttribute(wirelays), eOk);
    wirelays->close();
    OvDbBlockTableRecord* model = nullptr;
    ASSERT_EQ(ovdbOpenObject(model, db.modelSpaceId(), OvDb::kForWrite), eOk);
    OvDbObjectId referenceId;
    ASSERT_EQ(model->appendOvDbEntity(referenceId, reference), eOk);
    model->close();
    EXPECT_EQ(ovdbOpenObjectCount(), 1u) << "the closed attribute was added closed";
    auto* sheet = new OvDbAttribute();
    EXPECT_EQ(sheet->setTag(L"TWO WORDS"), eInvalidInput);
    ASSERT_EQ(sheet->setTag(L"SHEET"), eOk);
    sheet->setTextString(L"01");
    OvDbObjectId sheetId;
    ASSERT_EQ(reference->appendAttribute(sheetId, sheet), eOk);
    EXPECT_EQ(sheet->ownerId(), referenceId);
    EXPECT_EQ(sheet->layerId(), reference->layerId());
    sheet->close();
    EXPECT_EQ(reference->blockTableRecord(), wdm);

    std::vector<OvDbObjectId> attributeIds;
    OvDbObjectIterator* it = reference->attributeIterator();
    for (; !it->done(); it->step())
        attributeIds.push_back(it->objectId());
    delete it;
    ASSERT_EQ(attributeIds.size(), 2u);
    EXPECT_EQ(attributeIds[1], sheetId);

    ASSERT_EQ(reference->erase(), eOk);
    for (OvDbObjectId id : attributeIds)
        EXPECT_TRUE(id.isErased());
    ASSERT_EQ(reference->erase(false), eOk);
    for (OvDbObjectId id : attributeIds)
        EXPECT_FALSE(id.isErased());
    reference->close();
}

TEST_F(Blocks, PendingAttributesDieWithANeverAddedReference) {
    auto* reference = new OvDbBlockReference();
    auto* attribute = new OvDbAttribute();
    attribute->setTag(L"T");
    ASSERT_EQ(reference->appendAttribute(attribute), eOk);
    EXPECT_EQ(reference->appendAttribute(attribute), eAlreadyInDb);
    EXPECT_EQ(reference->setBlockTableRecord(db.clayer()), eWrongObjectType);
    delete reference; // and its attribute with it
}

} // namespace
