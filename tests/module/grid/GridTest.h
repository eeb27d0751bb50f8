#pragma once

#include "GridTestOwner.h"
#include "support/ZelTestHost.h"

#include <QString>

#include <memory>

// A running host with a drawing, and a dialog of template 101 around a wire type grid,
// worked with mouse and key events the way a drafter works it.
class GridTest : public ZelTestHost {
protected:
    void SetUp() override;
    void TearDown() override;

    // A saved drawing with the layer PLAIN and these wire types, added by the store in
    // order with the values given and the stored rows given (0 when there are fewer).
    OvDbDatabase* wireTypeDrawing(const QStringList& names, const std::vector<QString>& values = {},
                                  const std::vector<int>& gridRows = {});
    // Opens the dialog over the current drawing; the grid loads its wire types.
    GridTestOwner& openOwner(bool makeAllValid = false, bool editMode = true);
    GridTestOwner& owner() { return *m_owner; }
    ZelWTGrid& grid() { return m_owner->grid(); }

    // Lets posted messages and pending repaints run.
    static void settle();
    void clickCell(int row, int col, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void clickRowHeader(int row, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void doubleClickColumnHeader(int col);
    // Keys and text go to the widget with the focus, as a keyboard's do.
    void key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void typeText(const QString& text);
    // Clicks a cell, types the text and leaves the cell with Tab.
    void typeInto(int row, int col, const QString& text);
    void clickButton(int id);
    // Right-clicks a cell and picks `command` from the menu that comes up.
    void chooseFromContextMenu(int row, int col, int command);

    QString cell(int row, int col) const;
    std::pair<int, int> currentCell() const;
    const WireLayerRec* rowRecord(int row) const;
    // Layer names of the grid's rows 1 to the wire type rows.
    QStringList gridNames() const;

private:
    std::unique_ptr<GridTestOwner> m_owner;
};
