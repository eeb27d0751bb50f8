// The application class chain over tables with content and null slots (the module's own
// are nearly empty): each level registers its table and takes back what it owns.

#include "shell/ZelModuleState.h"
#include "shell/ZelOvRxOvmApp.h"

#include "support/ZelTestHost.h"

#include "ovcore/OvEdCommandStack.h"
#include "ovcore/OvRxSystemRegistry.h"
#include "ovcore/oved.h"

#include <vector>

namespace {

std::vector<int> s_calledCodes;
OvRxClass* s_parent = nullptr;
OvRxClass* s_child = nullptr;

int recordCode() {
    s_calledCodes.push_back(ovedGetFunCode());
    return ovedRetNil();
}
void command() {}
void initParent() {
    s_parent = new OvRxClass(L"ZelTestParent", OvRxObject::desc());
    ovrxRegisterClass(s_parent);
}
void initChild() {
    s_child = new OvRxClass(L"ZelTestChild", L"ZelTestParent");
    ovrxRegisterClass(s_child);
}

// The parent first, so that unloading must take the child away before it.
OvRxQvxApp::ClassEntry s_parentEntry = {[] { return s_parent; }, initParent, false};
OvRxQvxApp::ClassEntry s_childEntry = {[] { return s_child; }, initChild, false};
OvRxQvxApp::ClassEntry* const s_classes[] = {&s_parentEntry, nullptr, &s_childEntry};
OvRxQvxApp::CommandEntry s_plain = {L"ZELTEST", L"TPlain", L"TPlainLocal",         0,
                                    command,    nullptr,   OvRxQvxApp::kNoResource};
OvRxQvxApp::CommandEntry s_noInstance = {
    L"ZELTEST", L"TNoInstance",         nullptr, OvRxOvmApp::kCmdNoResourceInstance, command,
    nullptr,    OvRxQvxApp::kNoResource};
OvRxQvxApp::CommandEntry* const s_commands[] = {nullptr, &s_plain, nullptr, &s_noInstance};
OvRxQvxApp::CommandEntry s_addOn = {
    L"ZELTESTADDON", L"TAddOn", L"TAddOn", 1, command, nullptr, OvRxQvxApp::kNoResource};
OvRxQvxApp::CommandEntry* const s_addOnCommands[] = {nullptr, &s_addOn};
OvRxQvxApp::LispSymbolEntry s_first = {L"zeltest_first", recordCode, 1, 0};
OvRxQvxApp::LispSymbolEntry s_second = {L"zeltest_second", recordCode, 1, 0};
OvRxQvxApp::LispSymbolEntry* const s_symbols[] = {nullptr, &s_first, nullptr, &s_second};

class TestApp : public ZelOvRxOvmApp {
public:
    TestApp() : ZelOvRxOvmApp({s_classes, s_commands, s_addOnCommands, s_symbols}, true, true) {}
    void RegisterComponents() override { ++registered; }
    int registered = 0;
};

OvEdCommand* lookup(const wchar_t* name) {
    return OvEdCommandStack::cast(ovrxSysRegistry()->at(L"ORVEX_REGISTERED_COMMANDS"))
        ->lookupGlobalCmd(name);
}

using AppChainTest = ZelTestHost;

TEST_F(AppChainTest, EachLevelRegistersItsTableAndTakesBackWhatItOwns) {
    int instance = 0;
    void* const savedInstance = moduleInstance;
    moduleInstance = &instance;
    TestApp app;
    ASSERT_EQ(app.DispatchMessage(1, nullptr), 0);
    moduleInstance = savedInstance;
    EXPECT_EQ(app.registered, 1);
    EXPECT_TRUE(s_parentEntry.registered && s_childEntry.registered);
    EXPECT_EQ(s_child->myParent(), s_parent);
    ASSERT_TRUE(lookup(L"TPlain") && lookup(L"TNoInstance") && lookup(L"TAddOn"));
    EXPECT_EQ(lookup(L"TPlain")->localName(), QStringLiteral("TPlainLocal"));
    EXPECT_EQ(lookup(L"TPlain")->resourceInstance().handle(), &instance);
    EXPECT_TRUE(lookup(L"TNoInstance")->resourceInstance().isNull());
    EXPECT_TRUE(lookup(L"TAddOn")->resourceInstance().isNull());

    ASSERT_NE(newDocument(), nullptr);
    ASSERT_EQ(app.DispatchMessage(3, activeDocument()), 0);
    evalLisp(QStringLiteral("(zeltest_first) (zeltest_second)"));
    EXPECT_EQ(s_calledCodes, (std::vector<int>{0, 1}));
    ASSERT_EQ(app.DispatchMessage(4, activeDocument()), 0);
    EXPECT_EQ(evalLisp(QStringLiteral("(list (defined? 'zeltest_first) "
                                      "(defined? 'zeltest_second))"))
                  .value,
              QStringLiteral("(nil nil)"));

    ASSERT_EQ(app.DispatchMessage(2, nullptr), 0);
    EXPECT_FALSE(s_parentEntry.registered || s_childEntry.registered);
    EXPECT_EQ(ovrxFindClass(QStringLiteral("ZelTestParent")), nullptr);
    EXPECT_EQ(ovrxFindClass(QStringLiteral("ZelTestChild")), nullptr);
    EXPECT_EQ(lookup(L"TPlain"), nullptr);
    EXPECT_EQ(lookup(L"TNoInstance"), nullptr);
    // Add-on commands stay.
    EXPECT_NE(lookup(L"TAddOn"), nullptr);
}

} // namespace
