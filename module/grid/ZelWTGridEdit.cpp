// What an edit does to the grid's working copy: a change only marks the cell, and the
// work is done when the cell is left. Rows turn into records here, names come from the
// layer name format, and refused rows send the cursor back to their name.

#include "grid/ZelWTGrid.h"

#include "grid/ZelWTGridMessages.h"
#include "shell/ResourceOverride.h"
#include "shell/ZelHostServices.h"
#include "store/ZelStoreSupport.h"

#include "ovcore/OvApDocManager.h"
#include "ovdb/OvDbDatabase.h"
#include "ovdb/OvDbLayerTableRecord.h"
#include "platform/MessageBox.h"
#include "platform/Resources.h"
#include "zelpm/ZelPrmProjectManager.h"

using namespace zelgrid;

namespace {

// Format mask bits: one per column that may feed the name, and 128 when the user typed
// the name. A record read from a drawing has every bit set.
constexpr int kMaskColor = 1;
constexpr int kMaskSize = 2;
constexpr int kMaskTyped = 128;

// The user property columns that a format can name, "%1" to "%5", and their mask bits.
int userColumnBit(int col) {
    return col >= 7 && col <= 11 ? 4 << (col - 7) : 0;
}

int maskOfColumn(int col) {
    if (col == 3)
        return kMaskColor;
    if (col == 4)
        return kMaskSize;
    if (col == 5)
        return kMaskTyped;
    return userColumnBit(col);
}

bool holdsToken(const QString& format, const QString& token) {
    return format.contains(token, Qt::CaseInsensitive);
}

} // namespace

bool ZelWTGrid::IsYes(QString strText) {
    const ResourceOverride resources;
    return strText.isEmpty() ||
           strText.compare(platform::loadString(115), Qt::CaseInsensitive) == 0;
}

void ZelWTGrid::OnModifyCell(int, int) {
    m_bCellDirty = true;
}

bool ZelWTGrid::OnLeftCell(int row, int col, int newRow, int newCol) {
    const ResourceOverride resources;
    if (newRow != 0 && newRow <= RowCount())
        PostToSelf(WM_WTG_HIGHLIGHTROW, static_cast<quintptr>(newRow), 0);
    UpdateButtons(newRow);
    SetNameCellEditable(row, false);

    if (col != 0 && row <= RowCount() && col <= ColCount()) {
        CommitCell(row, col);
        if (row != newRow || col != newCol) {
            QString error;
            // Until the cursor is back at a row whose fault was just told, no other fault is
            // told: rows at fault would send it to each other for ever, one go-back behind
            // the other, the more so behind moves already queued, as a paste's. The fault
            // of a row left on the way is told when the drafter leaves it.
            if (!ValidateRow(row, Cell(row, 5).trimmed(), error) && !m_bSendingBack) {
                // Staying in the same name, the fault is told once.
                const bool otherName =
                    Cell(newRow, 5).compare(Cell(row, 5), Qt::CaseInsensitive) != 0;
                if (otherName || m_bReportNameError) {
                    // Set before the message box, whose loop runs the moves already queued.
                    m_bSendingBack = true;
                    platform::appMessageBox(error);
                    m_bReportNameError = otherName;
                    PostToSelf(WM_WTG_GOTOCELL, static_cast<quintptr>(row), 5);
                    // The go-back is made once what was posted before it has run; a move
                    // to the same row queued earlier, as a paste's, is not it.
                    QMetaObject::invokeMethod(
                        this, [this] { m_bSendingBack = false; }, Qt::QueuedConnection);
                    SetNameCellEditable(row, true);
                }
            }
        }
    }
    if (row == newRow && col == newCol)
        SetNameCellEditable(row, true);
    return true;
}

bool ZelWTGrid::OnLButtonHitRowCol(int hitRow, int hitCol, int dragRow, int dragCol, QPoint point,
                                   unsigned flags, int hitState) {
    if (hitRow == 0 && hitCol != 0) {
        // Column selection by hand: the grid itself only selects rows and cells.
        ClearSel();
        SelectCells(1, hitCol, RowCount(), dragCol);
        PostToOwner(WM_WTG_ENABLEOK, 0, 0);
    }
    if (dragRow != hitRow)
        UpdateButtons(dragRow);
    // The grid window tells of no cell left when it had no current cell (as after the
    // load); the first click still gives its row the colour and the owner its buttons,
    // as leaving the header corner would.
    int curRow = 0;
    int curCol = 0;
    if (hitState == HitStart && hitRow >= 1 && hitCol >= 1 && !GetCurrent(curRow, curCol))
        OnLeftCell(0, 0, hitRow, hitCol);
    m_bReportNameError = true;
    platform::GridWindow::OnLButtonHitRowCol(hitRow, hitCol, dragRow, dragCol, point, flags,
                                             hitState);
    return true;
}

