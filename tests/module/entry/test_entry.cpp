// ZelWireType.ovm as the host loads it: what it registers at initialisation and at each
// drawing load, what it leaves behind at unload, and how it answers messages.

#include "entry/ZelModuleTest.h"

#include "support/ZelTestDrawing.h"

#include "ovcore/OvEdCommandStack.h"
#include "ovcore/OvRxAppMsgCode.h"
#include "ovcore/OvRxSystemRegistry.h"
#include "ovcore/oved.h"
#include "ovdb/ovdb.h"

namespace {

const QStringList kLispFunctions = {"zel_wire_type_sel",           "zel_get_current_wiretype",
                                    "zel_reset_current_wiretype",  "zel_get_wiretype_settings",
                                    "zel_query_wiretype",          "zel_add_wiretype",
                                    "zel_edit_wiretype",           "zel_rename_wire_properties",
                                    "zel_set_current_wiretype",    "zel_get_active_dwg_wiretype",
                                    "zel_remove_wiretype",         "zel_set_default_wiretype",
                                    "zel_get_default_wiretype",    "zel_get_dwg_wiretype_settings",
                                    "zel_get_wiretype_layer_info", "zel_invoke_importwt_dlg"};

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

TEST_F(EntryTest, TheCommandIsAddedAtEachLoadAndOutlivesTheUnload) {
    ASSERT_TRUE(loadModule());
    EXPECT_EQ(module()->apiVersion(), 0x1A0000u);
    EXPECT_TRUE(module()->isMDIAware());
    const OvEdCommand* command = commandStack()->lookupGlobalCmd(L"WireTypeSel1");
    ASSERT_NE(command, nullptr);
    EXPECT_EQ(command->groupName(), QStringLiteral("NQMTZelWireType"));
    EXPECT_EQ(command->localName(), QStringLiteral("WireTypeSel1"));
    EXPECT_EQ(command->commandFlags(), 1);
    EXPECT_EQ(command->functionCode(), -1);
    EXPECT_TRUE(command->resourceInstance().isNull());
    EXPECT_EQ(command->UIContext(), nullptr);

    // Unlocked at initialisation, so the host lets it go on request; the command stays.
    ASSERT_TRUE(unloadModule());
    command = commandStack()->lookupGlobalCmd(L"WireTypeSel1");
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
        // Each name reaches its own handler.
        for (const char* name :
             {"zel_wire_type_sel", "zel_rename_wire_properties", "zel_invoke_importwt_dlg"}) {
            clearOutput();
            EXPECT_EQ(evalLisp(QStringLiteral("(%1)").arg(name)).value, QStringLiteral("nil"));
            EXPECT_TRUE(output().contains(name + QStringLiteral(": the wire type dialogs")));
        }
    }
    resbuf* record = ovutBuildList(1, L"RED_1", 1, L"RED_1", 1, L"", 290, 0, 0);
    ASSERT_EQ(ZelTestDrawing::setNamedRecord(workingDatabase(), "ZEL_WIRETYPE", "CURRENT_WIRELAY",
                                             record),
              Orvex::eOk);
    ovutRelRb(record);
    EXPECT_EQ(evalLisp(QStringLiteral("(zel_get_default_wiretype)")).value, "\"RED_1\"");

    // The module never takes its functions back when a drawing goes.
    EXPECT_EQ(OvModuleLoader::instance().sendMessage(module(), OvRx::kUnloadDwgMsg, after), 0);
    EXPECT_EQ(definedFunctions(), kLispFunctions);
}

TEST_F(EntryTest, MessagesWithoutAWorkingSlotAnswerZeroAndChangeNothing) {
    ASSERT_NE(newDocument(), nullptr);
    ASSERT_TRUE(loadModule());
    const OvModule::EntryPoint entry = module()->entryPoint();
    clearOutput();
    for (int message : {16, 17, 255, 100000, -1, 0, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15})
        EXPECT_EQ(entry(message, nullptr), 0) << message;
    EXPECT_EQ(output(), QString());
    EXPECT_EQ(commandStack()->commands(QStringLiteral("NQMTZelWireType")).size(), 1);
}

} // namespace
