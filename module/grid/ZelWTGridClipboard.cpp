// Text from the clipboard into the grid, the rows and columns of the last copy, the copy
// file, and the keyboard.

#include "grid/ZelWTGrid.h"

#include "grid/ZelWTGridMessages.h"
#include "shell/ZelHostServices.h"
#include "store/ZelStoreSupport.h"

#include "ovdb/OvDbLayerTableRecord.h"

#include <QGuiApplication>
#include <QKeyEvent>

using namespace zelgrid;

namespace {

// The last copy or cut of any grid: a paste in a later dialog still finds them.
std::vector<quint32> s_copiedRows;
std::vector<quint32> s_copiedCols;

// Lines are the non-empty pieces between line feeds; fields are counted over all lines
// together, so that two lines of three fields give six.
void countClipboard(const QString& text, int& lines, int& fields) {
    lines = 0;
    fields = 0;
    for (const QString& line : text.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        ++lines;
        QString bare = line;
        bare.remove(QLatin1Char('\r'));
        fields += static_cast<int>(bare.split(QLatin1Char('\t'), Qt::SkipEmptyParts).size());
    }
}

} // namespace

void ZelWTGrid::SetCopiedRows(const std::vector<quint32>& rows) {
    s_copiedRows = rows;
}

void ZelWTGrid::SetCopiedCols(const std::vector<quint32>& cols) {
    s_copiedCols = cols;
}

const std::vector<quint32>& ZelWTGrid::CopiedRows() {
    return s_copiedRows;
}

const std::vector<quint32>& ZelWTGrid::CopiedCols() {
    return s_copiedCols;
}

QString ZelWTGrid::CopyFilePath() {
    QString folder;
    GetUserFolder(folder);
    // The user folder may come with either separator; ours is the one the platform uses.
    folder.replace(QLatin1Char('\\'), QLatin1Char('/'));
    AppendBackslash(folder);
    return folder + QStringLiteral("wts.grd");
}

bool ZelWTGrid::OnPasteFromClipboard(const platform::GridRange& range) {
    int rows = static_cast<int>(s_copiedRows.size());
    int cols = static_cast<int>(s_copiedCols.size());
    int lastRow = m_nWireTypeRows;
    int startRow = 0;
    int startCol = 0;
    GetCurrent(startRow, startCol);
    // The key and the in-use mark take nothing from outside.
    if (startCol == 1 || startCol == 2)
        return true;

    QString text;
    if (ClipboardText(text)) {
        int lines = 0;
        int fields = 0;
        countClipboard(text, lines, fields);
        if (lines > 0) {
            rows = lines;
            cols = fields > 0 ? fields : 1;
        }
    }
    if (rows == 0 || cols == 0) {
        RefreshViews();
        return true;
    }

    platform::GridRange target = range;
    if (target.top() == 0) {
        target.setTop(1);
        if (target.bottom() > 1)
            target.setBottom(target.bottom() + 1);
    }
    if (target.bottom() <= 0)
        target.setBottom(1);
    const int pasteEnd = target.top() + rows;
    if (pasteEnd > RowCount()) {
        SetRows(pasteEnd);
        lastRow = m_nWireTypeRows + 1;
        for (int row = lastRow; row <= RowCount() - 1; ++row) {
            for (int col = 3; col <= 24; ++col) {
                if (!Cell(row, col).isEmpty()) {
                    ++lastRow;
                    break;
                }
            }
        }
        // The rows the paste grows into stay out of sight until their cells are settled.
        HideRowRange(lastRow + 1, pasteEnd, true);
    }
    if (target.left() < 3)
        target.setLeft(3);
    if (target.right() > ColCount() || startCol + cols > ColCount())
        target.setRight(ColCount());

    if (!platform::GridWindow::OnPasteFromClipboard(target)) {
        SetRows(lastRow + 1);
        return false;
    }
    HideRowRange(lastRow + 1, pasteEnd, false);

    bool movedToName = false;
    for (int i = 0; i < rows; ++i) {
        const int row = target.top() + i;
        for (int j = 0; j < cols; ++j) {
            const int col = target.left() + j;
            m_bCellDirty = true;
            if (col > 26)
                continue;
            if (col == 5) {
                const QString pasted = Cell(row, 5);
                const QString value =
                    s_copiedRows.empty() ? pasted : Cell(static_cast<int>(s_copiedRows.at(i)), 5);
                if (!value.isEmpty()) {
                    OvDbLayerTableRecord* layer = nullptr;
                    if (m_WireTypeRec.GetLayerTblRec(value, OvDb::kForRead, layer) && layer) {
                        SetRowColor(row, layer->color());
                        SetRowLinetype(row, layer->linetypeObjectId());
                        SetRowLineweight(row, layer->lineWeight());
                        const bool used =
                            pasted.compare(value, Qt::CaseInsensitive) == 0 && layer->isInUse();
                        PutStatic(row, 2, used ? QStringLiteral("X") : QString());
                        CommitCell(row, 2);
                    }
                    zelstore::releaseObject(layer);
                }
                PutStatic(row, 5, Cell(row, 5));
            } else if (col != 2) {
                PutEdit(row, col);
            }
            CommitCell(row, col);
        }
        if (!movedToName && Cell(row, 5).isEmpty()) {
            PostToSelf(WM_WTG_GOTOCELL, static_cast<quintptr>(row), 5);
            movedToName = true;
        }
    }

    FindCurrentRow();
    PostToSelf(WM_WTG_GOTOCELL, static_cast<quintptr>(startRow), startCol);
    return true;
}

