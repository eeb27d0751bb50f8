#pragma once

#include "GridTestOwner.h"
#include "support/ZelUiTest.h"

#include <QTest>

#include <memory>

// A dialog of template 101 around a wire type grid, shown without a modal loop over the
// current drawing, worked with mouse and key events the way a drafter works it. A project
// that does not hold the drawing gives the default property names.
class GridTest : public ZelUiTest {
protected:
    void SetUp() override {
        ZelUiTest::SetUp();
        openDefaultNamesProject();
    }
    void TearDown() override {
        m_owner.reset();
        ZelUiTest::TearDown();
    }

    // Opens the dialog over the current drawing; the grid loads its wire types.
    GridTestOwner& openOwner(bool editMode = true) {
        m_owner = std::make_unique<GridTestOwner>(editMode);
        EXPECT_TRUE(m_owner->openGrid());
        EXPECT_TRUE(QTest::qWaitForWindowExposed(m_owner.get()));
        QApplication::setActiveWindow(m_owner.get());
        m_owner->grid().setFocus();
        m_active = m_owner.get();
        m_grid = &m_owner->grid();
        settle();
        return *m_owner;
    }
    GridTestOwner& owner() { return *m_owner; }
    // Leaves the open cell for a row other than the blank one and presses OK; true when the
    // commit went through and closed the dialog.
    bool commitAtOk() {
        clickCell(1, 3);
        clickButton(1);
        EXPECT_TRUE(m_owner->closed()) << "commit " << m_owner->lastCommit();
        return m_owner->closed();
    }
    // Right-clicks a cell and picks `command` from the menu that comes up.
    void chooseFromContextMenu(int row, int col, int command) {
        EXPECT_TRUE(contextMenu(row, col, command).contains(QString::number(command)))
            << "command " << command << " was not offered";
    }

private:
    std::unique_ptr<GridTestOwner> m_owner;
};
