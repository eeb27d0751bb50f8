// Typing in the wire type grid: names made from the layer name format, refused rows,
// removed rows that come back, and the keyboard.

#include "GridTest.h"

#include "store/ZelWireTypeRec.h"
#include "support/ZelTestDrawing.h"

#include "ovdb/OvDbDatabase.h"

namespace {

using GridEditTest = GridTest;

TEST_F(GridEditTest, TypedColourAndSizeNameANewRowOnlyUntilTheDrafterNamesIt) {
    OvDbDatabase* database = wireTypeDrawing({"W_BLUE"});
    openOwner();
    ASSERT_EQ(grid().GetWireTypeRows(), 1);
    ASSERT_EQ(cell(1, 5), "W_BLUE");

    typeInto(2, 3, "RED");
    EXPECT_EQ(cell(2, 5), "RED");
    typeInto(2, 4, "1.5");
    EXPECT_EQ(cell(2, 5), "RED_1.5");
    EXPECT_EQ(grid().GetWireTypeRows(), 2);
    EXPECT_EQ(grid().GetRowCount(), 3) << "one blank row stays below the wire types";

    // A name typed first is the drafter's: colour and size leave it alone.
    typeInto(3, 5, "MINE");
    typeInto(3, 3, "GREEN");
    typeInto(3, 4, "2.5");
    EXPECT_EQ(cell(3, 5), "MINE");
    // A loaded wire type never takes a name from the format.
    typeInto(1, 3, "BLACK");
    EXPECT_EQ(cell(1, 5), "W_BLUE");
    // The last property column is not read when a row is made.
    typeInto(4, 26, "LAST");
    typeInto(4, 5, "FOURTH");
    EXPECT_EQ(cell(4, 26), "LAST");

    ASSERT_TRUE(commitAtOk());

    ZelWireTypeRec reread;
    const WireLayerRec* made = record(reread, "RED_1.5");
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->gridRow, 2);
    EXPECT_TRUE(made->wireFlag) << "an empty flag cell means yes";
    EXPECT_TRUE(layerId(database, "RED").isNull()) << "the first name never reached the drawing";
    const WireLayerRec* mine = record(reread, "MINE");
    ASSERT_NE(mine, nullptr);
    EXPECT_EQ(mine->wireSize, "2.5");
    const WireLayerRec* blue = record(reread, "W_BLUE");
    ASSERT_NE(blue, nullptr);
    EXPECT_EQ(blue->wireColor, "BLACK");
    const WireLayerRec* fourth = record(reread, "FOURTH");
    ASSERT_NE(fourth, nullptr);
    ASSERT_EQ(fourth->userValues.size(), 20u);
    EXPECT_EQ(fourth->userValues[19], "");
}

