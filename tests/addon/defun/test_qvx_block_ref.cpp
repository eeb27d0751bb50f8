#include "zeldefun/ZelQvxBlockRef.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvHost.h"
#include "ovdb/ovdb.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

const QString kWdm = QStringLiteral("WD_M");
const QString kWireLays = QStringLiteral("WIRELAYS");
using Attributes = QList<QPair<QString, QString>>;

OvDbObjectId addReference(OvDbDatabase* database, const QString& blockName,
                          const Attributes& attributes, OvDbObjectId space = OvDbObjectId()) {
    OvDbBlockTable* table = nullptr;
    EXPECT_EQ(database->getBlockTable(table, OvDb::kForWrite), Orvex::eOk);
    OvDbObjectId block;
    if (table->getIdAt(blockName, block) != Orvex::eOk) {
        auto* record = new OvDbBlockTableRecord;
        record->setName(blockName);
        EXPECT_EQ(table->add(block, record), Orvex::eOk);
        record->close();
    }
    table->close();
    OvDbBlockTableRecord* owner = nullptr;
    EXPECT_EQ(
        ovdbOpenObject(owner, space.isNull() ? database->modelSpaceId() : space, OvDb::kForWrite),
        Orvex::eOk);
    auto* reference = new OvDbBlockReference(OvGePoint3d(0, 0, 0), block);
    OvDbObjectId id;
    EXPECT_EQ(owner->appendOvDbEntity(id, reference), Orvex::eOk);
    for (const auto& [tag, text] : attributes) {
        auto* attribute = new OvDbAttribute(OvGePoint3d(0, 0, 0), text, tag);
        EXPECT_EQ(reference->appendAttribute(attribute), Orvex::eOk);
        attribute->close();
    }
    reference->close();
    owner->close();
    return id;
}

// The attribute's text read straight from the drawing.
QString attributeText(OvDbObjectId reference, const QString& tag) {
    OvDbBlockReference* block = nullptr;
    EXPECT_EQ(ovdbOpenObject(block, reference, OvDb::kForRead), Orvex::eOk);
    QString text;
    std::unique_ptr<OvDbObjectIterator> it(block->attributeIterator());
    for (; !it->done(); it->step()) {
        OvDbAttribute* attribute = nullptr;
        if (ovdbOpenObject(attribute, it->objectId(), OvDb::kForRead) != Orvex::eOk)
            continue;
        if (attribute->tag() == tag)
            text = attribute->textString();
        attribute->close();
    }
    block->close();
    return text;
}

// A running host; every test must end with nothing open.
class QvxBlockRefTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_temp.isValid());
        m_oldCurrent = QDir::currentPath();
        ovutSetOutputSink([](std::string_view) {});
        ASSERT_TRUE(m_host.init());
        ovdbTakeProtocolViolations();
    }
    void TearDown() override {
        EXPECT_EQ(ovdbOpenObjectCount(), 0u)
            << ovdbOpenObjectDescriptions().join(u';').toStdString();
        EXPECT_TRUE(ovdbTakeProtocolViolations().isEmpty());
        m_host.shutdown();
        ovutResetOutputSink();
        QDir::setCurrent(m_oldCurrent);
    }

    QString path(const QString& name) const { return m_temp.filePath(name); }

    // A new active document saved as `name`, holding a TITLE reference and, unless
    // `wireLays` is null, a WD_M reference (its id in m_wdm).
    OvApDocument* savedDocument(const QString& name, const QString& wireLays) {
        OvApDocument* doc = nullptr;
        EXPECT_EQ(ovDocManagerPtr()->newDocument(QString(), &doc), Orvex::eOk);
        addReference(doc->database(), QStringLiteral("TITLE"), {{"SHEET", "1"}});
        if (!wireLays.isNull())
            m_wdm = addReference(doc->database(), kWdm, {{"TAGMODE", "1"}, {kWireLays, wireLays}});
        EXPECT_EQ(ovDocManagerPtr()->saveDocumentAs(doc, path(name)), Orvex::eOk);
        return doc;
    }

    QTemporaryDir m_temp;
    QString m_oldCurrent;
    OvHost m_host;
    OvDbObjectId m_wdm;
};

