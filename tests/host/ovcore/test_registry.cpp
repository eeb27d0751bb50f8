#include "OvcoreTest.h"

#include "ovcore/OvApDocManagerReactor.h"
#include "ovcore/OvRxDynamicLinker.h"
#include "ovcore/OvRxSystemRegistry.h"

namespace {

using HostRegistry = OvcoreTest;

// The linker and the command stack are found and cast in the set-up of the module loader's
// and the command stack's tests; here what the registry does not hold.
TEST_F(HostRegistry, SystemRegistryRefusesWhatItDoesNotHold) {
    OvRxObject* commands = ovrxSysRegistry()->at(L"ORVEX_REGISTERED_COMMANDS");
    EXPECT_EQ(OvRxDynamicLinker::cast(commands), nullptr);
    EXPECT_EQ(ovrxSysRegistry()->at(L"NoSuchKey"), nullptr);
    EXPECT_EQ(ovrxSysRegistry()->at(static_cast<const wchar_t*>(nullptr)), nullptr);

    // An app id the linker never gave out is refused.
    int stranger = 0;
    auto* linker = OvRxDynamicLinker::cast(ovrxSysRegistry()->at(L"DynamicLinker"));
    EXPECT_FALSE(linker->unlockApplication(&stranger));
    EXPECT_EQ(linker->registerAppMDIAware(&stranger), Orvex::eInvalidInput);
    EXPECT_FALSE(linker->isAppMDIAware(&stranger));
}

TEST_F(HostRegistry, ClassesAreLinkedByNameAndDeletedChildrenFirstButHostOnesStay) {
    EXPECT_EQ(ovrxFindClass(QStringLiteral("OvApDocManagerReactor")),
              OvApDocManagerReactor::desc());
    EXPECT_FALSE(deleteOvRxClass(OvRxObject::desc()));
    EXPECT_EQ(ovrxFindClass(QStringLiteral("OvRxObject")), OvRxObject::desc());

    auto* base = new OvRxClass(L"TmBase", OvRxObject::desc());
    auto* derived = new OvRxClass(L"TmDerived", L"TmBase");
    ASSERT_EQ(ovrxRegisterClass(derived), Orvex::eOk);
    ASSERT_EQ(ovrxRegisterClass(base), Orvex::eOk);
    EXPECT_EQ(ovrxRegisterClass(base), Orvex::eOk);
    OvRxClass impostor(L"TmBase", OvRxObject::desc());
    EXPECT_EQ(ovrxRegisterClass(&impostor), Orvex::eDuplicateKey);

    EXPECT_EQ(derived->myParent(), nullptr);
    EXPECT_TRUE(ovrxBuildClassHierarchy());
    EXPECT_EQ(derived->myParent(), base);
    EXPECT_TRUE(derived->isDerivedFrom(OvRxObject::desc()));

    // Deleting a parent before its child would leave the child dangling.
    EXPECT_FALSE(deleteOvRxClass(base));
    EXPECT_TRUE(output().contains(QStringLiteral("TmBase is the parent of TmDerived")));
    EXPECT_TRUE(deleteOvRxClass(derived));
    EXPECT_TRUE(deleteOvRxClass(base));
    EXPECT_EQ(ovrxFindClass(QStringLiteral("TmBase")), nullptr);

    auto* orphan = new OvRxClass(L"TmOrphan", L"TmNowhere");
    ASSERT_EQ(ovrxRegisterClass(orphan), Orvex::eOk);
    EXPECT_FALSE(ovrxBuildClassHierarchy());
    EXPECT_TRUE(output().contains(
        QStringLiteral("class TmOrphan has parent TmNowhere, which is not registered")));
    EXPECT_TRUE(deleteOvRxClass(orphan));
    EXPECT_TRUE(ovrxBuildClassHierarchy());
}

} // namespace
