// The grid window under real input: the order and arguments of the notifications,
// the read-only lock, selection, sorting, clipboard, held updates and row moves.

#include "GuiTestHelpers.h"
#include "platform/Clipboard.h"
#include "platform/GridModel.h"
#include "platform/GridWindow.h"
#include "platform/PrivateMessage.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace platform;
using namespace guitest;

// Logs every notification with its arguments, and what the model held for the cell
// being left at that moment.
class RecordingGrid : public GridWindow {
public:
    std::vector<QString> log;
    bool refuseLeaving = false;

    void OnModifyCell(int row, int col) override {
        log.push_back(QStringLiteral("modify %1,%2").arg(row).arg(col));
    }
    bool OnLeftCell(int row, int col, int newRow, int newCol) override {
        log.push_back(QStringLiteral("left %1,%2>%3,%4 [%5]")
                          .arg(row)
                          .arg(col)
                          .arg(newRow)
                          .arg(newCol)
                          .arg(GetValueRowCol(row, col)));
        return !refuseLeaving;
    }
    bool OnTrackColWidth(int col) override {
        log.push_back(QStringLiteral("track %1").arg(col));
        return col != 2;
    }
    bool InsertRows(int row, int count, unsigned flags) override {
        log.push_back(QStringLiteral("insert %1 %2").arg(row).arg(count));
        return GridWindow::InsertRows(row, count, flags);
    }
    bool OnTrackColWidthEnd(int col, int width) override {
        log.push_back(QStringLiteral("tracked %1 %2").arg(col).arg(width));
        return true;
    }
};

class GridWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        grid = std::make_unique<RecordingGrid>();
        grid->SetRowCount(6);
        grid->SetColCount(4);
        grid->SetDefaultColWidth(90);
        grid->resize(600, 400);
        showActive(grid.get());
        grid->setFocus();
        grid->log.clear();
    }

    void fill(const std::vector<QStringList>& rows) {
        for (int r = 0; r < int(rows.size()); ++r) {
            for (int c = 0; c < int(rows[size_t(r)].size()); ++c) {
                grid->SetValueRange(GridRange(r + 1, c + 1), rows[size_t(r)].at(c));
            }
        }
    }

    std::pair<int, int> current() const {
        int row = 0;
        int col = 0;
        grid->GetCurrentCell(row, col);
        return {row, col};
    }

    std::unique_ptr<RecordingGrid> grid;
};

TEST_F(GridWindowTest, TypingMarksTheCellOnceAndLeavingReportsWithTheTextInTheModel) {
    struct Way {
        const char* name;
        std::function<void(RecordingGrid*)> leave;
        std::pair<int, int> landsOn;
    };
    const std::vector<Way> ways = {
        {"Tab", [](RecordingGrid*) { key(Qt::Key_Tab); }, {2, 3}},
        {"Enter", [](RecordingGrid*) { key(Qt::Key_Return); }, {3, 2}},
        {"arrow", [](RecordingGrid*) { key(Qt::Key_Down); }, {3, 2}},
        {"click", [](RecordingGrid* g) { clickCell(g, 4, 4); }, {4, 4}},
    };
    for (const Way& way : ways) {
        SCOPED_TRACE(way.name);
        clickCell(grid.get(), 2, 2);
        grid->log.clear();
        type(QStringLiteral("RED"));
        EXPECT_TRUE(grid->IsActiveCurrentCell());
        way.leave(grid.get());
        EXPECT_EQ(grid->log,
                  (std::vector<QString>{"modify 2,2", QStringLiteral("left 2,2>%1,%2 [RED]")
                                                          .arg(way.landsOn.first)
                                                          .arg(way.landsOn.second)}));
        EXPECT_EQ(current(), way.landsOn);
        EXPECT_EQ(grid->GetValueRowCol(2, 2), "RED");
        EXPECT_FALSE(grid->IsActiveCurrentCell());
        grid->SetValueRange(GridRange(2, 2), QString());
    }
}

