// The reconciliation at drawing load, through the real module: which drawings get their
// current wire type put back to the default, and that no drawing is marked as changed by
// it.

#include "entry/ZelModuleTest.h"

#include "support/ZelTestDrawing.h"

#include "ovdb/ovdb.h"

#include <optional>

namespace {

const QString kZelWireType = QStringLiteral("ZEL_WIRETYPE");
const QString kCurrentWireLay = QStringLiteral("CURRENT_WIRELAY");

struct Drawing {
    bool withWdm = true;
    QString wireLays = QStringLiteral("RED*,BLU*");
    // Layers with a wire type record.
    QStringList wireLayers = {QStringLiteral("RED_1"), QStringLiteral("BLU_2")};
    QStringList otherLayers = {QStringLiteral("NOTES")};
    QString currentLayer = QStringLiteral("NOTES");
    // Default and current layer of the current wire layer record; none: no record.
    std::optional<QStringList> record =
        QStringList{QStringLiteral("RED_1"), QStringLiteral("BLU_2")};
};

resbuf* wireTypeRecord(const QString& layer) {
    const std::wstring color = layer.section(u'_', 0, 0).toStdWString();
    const std::wstring size = layer.section(u'_', 1).toStdWString();
    return ovutBuildList(1, color.c_str(), 2, size.c_str(), 3, L"WIRE", 90, 0, 290, 1, 0);
}

// Fills a database as the test case describes it.
void build(OvDbDatabase* database, const Drawing& drawing) {
    for (const QString& name : drawing.wireLayers) {
        const OvDbObjectId layer = ZelTestDrawing::addLayer(database, name);
        resbuf* record = wireTypeRecord(name);
        EXPECT_EQ(ZelTestDrawing::setExtensionRecord(layer, kZelWireType, record), Orvex::eOk);
        ovutRelRb(record);
    }
    for (const QString& name : drawing.otherLayers)
        ZelTestDrawing::addLayer(database, name);
    if (drawing.withWdm)
        ZelTestDrawing::addWdmBlock(database, drawing.wireLays);
    if (drawing.record) {
        const std::wstring defaultLayer = drawing.record->at(0).toStdWString();
        const std::wstring currentLayer = drawing.record->at(1).toStdWString();
        resbuf* record =
            ovutBuildList(1, defaultLayer.c_str(), 1, currentLayer.c_str(), 1, L"%C-%S", 290, 1, 0);
        EXPECT_EQ(ZelTestDrawing::setNamedRecord(database, kZelWireType, kCurrentWireLay, record),
                  Orvex::eOk);
        ovutRelRb(record);
    }
    EXPECT_EQ(database->setClayer(ZelTestDrawing::addLayer(database, drawing.currentLayer)),
              Orvex::eOk);
}

class DrawingLoadTest : public ZelModuleTest {
protected:
    void SetUp() override {
        ZelModuleTest::SetUp();
        ASSERT_TRUE(loadModule());
    }

    // The drawing written to a file of its own.
    QString write(const Drawing& drawing) {
        OvDbDatabase database;
        build(&database, drawing);
        const QString path = tempPath(QStringLiteral("drawings/%1.dwg").arg(++m_files));
        EXPECT_TRUE(ZelTestDrawing::save(&database, path));
        return path;
    }

    // The current wire layer record's three names and its flag, or "none".
    QString currentRecord() const {
        resbuf* chain =
            ZelTestDrawing::namedRecord(workingDatabase(), kZelWireType, kCurrentWireLay);
        if (chain == nullptr)
            return QStringLiteral("none");
        QStringList parts;
        for (const resbuf* link = chain; link != nullptr; link = link->rbnext) {
            if (link->restype == 1)
                parts << QString::fromWCharArray(link->resval.rstring);
            else if (link->restype == 290)
                parts << QString::number(link->resval.rint);
        }
        ovutRelRb(chain);
        return parts.join(u'|');
    }

