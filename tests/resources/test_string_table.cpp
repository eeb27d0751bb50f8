// The string table of ZelWireTypeRes.so: every number the module asks for is
// there, and the texts that the module treats as more than words (formats, names,
// choice lists, texts matched back) are fit for that.

#include "platform/Resources.h"

#include <QSet>

#include <gtest/gtest.h>

namespace {

// The library stays loaded for the whole program, as it does in the host.
QString text(unsigned id) {
    static platform::ResourceHandle* const library =
        platform::loadResourceLibrary(ZEL_RESOURCE_LIBRARY);
    EXPECT_NE(library, nullptr) << platform::resourceLibraryError().toStdString();
    return platform::loadString(library, id);
}

TEST(StringTable, EveryNumberTheModuleUsesIsThereAndOnlyItsFormatsHoldAPercentSign) {
    // The formats take one text each; 138, the help on the layer name format, shows its
    // codes. A stray percent sign elsewhere would be taken for a conversion when printed.
    const QList<unsigned> formats{153, 155, 168};
    for (unsigned id = 104; id <= 172; ++id) {
        if (id == 112 || id == 140 || id == 144 || id == 145 || id == 151)
            continue; // not the module's
        EXPECT_FALSE(text(id).trimmed().isEmpty()) << "string " << id;
        if (formats.contains(id)) {
            EXPECT_EQ(text(id).count(u'%'), 1) << "string " << id;
            EXPECT_TRUE(platform::formatText(text(id), "BK_1.5").contains("BK_1.5")) << id;
        } else {
            EXPECT_FALSE(text(id).contains(id == 138 ? "%s" : "%")) << "string " << id;
        }
    }
}

TEST(StringTable, TextsThatAreMatchedBackOrMadeNamesFitThatUse) {
    // The grid's choice list is "115\n116" and a cell is read back by comparing with 115
    // without regard to case; the select-all button's caption is its state.
    EXPECT_NE(text(115).compare(text(116), Qt::CaseInsensitive), 0);
    EXPECT_FALSE(text(115).contains(u'\n') || text(116).contains(u'\n'));
    EXPECT_NE(text(171).compare(text(172), Qt::CaseInsensitive), 0);
    // The names that LISP gets for the settings are taken back as property names.
    for (auto [given, taken] : {std::pair{161, 106}, {162, 132}, {118, 117}})
        EXPECT_EQ(text(given).compare(text(taken), Qt::CaseInsensitive), 0) << given;
    // The three captions address different fields, and no default user property name
    // (107 and a number) shadows one of them.
    const QStringList captions{text(106).toUpper(), text(132).toUpper(), text(114).toUpper()};
    EXPECT_EQ(QSet<QString>(captions.begin(), captions.end()).size(), 3);
    for (int n = 1; n <= 20; ++n)
        EXPECT_FALSE(captions.contains(text(107).toUpper() + QString::number(n))) << n;
    EXPECT_FALSE(text(107).contains(u',')) << "user property names are kept as a comma list";

    // The default wire type's layer is named by 110.
    const QString layer = text(110);
    EXPECT_TRUE(layer == layer.trimmed() && layer.size() <= 255);
    for (QChar c : QStringLiteral("<>/\\\"':;?*|,=`"))
        EXPECT_FALSE(layer.contains(c)) << "layer name holds " << QString(c).toStdString();
}

} // namespace