bool ZelWTGrid::CommitCell(int row, int col) {
    if (col > ColCount() || row > RowCount() || !m_bCellDirty || row == 0 || col == 0)
        return true;

    m_bModified = true;
    QString name = Cell(row, 5).trimmed();
    const QString cell = Cell(row, col);
    const int key = KeyOfRow(row);
    const QString format = FormatText();

    QString generated;
    QString storedName;
    if (name.isEmpty() || !m_WireTypeRec.FindLayerInMap(key, storedName))
        ExpandNameFormat(row, col, generated);

    const auto found = m_mapRows.find(key);
    ReleaseReadOnly();
    if (found == m_mapRows.end())
        return NewRowCommit(row, col, name, generated);

    WireLayerRec* rec = found->second;
    int& mask = rec->nameFormatMask;
    // A cell feeds the name only while the user hasn't named the row and the format
    // names the cell; it does so once, while the cell's value is still empty.
    const auto feedName = [&](int bit, const QString& token, const QString& value) {
        if ((mask & bit) || (mask & kMaskTyped) || !holdsToken(format, token))
            return;
        if (!generated.isEmpty() && value.isEmpty())
            name = generated;
        mask += bit;
        PutValue(row, 5, name);
    };

    if (col == 3) {
        feedName(kMaskColor, QStringLiteral("%C"), rec->wireColor);
        rec->wireColor = cell;
    } else if (col == 4) {
        feedName(kMaskSize, QStringLiteral("%S"), rec->wireSize);
        rec->wireSize = cell;
    } else if (col == 6) {
        rec->wireFlag = IsYes(cell);
    } else if (col >= 7) {
        if (rec->userValues.size() < zelstore::kUserPropertyCount)
            rec->userValues.resize(zelstore::kUserPropertyCount);
        if (col <= 11) {
            const int bit = userColumnBit(col);
            const QString token = QStringLiteral("%%1").arg(col - 6);
            // Column 11 looks at the mask as a whole: it feeds the name only while the
            // mask is below its own bit.
            const bool open = col == 11 ? mask < 64 : !(mask & bit) && !(mask & kMaskTyped);
            if (open && holdsToken(format, token)) {
                if (!generated.isEmpty() && rec->userValues.at(col - 7).isEmpty())
                    name = generated;
                mask += bit;
                PutValue(row, 5, name);
            }
        }
        // Columns past the twentieth value have nowhere to go.
        rec->userValues.at(static_cast<std::size_t>(col - 7)) = cell;
    }

    if (name.compare(rec->layerName, Qt::CaseInsensitive) != 0) {
        if (rec->layerName == QLatin1String("0")) {
            PutValue(row, 5, QStringLiteral("0"));
            platform::appMessageBoxById(152);
            m_bCellDirty = false;
            RestoreReadOnly();
            return false;
        }
        // The message is left to OnLeftCell, which finds the same fault again.
        QString error;
        if (!ValidateRow(row, name, error)) {
            m_bCellDirty = false;
            RestoreReadOnly();
            return false;
        }
        rec->layerName = name;
        if (OvDbDatabase* database = zelstore::workingDatabase()) {
            bool inUse = false;
            if (m_WireTypeRec.GetLayerInfo(name, database, rec->color, rec->linetypeId,
                                           rec->lineWeight, inUse))
                rec->inUseMark = inUse ? QStringLiteral("X") : QString();
            else
                rec->inUseMark.clear();
        }
        PutStatic(row, 2, rec->inUseMark);
    }

    rec->gridRow = row;
    rec->editState = 1;
    RestoreReadOnly();
    m_bCellDirty = false;
    return true;
}

