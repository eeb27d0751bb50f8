// Blocks, their entities, and block references with attributes.

#include "OvdbTest.h"

#include <QTemporaryDir>

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
    auto* plain = new OvDbLine(OvGePoint3d(0, 0, 0), OvGePoint3d(10, 0, 0));
    OvDbObjectId plainId;
    ASSERT_EQ(model->appendOvDbEntity(plainId, plain), eOk);
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
        OvDbEntity* entity = nullptr;
        ASSERT_EQ(it->getEntity(entity, OvDb::kForRead), eOk);
        const auto* line = OvDbLine::cast(entity);
        ASSERT_NE(line, nullptr);
        xs.push_back(line->startPoint().x);
        entity->close();
    }
    EXPECT_EQ(xs, (std::vector<double>{0, 2, 3}));
    // The walk itself is the tables' one; an erased entity is opened only on request.
    it->start(true, false);
    it->step(true, false);
    EXPECT_EQ(it->entityId(), ids[1]) << "erased entities show when asked for";
    OvDbEntity* entity = nullptr;
    EXPECT_EQ(it->getEntity(entity, OvDb::kForRead), eWasErased);
    ASSERT_EQ(it->getEntity(entity, OvDb::kForRead, true), eOk);
    entity->close();
    delete it;
}

TEST_F(Blocks, ReferenceOwnsItsAttributes) {
    const OvDbObjectId wdm = ovdbtest::addBlock(db, "WD_M");

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

    std::vector<OvDbObjectId> attributeIds;
    OvDbObjectIterator* it = reference->attributeIterator();
    for (; !it->done(); it->step())
        attributeIds.push_back(it->objectId());
    delete it;
    ASSERT_EQ(attributeIds.size(), 2u);
    EXPECT_EQ(attributeIds[1], sheetId);
    reference->close();

    // Pending attributes die with a reference that was never added.
    auto* loose = new OvDbBlockReference();
    auto* attribute = new OvDbAttribute();
    attribute->setTag(L"T");
    ASSERT_EQ(loose->appendAttribute(attribute), eOk);
    EXPECT_EQ(loose->appendAttribute(attribute), eAlreadyInDb);
    EXPECT_EQ(loose->setBlockTableRecord(db.clayer()), eWrongObjectType);
    delete loose; // and its attribute with it
}

// Blocks by name, and references to them appended to a space.
class BlockReferences : public Blocks {
protected:
    static OvDbObjectId insert(OvDbObjectId block, OvDbObjectId space) {
        return ovdbtest::addReference(*space.database(), block, OvGePoint3d(), {}, {}, space);
    }
    static std::vector<OvDbObjectId> referencesOf(OvDbObjectId block) {
        OvDbBlockTableRecord* record = nullptr;
        EXPECT_EQ(ovdbOpenObject(record, block, OvDb::kForRead), eOk);
        OvDbObjectIdArray ids;
        EXPECT_EQ(record->getReferenceIds(ids), eOk);
        record->close();
        return ids;
    }
    static void retarget(OvDbObjectId reference, OvDbObjectId block) {
        OvDbBlockReference* r = nullptr;
        ASSERT_EQ(ovdbOpenObject(r, reference, OvDb::kForWrite), eOk);
        EXPECT_EQ(r->setBlockTableRecord(block), eOk);
        r->close();
    }
};

TEST_F(BlockReferences, ABlockKnowsItsReferencesInDrawingOrderThroughEveryChange) {
    const OvDbObjectId a = ovdbtest::addBlock(db, "WD_M");
    const OvDbObjectId b = ovdbtest::addBlock(db, "TITLE");
    const OvDbObjectId r1 = insert(a, db.modelSpaceId());
    addLine(db, 1);
    const OvDbObjectId r2 = insert(b, db.modelSpaceId());
    const OvDbObjectId r3 = insert(a, db.paperSpaceId());
    const OvDbObjectId r4 = insert(a, db.modelSpaceId());
    using Ids = std::vector<OvDbObjectId>;
    EXPECT_EQ(referencesOf(a), (Ids{r1, r3, r4})) << "every space, in the order added";
    EXPECT_EQ(referencesOf(b), (Ids{r2}));
    EXPECT_TRUE(referencesOf(db.modelSpaceId()).empty());

    // Erased references are left out, and come back in their place when revived.
    setErased(r1);
    EXPECT_EQ(referencesOf(a), (Ids{r3, r4}));
    setErased(r1, false);
    EXPECT_EQ(referencesOf(a), (Ids{r1, r3, r4}));

    // A reference that inserts another block moves, keeping its place in drawing order.
    retarget(r4, b);
    retarget(r1, b);
    EXPECT_EQ(referencesOf(a), (Ids{r3}));
    EXPECT_EQ(referencesOf(b), (Ids{r1, r2, r4}));
    retarget(r1, a);

    // A save and a read give the same answers, by handle; a reference erased at the save is
    // not in the file, and a new one in the read drawing comes last.
    setErased(r3);
    QTemporaryDir dir;
    const std::wstring file = dir.filePath(QStringLiteral("refs.dwg")).toStdWString();
    ASSERT_EQ(db.saveAs(file.c_str()), eOk);
    OvDbDatabase side(false, true);
    ASSERT_EQ(side.readDwgFile(file.c_str()), eOk) << side.lastErrorMessage().toStdString();
    auto handles = [](const Ids& ids) {
        std::vector<std::uint64_t> out;
        for (OvDbObjectId id : ids)
            out.push_back(id.handle().value());
        return out;
    };
    OvDbObjectId sideA;
    OvDbObjectId sideB;
    ASSERT_EQ(side.getOvDbObjectId(sideA, false, a.handle()), eOk);
    ASSERT_EQ(side.getOvDbObjectId(sideB, false, b.handle()), eOk);
    EXPECT_EQ(handles(referencesOf(sideA)), handles(Ids{r1}));
    EXPECT_EQ(handles(referencesOf(sideB)), handles(Ids{r2, r4}));
    const OvDbObjectId r5 = insert(sideB, side.modelSpaceId());
    EXPECT_EQ(handles(referencesOf(sideB)), handles(Ids{r2, r4, r5}));

    // A reference made but never added is no reference of the block.
    auto* loose = new OvDbBlockReference(OvGePoint3d(), a);
    EXPECT_EQ(referencesOf(a), (Ids{r1}));
    delete loose;
}

} // namespace
