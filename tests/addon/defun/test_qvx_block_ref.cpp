// The block reference helper on the live drawing of an open document and on a file read
// into a side database.
#include "AddonTest.h"

#include "zeldefun/ZelQvxBlockRef.h"

#include "../../host/ovdb/OvdbBuild.h"

#include <memory>

namespace {

const QString kWdm = QStringLiteral("WD_M");
const QString kWireLays = QStringLiteral("WIRELAYS");

class QvxBlockRef : public AddonTest {
protected:
    void SetUp() override {
        AddonTest::SetUp();
        startHost();
    }

    static OvDbObjectId addReference(OvDbDatabase* database, const QString& blockName,
                                     const ovdbtest::Attributes& attributes,
                                     OvDbObjectId space = OvDbObjectId()) {
        return ovdbtest::addReference(*database, ovdbtest::addBlock(*database, blockName),
                                      OvGePoint3d(0, 0, 0), attributes, {}, space);
    }

    // A new active document saved as `name`, holding a TITLE reference and a WD_M
    // reference (its id in m_wdm).
    OvApDocument* savedDocument(const QString& name, const QString& wireLays) {
        OvApDocument* doc = nullptr;
        EXPECT_EQ(ovDocManagerPtr()->newDocument(QString(), &doc), Orvex::eOk);
        addReference(doc->database(), QStringLiteral("TITLE"), {{"SHEET", "1"}});
        m_wdm = addReference(doc->database(), kWdm, {{"TAGMODE", "1"}, {kWireLays, wireLays}});
        EXPECT_EQ(ovDocManagerPtr()->saveDocumentAs(doc, path(name)), Orvex::eOk);
        ovdbSetDbmod(doc->database(), 0);
        return doc;
    }

    // The helper's reading of an attribute; "-" when it cannot, which leaves the value.
    static QString read(ZelQvxBlockRef& ref, const QString& tag) {
        QString value = QStringLiteral("-");
        const bool found = ref.getAttributeTextString(tag, value, true);
        EXPECT_EQ(found, value != "-") << tag.toStdString();
        EXPECT_EQ(ovdbOpenObjectCount(), 0u);
        return value;
    }