bool ZelWTGrid::NewRowCommit(int row, int col, QString name, const QString& generated) {
    // Nothing to name the row by yet: the cell stays marked for the next one.
    if (name.isEmpty() && generated.isEmpty())
        return true;
    if (name.isEmpty()) {
        name = generated;
        PutValue(row, 5, name);
    }
    QString error;
    if (!ValidateRow(row, name, error)) {
        m_bCellDirty = false;
        RestoreReadOnly();
        return false;
    }

    // A row removed earlier in this dialog comes back under its own key, so that the
    // commit edits it instead of adding it again.
    for (auto& [key, removed] : m_mapRows) {
        if (removed->editState != 2 && removed->editState != 6)
            continue;
        if (removed->layerName.compare(name, Qt::CaseInsensitive) != 0)
            continue;
        removed->editState = 1;
        PutStatic(row, 1, QString::number(key));
        ++m_nWireTypeRows;
        PutValue(row, 3, removed->wireColor);
        PutValue(row, 4, removed->wireSize);
        for (int i = 0; i <= 12; ++i)
            PutValue(row, 7 + i, removed->userValues.at(static_cast<std::size_t>(i)));
        PutList(row, 6, FlagText(removed->wireFlag));
        GrowForWireTypeRows();
        RestoreReadOnly();
        return true;
    }

    auto* rec = new WireLayerRec;
    rec->color.setColorIndex(7);
    rec->lineWeight = OvDb::kLnWtByLwDefault;
    bool inUse = false;
    OvDbDatabase* database = zelstore::workingDatabase();
    if (database) {
        rec->linetypeId = database->continuousLinetype();
        m_WireTypeRec.GetLayerInfo(name, database, rec->color, rec->linetypeId, rec->lineWeight,
                                   inUse);
    }
    rec->layerName = name;
    rec->wireColor = Cell(row, 3);
    rec->wireSize = Cell(row, 4);
    rec->wireFlag = IsYes(Cell(row, 6));
    rec->wireKind = QString::fromWCharArray(zelstore::kWire);
    rec->editState = 5;
    rec->gridRow = row;
    rec->inUseMark = inUse ? QStringLiteral("X") : QString();
    rec->userValues.resize(zelstore::kUserPropertyCount);
    // The last column is not read: a new record's last value stays empty.
    for (int c = 7; c < ColCount(); ++c)
        rec->userValues.at(static_cast<std::size_t>(c - 7)) = Cell(row, c);
    rec->nameFormatMask = maskOfColumn(col);

    long key = ZelWireTypeRec::GetNextKey();
    while (m_mapRows.count(static_cast<int>(key)))
        key = ZelWireTypeRec::GetNextKey();
    m_mapRows[static_cast<int>(key)] = rec;

    PutStatic(row, 1, QString::number(key));
    PutValue(row, 5, name);
    PutStatic(row, 2, rec->inUseMark);
    PutList(row, 6, FlagText(rec->wireFlag));

    ++m_nWireTypeRows;
    GrowForWireTypeRows();
    RestoreReadOnly();
    m_bCellDirty = false;
    return true;
}

void ZelWTGrid::GrowForWireTypeRows() {
    if (m_nWireTypeRows >= RowCount())
        SetRows(m_nWireTypeRows + 1);
}

bool ZelWTGrid::ExpandNameFormat(int row, int col, QString& strResult) {
    if (col < 3 || col > 11)
        return true;
    QString format = FormatText();
    const qsizetype last = format.lastIndexOf(QLatin1Char('%'));
    // The owner refuses a format without a token; without one there is nothing to expand.
    if (last < 0)
        return true;
    const QString tail = format.mid(last + 2);
    format.truncate(last + 2);

    QString value;
    while (!format.isEmpty()) {
        const qsizetype at = format.indexOf(QLatin1Char('%'));
        if (at < 0)
            break;
        const QString prefix = format.left(at);
        const QString token = format.mid(at, 2).toUpper();
        format.remove(0, at + 2);

        int source = 0;
        if (token == QLatin1String("%C"))
            source = 3;
        else if (token == QLatin1String("%S"))
            source = 4;
        else if (token.size() == 2 && token[1] >= QLatin1Char('1') && token[1] <= QLatin1Char('5'))
            source = 7 + (token[1].unicode() - u'1');
        // An unknown token repeats the value of the one before.
        if (source != 0)
            value = Cell(row, source);
        if (!value.isEmpty() && format.isEmpty())
            value += tail;
        if (!value.isEmpty())
            strResult += prefix + value;
    }
    return true;
}

bool ZelWTGrid::ValidateRow(int row, QString strName, QString& strError) {
    const ResourceOverride resources;
    if (m_WireTypeRec.ValidateLayerName(strName) == Orvex::eInvalidLayerName) {
        strError = platform::loadString(146);
        return false;
    }
    if (!strName.isEmpty()) {
        if (strName.size() <= 255)
            return true;
        strError = platform::loadString(111);
        return false;
    }

    const int key = KeyOfRow(row);
    const auto found = m_mapRows.find(key);
    QString storedName;
    if (found != m_mapRows.end() && m_WireTypeRec.FindLayerInMap(key, storedName)) {
        // The record keeps the empty name, so that a commit stops at it too.
        found->second->layerName = strName;
        strError = platform::loadString(147);
        return false;
    }
    // A row with data needs a name. The last column is left out of the look.
    for (int col = 3; col < ColCount(); ++col) {
        if (col != 5 && !Cell(row, col).trimmed().isEmpty()) {
            strError = platform::loadString(147);
            return false;
        }
    }
    if (found != m_mapRows.end()) {
        // A row made in this dialog and emptied again goes, record and all.
        delete found->second;
        m_mapRows.erase(found);
        DropRows(row, row);
        --m_nWireTypeRows;
        PostToSelf(WM_WTG_GOTOCELL, static_cast<quintptr>(m_nWireTypeRows), 5);
        return false;
    }
    return true;
}