TEST_F(GridWindowTest, AGridLeftWithoutACurrentCellKeepsNoneWhenItGetsTheFocus) {
    clickCell(grid.get(), 2, 2);
    grid->SetCurrentCell(0, 0);
    grid->clearFocus();
    grid->setFocus(Qt::TabFocusReason);
    int row = 0;
    int col = 0;
    EXPECT_FALSE(grid->GetCurrentCell(row, col));
    EXPECT_EQ(grid->GetSelectedRows(false, true), (std::vector<quint32>{}));
    clickCell(grid.get(), 3, 1);
    EXPECT_EQ(grid->log, (std::vector<QString>{"left 2,2>0,0 []"}));
    EXPECT_EQ(current(), std::make_pair(3, 1));
}

TEST_F(GridWindowTest, AVetoKeepsTheCellAndEscTakesBackAnOpenEdit) {
    fill({{"a", "b"}});
    clickCell(grid.get(), 1, 1);
    grid->refuseLeaving = true;
    type("x");
    key(Qt::Key_Tab);
    EXPECT_EQ(current(), std::make_pair(1, 1));
    EXPECT_EQ(grid->GetValueRowCol(1, 1), "x"); // stored, though the cursor stayed

    grid->refuseLeaving = false;
    grid->log.clear();
    key(Qt::Key_F2);
    ASSERT_TRUE(grid->IsActiveCurrentCell());
    type("yz");
    key(Qt::Key_Escape);
    EXPECT_FALSE(grid->IsActiveCurrentCell());
    EXPECT_EQ(grid->GetValueRowCol(1, 1), "x");
    // An edit opened and left unchanged is no change. A posted F2 opens the cell
    // once the running code has returned, as a grid does to reopen a cell at fault.
    PostKeyPress(grid.get(), Qt::Key_F2);
    EXPECT_FALSE(grid->IsActiveCurrentCell());
    QCoreApplication::sendPostedEvents(grid.get());
    EXPECT_TRUE(grid->IsActiveCurrentCell());
    key(Qt::Key_Tab);
    EXPECT_EQ(grid->log, (std::vector<QString>{"modify 1,1", "left 1,1>1,2 [x]"}));
}

TEST_F(GridWindowTest, TheReadOnlyLockKeepsCodeAndPeopleOffReadOnlyCells) {
    fill({{"kept", "open"}});
    grid->GetParam()->SetLockReadOnly(false);
    grid->SetStyleRange(GridRange(1, 1), CellStyle().setReadOnly(true));
    grid->GetParam()->SetLockReadOnly(true);

    EXPECT_FALSE(grid->SetValueRange(GridRange(1, 1), "changed"));
    EXPECT_FALSE(grid->SetStyleRange(GridRange(1, 1), CellStyle().setReadOnly(false)));
    EXPECT_FALSE(grid->SetValueRange(GridRange(1, 1, 1, 2), "both"));
    EXPECT_EQ(grid->GetValueRowCol(1, 1), "kept");
    EXPECT_EQ(grid->GetValueRowCol(1, 2), "both");

    clickCell(grid.get(), 1, 1);
    type("typed");
    EXPECT_FALSE(grid->IsActiveCurrentCell());
    EXPECT_EQ(grid->GetValueRowCol(1, 1), "kept");

    grid->GetParam()->SetLockReadOnly(false);
    EXPECT_TRUE(grid->SetValueRange(GridRange(1, 1), "by code"));
    EXPECT_EQ(grid->GetValueRowCol(1, 1), "by code");

    // A static cell shows its text but takes none from the keyboard; a drop-down list
    // takes the choice that the typed letter starts.
    grid->SetStyleRange(GridRange(1, 2), CellStyle().setControl(CellStyle::Control::Static));
    grid->SetStyleRange(
        GridRange(1, 3),
        CellStyle().setControl(CellStyle::Control::DropDownList).setChoices({"Yes", "No"}));
    clickCell(grid.get(), 1, 2);
    type("q");
    EXPECT_EQ(grid->GetValueRowCol(1, 2), "both");
    clickCell(grid.get(), 1, 3);
    type("N");
    key(Qt::Key_Tab);
    EXPECT_EQ(grid->GetValueRowCol(1, 3), "No");
}