TEST_F(QvxBlockRefTest, LiveDocumentIsReadAndWrittenInPlaceWithNothingLeftOpen) {
    OvDbDatabase* database =
        savedDocument(QStringLiteral("live.dwg"), QStringLiteral("WIR*"))->database();
    ovdbSetDbmod(database, 0);

    ZelQvxBlockRef ref;
    ref.setSpace(getSpace(database));
    // The document's file by a path that is neither absolute nor clean.
    QDir::setCurrent(m_temp.path());
    ASSERT_TRUE(ref.open(QStringLiteral("./sub/../live.dwg"), 64, false));
    EXPECT_TRUE(ref.isLiveDocument());
    EXPECT_EQ(ref.database(), database);

    ASSERT_TRUE(ref.find(QStringLiteral("wd_m"), 0, 0));
    EXPECT_EQ(ovdbOpenObjectCount(), 0u);
    QString value;
    ASSERT_TRUE(ref.getAttributeTextString(QStringLiteral("wirelays"), value, true));
    EXPECT_EQ(value, QStringLiteral("WIR*"));
    EXPECT_EQ(ovdbOpenObjectCount(), 0u);
    EXPECT_FALSE(database->isModified()) << "a read must not mark the drawing";

    ASSERT_TRUE(ref.setAttributeTextString(kWireLays, QStringLiteral("WIR*,RED*"), true));
    EXPECT_EQ(ovdbOpenObjectCount(), 0u);
    EXPECT_TRUE(database->isModified());
    EXPECT_EQ(attributeText(m_wdm, kWireLays), QStringLiteral("WIR*,RED*"));
    EXPECT_EQ(attributeText(m_wdm, QStringLiteral("TAGMODE")), QStringLiteral("1"));

    // A missing tag leaves the value alone, on read and on write.
    value = QStringLiteral("untouched");
    EXPECT_FALSE(ref.getAttributeTextString(QStringLiteral("NOPE"), value, true));
    EXPECT_EQ(value, QStringLiteral("untouched"));
    EXPECT_FALSE(ref.setAttributeTextString(QStringLiteral("NOPE"), QStringLiteral("x"), true));

    ref.close();
    EXPECT_FALSE(ref.isOpen());
    EXPECT_EQ(ovDocManagerPtr()->documentCount(), 1) << "the helper must not close the document";
}

TEST_F(QvxBlockRefTest, FileIsReadIntoASideDatabaseThatIsNeverSaved) {
    const QString file = path(QStringLiteral("other.dwg"));
    {
        OvDbDatabase database(true, true);
        addReference(&database, kWdm, {{kWireLays, "A*,B*"}});
        ASSERT_EQ(database.saveAs(file.toStdWString().c_str()), Orvex::eOk);
    }
    OvDbDatabase* working =
        savedDocument(QStringLiteral("working.dwg"), QStringLiteral("W*"))->database();
    ovdbSetDbmod(working, 0);

    QString value;
    {
        ZelQvxBlockRef ref;
        ASSERT_TRUE(ref.open(file, 32, false)) << ref.lastError().toStdString();
        EXPECT_FALSE(ref.isLiveDocument());
        ASSERT_TRUE(ref.find(kWdm, 0, 0));
        ASSERT_TRUE(ref.getAttributeTextString(kWireLays, value, true));
        EXPECT_EQ(value, QStringLiteral("A*,B*"));
        EXPECT_TRUE(ref.setAttributeTextString(kWireLays, QStringLiteral("C*"), true));
        ASSERT_TRUE(ref.getAttributeTextString(kWireLays, value, true));
        EXPECT_EQ(value, QStringLiteral("C*"));
    }
    EXPECT_FALSE(working->isModified());

    ZelQvxBlockRef again;
    ASSERT_TRUE(again.open(file, 32, false));
    ASSERT_TRUE(again.find(kWdm, 0, 0));
    ASSERT_TRUE(again.getAttributeTextString(kWireLays, value, true));
    EXPECT_EQ(value, QStringLiteral("A*,B*")) << "the file on disk must be as it was";
}

