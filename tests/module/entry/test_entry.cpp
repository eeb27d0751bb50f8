// ZelWireType.ovm as the host loads it: what it registers at initialisation and at each
// drawing load, what it leaves behind at unload, how it answers messages, and the
// reconciliation at drawing load that keeps each drawing's modified status.

#include "support/ZelTestDrawing.h"
#include "support/ZelTestHost.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvEdCommandStack.h"
#include "ovcore/OvModule.h"
#include "ovcore/OvModuleLoader.h"
#include "ovcore/OvRxAppMsgCode.h"
#include "ovcore/OvRxSystemRegistry.h"
#include "ovcore/oved.h"
#include "ovdb/ovdb.h"

#include <QFile>

namespace {

// A running host into which a test loads the real ZelWireType.ovm, built beside the test
// program. Every document opened from now on first gets stand-ins for the two add-on
// functions that the module makes callable at drawing load.
class ZelModuleTest : public ZelTestHost {
protected:
    void SetUp() override {
        ZelTestHost::SetUp();
        const QString startup = tempPath(QStringLiteral("startup/addon.scm"));
        QFile file(startup);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("(define (wd_cfg_read_dwg_params . args) \"read\")\n"
                   "(define (wd_wirlay_get_dwg_wiretype_settings . args) \"settings\")\n");
        file.close();
        ovDocManagerPtr()->setStartupLispFiles({startup});
    }