    OvDbObjectId m_wdm;
};

TEST_F(QvxBlockRef, ALiveDocumentIsReadAndWrittenInPlaceInTheSpaceSet) {
    OvDbDatabase* database = savedDocument("live.dwg", "WIR*")->database();
    ZelQvxBlockRef ref;
    ref.setSpace(getSpace(database));
    // The document's file by a path that is neither absolute nor clean.
    QDir::setCurrent(m_temp.path());
    ASSERT_TRUE(ref.open("./sub/../live.dwg", 64, false));
    EXPECT_TRUE(ref.isLiveDocument());
    EXPECT_EQ(ref.database(), database);
    ASSERT_TRUE(ref.find("wd_m", 0, 0));
    EXPECT_EQ(read(ref, "wirelays"), "WIR*");
    EXPECT_FALSE(database->isModified()) << "a read must not mark the drawing";

    ASSERT_TRUE(ref.setAttributeTextString(kWireLays, "WIR*,RED*", true));
    EXPECT_TRUE(database->isModified());
    EXPECT_EQ(read(ref, kWireLays), "WIR*,RED*");
    EXPECT_EQ(read(ref, "TAGMODE"), "1");
    // A missing tag leaves the value alone, on read and on write.
    EXPECT_EQ(read(ref, "NOPE"), "-");
    EXPECT_FALSE(ref.setAttributeTextString("NOPE", "x", true));

    // Find looks only in the space set: a WD_M in paper space is found only there, and a
    // failed find forgets the earlier one.
    EXPECT_EQ(getSpace(database), QStringLiteral("*Model_Space"));
    EXPECT_TRUE(getSpace(nullptr).isEmpty());
    EXPECT_TRUE(ref.find("title", 0, 0));
    EXPECT_FALSE(ref.find("NO_SUCH_BLOCK", 0, 0));
    EXPECT_EQ(read(ref, "SHEET"), "-");
    addReference(database, kWdm, {{kWireLays, "P*"}}, database->paperSpaceId());
    ref.setSpace("*PAPER_SPACE");
    ASSERT_TRUE(ref.find(kWdm, 0, 0));
    EXPECT_EQ(read(ref, kWireLays), "P*");
    ref.setSpace("NO_SUCH_SPACE");
    EXPECT_FALSE(ref.find(kWdm, 0, 0));

    ref.close();
    EXPECT_FALSE(ref.isOpen());
    EXPECT_EQ(ovDocManagerPtr()->documentCount(), 1) << "the helper must not close the document";
}

// A file that is no open document is read into a side database, shared while the file is
// unchanged on disk; a write goes to the writer's own copy, which is never saved.
TEST_F(QvxBlockRef, AFileIsReadIntoASideDatabaseSharedUntilItChangesOnDisk) {
    const QString file = path("shared.dwg");
    auto save = [&](const QString& wireLays) {
        OvDbDatabase database(true, true);
        addReference(&database, kWdm, {{kWireLays, wireLays}});
        ASSERT_EQ(database.saveAs(wide(file).c_str()), Orvex::eOk);
    };
    save("A*");
    OvDbDatabase* working = savedDocument("working.dwg", "W*")->database();
    ZelQvxBlockRef first;
    ASSERT_TRUE(first.open(file, 32, false)) << first.lastError().toStdString();
    EXPECT_FALSE(first.isLiveDocument());
    OvDbDatabase* shared = first.database();
    ZelQvxBlockRef second;
    ASSERT_TRUE(second.open(m_temp.path() + "/./shared.dwg", 32, false));
    EXPECT_EQ(second.database(), shared) << "an unchanged file is not read again";

    // A write gives the writer a drawing of its own; nobody else sees it.
    ASSERT_TRUE(second.find(kWdm, 0, 0));
    ASSERT_TRUE(second.setAttributeTextString(kWireLays, "C*", true));
    EXPECT_NE(second.database(), shared);
    EXPECT_EQ(read(second, kWireLays), "C*");
    EXPECT_FALSE(working->isModified());
    ASSERT_TRUE(first.find(kWdm, 0, 0));
    EXPECT_EQ(read(first, kWireLays), "A*");
    {
        ZelQvxBlockRef third;
        ASSERT_TRUE(third.open(file, 32, false));
        EXPECT_EQ(third.database(), shared) << "the file on disk is as it was";
    }

    // The file changes on disk: the next open reads it again, while a helper that holds
    // the old drawing keeps it until it lets it go.
    save("B*");
    ZelQvxBlockRef fourth;
    ASSERT_TRUE(fourth.open(file, 32, false));
    EXPECT_NE(fourth.database(), shared);
    ASSERT_TRUE(fourth.find(kWdm, 0, 0));
    EXPECT_EQ(read(fourth, kWireLays), "B*");
    EXPECT_EQ(read(first, kWireLays), "A*");
    first.close();
    ASSERT_TRUE(first.open(file, 32, false));
    EXPECT_EQ(first.database(), fourth.database());

    // A path that is neither document nor drawing fails the open, and ends an earlier one;
    // a file that is no longer a drawing is not served from what was read.
    writeFile("shared.dwg", "not a drawing any more");
    for (const QString& bad : {file, path("missing.dwg"), m_temp.path(), QString()}) {
        EXPECT_FALSE(fourth.open(bad, 32, false)) << bad.toStdString();
        EXPECT_FALSE(fourth.lastError().isEmpty());
        EXPECT_FALSE(fourth.find(kWdm, 0, 0));
        EXPECT_EQ(read(fourth, kWireLays), "-");
    }
}

TEST_F(QvxBlockRef, AReferenceBusyErasedOrOfAClosedDocumentIsNotReached) {
    OvApDocument* doc = savedDocument("gone.dwg", "W*");
    ZelQvxBlockRef ref;
    ASSERT_TRUE(ref.open(path("gone.dwg"), 32, false));
    ASSERT_TRUE(ref.find(kWdm, 0, 0));

    // Open elsewhere for read: readers share it, a writer is refused.
    OvDbEntity* reference = nullptr;
    ASSERT_EQ(ovdbOpenObject(reference, m_wdm, OvDb::kForRead), Orvex::eOk);
    QString value;
    EXPECT_TRUE(ref.getAttributeTextString(kWireLays, value, true));
    EXPECT_FALSE(ref.setAttributeTextString(kWireLays, "X", true));
    reference->close();

    ASSERT_EQ(ovdbOpenObject(reference, m_wdm, OvDb::kForWrite), Orvex::eOk);
    ASSERT_EQ(reference->erase(), Orvex::eOk);
    reference->close();
    EXPECT_EQ(read(ref, kWireLays), "-");
    EXPECT_FALSE(ref.setAttributeTextString(kWireLays, "X", true));

    // The document closes while the helper still holds it.
    addReference(doc->database(), kWdm, {{kWireLays, "V*"}});
    ASSERT_TRUE(ref.find(kWdm, 0, 0));
    ASSERT_EQ(ovDocManagerPtr()->closeDocument(doc), Orvex::eOk);
    EXPECT_EQ(ref.database(), nullptr);
    EXPECT_EQ(read(ref, kWireLays), "-");
    EXPECT_FALSE(ref.find(kWdm, 0, 0));
}

} // namespace