// Painting rows lays only what the paint sets: a cell keeps its own control, lock, choices
// and tip, and a range over more rows than the grid holds paints the rows there are.
TEST_F(GridWindowTest, StylesOverRangesLayWhatTheySetAndKeepTheRestOfEachCell) {
    const CellStyle own = CellStyle()
                              .setControl(CellStyle::Control::DropDownList)
                              .setReadOnly(true)
                              .setTextColor(Qt::red)
                              .setAlignment(Qt::AlignRight)
                              .setChoices({"Yes", "No"})
                              .setTip("own tip")
                              .setWrapText(true);
    // Released as the grid's owners do when they paint: a locked read-only cell keeps its style.
    grid->GetParam()->SetLockReadOnly(false);
    grid->SetStyleRange(GridRange(2, 3), own);

    grid->SetStyleRange(GridRange::rows(1, 9), CellStyle().setInterior(Qt::blue));
    for (int r = 1; r <= 6; ++r) {
        for (int c = 1; c <= 4; ++c)
            EXPECT_EQ(grid->GetCellStyle(r, c).interior, QColor(Qt::blue)) << r << "," << c;
    }
    EXPECT_NE(grid->GetCellStyle(3, 0).interior, QColor(Qt::blue));
    CellStyle expected = own;
    expected.setInterior(Qt::blue);
    EXPECT_EQ(grid->gridModel()->cell(2, 3)->style, expected);

    // Several attributes at once: each is laid, the font too.
    QFont bold;
    bold.setBold(true);
    grid->SetStyleRange(GridRange(2, 2, 3, 3),
                        CellStyle().setFont(bold).setReadOnly(false).setTip("new tip"));
    expected.setFont(bold).setReadOnly(false).setTip("new tip");
    EXPECT_EQ(grid->gridModel()->cell(2, 3)->style, expected);
    EXPECT_EQ(grid->gridModel()->cell(3, 2)->style,
              CellStyle().setInterior(Qt::blue).setFont(bold).setReadOnly(false).setTip("new tip"));

    // A copy makes the cell exactly the style given; a new-only style fills gaps alone.
    grid->SetStyleRange(GridRange(2, 3), CellStyle().setTip("copied"), CellStyle::Modify::Copy);
    EXPECT_EQ(grid->gridModel()->cell(2, 3)->style, CellStyle().setTip("copied"));
    grid->SetStyleRange(GridRange(2, 3), CellStyle().setTip("ignored").setWrapText(false),
                        CellStyle::Modify::ApplyNew);
    EXPECT_EQ(grid->gridModel()->cell(2, 3)->style,
              CellStyle().setTip("copied").setWrapText(false));
}

