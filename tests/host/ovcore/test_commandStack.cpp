#include "OvcoreTest.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvEdCommandStack.h"
#include "ovcore/OvRxSystemRegistry.h"
#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbHostApplicationServices.h"
#include "ovdb/OvDbLayerTable.h"

namespace {

int s_runs = 0;
OvDbLayerTable* s_leftOpen = nullptr;

void countRun() {
    ++s_runs;
}

void runModalFromInside() {
    ++s_runs;
    auto* stack = OvEdCommandStack::cast(ovrxSysRegistry()->at(L"ORVEX_REGISTERED_COMMANDS"));
    stack->runCommand(QStringLiteral("Inner"));
    stack->runCommand(QStringLiteral("Glass"));
}

void removeItself() {
    auto* stack = OvEdCommandStack::cast(ovrxSysRegistry()->at(L"ORVEX_REGISTERED_COMMANDS"));
    stack->removeCmd(L"T", L"Vanish");
    ++s_runs;
}

void leaveLayerTableOpen() {
    OvDbDatabase* db = OvDbHostApplicationServices::getRefPtr()->workingDatabase();
    db->getLayerTable(s_leftOpen, OvDb::kForRead);
}

class HostCommandStack : public OvcoreTest {
protected:
    void SetUp() override {
        OvcoreTest::SetUp();
        s_runs = 0;
        stack = OvEdCommandStack::cast(ovrxSysRegistry()->at(L"ORVEX_REGISTERED_COMMANDS"));
        ASSERT_NE(stack, nullptr);
    }
    OvEdCommandStack* stack = nullptr;
};

TEST_F(HostCommandStack, RunsByLocalOrGlobalNameWithoutRegardToCase) {
    OvEdCommand* added = nullptr;
    int anchor = 0;
    ASSERT_EQ(stack->addCommand(L"GROUP1", L"DoThing", L"MachDing", 5, countRun, nullptr, 7,
                                OvRxResourceInstance(&anchor), &added),
              Orvex::eOk);
    ASSERT_NE(added, nullptr);

    EXPECT_EQ(stack->runCommand(QStringLiteral("machding")), OvEdCommandStack::RunStatus::Ran);
    EXPECT_EQ(stack->runCommand(QStringLiteral("_DOTHING")), OvEdCommandStack::RunStatus::Ran);
    EXPECT_EQ(stack->runCommand(QStringLiteral("DoThing")), OvEdCommandStack::RunStatus::Ran);
    // The underscore asks for the global name only.
    EXPECT_EQ(stack->runCommand(QStringLiteral("_MachDing")), OvEdCommandStack::RunStatus::Unknown);
    EXPECT_EQ(s_runs, 3);
    EXPECT_TRUE(output().contains(QStringLiteral("Unknown command \"_MachDing\"")));
}

TEST_F(HostCommandStack, RefusesDuplicatesAndBadNames) {
    ASSERT_EQ(stack->addCommand(L"G", L"Same", L"Same", 0, countRun), Orvex::eOk);
    EXPECT_EQ(stack->addCommand(L"g", L"SAME", L"Other", 0, countRun), Orvex::eDuplicateKey);
    EXPECT_EQ(stack->lookupLocalCmd(L"Other"), nullptr);
    // Another group may use the name; the group added last is found first.
    ASSERT_EQ(stack->addCommand(L"H", L"Same", L"Same", 1, countRun), Orvex::eOk);
    EXPECT_EQ(stack->lookupGlobalCmd(L"same")->groupName(), QStringLiteral("H"));

    EXPECT_EQ(stack->addCommand(L"G", L"", L"X", 0, countRun), Orvex::eInvalidInput);
    EXPECT_EQ(stack->addCommand(L"G", L"Two Words", nullptr, 0, countRun), Orvex::eInvalidInput);
    EXPECT_EQ(stack->addCommand(L"G", L"NoHandler", nullptr, 0, nullptr), Orvex::eInvalidInput);
    EXPECT_EQ(stack->addCommand(nullptr, L"NoGroup", nullptr, 0, countRun), Orvex::eInvalidInput);
    // No local name: the global one serves.
    ASSERT_EQ(stack->addCommand(L"G", L"Plain", nullptr, 0, countRun), Orvex::eOk);
    EXPECT_EQ(stack->lookupLocalCmd(L"plain")->localName(), QStringLiteral("Plain"));
}

TEST_F(HostCommandStack, RemovesCommandsAndGroups) {
    ASSERT_EQ(stack->addCommand(L"G", L"One", nullptr, 0, countRun), Orvex::eOk);
    ASSERT_EQ(stack->addCommand(L"G", L"Two", nullptr, 0, countRun), Orvex::eOk);
    EXPECT_EQ(stack->removeCmd(L"g", L"ONE"), Orvex::eOk);
    EXPECT_EQ(stack->removeCmd(L"G", L"One"), Orvex::eKeyNotFound);
    EXPECT_EQ(stack->removeCmd(L"Nope", L"Two"), Orvex::eKeyNotFound);
    EXPECT_EQ(stack->runCommand(QStringLiteral("One")), OvEdCommandStack::RunStatus::Unknown);
    EXPECT_NE(stack->lookupGlobalCmd(L"Two"), nullptr);

    EXPECT_EQ(stack->removeGroup(L"G"), Orvex::eOk);
    EXPECT_EQ(stack->lookupGlobalCmd(L"Two"), nullptr);
    EXPECT_FALSE(stack->groupNames().contains(QStringLiteral("G")));
    EXPECT_EQ(stack->removeGroup(L"G"), Orvex::eKeyNotFound);
}

TEST_F(HostCommandStack, OnlyTransparentCommandsRunInsideAnother) {
    ASSERT_EQ(stack->addCommand(L"T", L"Outer", nullptr, OvRx::kCmdModal, runModalFromInside),
              Orvex::eOk);
    ASSERT_EQ(stack->addCommand(L"T", L"Inner", nullptr, OvRx::kCmdModal, countRun), Orvex::eOk);
    ASSERT_EQ(stack->addCommand(L"T", L"Glass", nullptr, OvRx::kCmdTransparent, countRun),
              Orvex::eOk);
    ASSERT_EQ(stack->addCommand(L"T", L"Vanish", nullptr, 0, removeItself), Orvex::eOk);

    EXPECT_EQ(stack->runCommand(QStringLiteral("Outer")), OvEdCommandStack::RunStatus::Ran);
    EXPECT_EQ(s_runs, 2); // Outer and Glass; Inner refused
    EXPECT_TRUE(output().contains(QStringLiteral("command Inner cannot run while Outer runs")));

    // A command that removes itself finishes its run and is gone afterwards.
    EXPECT_EQ(stack->runCommand(QStringLiteral("Vanish")), OvEdCommandStack::RunStatus::Ran);
    EXPECT_EQ(s_runs, 3);
    EXPECT_EQ(stack->lookupGlobalCmd(L"Vanish"), nullptr);
}

TEST_F(HostCommandStack, ObjectsLeftOpenByACommandAreReported) {
    ASSERT_EQ(ovDocManagerPtr()->newDocument(), Orvex::eOk);
    ASSERT_EQ(stack->addCommand(L"G", L"LeaveOpen", nullptr, 0, leaveLayerTableOpen), Orvex::eOk);
    stack->runCommand(QStringLiteral("LeaveOpen"));
    ASSERT_NE(s_leftOpen, nullptr);
    EXPECT_EQ(ovcore::openObjectViolations(), 1);
    m_expectedViolations = 1;
    EXPECT_TRUE(
        output().contains(QStringLiteral("; warning: 1 object(s) left open by command LEAVEOPEN")));
    s_leftOpen->close();
    s_leftOpen = nullptr;
}

} // namespace
