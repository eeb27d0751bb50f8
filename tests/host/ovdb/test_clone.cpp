// wblockCloneObjects: records of another drawing copied into a table of this one.

#include "OvdbTest.h"

namespace {

using namespace Orvex;

class Clone : public OvdbTest {
protected:
    void SetUp() override {
        OvdbTest::SetUp();
        sourceDash = ovdbtest::addLinetype(source, "WIRE_DASH", {0.3, -0.1});
        ovdbSetDbmod(&db, 0);
    }

    // The mapping's pair for a key, as the store reads it back.
    OvDbIdPair cloneInto(OvDbObjectId key, OvDbObjectId owner, int drc) {
        OvDbIdMapping mapping;
        OvDbIdPair pair(key, OvDbObjectId(), false);
        EXPECT_EQ(source.wblockCloneObjects({key}, owner, mapping, drc, false), eOk);
        EXPECT_TRUE(mapping.compute(pair));
        return pair;
    }

    // A linetype as "NAME dash,dash".
    static QString linetypeText(OvDbObjectId id) {
        OvDbLinetypeTableRecord* linetype = nullptr;
        EXPECT_EQ(ovdbOpenObject(linetype, id, OvDb::kForRead), eOk);
        if (!linetype)
            return {};
        QStringList dashes;
        for (double d : linetype->dashes())
            dashes << QString::number(d);
        const QString text = linetype->name() + ' ' + dashes.join(',');
        linetype->close();
        return text;
    }

    OvDbDatabase source; // db is the target
    OvDbObjectId sourceDash;
};

TEST_F(Clone, ExistingNameIsKeptReplacedOrMangled) {
    const OvDbObjectId own = ovdbtest::addLinetype(db, "Wire_Dash", {1.0, -1.0});
    OvDbIdPair pair = cloneInto(sourceDash, db.linetypeTableId(), OvDb::kDrcIgnore);
    EXPECT_FALSE(pair.isCloned());
    EXPECT_EQ(pair.value(), own);
    EXPECT_EQ(linetypeText(own), "Wire_Dash 1,-1");

    pair = cloneInto(sourceDash, db.linetypeTableId(), OvDb::kDrcReplace);
    EXPECT_TRUE(pair.isCloned());
    EXPECT_EQ(pair.value(), own);
    EXPECT_EQ(linetypeText(own), "Wire_Dash 0.3,-0.1") << "the pattern replaced, the name kept";

    // A mangled name is a new record of this drawing, as a missing name would be.
    ovdbSetDbmod(&db, 0);
    for (const char* expected : {"$0$WIRE_DASH 0.3,-0.1", "$1$WIRE_DASH 0.3,-0.1"}) {
        pair = cloneInto(sourceDash, db.linetypeTableId(), OvDb::kDrcMangleName);
        EXPECT_TRUE(pair.isCloned());
        EXPECT_TRUE(pair.isPrimary());
        ASSERT_EQ(pair.value().database(), &db);
        EXPECT_EQ(linetypeText(pair.value()), expected);
    }
    EXPECT_TRUE(db.isModified());
}

TEST_F(Clone, RefusesWhatItCannotPlace) {
    OvDbIdMapping mapping;
    EXPECT_EQ(source.wblockCloneObjects({sourceDash}, db.layerTableId(), mapping, 1),
              eWrongObjectType);
    EXPECT_EQ(source.wblockCloneObjects({sourceDash}, db.clayer(), mapping, 1), eWrongObjectType);
    EXPECT_EQ(
        source.wblockCloneObjects({db.continuousLinetype()}, db.linetypeTableId(), mapping, 1),
        eWrongDatabase);
    EXPECT_EQ(source.wblockCloneObjects({sourceDash}, OvDbObjectId(), mapping, 1), eNullObjectId);
    EXPECT_EQ(source.wblockCloneObjects({sourceDash}, db.linetypeTableId(), mapping, 9),
              eInvalidInput);
    EXPECT_EQ(mapping.size(), 0u);
    OvDbIdPair unknown(sourceDash, OvDbObjectId(), false);
    EXPECT_FALSE(mapping.compute(unknown));
    EXPECT_FALSE(db.isModified());
}

} // namespace