TEST_F(GridEditTest, EnterWalksRightAndEmptyingALoadedNameIsRefused) {
    wireTypeDrawing({"W_A", "W_B"});
    openOwner();
    ASSERT_EQ(gridNames(), QStringList({"W_A", "W_B"}));
    // Enter walks right and wraps to the wire colour of the next row; Shift walks back.
    clickCell(1, 25);
    key(Qt::Key_Return);
    EXPECT_EQ(currentCell(), std::make_pair(1, 26));
    key(Qt::Key_Return);
    EXPECT_EQ(currentCell(), std::make_pair(2, 3));
    key(Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_EQ(currentCell(), std::make_pair(1, 26));

    clickCell(2, 5);
    chooseFromContextMenu(2, 5, 40043);
    settle();
    // The rename command opens the name with its text; the drafter wipes it and leaves: the
    // cursor goes back.
    key(Qt::Key_A, Qt::ControlModifier);
    key(Qt::Key_Backspace);
    messages().clearShown();
    key(Qt::Key_Tab);
    settle();

    EXPECT_EQ(messages().shownTexts(), std::vector<QString>({moduleString(147)}));
    EXPECT_EQ(currentCell(), std::make_pair(2, 5));
    // The record takes the empty name, so that a commit stops at it as well.
    ASSERT_NE(rowRecord(2), nullptr);
    EXPECT_EQ(rowRecord(2)->layerName, "");
}

TEST_F(GridEditTest, ARemovedRowRevivedByItsNameKeepsItsKeyAndCommitsAsAnEdit) {
    std::vector<QString> values;
    for (int i = 1; i <= 20; ++i)
        values.push_back(QStringLiteral("v%1").arg(i));
    OvDbDatabase* database = wireTypeDrawing({"W_A", "W_B"}, {.values = values});
    ZelTestDrawing::addLine(database, "W_B");
    openOwner();
    ASSERT_EQ(gridNames(), QStringList({"W_A", "W_B"}));
    const QString key = cell(2, 1);

    // The second click asks about W_B alone: the default W_A can't go.
    clickCell(2, 3);
    clickCell(2, 4);
    messages().answer(platform::IDYES);
    clickButton(1026);
    EXPECT_EQ(gridNames(), QStringList({"W_A"}));

    typeInto(2, 5, "w_b");
    EXPECT_EQ(cell(2, 1), key);
    EXPECT_EQ(grid().GetWireTypeRows(), 2);
    // Thirteen values come back into the row; the record keeps all twenty.
    EXPECT_EQ(cell(2, 7 + 12), "v13");
    EXPECT_EQ(cell(2, 7 + 13), "");

    clickButton(1);
    ASSERT_TRUE(owner().closed());
    ZelWireTypeRec reread;
    const WireLayerRec* revived = record(reread, "W_B");
    ASSERT_NE(revived, nullptr) << "the layer stayed a wire type, not a new one";
    EXPECT_EQ(revived->userValues.at(19), "v20");
    EXPECT_EQ(reread.GetWireCount("W_B"), 1) << "the line stays on its layer";
}

using GridRowsTest = GridTest;

// Rows that come from another drawing, as the dialog adds them after its import step.
TEST_F(GridRowsTest, RowsFromAnotherDrawingAreAddedOrMergedByName) {
    makeDrawing({}, QString(), "other.dwg");
    const QString other = tempPath("other.dwg");
    {
        // The other drawing gives its layers their colours.
        OvDbDatabase* database = workingDatabase();
        ZelTestDrawing::addLayer(database, "IMP_NEW", 3);
        ZelTestDrawing::addLayer(database, "W_A", 5);
        ASSERT_TRUE(ZelTestDrawing::save(database, other));
    }
    wireTypeDrawing({"W_A"});
    openOwner();

    std::vector<QString> fields{"GRN", "4", "IMP_NEW", "No"};
    for (int i = 1; i <= 20; ++i)
        fields.push_back(QStringLiteral("n%1").arg(i));
    ASSERT_TRUE(grid().AddOrMergeRow(fields, other, true, true));
    settle();
    EXPECT_EQ(gridNames(), QStringList({"W_A", "IMP_NEW"}));
    ASSERT_NE(rowRecord(2), nullptr);
    EXPECT_EQ(rowRecord(2)->editState, 5);
    EXPECT_EQ(rowRecord(2)->color.colorIndex(), 3);
    EXPECT_EQ(cell(2, 26), "n20");

    // A known layer with neither appearance nor properties asked for stays as it was.
    std::vector<QString> known{"BLU", "1", "w_a", "No"};
    known.resize(24, QStringLiteral("k"));
    ASSERT_TRUE(grid().AddOrMergeRow(known, other, false, false));
    EXPECT_EQ(rowRecord(1)->wireColor, "");
    EXPECT_EQ(rowRecord(1)->editState, 0);
    // With the appearance asked for it takes the other drawing's look and texts.
    ASSERT_TRUE(grid().AddOrMergeRow(known, other, true, false));
    EXPECT_EQ(rowRecord(1)->wireColor, "BLU");
    EXPECT_EQ(rowRecord(1)->color.colorIndex(), 5);
    EXPECT_EQ(rowRecord(1)->userValues.at(0), "");

    EXPECT_FALSE(grid().AddOrMergeRow(fields, tempPath("missing.dwg"), true, true));

    ASSERT_TRUE(commitAtOk());
    ZelWireTypeRec reread;
    const WireLayerRec* imported = record(reread, "IMP_NEW");
    ASSERT_NE(imported, nullptr);
    EXPECT_EQ(imported->wireColor, "GRN");
    EXPECT_FALSE(imported->wireFlag);
    EXPECT_EQ(imported->userValues.at(19), "n20");
}

} // namespace
