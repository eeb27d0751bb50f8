// Templates and menus are embedded from files named by their numbers and come
// back byte for byte, each under its own kind.

#include "platform/Resources.h"
#include "platform/ScopedResourceHandle.h"

#include <QFile>

#include <gtest/gtest.h>

namespace {

QByteArray fixture(const char* relativePath) {
    QFile file(QStringLiteral(ZEL_FIXTURE_FOLDER "/") + QString::fromLatin1(relativePath));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << relativePath;
    return file.readAll();
}

TEST(EmbeddedFiles, ComeBackByteForByteUnderTheirNumberAndKind) {
    using namespace platform;
    ResourceHandle* library = loadResourceLibrary(ZEL_FIXTURE_LIBRARY);
    ASSERT_NE(library, nullptr) << resourceLibraryError().toStdString();
    const QByteArray form = fixture("dialogs/101.ui");
    EXPECT_TRUE(QString::fromUtf8(form).contains("Drahtgröße – ø 1,5 mm²"));
    EXPECT_EQ(loadDialogTemplate(library, 101), form);
    EXPECT_EQ(loadDialogTemplate(library, 1040), fixture("dialogs/1040-import.ui"));
    EXPECT_EQ(loadMenu(library, 104), QByteArray("A\0B\xff", 4));
    // One number may stand for a string, a template and a menu at once.
    EXPECT_TRUE(loadMenu(library, 101).isEmpty());
    EXPECT_TRUE(loadDialogTemplate(library, 103).isEmpty());
    EXPECT_EQ(loadString(library, 101), QStringLiteral("String 101, not dialog 101"));
    // Without a handle the loaders ask the current handle.
    EXPECT_TRUE(loadDialogTemplate(101).isEmpty());
    {
        ScopedResourceHandle scope(library);
        EXPECT_EQ(loadDialogTemplate(101), form);
        EXPECT_EQ(loadMenu(103), fixture("menus/103-grid.xml"));
    }
    freeResourceLibrary(library);
}

} // namespace