bool ZelWTGrid::PreTranslateKey(QKeyEvent* event) {
    if (event->type() != QEvent::KeyPress)
        return platform::GridWindow::PreTranslateKey(event);
    int row = 0;
    int col = 0;
    GetCurrent(row, col);
    const int key = event->key();
    const Qt::KeyboardModifiers modifiers = event->modifiers();
    const bool shift = modifiers & Qt::ShiftModifier;
    const bool ctrl = modifiers & Qt::ControlModifier;

    if (key == Qt::Key_Delete) {
        if (col == 0)
            return true;
        ClearSelectedCells();
    }

    if (key == Qt::Key_Return || key == Qt::Key_Enter) {
        // Enter walks to the right and wraps into the next row; the first column the
        // cursor can reach is the wire colour.
        const bool lastRow = row == RowCount();
        const bool lastCol = col == ColCount();
        int nextRow = row;
        int nextCol = col;
        if (!shift) {
            if (FindNextCell(Right, nextRow, nextCol)) {
                MoveCurrentCell(Right);
            } else if (lastRow && lastCol) {
                MoveCurrentCell(TopLeft);
            } else if (!lastRow) {
                MoveCurrentCell(MostLeft);
                MoveCurrentCell(Down);
            }
        } else {
            if (col >= 4 && FindNextCell(Left, nextRow, nextCol)) {
                MoveCurrentCell(Left);
            } else if (row > 1) {
                MoveCurrentCell(MostRight);
                MoveCurrentCell(Up);
            } else {
                MoveCurrentCell(BottomRight);
            }
        }
        return true;
    }

    const bool arrow =
        key == Qt::Key_Left || key == Qt::Key_Right || key == Qt::Key_Up || key == Qt::Key_Down;
    if (shift) {
        if (arrow) {
            // Shift and an arrow extend the selection cell by cell.
            if (row > RowCount()) {
                CommitCell(row, col);
            } else if (row == 0) {
                SelectCells(1, col, RowCount(), col);
            } else {
                SelectCells(row, col, row, col);
            }
        } else {
            platform::GridWindow::PreTranslateKey(event);
        }
    } else if (ctrl && key == Qt::Key_Tab) {
        m_bReportNameError = true;
        if (col == 0)
            return platform::GridWindow::PreTranslateKey(event);
        ClearSelectionFromFirst();
        platform::GridWindow::PreTranslateKey(event);
    } else if (arrow || key == Qt::Key_Tab) {
        m_bReportNameError = true;
        // Going down from the last row with a change pending makes a row to go to.
        if (key == Qt::Key_Down && row == RowCount() && m_bCellDirty)
            SetRows(RowCount() + 1);
        ClearSelectionFromFirst();
        platform::GridWindow::PreTranslateKey(event);
    } else if (ctrl && (key == Qt::Key_C || key == Qt::Key_V || key == Qt::Key_X)) {
        // Copy, cut and paste are the owner's commands.
        return OwnerPreTranslate(event);
    }
    // The keys handled above reach the base a second time here.
    return platform::GridWindow::PreTranslateKey(event);
}
