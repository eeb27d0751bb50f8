// The string table of ZelWireTypeRes.so: every number the module asks for is
// there, and the texts that the module treats as more than words (formats, names,
// choice lists, texts matched back) are fit for that.

#include "platform/ResourceLibraryAbi.h"
#include "platform/Resources.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

#include <cstring>

namespace {

// Each number that the module loads, shows or prints.
const unsigned kModuleStrings[] = {
    104, 105, 106, 107, 108, 109, 110, 111, 113, 114, 115, 116, 117, 118, 119, 120,
    121, 122, 123, 124, 125, 126, 127, 128, 129, 130, 131, 132, 133, 134, 135, 136,
    137, 138, 139, 141, 142, 143, 146, 147, 148, 149, 150, 152, 153, 154, 155, 156,
    157, 158, 159, 160, 161, 162, 163, 164, 165, 166, 167, 168, 169, 170, 171, 172,
};
// The formats with one argument, and the help on the layer name format, which
// shows its codes.
const QList<unsigned> kFormats{153, 155, 168};
const unsigned kFormatHelp = 138;

const QString kInvalidLayerCharacters = QStringLiteral("<>/\\\"':;?*|,=`");

// The library stays loaded for the whole program, as it does in the host.
QString text(unsigned id) {
    static platform::ResourceHandle* const library =
        platform::loadResourceLibrary(ZEL_RESOURCE_LIBRARY);
    EXPECT_NE(library, nullptr) << platform::resourceLibraryError().toStdString();
    return platform::loadString(library, id);
}

TEST(StringTable, EveryNumberTheModuleUsesHasAText) {
    for (unsigned id : kModuleStrings) {
        EXPECT_FALSE(text(id).trimmed().isEmpty()) << "string " << id;
    }
}

TEST(StringTable, FormatsTakeExactlyOneStringAndNoOtherTextLooksLikeAFormat) {
    for (unsigned id : kFormats) {
        const QString format = text(id);
        EXPECT_EQ(format.count(QStringLiteral("%s")), 1) << "string " << id;
        EXPECT_EQ(format.count(u'%'), 1) << "string " << id;
        EXPECT_TRUE(platform::formatText(format, QStringLiteral("BK_1.5")).contains("BK_1.5"));
    }
    // Other texts are shown or printed as they stand; a stray percent sign would
    // be taken for a conversion by the host's printing.
    for (unsigned id : kModuleStrings) {
        if (!kFormats.contains(id) && id != kFormatHelp) {
            EXPECT_FALSE(text(id).contains(u'%')) << "string " << id;
        }
    }
    EXPECT_FALSE(text(kFormatHelp).contains(QStringLiteral("%s")));
}

TEST(StringTable, TextsThatAreMatchedBackCanBeToldApart) {
    // The grid's choice list is "115\n116" and a cell is read back by comparing
    // with 115, ignoring case.
    EXPECT_NE(text(115).compare(text(116), Qt::CaseInsensitive), 0);
    EXPECT_FALSE(text(115).contains(u'\n'));
    EXPECT_FALSE(text(116).contains(u'\n'));
    // The select-all button's caption is its state.
    EXPECT_NE(text(171).compare(text(172), Qt::CaseInsensitive), 0);
    // The names that LISP gets for the settings are taken back as property names.
    EXPECT_EQ(text(161).compare(text(106), Qt::CaseInsensitive), 0);
    EXPECT_EQ(text(162).compare(text(132), Qt::CaseInsensitive), 0);
    EXPECT_EQ(text(118).compare(text(117), Qt::CaseInsensitive), 0);

    // The three captions address different fields, and a default user property
    // name would shadow any of them.
    const QStringList captions{text(106), text(132), text(114)};
    for (qsizetype i = 0; i < captions.size(); ++i) {
        for (qsizetype j = i + 1; j < captions.size(); ++j) {
            EXPECT_NE(captions[i].compare(captions[j], Qt::CaseInsensitive), 0);
        }
        for (int n = 1; n <= 20; ++n) {
            EXPECT_NE(
                captions[i].compare(text(107).toUpper() + QString::number(n), Qt::CaseInsensitive),
                0);
        }
    }
}

TEST(StringTable, NamesMadeFromTextsAreValid) {
    // The default wire type's layer is named by 110.
    const QString layer = text(110);
    EXPECT_EQ(layer, layer.trimmed());
    EXPECT_LE(layer.size(), 255);
    for (QChar c : kInvalidLayerCharacters) {
        EXPECT_FALSE(layer.contains(c)) << "layer name holds " << QString(c).toStdString();
    }
    // User property names are kept as one comma-separated list.
    const QString prefix = text(107).toUpper();
    EXPECT_FALSE(prefix.contains(u','));
    EXPECT_EQ(prefix, prefix.trimmed());
}

TEST(StringTableLookup, TheExportedFunctionKeepsItsContract) {
    void* library = dlopen(ZEL_RESOURCE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    auto lookup = reinterpret_cast<platform::ResourceLookupFunction>(
        dlsym(library, platform::kResourceLookupSymbol));
    ASSERT_NE(lookup, nullptr);
    // Nothing but the lookup leaves the library.
    EXPECT_EQ(dlsym(library, "_ZN6zelres8kStringsE"), nullptr);

    const int string = static_cast<int>(platform::ResourceKind::String);
    const char* data = nullptr;
    std::size_t size = 0;
    ASSERT_TRUE(lookup(string, 150, &data, &size));
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(std::strlen(data), size) << "the text ends in a NUL right after its size";

    data = "stale";
    size = 99;
    EXPECT_FALSE(lookup(string, 9999, &data, &size));
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(size, 0u);
    EXPECT_FALSE(lookup(99, 150, nullptr, nullptr));
    dlclose(library);
}

} // namespace
