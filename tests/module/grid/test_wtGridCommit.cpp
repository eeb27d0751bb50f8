// Loading the grid from a drawing and committing it back: stored rows, sorted and dragged
// rows and the saved widths.

#include "GridTest.h"

#include "store/ZelWireTypeRec.h"

#include "ovdb/OvDbDatabase.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHeaderView>
#include <QMouseEvent>
#include <QTest>

namespace {

using GridCommitTest = GridTest;

// Drags with the left button held, a few pixels at a time as a hand moves the mouse.
void drag(QWidget* viewport, QPoint from, QPoint to) {
    QTest::mousePress(viewport, Qt::LeftButton, Qt::NoModifier, from);
    const int steps = std::max(1, (to - from).manhattanLength() / 4);
    for (int i = 1; i <= steps; ++i) {
        const QPointF at = QPointF(from) + QPointF(to - from) * i / steps;
        QMouseEvent move(QEvent::MouseMove, at, viewport->mapToGlobal(at), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(viewport, &move);
    }
    QTest::mouseRelease(viewport, Qt::LeftButton, Qt::NoModifier, to);
    ZelUiTest::settle();
}

QColor background(ZelWTGrid& grid, int row, int col) {
    return grid.model()
        ->data(grid.model()->index(row - 1, col - 1), Qt::BackgroundRole)
        .value<QColor>();
}

TEST_F(GridCommitTest, LoadKeepsStoredOrderClosesGapsAndColoursTheRows) {
    OvDbDatabase* database = wireTypeDrawing({"W_LATE", "W_EARLY"}, {.gridRows = {7, 3}});
    setCurrentRecord(database, "W_LATE", "W_LATE");
    openOwner(false);

    EXPECT_EQ(gridNames(), QStringList({"W_EARLY", "W_LATE"}));
    EXPECT_EQ(grid().GetRowCount(), 3);
    EXPECT_TRUE(grid().IsColHidden(1));

    // Outside edit mode the current wire type is grey; the row the cursor is in is blue.
    EXPECT_EQ(grid().CurrentRow(), 2);
    EXPECT_EQ(background(grid(), 2, 3), QColor(0xC0, 0xC0, 0xC0));
    EXPECT_EQ(background(grid(), 1, 3), QColor(Qt::white));
    clickCell(1, 3);
    EXPECT_EQ(background(grid(), 1, 3), QColor(166, 202, 240));
    EXPECT_EQ(background(grid(), 2, 4), QColor(0xC0, 0xC0, 0xC0));
}

TEST_F(GridCommitTest, SortedOrDraggedRowsAndSavedWidthsComeBackAtTheNextOpening) {
    wireTypeDrawing({"W_C", "W_A", "W_B"});
    const auto expectStored = [&](const QStringList& names) {
        ASSERT_TRUE(commitAtOk());
        ZelWireTypeRec reread;
        for (int row = 1; row <= names.size(); ++row)
            EXPECT_EQ(record(reread, names[row - 1])->gridRow, row) << row;
    };
    // Rows without stored places come by name.
    openOwner();
    ASSERT_EQ(gridNames(), QStringList({"W_A", "W_B", "W_C"}));
    // Drag the right edges of the in-use column and the wire colour column.
    QHeaderView* top = grid().horizontalHeader();
    for (int col : {2, 3}) {
        const QPoint edge(top->sectionViewportPosition(col - 1) + top->sectionSize(col - 1) - 1,
                          top->height() / 2);
        drag(top->viewport(), edge, edge + QPoint(30, 0));
    }
    const int colourWidth = grid().GetColWidth(3);
    ASSERT_GT(colourWidth, 100);
    // The first double click on a header sorts descending; only the wire types move: the
    // blank row stays last.
    doubleClickColumnHeader(5);
    EXPECT_EQ(gridNames(), QStringList({"W_C", "W_B", "W_A"}));
    EXPECT_EQ(cell(4, 5), "");
    expectStored({"W_C", "W_B", "W_A"});

    // Opened again in the stored order, with the widths the commit saved: row 3 selected by
    // its header, which is dragged up to row 1.
    openOwner();
    ASSERT_EQ(gridNames(), QStringList({"W_C", "W_B", "W_A"}));
    EXPECT_EQ(grid().GetColWidth(2), 50) << "the reader never takes column 2's saved width";
    EXPECT_EQ(grid().GetColWidth(3), colourWidth);
    clickRowHeader(3);
    QHeaderView* header = grid().verticalHeader();
    const auto rowPoint = [header](int row) {
        return QPoint(header->width() / 2,
                      header->sectionViewportPosition(row - 1) + header->sectionSize(row - 1) / 2);
    };
    drag(header->viewport(), rowPoint(3), rowPoint(1));
    ASSERT_EQ(gridNames(), QStringList({"W_A", "W_C", "W_B"}));
    expectStored({"W_A", "W_C", "W_B"});
}

void copyFolder(const QString& from, const QString& to) {
    QDir().mkpath(to);
    for (const QFileInfo& entry :
         QDir(from).entryInfoList(QDir::NoDotAndDotDot | QDir::AllEntries)) {
        if (entry.isDir())
            copyFolder(entry.filePath(), to + "/" + entry.fileName());
        else
            QFile::copy(entry.filePath(), to + "/" + entry.fileName());
    }
}

using GridDemoTest = GridTest;

// The demo project as a drafter opens it: its drawing's wire types, one per row, under
// the project's property names. With ZEL_SCREENSHOT_DIR set the grid's dialog is saved
// there as a picture to look at.
TEST_F(GridDemoTest, TheDemoDrawingShowsEveryWireTypeUnderTheProjectsNames) {
    const QString demo = tempPath("demo");
    copyFolder(QStringLiteral(ZEL_DEMO_DIR), demo);
    ASSERT_TRUE(openProject(demo + "/demo.zpj"));
    ASSERT_NE(openDocument(demo + "/drawings/demo.dwg"), nullptr);
    ZelWireTypeRec store;
    QStringList expected;
    for (const auto& [key, rec] : store.GetCurDwgWireTypeInfo())
        expected << rec->layerName;
    ASSERT_FALSE(expected.isEmpty());

    openOwner(false);
    const QStringList shown = gridNames();
    QStringList sorted = shown;
    sorted.sort(Qt::CaseInsensitive);
    expected.sort(Qt::CaseInsensitive);
    EXPECT_EQ(sorted, expected);
    const QAbstractItemModel* model = grid().model();
    EXPECT_EQ(model->headerData(6, Qt::Horizontal).toString(), "Insulation");
    EXPECT_EQ(model->headerData(7, Qt::Horizontal).toString(), "Voltage, max");
    // For the picture, the cursor away from the current wire type: one grey row, one blue.
    clickCell(shown.indexOf("BU_0.75") == 0 ? 3 : 1, 3);
    const QString folder = qEnvironmentVariable("ZEL_SCREENSHOT_DIR");
    if (!folder.isEmpty()) {
        EXPECT_TRUE(owner().grab().save(folder + "/wire-type-grid.png"));
    }
}

} // namespace