TEST_F(GridWindowTest, SelectionArraysFollowRowCellAndShiftSelections) {
    grid->GetParam()->EnableSelection(GridParam::SelRow | GridParam::SelCell |
                                      GridParam::SelMultiple | GridParam::SelShift);
    QHeaderView* rows = grid->verticalHeader();

    clickHeader(rows, 2);
    clickHeader(rows, 4, Qt::ShiftModifier);
    clickHeader(rows, 6, Qt::ControlModifier);
    EXPECT_EQ(grid->GetSelectedRows(), (std::vector<quint32>{2, 3, 4, 6}));

    // A plain click clears the selection; the current cell then stands for it.
    clickCell(grid.get(), 1, 2);
    EXPECT_FALSE(grid->HasSelection());
    EXPECT_EQ(grid->GetSelectedRows(false, true), (std::vector<quint32>{1}));
    EXPECT_EQ(grid->GetSelectedRows(false, false), (std::vector<quint32>{}));

    clickCell(grid.get(), 3, 3, Qt::ShiftModifier);
    EXPECT_EQ(grid->GetSelectedRows(), (std::vector<quint32>{1, 2, 3}));
    EXPECT_EQ(grid->GetSelectedCols(), (std::vector<quint32>{2, 3}));
    EXPECT_EQ(grid->GetSelectedRows(true, false), (std::vector<quint32>{}));

    key(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_EQ(grid->GetSelectedCols(), (std::vector<quint32>{2, 3, 4}));
    EXPECT_EQ(current(), std::make_pair(3, 4));

    // Column headers select nothing when column selection is off.
    grid->ClearSelection();
    clickHeader(grid->horizontalHeader(), 2);
    EXPECT_FALSE(grid->HasSelection());
}

// A double click on a header sorts the rows down to the last that holds text by that
// column, each time the other way.
TEST_F(GridWindowTest, SortingARangeLeavesTheBlankRowsBelowAlone) {
    fill({{"b", "2"}, {"C", "3"}, {"a", "1"}, {"", "x"}});
    doubleClickHeader(grid->horizontalHeader(), 1);
    EXPECT_EQ(grid->GetRangeText(GridRange(1, 1, 6, 2)), "\tx\na\t1\nb\t2\nC\t3\n\t\n\t\n");
    doubleClickHeader(grid->horizontalHeader(), 1);
    EXPECT_EQ(grid->GetRangeText(GridRange(1, 1, 6, 1)), "C\nb\na\n\n\n\n");
}

TEST_F(GridWindowTest, CopyCutAndPasteAsTabSeparatedText) {
    fill({{"a", "b"}, {"c", "d"}});
    clickCell(grid.get(), 1, 1);
    clickCell(grid.get(), 2, 2, Qt::ShiftModifier);
    key(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(GetClipboardText(), "a\tb\nc\td\n");

    // Past the last row the grid grows; past the last column the text is cut off.
    SetClipboardText("1\t2\t3\r\n4\t5\t6\r\n7\t8\t9\r\n");
    clickCell(grid.get(), 5, 3);
    grid->log.clear();
    key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(grid->GetRowCount(), 7);
    EXPECT_EQ(grid->log, (std::vector<QString>{"insert 7 1"}));
    EXPECT_EQ(grid->GetRangeText(GridRange(5, 3, 7, 4)), "1\t2\n4\t5\n7\t8\n");

    clickCell(grid.get(), 1, 1);
    key(Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(GetClipboardText(), "a\n");
    EXPECT_EQ(grid->GetValueRowCol(1, 1), "");
    EXPECT_TRUE(grid->CanPaste());
    grid->SetReadOnly(true);
    EXPECT_FALSE(grid->CanPaste());
    EXPECT_FALSE(grid->CanCut());
}

TEST_F(GridWindowTest, AHeldUpdateEndsInOneRedraw) {
    QSignalSpy changed(grid->gridModel(), &QAbstractItemModel::dataChanged);
    grid->LockUpdate(true);
    for (int r = 1; r <= 6; ++r) {
        for (int c = 1; c <= 4; ++c) {
            grid->SetValueRange(GridRange(r, c), QString::number(r * c));
        }
    }
    EXPECT_EQ(changed.count(), 0);
    EXPECT_TRUE(grid->LockUpdate(false));
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(grid->gridModel()->index(5, 3).data().toString(), "24");
}

// Drags on the headers with the button held: selected rows move to where they are dropped;
// a column edge asks before it moves and tells the width it ends at.
TEST_F(GridWindowTest, DraggingHeadersMovesSelectedRowsAndWidensAColumnItMayWiden) {
    const auto drag = [](QHeaderView* header, QPoint from, QPoint to) {
        QTest::mousePress(header->viewport(), Qt::LeftButton, {}, from);
        QMouseEvent move(QEvent::MouseMove, to, header->mapToGlobal(to), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(header->viewport(), &move);
        QTest::mouseRelease(header->viewport(), Qt::LeftButton, {}, to);
    };
    fill({{"one"}, {"two"}, {"three"}, {"four"}});
    grid->GetParam()->EnableMoveRows(true);
    QHeaderView* rows = grid->verticalHeader();
    clickHeader(rows, 1);
    clickHeader(rows, 2, Qt::ShiftModifier);
    drag(rows, sectionCentre(rows, 0), sectionCentre(rows, 3));
    EXPECT_EQ(grid->GetRangeText(GridRange(1, 1, 4, 1)), "three\nfour\none\ntwo\n");
    EXPECT_EQ(grid->GetSelectedRows(true, false), (std::vector<quint32>{3, 4}));

    QHeaderView* cols = grid->horizontalHeader();
    grid->log.clear();
    for (int section : {0, 1}) {
        const int edge = cols->sectionViewportPosition(section) + cols->sectionSize(section) - 1;
        drag(cols, QPoint(edge, cols->height() / 2), QPoint(edge + 30, cols->height() / 2));
    }
    EXPECT_EQ(grid->GetColWidth(1), 120);
    EXPECT_EQ(grid->GetColWidth(2), 90);
    EXPECT_EQ(grid->log, (std::vector<QString>{"track 1", "tracked 1 120", "track 2"}));
}

} // namespace