bool ZelWTGrid::SetNameCellEditable(int row, bool bForce) {
    if (row == 0 || row > RowCount())
        return true;
    ReleaseReadOnly();
    const bool named = !Cell(row, 5).isEmpty();
    if (!bForce && named) {
        PutStatic(row, 5, Cell(row, 5));
    } else {
        PutEdit(row, 5);
        // Open the text for editing once the cursor stands in the cell.
        if (named)
            PostEditKey();
    }
    RestoreReadOnly();
    return true;
}

int ZelWTGrid::IsRowRemovable(int row) {
    if (row == 0 || row > m_nWireTypeRows)
        return 0;
    QString storedName;
    if (!m_WireTypeRec.FindLayerInMap(KeyOfRow(row), storedName))
        return 1;
    return Cell(row, 5).compare(m_strDefaultLayer, Qt::CaseInsensitive) != 0 ? 1 : 0;
}

bool ZelWTGrid::RemoveRow(int row, bool bKeepLayer) {
    const int key = KeyOfRow(row);
    const QString name = Cell(row, 5);
    if (name.isEmpty()) {
        DropRows(row, row);
        return true;
    }
    if (row == 0 || row > static_cast<int>(m_mapRows.size()))
        return true;
    const auto found = m_mapRows.find(key);
    if (found == m_mapRows.end()) {
        DropRows(row, row);
        --m_nWireTypeRows;
        return true;
    }
    WireLayerRec* rec = found->second;

    OvDbLayerTableRecord* layer = nullptr;
    const bool layerExists = m_WireTypeRec.GetLayerTblRec(name, OvDb::kForRead, layer);
    zelstore::releaseObject(layer);
    QString storedName;
    const bool stored = m_WireTypeRec.FindLayerInMap(key, storedName);

    if (stored && !bKeepLayer) {
        // Only asks whether the layer may go; the commit erases it, so Cancel keeps it.
        const std::wstring wideName = name.toStdWString();
        if (!m_WireTypeRec.DeleteLayer(wideName.c_str(), false) && layerExists)
            return true;
        DropRows(row, row);
        rec->editState = 2;
        rec->gridRow = 0;
    } else if (stored) {
        DropRows(row, row);
        rec->editState = 6;
        rec->gridRow = 0;
        m_WireTypeRec.AddToNonWireLayers(name);
    } else {
        DropRows(row, row);
        rec->editState = 2;
        rec->gridRow = 0;
        if (layerExists)
            m_WireTypeRec.AddToNonWireLayers(name);
    }
    --m_nWireTypeRows;
    return true;
}

bool ZelWTGrid::ClearSelectedCells() {
    const std::vector<int> rows = SelRows();
    const std::vector<int> cols = SelCols();
    if (rows.empty() || (rows.size() < 2 && cols.size() < 2))
        return true;
    for (int row : rows) {
        for (int col : cols) {
            m_bCellDirty = true;
            PutValue(row, col, QString());
            CommitCell(row, col);
        }
    }
    return true;
}

bool ZelWTGrid::ResetAllValid(bool bOn) {
    if (!m_bMakeAllValidWire)
        return true;
    for (auto& [key, rec] : m_mapRows) {
        if (bOn) {
            rec->editState = 1;
            m_WireTypeRec.RemoveFrmNonWireLayers(rec->layerName);
        } else {
            rec->editState = 6;
            m_WireTypeRec.AddToNonWireLayers(rec->layerName);
        }
    }
    if (!bOn)
        m_nWireTypeRows = 0;
    return true;
}

void ZelWTGrid::MakeCellEditable(int mode) {
    ZelPrmProjectManager* manager = GetProjectManager();
    ZelPrmProjectId project;
    if (!manager || !manager->getActiveProjectID(project))
        return;
    const QString file = zelstore::currentDocumentFileName();
    const std::wstring wideFile = file.toStdWString();
    if (!manager->isFileInProject(wideFile.c_str(), project))
        return;

    ClearSel();
    int row = 0;
    int col = 0;
    GetCurrent(row, col);
    ReleaseReadOnly();
    // The grid has one edit control; another mode also frees the drawing from its lock.
    PutEdit(row, col);
    if (mode != 1 && IsDrawingLocked(file))
        UnlockDrawing(file);
    RestoreReadOnly();
}