    bool isModified() const { return workingDatabase()->isModified(); }

private:
    int m_files = 0;
};

TEST_F(DrawingLoadTest, OffAWireLayerTheStoredCurrentWireTypeGoesBackToTheDefault) {
    ASSERT_NE(openDocument(write(Drawing())), nullptr);
    EXPECT_EQ(currentRecord(), QStringLiteral("RED_1|RED_1|%C-%S|1"));
    EXPECT_FALSE(isModified());
}

TEST_F(DrawingLoadTest, DrawingsThatKeepTheirCurrentWireType) {
    struct Case {
        const char* what;
        Drawing drawing;
        QString expected;
    };
    Drawing onWireLayer;
    onWireLayer.currentLayer = QStringLiteral("RED_1");
    Drawing onListedLayer;
    onListedLayer.otherLayers = {QStringLiteral("BLU_9")};
    onListedLayer.currentLayer = QStringLiteral("BLU_9");
    Drawing currentInOtherCase;
    currentInOtherCase.record = QStringList{QStringLiteral("RED_1"), QStringLiteral("notes")};
    // Equal to the default, the stored current layer stays even when that layer is gone
    // (a reset would take the first wire layer for both).
    Drawing currentIsDefault;
    currentIsDefault.record = QStringList{QStringLiteral("GONE"), QStringLiteral("gone")};
    Drawing withoutWdm;
    withoutWdm.withWdm = false;
    // Not even the record that any other drawing would get.
    Drawing withoutWdmOrRecord = withoutWdm;
    withoutWdmOrRecord.record.reset();

    const Case cases[] = {
        {"current layer is a wire layer", onWireLayer, QStringLiteral("RED_1|BLU_2|%C-%S|1")},
        {"current layer is caught by WIRELAYS", onListedLayer,
         QStringLiteral("RED_1|BLU_2|%C-%S|1")},
        {"stored current layer equal in another case", currentInOtherCase,
         QStringLiteral("RED_1|notes|%C-%S|1")},
        {"stored current layer equal to the default", currentIsDefault,
         QStringLiteral("GONE|gone|%C-%S|1")},
        {"drawing file without WD_M", withoutWdm, QStringLiteral("RED_1|BLU_2|%C-%S|1")},
        {"drawing file without WD_M or record", withoutWdmOrRecord, QStringLiteral("none")},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        ASSERT_NE(openDocument(write(c.drawing)), nullptr);
        EXPECT_EQ(currentRecord(), c.expected);
        EXPECT_FALSE(isModified());
    }
}

TEST_F(DrawingLoadTest, DrawingsWithoutAFileAreReconciledWithoutBeingMarkedChanged) {
    // Never saved, they cannot be opened by name: the routine goes on without looking for
    // WD_M. The first wire type becomes default and current; a drawing without any gets
    // nothing, as the default wire type's name is a text of the module's resources, which
    // the routine does not switch to.
    ASSERT_TRUE(unloadModule());
    OvApDocument* withWireTypes = newDocument();
    Drawing drawing;
    drawing.withWdm = false;
    drawing.record.reset();
    build(workingDatabase(), drawing);
    ovdbSetDbmod(workingDatabase(), 0);
    ASSERT_NE(newDocument(), nullptr);
    ovdbSetDbmod(workingDatabase(), 0);

    ASSERT_TRUE(loadModule());
    EXPECT_EQ(currentRecord(), QStringLiteral("none"));
    EXPECT_FALSE(isModified());
    ASSERT_EQ(ovDocManagerPtr()->activateDocument(withWireTypes), Orvex::eOk);
    EXPECT_EQ(currentRecord(), QStringLiteral("RED_1|RED_1||0"));
    EXPECT_FALSE(isModified());
}

TEST_F(DrawingLoadTest, ADrawingModifiedBeforeTheLoadStaysModified) {
    ASSERT_TRUE(unloadModule());
    const QString path = write(Drawing());
    ASSERT_NE(openDocument(path), nullptr);
    ZelTestDrawing::addLayer(workingDatabase(), QStringLiteral("SKETCH"));
    ASSERT_TRUE(isModified());

    ASSERT_TRUE(loadModule());
    EXPECT_EQ(currentRecord(), QStringLiteral("RED_1|RED_1|%C-%S|1"));
    EXPECT_TRUE(isModified());
}

} // namespace