TEST_F(QvxBlockRefTest, PathThatIsNeitherDocumentNorDrawingFailsTheOpen) {
    savedDocument(QStringLiteral("live.dwg"), QStringLiteral("W*"));
    QFile text(path(QStringLiteral("notes.dwg")));
    ASSERT_TRUE(text.open(QIODevice::WriteOnly));
    text.write("not a drawing");
    text.close();

    ZelQvxBlockRef ref;
    for (const QString& bad : {path(QStringLiteral("missing.dwg")),
                               path(QStringLiteral("notes.dwg")), m_temp.path(), QString()}) {
        EXPECT_FALSE(ref.open(bad, 32, false)) << bad.toStdString();
        EXPECT_FALSE(ref.lastError().isEmpty());
        EXPECT_FALSE(ref.find(kWdm, 0, 0));
    }
    // A failed open also ends an earlier successful one.
    ASSERT_TRUE(ref.open(path(QStringLiteral("live.dwg")), 32, false));
    ASSERT_TRUE(ref.find(kWdm, 0, 0));
    EXPECT_FALSE(ref.open(path(QStringLiteral("missing.dwg")), 32, false));
    QString value = QStringLiteral("untouched");
    EXPECT_FALSE(ref.getAttributeTextString(kWireLays, value, true));
    EXPECT_EQ(value, QStringLiteral("untouched"));
}

TEST_F(QvxBlockRefTest, FindLooksOnlyInTheSpaceSetForThatBlock) {
    OvDbDatabase* database = savedDocument(QStringLiteral("spaces.dwg"), QString())->database();
    EXPECT_EQ(getSpace(database), QStringLiteral("*Model_Space"));
    EXPECT_TRUE(getSpace(nullptr).isEmpty());

    ZelQvxBlockRef ref;
    ASSERT_TRUE(ref.open(path(QStringLiteral("spaces.dwg")), 32, false));
    EXPECT_FALSE(ref.find(kWdm, 0, 0));
    EXPECT_FALSE(ref.find(QStringLiteral("NO_SUCH_BLOCK"), 0, 0));
    EXPECT_TRUE(ref.find(QStringLiteral("title"), 0, 0));

    // A WD_M in paper space is found only there; a failed find forgets the earlier one.
    addReference(database, kWdm, {{kWireLays, "P*"}}, database->paperSpaceId());
    EXPECT_FALSE(ref.find(kWdm, 0, 0));
    QString value = QStringLiteral("untouched");
    EXPECT_FALSE(ref.getAttributeTextString(QStringLiteral("SHEET"), value, true));
    ref.setSpace(QStringLiteral("*PAPER_SPACE"));
    ASSERT_TRUE(ref.find(kWdm, 0, 0));
    ASSERT_TRUE(ref.getAttributeTextString(kWireLays, value, true));
    EXPECT_EQ(value, QStringLiteral("P*"));
    ref.setSpace(QStringLiteral("NO_SUCH_SPACE"));
    EXPECT_FALSE(ref.find(kWdm, 0, 0));
}

TEST_F(QvxBlockRefTest, ReferenceBusyErasedOrDocumentClosedIsNotReached) {
    OvApDocument* doc = savedDocument(QStringLiteral("gone.dwg"), QStringLiteral("W*"));
    ZelQvxBlockRef ref;
    ASSERT_TRUE(ref.open(path(QStringLiteral("gone.dwg")), 32, false));
    ASSERT_TRUE(ref.find(kWdm, 0, 0));

    // Open elsewhere for read: readers share it, a writer is refused.
    OvDbEntity* reference = nullptr;
    ASSERT_EQ(ovdbOpenObject(reference, m_wdm, OvDb::kForRead), Orvex::eOk);
    QString value;
    EXPECT_TRUE(ref.getAttributeTextString(kWireLays, value, true));
    EXPECT_FALSE(ref.setAttributeTextString(kWireLays, QStringLiteral("X"), true));
    reference->close();

    // Erased after the find.
    ASSERT_EQ(ovdbOpenObject(reference, m_wdm, OvDb::kForWrite), Orvex::eOk);
    ASSERT_EQ(reference->erase(), Orvex::eOk);
    reference->close();
    value = QStringLiteral("untouched");
    EXPECT_FALSE(ref.getAttributeTextString(kWireLays, value, true));
    EXPECT_FALSE(ref.setAttributeTextString(kWireLays, QStringLiteral("X"), true));
    EXPECT_EQ(value, QStringLiteral("untouched"));

    // The document closes while the helper still holds it.
    addReference(doc->database(), kWdm, {{kWireLays, "V*"}});
    ASSERT_TRUE(ref.find(kWdm, 0, 0));
    ASSERT_EQ(ovDocManagerPtr()->closeDocument(doc), Orvex::eOk);
    EXPECT_EQ(ref.database(), nullptr);
    EXPECT_FALSE(ref.getAttributeTextString(kWireLays, value, true));
    EXPECT_FALSE(ref.find(kWdm, 0, 0));
}

} // namespace
