#pragma once

#include <QObject>

class ZelWTGrid;

// The grid tells its owner of a row chosen by a cell, not by its row header. The two
// choosers watch the row header with this, so that OK follows a row header's click too.
// Declared after the grid in its dialog, it goes first, and Qt drops the filter with it.
class ZelRowHeaderWatch : public QObject {
public:
    explicit ZelRowHeaderWatch(ZelWTGrid& grid) : m_grid(grid) {}
    // Once the grid stands in its dialog; again changes nothing.
    void Watch();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    ZelWTGrid& m_grid;
};