    static bool loadModule() {
        const bool loaded =
            OvModuleLoader::instance().load(programFolder() + QStringLiteral("/ZelWireType.ovm"));
        EXPECT_TRUE(loaded) << OvModuleLoader::instance().lastError().toStdString();
        return loaded;
    }
    static bool unloadModule() {
        return OvModuleLoader::instance().unload(QStringLiteral("ZelWireType.ovm"));
    }
    static OvModule* module() {
        return OvModuleLoader::instance().find(QStringLiteral("ZelWireType.ovm"));
    }
};

const QStringList kLispFunctions = ZelTestHost::moduleFunctionNames();

OvEdCommandStack* commandStack() {
    return OvEdCommandStack::cast(ovrxSysRegistry()->at(L"ORVEX_REGISTERED_COMMANDS"));
}

// Calls a function through ovedInvoke, as the module's services call the add-on's.
bool invokable(const wchar_t* name) {
    resbuf* call = ovutBuildList(RTSTR, name, 0);
    resbuf* result = nullptr;
    const int status = ovedInvoke(call, &result);
    ovutRelRb(call);
    ovutRelRb(result);
    return status == RTNORM;
}

// The functions of the table that the current document knows.
QStringList definedFunctions() {
    QStringList defined;
    for (const QString& name : kLispFunctions) {
        if (ovcore::lisp::evalString(QStringLiteral("(defined? '%1)").arg(name)).value == "T")
            defined << name;
    }
    return defined;
}

using EntryTest = ZelModuleTest;

TEST_F(EntryTest, TheCommandIsAddedAtEachLoadOutlivesTheUnloadAndOddMessagesChangeNothing) {
    ASSERT_TRUE(loadModule());
    ASSERT_NE(commandStack()->lookupGlobalCmd(L"WireTypeSel1"), nullptr);

    // Unlocked at initialisation, so the host lets it go on request; the command stays.
    ASSERT_TRUE(unloadModule());
    const OvEdCommand* command = commandStack()->lookupGlobalCmd(L"WireTypeSel1");
    ASSERT_NE(command, nullptr);
    EXPECT_TRUE(command->isOrphaned());

    ASSERT_TRUE(loadModule());
    command = commandStack()->lookupGlobalCmd(L"WireTypeSel1");
    ASSERT_NE(command, nullptr);
    EXPECT_EQ(command->module(), module());
    EXPECT_EQ(commandStack()->commands(QStringLiteral("NQMTZelWireType")).size(), 1);
    ASSERT_NE(newDocument(), nullptr);
    clearOutput();
    EXPECT_EQ(commandStack()->runCommand(QStringLiteral("WireTypeSel1")),
              OvEdCommandStack::RunStatus::Ran);
    EXPECT_TRUE(output().contains(QStringLiteral("WireTypeSel1: the wire type dialogs")));

    // Messages without a working slot, past either end of the table included, answer zero
    // and change nothing.
    const OvModule::EntryPoint entry = module()->entryPoint();
    clearOutput();
    for (int message : {16, 17, 255, 100000, -1, 0, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15})
        EXPECT_EQ(entry(message, nullptr), 0) << message;
    EXPECT_EQ(output(), QString());
    EXPECT_EQ(commandStack()->commands(QStringLiteral("NQMTZelWireType")).size(), 1);
}

TEST_F(EntryTest, EveryDrawingGetsTheSixteenFunctionsWhetherOpenedBeforeOrAfterTheLoad) {
    OvApDocument* before = newDocument();
    ASSERT_NE(before, nullptr);
    EXPECT_TRUE(definedFunctions().isEmpty());
    EXPECT_FALSE(invokable(L"wd_cfg_read_dwg_params"));
    EXPECT_FALSE(invokable(L"wd_wirlay_get_dwg_wiretype_settings"));

    clearOutput();
    ASSERT_TRUE(loadModule());
    OvApDocument* after = newDocument();
    ASSERT_NE(after, nullptr);
    EXPECT_EQ(output(), QString());

    for (OvApDocument* doc : {before, after}) {
        ASSERT_EQ(ovDocManagerPtr()->activateDocument(doc), Orvex::eOk);
        EXPECT_EQ(definedFunctions(), kLispFunctions) << doc->docTitle().toStdString();
        EXPECT_TRUE(invokable(L"wd_cfg_read_dwg_params"));
        EXPECT_TRUE(invokable(L"wd_wirlay_get_dwg_wiretype_settings"));
        // A name reaches its own handler.
        clearOutput();
        EXPECT_EQ(evalLisp(QStringLiteral("(zel_wire_type_sel)")).value, QStringLiteral("nil"));
        EXPECT_TRUE(output().contains("zel_wire_type_sel: the wire type dialogs"));
        // Without a widget application the dialog functions say why they show nothing.
        clearOutput();
        EXPECT_EQ(evalLisp(QStringLiteral("(zel_rename_wire_properties \"A,B\")")).value,
                  QStringLiteral("\"A,B\""));
        EXPECT_TRUE(output().contains("zel_rename_wire_properties: this session shows no windows"));
        clearOutput();
        EXPECT_EQ(evalLisp(QStringLiteral("(zel_invoke_importwt_dlg)")).value, "nil");
        EXPECT_TRUE(output().contains("zel_invoke_importwt_dlg: give the drawing"));
    }

    // The module never takes its functions back when a drawing goes.
    EXPECT_EQ(OvModuleLoader::instance().sendMessage(module(), OvRx::kUnloadDwgMsg, after), 0);
    EXPECT_EQ(definedFunctions(), kLispFunctions);
}

struct Drawing {
    bool withWdm = true;
    QString wireLays = "RED*,BLU*";
    // Layers with a wire type record.
    QStringList wireLayers = {"RED_1", "BLU_2"};
    QStringList otherLayers = {"NOTES"};
    QString currentLayer = "NOTES";
    // Default and current layer of the current wire layer record; none: no record.
    std::optional<QStringList> record = QStringList{"RED_1", "BLU_2"};
};

// Fills a database as the test case describes it.
void build(OvDbDatabase* database, const Drawing& drawing) {
    for (const QString& name : drawing.wireLayers) {
        resbuf* record = ovutBuildList(1, L"RED", 2, L"1.5", 3, L"WIRE", 90, 0, 290, 1, 0);
        EXPECT_EQ(ZelTestDrawing::setExtensionRecord(ZelTestDrawing::addLayer(database, name),
                                                     QStringLiteral("ZEL_WIRETYPE"), record),
                  Orvex::eOk);
        ovutRelRb(record);
    }
    for (const QString& name : drawing.otherLayers)
        ZelTestDrawing::addLayer(database, name);
    if (drawing.withWdm)
        ZelTestDrawing::addWdmBlock(database, drawing.wireLays);
    if (drawing.record)
        ZelTestHost::setCurrentRecord(database, drawing.record->at(0), drawing.record->at(1), true,
                                      QStringLiteral("%C-%S"));
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
    QString currentRecord() const { return ZelTestHost::currentRecord(workingDatabase()); }
    bool isModified() const { return workingDatabase()->isModified(); }

private:
    int m_files = 0;
};

TEST_F(DrawingLoadTest, OnlyOffAWireLayerTheStoredCurrentWireTypeGoesBackToTheDefault) {
    struct Case {
        const char* what;
        Drawing drawing;
        QString expected;
    };
    Drawing onWireLayer;
    onWireLayer.currentLayer = "RED_1";
    Drawing onListedLayer;
    onListedLayer.otherLayers = {"BLU_9"};
    onListedLayer.currentLayer = "BLU_9";
    Drawing currentInOtherCase;
    currentInOtherCase.record = QStringList{"RED_1", "notes"};
    // Equal to the default, the stored current layer stays even when that layer is gone
    // (a reset would take the first wire layer for both).
    Drawing currentIsDefault;
    currentIsDefault.record = QStringList{"GONE", "gone"};
    Drawing withoutWdm;
    withoutWdm.withWdm = false;
    // Not even the record that any other drawing would get.
    Drawing withoutWdmOrRecord = withoutWdm;
    withoutWdmOrRecord.record.reset();

    const Case cases[] = {
        {"current layer is no wire layer", Drawing(), "RED_1|RED_1|%C-%S|1"},
        {"current layer is a wire layer", onWireLayer, "RED_1|BLU_2|%C-%S|1"},
        {"current layer is caught by WIRELAYS", onListedLayer, "RED_1|BLU_2|%C-%S|1"},
        {"stored current layer equal in another case", currentInOtherCase, "RED_1|notes|%C-%S|1"},
        {"stored current layer equal to the default", currentIsDefault, "GONE|gone|%C-%S|1"},
        {"drawing file without WD_M", withoutWdm, "RED_1|BLU_2|%C-%S|1"},
        {"drawing file without WD_M or record", withoutWdmOrRecord, "none"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        ASSERT_NE(openDocument(write(c.drawing)), nullptr);
        EXPECT_EQ(currentRecord(), c.expected);
        EXPECT_FALSE(isModified());
    }
}

TEST_F(DrawingLoadTest, DrawingsOpenAtTheLoadAreReconciledAndKeepTheirModifiedStatus) {
    // Never saved, they cannot be opened by name: the routine goes on without looking for
    // WD_M. The first wire type becomes default and current; a drawing without any gets
    // nothing, as the default wire type's name is a text of the module's resources, which
    // the routine does not switch to. A drawing changed before the load stays changed.
    ASSERT_TRUE(unloadModule());
    OvApDocument* withWireTypes = newDocument();
    Drawing drawing;
    drawing.withWdm = false;
    drawing.record.reset();
    build(workingDatabase(), drawing);
    ovdbSetDbmod(workingDatabase(), 0);
    OvApDocument* empty = newDocument();
    ASSERT_NE(empty, nullptr);
    ovdbSetDbmod(workingDatabase(), 0);
    ASSERT_NE(openDocument(write(Drawing())), nullptr);
    ZelTestDrawing::addLayer(workingDatabase(), QStringLiteral("SKETCH"));
    ASSERT_TRUE(isModified());

    ASSERT_TRUE(loadModule());
    EXPECT_EQ(currentRecord(), QStringLiteral("RED_1|RED_1|%C-%S|1"));
    EXPECT_TRUE(isModified());
    ASSERT_EQ(ovDocManagerPtr()->activateDocument(empty), Orvex::eOk);
    EXPECT_EQ(currentRecord(), QStringLiteral("none"));
    EXPECT_FALSE(isModified());
    ASSERT_EQ(ovDocManagerPtr()->activateDocument(withWireTypes), Orvex::eOk);
    EXPECT_EQ(currentRecord(), QStringLiteral("RED_1|RED_1||0"));
    EXPECT_FALSE(isModified());
}

} // namespace
