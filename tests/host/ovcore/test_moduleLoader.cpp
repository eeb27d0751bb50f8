#include "OvcoreTest.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvEdCommandStack.h"
#include "ovcore/OvModule.h"
#include "ovcore/OvModuleLoader.h"
#include "ovcore/OvRxDynamicLinker.h"
#include "ovcore/OvRxSystemRegistry.h"

#include <QTemporaryDir>

namespace {

const QString kModule = QStringLiteral("ovcore_testmodule.ovm");
const QString kTag = QStringLiteral("[testmodule] ");

class HostModuleLoader : public OvcoreTest {
protected:
    void SetUp() override {
        OvcoreTest::SetUp();
        docs = ovDocManagerPtr();
        commands = OvEdCommandStack::cast(ovrxSysRegistry()->at(L"ORVEX_REGISTERED_COMMANDS"));
        linker = OvRxDynamicLinker::cast(ovrxSysRegistry()->at(L"DynamicLinker"));
        ASSERT_NE(linker, nullptr);
    }
    // What the test module said, without its tag.
    QStringList said() const {
        QStringList lines = linesStartingWith(kTag);
        for (QString& line : lines)
            line.remove(0, kTag.size());
        return lines;
    }

    OvApDocManager* docs = nullptr;
    OvEdCommandStack* commands = nullptr;
    OvRxDynamicLinker* linker = nullptr;
};

TEST_F(HostModuleLoader, TheModuleRegistersItselfWithTheLinker) {
    ASSERT_TRUE(linker->loadModule(modulePath(kModule)));
    EXPECT_EQ(ovrxLoadedModules(), QStringList({kModule}));
    OvModule* module = OvModuleLoader::instance().find(kModule);
    ASSERT_NE(module, nullptr);
    // Loading it again changes nothing.
    clearOutput();
    EXPECT_TRUE(ovrxLoadModule(modulePath(kModule)));
    EXPECT_TRUE(said().isEmpty());

    // A locked module stays.
    ASSERT_TRUE(linker->lockApplication(module->appId()));
    EXPECT_FALSE(linker->unloadModule(kModule));
    EXPECT_TRUE(output().contains(QStringLiteral("is locked")));
    ASSERT_TRUE(linker->unlockApplication(module->appId()));
    EXPECT_TRUE(linker->unloadModule(kModule));
    EXPECT_EQ(said(), QStringList({"message 2", "detach"}));
    EXPECT_TRUE(ovrxLoadedModules().isEmpty());
}

TEST_F(HostModuleLoader, ModulesThatCannotServeAreRefusedWithAReason) {
    EXPECT_FALSE(ovrxLoadModule(modulePath(QStringLiteral("ovcore_testmodule_attachfails.ovm"))));
    EXPECT_TRUE(output().contains(QStringLiteral("refused to load: its library entry failed")));
    EXPECT_FALSE(said().contains(QStringLiteral("message 1")));

    clearOutput();
    EXPECT_FALSE(ovrxLoadModule(modulePath(QStringLiteral("ovcore_testmodule_oldapi.ovm"))));
    EXPECT_TRUE(output().contains(QStringLiteral("is built for host API 25.0; this host has 26")));
    EXPECT_EQ(said(), QStringList({"attach with instance", "detach"}));

    // A shared object without the exports: dlsym's reason is given.
    clearOutput();
    EXPECT_FALSE(ovrxLoadModule(modulePath(QStringLiteral("libovcore.so"))));
    EXPECT_TRUE(output().contains(QStringLiteral("ovrxGetApiVersion"))) << output().toStdString();

    // Not a shared object at all: dlopen's reason is given.
    QTemporaryDir dir;
    clearOutput();
    EXPECT_FALSE(
        ovrxLoadModule(writeFile(dir.filePath(QStringLiteral("junk.ovm")), "not a library")));
    EXPECT_TRUE(output().contains(QStringLiteral("junk.ovm")));
    EXPECT_TRUE(output().contains(QStringLiteral("file too short")) ||
                output().contains(QStringLiteral("invalid ELF header")))
        << output().toStdString();
    EXPECT_TRUE(ovrxLoadedModules().isEmpty());
}

TEST_F(HostModuleLoader, CommandsOfAModuleRunGuardedAndOutliveIt) {
    ASSERT_EQ(docs->newDocument(), Orvex::eOk);
    ASSERT_TRUE(ovrxLoadModule(modulePath(kModule)));
    OvEdCommand* hello = commands->lookupGlobalCmd(L"TmHello");
    ASSERT_NE(hello, nullptr);

    clearOutput();
    EXPECT_EQ(commands->runCommand(QStringLiteral("tmhallo")), OvEdCommandStack::RunStatus::Ran);
    EXPECT_EQ(commands->runCommand(QStringLiteral("TmThrow")), OvEdCommandStack::RunStatus::Threw);
    EXPECT_EQ(commands->runCommand(QStringLiteral("TmUnloadSelf")),
              OvEdCommandStack::RunStatus::Ran);
    EXPECT_EQ(commands->runCommand(QStringLiteral("_TmHello")), OvEdCommandStack::RunStatus::Ran);
    EXPECT_EQ(said(), QStringList({"hello in Drawing1.dwg", "unload from inside: refused",
                                   "hello in Drawing1.dwg"}));
    EXPECT_TRUE(output().contains(
        QStringLiteral("; error: exception in command TMTHROW: the test command failed")));
    EXPECT_TRUE(
        output().contains(QStringLiteral("cannot unload ovcore_testmodule.ovm while it runs")));

    // The module never takes its commands back; once it is gone they no longer run.
    ASSERT_TRUE(ovrxUnloadModule(kModule));
    EXPECT_EQ(commands->runCommand(QStringLiteral("TmHello")),
              OvEdCommandStack::RunStatus::Refused);
}

} // namespace
