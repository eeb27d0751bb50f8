// The current resource handle decides where strings come from: the module's
// library while it is current, nothing while the host's own handle is.

#include "platform/Resources.h"
#include "platform/ScopedResourceHandle.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using platform::currentResourceHandle;
using platform::hostResourceHandle;
using platform::loadString;

const unsigned kGeneralCaption = 150;

class ResourceHandles : public ::testing::Test {
protected:
    void SetUp() override {
        m_library = platform::loadResourceLibrary(ZEL_RESOURCE_LIBRARY);
        ASSERT_NE(m_library, nullptr) << platform::resourceLibraryError().toStdString();
    }
    void TearDown() override {
        platform::freeResourceLibrary(m_library);
        platform::setCurrentResourceHandle(hostResourceHandle());
    }

    platform::ResourceHandle* m_library = nullptr;
};

TEST_F(ResourceHandles, StringsLoadOnlyWhileTheLibraryIsCurrent) {
    ASSERT_EQ(currentResourceHandle(), hostResourceHandle());
    EXPECT_TRUE(loadString(kGeneralCaption).isEmpty());
    {
        platform::ScopedResourceHandle scope(m_library);
        EXPECT_FALSE(loadString(kGeneralCaption).isEmpty());
        {
            // A method that switches back to the host inside an override.
            platform::ScopedResourceHandle inner(hostResourceHandle());
            EXPECT_TRUE(loadString(kGeneralCaption).isEmpty());
        }
        EXPECT_FALSE(loadString(kGeneralCaption).isEmpty());
    }
    EXPECT_EQ(currentResourceHandle(), hostResourceHandle());
    EXPECT_TRUE(loadString(kGeneralCaption).isEmpty());
    // An exception through a scope puts the handle back.
    EXPECT_THROW(
        {
            platform::ScopedResourceHandle scope(m_library);
            throw std::out_of_range("index outside the array");
        },
        std::out_of_range);
    EXPECT_EQ(currentResourceHandle(), hostResourceHandle());
    // Asking a given handle does not depend on which one is current.
    EXPECT_FALSE(loadString(m_library, kGeneralCaption).isEmpty());
    EXPECT_TRUE(loadString(hostResourceHandle(), kGeneralCaption).isEmpty());
    EXPECT_TRUE(loadString(nullptr, kGeneralCaption).isEmpty());
}

TEST_F(ResourceHandles, AMissingOrForeignLibraryGivesNullAndLeavesTheCurrentHandle) {
    platform::ScopedResourceHandle scope(m_library);

    EXPECT_EQ(platform::loadResourceLibrary(QStringLiteral("/nonexistent/ZelWireTypeRes.so")),
              nullptr);
    EXPECT_TRUE(platform::resourceLibraryError().contains(QStringLiteral("/nonexistent/")));

    // A shared object that is not a resource library is refused and unloaded.
    EXPECT_EQ(platform::loadResourceLibrary(QStringLiteral(ZEL_PLATFORM_LIBRARY)), nullptr);
    EXPECT_TRUE(platform::resourceLibraryError().contains(QStringLiteral("zelResourceLookup")));

    EXPECT_EQ(platform::loadResourceLibrary(QString()), nullptr);
    EXPECT_EQ(currentResourceHandle(), m_library);
    EXPECT_FALSE(loadString(kGeneralCaption).isEmpty());
}

TEST_F(ResourceHandles, AFreedLibraryIsNeverCurrentAgain) {
    platform::ResourceHandle* second = platform::loadResourceLibrary(ZEL_RESOURCE_LIBRARY);
    ASSERT_NE(second, nullptr);
    platform::setCurrentResourceHandle(second);
    {
        // Leaving the scope would bring back the library freed inside it.
        platform::ScopedResourceHandle scope(m_library);
        ASSERT_TRUE(platform::freeResourceLibrary(second));
        EXPECT_FALSE(platform::freeResourceLibrary(second));
    }
    EXPECT_EQ(currentResourceHandle(), hostResourceHandle());

    platform::setCurrentResourceHandle(m_library);
    ASSERT_TRUE(platform::freeResourceLibrary(m_library));
    m_library = nullptr;
    EXPECT_EQ(currentResourceHandle(), hostResourceHandle());
    EXPECT_TRUE(loadString(kGeneralCaption).isEmpty());
    EXPECT_FALSE(platform::freeResourceLibrary(hostResourceHandle()));
    EXPECT_FALSE(platform::freeResourceLibrary(nullptr));
    platform::setCurrentResourceHandle(nullptr);
    EXPECT_EQ(currentResourceHandle(), hostResourceHandle());
}

TEST(FormatText, FillsEachStringConversionAndLeavesOtherPercentSignsAlone) {
    using platform::formatText;
    // An argument that holds a conversion is not read again.
    EXPECT_EQ(formatText(QStringLiteral("%s and %s"), {QStringLiteral("%s"), QStringLiteral("B")}),
              QStringLiteral("%s and B"));
    EXPECT_EQ(formatText(QStringLiteral("100%% %d %C_%S %"), QStringList{}),
              QStringLiteral("100% %d %C_%S %"));
}

} // namespace
