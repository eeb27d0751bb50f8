// wblockCloneObjects: records of another drawing copied into a table of this one.

#include "ovdb/ovdb.h"

#include <gtest/gtest.h>

namespace {

using namespace Orvex;

class Clone : public ::testing::Test {
protected:
    void SetUp() override {
        OvDbLinetypeTable* table = nullptr;
        ASSERT_EQ(source.getSymbolTable(table, OvDb::kForWrite), eOk);
        auto* linetype = new OvDbLinetypeTableRecord();
        linetype->setName(L"WIRE_DASH");
        linetype->setComments(L"Wire dash");
        linetype->setDashes({0.3, -0.1});
        ASSERT_EQ(table->add(sourceDash, linetype), eOk);
        linetype->close();
        table->close();
        ovdbSetDbmod(&target, 0);
    }
    void TearDown() override {
        EXPECT_EQ(ovdbOpenObjectCount(), 0u)
            << ovdbOpenObjectDescriptions().join('\n').toStdString();
        EXPECT_EQ(ovdbTakeProtocolViolations(), QStringList());
    }

    // The mapping's pair for a key, as the store reads it back.
    OvDbIdPair cloneInto(OvDbObjectId key, OvDbObjectId owner, int drc,
                         ErrorStatus expected = eOk) {
        OvDbIdMapping mapping;
        OvDbIdPair pair(key, OvDbObjectId(), false);
        EXPECT_EQ(source.wblockCloneObjects({key}, owner, mapping, drc, false), expected);
        EXPECT_EQ(mapping.compute(pair), expected == eOk);
        return pair;
    }

    std::vector<double> dashesOf(OvDbObjectId id, QString* name = nullptr) {
        OvDbLinetypeTableRecord* linetype = nullptr;
        EXPECT_EQ(ovdbOpenObject(linetype, id, OvDb::kForRead), eOk);
        if (!linetype)
            return {};
        const std::vector<double> dashes = linetype->dashes();
        if (name)
            *name = linetype->name();
        linetype->close();
        return dashes;
    }

