// Pasting whole rows with their names, selecting rows with Shift and the arrows and the
// remove button that follows them, and opening a cell for editing in a drawing of the
// project.

#include "GridTest.h"

#include "store/ZelWireTypeRec.h"
#include "support/ZelTestDrawing.h"
#include "support/ZelTestProject.h"

#include "ovdb/OvDbDatabase.h"
#include "platform/Clipboard.h"
#include "platform/GridModel.h"

namespace {

using GridPasteTest = GridTest;

bool readOnly(ZelWTGrid& grid, int row, int col) {
    const QAbstractItemModel* model = grid.model();
    return model->data(model->index(row - 1, col - 1), platform::GridModel::ReadOnlyRole).toBool();
}

TEST_F(GridPasteTest, RowsPastedWithTheirNamesGrowTheGridAndTakeAnExistingLayersLook) {
    OvDbDatabase* database = wireTypeDrawing({"W_A"});
    ZelTestDrawing::addLayer(database, "PUMP", 3);
    ZelTestDrawing::addLine(database, "PUMP");
    openOwner();
    ASSERT_EQ(grid().GetRowCount(), 2);

    // Colour, size and name of two rows, as a spreadsheet gives them (CR LF line ends),
    // the second naming a plain layer of the drawing.
    ASSERT_TRUE(
        platform::SetClipboardText(QStringLiteral("RED\t1.5\tRED_MAIN\r\nGRN\t2\tpump\r\n")));
    // The key and in-use columns take nothing.
    clickCell(1, 2);
    key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(gridNames(), QStringList({"W_A"}));
    EXPECT_EQ(grid().GetRowCount(), 2);

    clickCell(2, 3);
    key(Qt::Key_V, Qt::ControlModifier);
    ASSERT_EQ(gridNames(), QStringList({"W_A", "RED_MAIN", "pump"}))
        << "a pasted name is the drafter's: the format does not replace it";
    EXPECT_EQ(grid().GetRowCount(), 4);
    EXPECT_FALSE(grid().IsRowHidden(3));
    EXPECT_TRUE(readOnly(grid(), 3, 5)) << "a pasted name is closed like a typed one";
    EXPECT_EQ(cell(3, 2), "X") << "the layer's entities show it in use";
    ASSERT_NE(rowRecord(3), nullptr);
    EXPECT_EQ(rowRecord(3)->color.colorIndex(), 3);

    ASSERT_TRUE(commitAtOk());
    ZelWireTypeRec reread;
    const WireLayerRec* red = record(reread, "RED_MAIN");
    ASSERT_NE(red, nullptr);
    EXPECT_EQ(red->wireColor, "RED");
    EXPECT_EQ(red->wireSize, "1.5");
    EXPECT_EQ(red->gridRow, 2);
    const WireLayerRec* pump = record(reread, "PUMP");
    ASSERT_NE(pump, nullptr) << "the plain layer became a wire type";
    EXPECT_EQ(pump->wireColor, "GRN");
    EXPECT_EQ(pump->color.colorIndex(), 3) << "and kept its colour";
    EXPECT_EQ(pump->gridRow, 3);
    EXPECT_EQ(reread.GetWireCount("PUMP"), 1) << "and its line";
    EXPECT_NE(record(reread, "W_A"), nullptr);
}

using GridSelectTest = GridTest;

TEST_F(GridSelectTest, ShiftAndTheArrowsSelectRowsAndRemoveFollowsThePatternsTheyNeed) {
    wireTypeDrawing({"DEF", "WIRE_A", "WIRE_B", "OTHER"});
    ASSERT_EQ(wireLays(), "DEF*,WIR*,OTH*");
    openOwner();
    ASSERT_EQ(gridNames(), QStringList({"DEF", "OTHER", "WIRE_A", "WIRE_B"}));
    QWidget* remove = owner().GetDlgItem(1026);
    QWidget* setDefault = owner().GetDlgItem(1032);
    QWidget* colour = owner().GetDlgItem(1012);

    // The buttons are weighed as the cursor leaves a cell, over the rows selected then (the
    // cursor's row when there are none) and the row it goes to: a second click in the same
    // row asks about that row alone. Remove is offered when no remaining row needs the
    // pattern of a row that goes.
    clickCell(2, 4);
    clickCell(2, 3);
    EXPECT_TRUE(remove->isEnabled()) << "OTHER's pattern serves no other row";
    ASSERT_TRUE(setDefault->isEnabled());
    key(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(currentCell(), std::make_pair(3, 3));
    EXPECT_EQ(grid().GetSelectedRows(), std::vector<quint32>({2, 3}));
    EXPECT_FALSE(remove->isEnabled()) << "WIRE_B stays and needs WIR*";
    EXPECT_TRUE(colour->isEnabled());
    key(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_TRUE(remove->isEnabled()) << "both rows that need WIR* go together";
    key(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(grid().GetSelectedRows(), std::vector<quint32>({2, 3, 4, 5}));
    EXPECT_FALSE(setDefault->isEnabled()) << "two rows can't both be the default";
    EXPECT_TRUE(remove->isEnabled()) << "the blank row among others is passed over";

    // Up past the start takes the default wire type in, which can't be removed.
    for (int i = 0; i < 4; ++i)
        key(Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_EQ(currentCell(), std::make_pair(1, 3));
    EXPECT_EQ(grid().GetSelectedRows(), std::vector<quint32>({1, 2}));
    EXPECT_FALSE(remove->isEnabled());
}

using GridProjectCellTest = GridTest;

TEST_F(GridProjectCellTest, ANamedCellOpensOnlyInADrawingOfTheProjectAndAnEmptiedRowGoes) {
    // Not in the project: the command leaves the name closed.
    wireTypeDrawing({"W_A"});
    openOwner();
    typeInto(2, 3, "RED");
    ASSERT_TRUE(readOnly(grid(), 1, 5));
    clickCell(1, 5);
    chooseFromContextMenu(1, 5, 40039);
    EXPECT_TRUE(readOnly(grid(), 1, 5));

    // Emptying every cell of a new row, from the colour to the flag, takes the row out.
    typeInto(3, 3, "BLUE");
    ASSERT_EQ(gridNames(), QStringList({"W_A", "RED", "BLUE"}));
    const std::size_t records = grid().Rows().size();
    clickCell(2, 3);
    clickCell(2, 6, Qt::ShiftModifier);
    key(Qt::Key_Delete);
    clickCell(1, 3);
    EXPECT_EQ(gridNames(), QStringList({"W_A", "BLUE"}));
    EXPECT_EQ(grid().Rows().size(), records - 1);

    // In the project, the loaded row's name and the new row's generated name both open.
    openProject(ZelTestProject::write(tempPath("inproject"), "inproject", {tempPath("drawing.dwg")},
                                      QString()));
    openOwner();
    typeInto(2, 3, "RED");
    clickCell(1, 3);
    ASSERT_TRUE(readOnly(grid(), 2, 5)) << "the generated name closes once its row is left";
    for (int row : {1, 2}) {
        clickCell(row, 5);
        chooseFromContextMenu(row, 5, 40039);
        EXPECT_FALSE(readOnly(grid(), row, 5)) << row;
    }

    // The drafter types a name into the opened cell: a rename, at the commit too.
    clickCell(1, 5);
    chooseFromContextMenu(1, 5, 40039);
    typeText("W_NEW");
    key(Qt::Key_Tab);
    EXPECT_EQ(cell(1, 5), "W_NEW");
    EXPECT_TRUE(readOnly(grid(), 1, 5)) << "leaving the cell closes it again";
    ASSERT_TRUE(commitAtOk());
    ZelWireTypeRec reread;
    EXPECT_NE(record(reread, "W_NEW"), nullptr);
    EXPECT_EQ(record(reread, "W_A"), nullptr);
    EXPECT_NE(record(reread, "RED"), nullptr);
}

} // namespace
