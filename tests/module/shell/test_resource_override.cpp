#include "shell/ResourceOverride.h"

#include "shell/ZelLibraryEntry.h"
#include "shell/ZelModuleState.h"

#include "support/ZelTestHost.h"

#include "platform/Resources.h"

#include <stdexcept>

namespace {

// The general caption: a string of the module's library, not of the host.
constexpr unsigned kCaption = 150;

using ResourceOverrideTest = ZelTestHost;

TEST_F(ResourceOverrideTest, ModuleStringsLoadInsideAndComeBackEmptyOutside) {
    ASSERT_NE(resourceLibrary, nullptr);
    EXPECT_EQ(moduleResource, resourceLibrary);
    platform::ResourceHandle* before = platform::currentResourceHandle();
    EXPECT_TRUE(platform::loadString(kCaption).isEmpty());
    {
        ResourceOverride resources;
        EXPECT_EQ(platform::currentResourceHandle(), resourceLibrary);
        EXPECT_FALSE(platform::loadString(kCaption).isEmpty());
        {
            ResourceOverride nested;
            EXPECT_FALSE(platform::loadString(kCaption).isEmpty());
        }
        EXPECT_EQ(platform::currentResourceHandle(), resourceLibrary)
            << "the inner switch gives back the module's handle, not the host's";
    }
    EXPECT_EQ(platform::currentResourceHandle(), before);
    EXPECT_TRUE(platform::loadString(kCaption).isEmpty());

    // An exception on the way out still puts the handle back.
    EXPECT_THROW(
        {
            ResourceOverride resources;
            throw std::runtime_error("unwinding");
        },
        std::runtime_error);
    EXPECT_EQ(platform::currentResourceHandle(), before);
}

TEST_F(ResourceOverrideTest, LibraryEntryAttachesAndDetaches) {
    ZelDetachResources();
    int instance = 0;
    platform::ResourceHandle* before = platform::currentResourceHandle();
    ASSERT_TRUE(ZelLibraryEntry(&instance, kZelProcessAttach));
    EXPECT_EQ(moduleInstance, &instance);
    EXPECT_TRUE(extensionModuleReady);
    EXPECT_EQ(defaultResource, before);
    ASSERT_NE(resourceLibrary, nullptr);
    EXPECT_EQ(moduleResource, resourceLibrary);
    {
        ResourceOverride resources;
        EXPECT_FALSE(platform::loadString(kCaption).isEmpty());
    }

    EXPECT_TRUE(ZelLibraryEntry(&instance, 7)) << "other reasons change nothing";
    EXPECT_NE(resourceLibrary, nullptr);

    EXPECT_TRUE(ZelLibraryEntry(&instance, kZelProcessDetach));
    EXPECT_EQ(resourceLibrary, nullptr);
    EXPECT_EQ(moduleResource, nullptr);
    EXPECT_FALSE(extensionModuleReady);
    // Without the library the switch reaches nothing of the module's.
    ResourceOverride resources;
    EXPECT_TRUE(platform::loadString(kCaption).isEmpty());
}

} // namespace
