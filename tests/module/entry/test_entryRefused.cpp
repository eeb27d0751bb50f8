// Without its resource library ZelWireType.ovm is refused; beside it, in any folder, it
// loads. A program of its own, so that no test has put the library into the process.

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvEdCommandStack.h"
#include "ovcore/OvHost.h"
#include "ovcore/OvModuleLoader.h"
#include "ovcore/OvRxSystemRegistry.h"
#include "ovdb/ovut.h"
#include "platform/Resources.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

TEST(EntryRefusedTest, WithoutItsResourceLibraryTheModuleStaysOut) {
    // The system's search must not find the library either, or the module would take it.
    if (platform::ResourceHandle* found =
            platform::loadResourceLibrary(QStringLiteral("ZelWireTypeRes.so"))) {
        platform::freeResourceLibrary(found);
        GTEST_SKIP() << "ZelWireTypeRes.so is on the system's library path";
    }
    const QString programFolder =
        QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/self/exe"))).absolutePath();
    QTemporaryDir folder;
    const QString module = folder.filePath(QStringLiteral("ZelWireType.ovm"));
    ASSERT_TRUE(QFile::copy(programFolder + QStringLiteral("/ZelWireType.ovm"), module));
    ovutSetOutputSink([](std::string_view) {});
    OvHost host;
    ASSERT_TRUE(host.init());
    // Closed at shutdown: a refused module must have left no reactor behind to be told.
    ASSERT_EQ(ovDocManagerPtr()->newDocument(), Orvex::eOk);
    auto* commands = OvEdCommandStack::cast(ovrxSysRegistry()->at(L"ORVEX_REGISTERED_COMMANDS"));

    EXPECT_FALSE(OvModuleLoader::instance().load(module));
    EXPECT_TRUE(OvModuleLoader::instance().lastError().contains(QStringLiteral("refused")))
        << OvModuleLoader::instance().lastError().toStdString();
    EXPECT_TRUE(OvModuleLoader::instance().modules().isEmpty());
    EXPECT_EQ(commands->lookupGlobalCmd(L"WireTypeSel1"), nullptr);

    // The library beside it: the module's own folder comes first.
    ASSERT_TRUE(QFile::copy(programFolder + QStringLiteral("/ZelWireTypeRes.so"),
                            folder.filePath(QStringLiteral("ZelWireTypeRes.so"))));
    EXPECT_TRUE(OvModuleLoader::instance().load(module))
        << OvModuleLoader::instance().lastError().toStdString();
    EXPECT_NE(commands->lookupGlobalCmd(L"WireTypeSel1"), nullptr);
    host.shutdown();
    ovutResetOutputSink();
}

} // namespace