    OvDbDatabase source;
    OvDbDatabase target;
    OvDbObjectId sourceDash;
};

TEST_F(Clone, MissingLinetypeIsCopiedIntoTheTable) {
    const OvDbIdPair pair = cloneInto(sourceDash, target.linetypeTableId(), OvDb::kDrcIgnore);
    EXPECT_TRUE(pair.isCloned());
    EXPECT_TRUE(pair.isPrimary());
    ASSERT_EQ(pair.value().database(), &target);
    EXPECT_TRUE(target.isModified());

    QString name;
    EXPECT_EQ(dashesOf(pair.value(), &name), (std::vector<double>{0.3, -0.1}));
    EXPECT_EQ(name, QStringLiteral("WIRE_DASH"));
    OvDbLinetypeTable* table = nullptr;
    ASSERT_EQ(target.getSymbolTable(table, OvDb::kForRead), eOk);
    OvDbObjectId found;
    EXPECT_EQ(table->getIdAt(L"wire_dash", found), eOk);
    EXPECT_EQ(found, pair.value());
    table->close();

    // A second clone finds the copy and keeps it.
    const OvDbIdPair again = cloneInto(sourceDash, target.linetypeTableId(), OvDb::kDrcIgnore);
    EXPECT_FALSE(again.isCloned());
    EXPECT_EQ(again.value(), pair.value());
}

TEST_F(Clone, ExistingNameIsKeptReplacedOrMangled) {
    OvDbLinetypeTable* table = nullptr;
    ASSERT_EQ(target.getSymbolTable(table, OvDb::kForWrite), eOk);
    auto* own = new OvDbLinetypeTableRecord();
    own->setName(L"Wire_Dash");
    own->setDashes({1.0, -1.0});
    OvDbObjectId ownId;
    ASSERT_EQ(table->add(ownId, own), eOk);
    own->close();
    table->close();

    OvDbIdPair pair = cloneInto(sourceDash, target.linetypeTableId(), OvDb::kDrcIgnore);
    EXPECT_FALSE(pair.isCloned());
    EXPECT_EQ(pair.value(), ownId);
    EXPECT_EQ(dashesOf(ownId), (std::vector<double>{1.0, -1.0}));

    pair = cloneInto(sourceDash, target.linetypeTableId(), OvDb::kDrcReplace);
    EXPECT_TRUE(pair.isCloned());
    EXPECT_EQ(pair.value(), ownId);
    QString name;
    EXPECT_EQ(dashesOf(ownId, &name), (std::vector<double>{0.3, -0.1}));
    EXPECT_EQ(name, QStringLiteral("Wire_Dash"));

    for (const char* expected : {"$0$WIRE_DASH", "$1$WIRE_DASH"}) {
        pair = cloneInto(sourceDash, target.linetypeTableId(), OvDb::kDrcMangleName);
        EXPECT_TRUE(pair.isCloned());
        EXPECT_NE(pair.value(), ownId);
        dashesOf(pair.value(), &name);
        EXPECT_EQ(name, QString::fromLatin1(expected));
    }
}

TEST_F(Clone, LayerBringsItsLinetypeAndItsData) {
    OvDbLayerTable* layers = nullptr;
    ASSERT_EQ(source.getSymbolTable(layers, OvDb::kForWrite), eOk);
    auto* layer = new OvDbLayerTableRecord();
    layer->setName(L"WIRE_RED");
    layer->setLinetypeObjectId(sourceDash);
    OvDbObjectId layerId;
    ASSERT_EQ(layers->add(layerId, layer), eOk);
    layers->close();
    layer->createExtensionDictionary();
    OvDbDictionary* dict = nullptr;
    ASSERT_EQ(ovdbOpenObject(dict, layer->extensionDictionary(), OvDb::kForWrite), eOk);
    layer->close();
    auto* xrec = new OvDbXrecord();
    OvDbObjectId xrecId;
    dict->setAt(L"ZEL_WIRETYPE", xrec, xrecId);
    resbuf* data = ovutBuildList(1, L"RED", 90, 4, 0);
    xrec->setFromRbChain(data);
    ovutRelRb(data);
    xrec->close();
    dict->close();

    OvDbIdMapping mapping;
    ASSERT_EQ(source.wblockCloneObjects({layerId}, target.layerTableId(), mapping, 1), eOk);
    OvDbIdPair pair(layerId, OvDbObjectId(), false);
    ASSERT_TRUE(mapping.compute(pair));
    OvDbIdPair linetypePair(sourceDash, OvDbObjectId(), false);
    ASSERT_TRUE(mapping.compute(linetypePair));
    EXPECT_FALSE(linetypePair.isPrimary()) << "the linetype came along";
    EXPECT_EQ(mapping.origDb(), &source);
    EXPECT_EQ(mapping.destDb(), &target);

    OvDbLayerTableRecord* copy = nullptr;
    ASSERT_EQ(ovdbOpenObject(copy, pair.value(), OvDb::kForRead), eOk);
    EXPECT_EQ(copy->linetypeObjectId(), linetypePair.value());
    ASSERT_EQ(ovdbOpenObject(dict, copy->extensionDictionary(), OvDb::kForRead), eOk);
    EXPECT_EQ(dict->ownerId(), copy->objectId());
    copy->close();
    OvDbObject* object = nullptr;
    ASSERT_EQ(dict->getAt(L"ZEL_WIRETYPE", object, OvDb::kForRead), eOk);
    dict->close();
    EXPECT_EQ(object->database(), &target);
    EXPECT_NE(object->objectId(), xrecId);
    resbuf* chain = nullptr;
    OvDbXrecord::cast(object)->rbChain(chain);
    object->close();
    ASSERT_NE(chain, nullptr);
    EXPECT_EQ(QString::fromWCharArray(chain->resval.rstring), QStringLiteral("RED"));
    EXPECT_EQ(chain->rbnext->resval.rlong, 4);
    ovutRelRb(chain);
}

TEST_F(Clone, RefusesWhatItCannotPlace) {
    OvDbIdMapping mapping;
    EXPECT_EQ(source.wblockCloneObjects({sourceDash}, target.layerTableId(), mapping, 1),
              eWrongObjectType);
    EXPECT_EQ(source.wblockCloneObjects({sourceDash}, target.clayer(), mapping, 1),
              eWrongObjectType);
    EXPECT_EQ(source.wblockCloneObjects({target.continuousLinetype()}, target.linetypeTableId(),
                                        mapping, 1),
              eWrongDatabase);
    EXPECT_EQ(source.wblockCloneObjects({sourceDash}, OvDbObjectId(), mapping, 1), eNullObjectId);
    EXPECT_EQ(source.wblockCloneObjects({sourceDash}, target.linetypeTableId(), mapping, 9),
              eInvalidInput);
    EXPECT_EQ(mapping.size(), 0u);
    OvDbIdPair unknown(sourceDash, OvDbObjectId(), false);
    EXPECT_FALSE(mapping.compute(unknown));
    EXPECT_FALSE(target.isModified());
}

} // namespace
