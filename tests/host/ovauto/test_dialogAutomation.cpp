// Dialog automation in process: procedures queued through the host's LISP drive dialogs
// of the resource library and a grid with real input events, and the time-out. Message
// boxes, undriven dialogs and failing procedures are run through orvex itself.

#include "ovauto/OvDialogAutomation.h"
#include "ovcore/OvLisp.h"
#include "platform/GridWindow.h"
#include "platform/ResourceHandle.h"
#include "platform/ResourceMenu.h"
#include "platform/Resources.h"
#include "platform/ScopedResourceHandle.h"
#include "platform/TemplateDialog.h"

#include <QApplication>
#include <QComboBox>
#include <QListWidget>
#include <QPushButton>
#include <QStandardPaths>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include <memory>
#include <ostream>

// Readable failures for texts.
inline void PrintTo(const QString& text, std::ostream* os) {
    *os << '"' << text.toStdString() << '"';
}

namespace {

using namespace platform;

ResourceHandle* library() {
    static ResourceHandle* handle = loadResourceLibrary(ZEL_RESOURCE_LIBRARY);
    return handle;
}

QString eval(const QString& expression) {
    const ovcore::lisp::EvalResult result = ovcore::lisp::evalString(expression);
    EXPECT_TRUE(result.ok) << expression.toStdString() << ": " << result.error.toStdString();
    return result.value;
}

// A grid that offers menu 103 on a right-click, as the module's grids do, and keeps the
// command chosen.
class MenuGrid : public GridWindow {
public:
    int chosen = -1;
    bool OnRButtonClickedRowCol(int row, int col, unsigned flags, QPoint point) override {
        GridWindow::OnRButtonClickedRowCol(row, col, flags, point);
        ResourceMenu menu;
        if (!menu.LoadMenu(103))
            return false;
        ResourceMenu::EnableMenuItem(menu.GetMenu(), 40023, false);
        chosen = ResourceMenu::TrackPopupMenu(menu.GetSubMenu(0), mapToGlobal(point), nullptr);
        return true;
    }
};

// Template 101 with a grid in its place 1002; button 1010 opens template 150 inside it and
// keeps what that one returned.
class HostDialog : public TemplateDialog {
public:
    HostDialog() : TemplateDialog(101) {}
    MenuGrid grid;
    int nestedResult = 0;
    QStringList killFocus;

    bool OnInitDialog() override {
        TemplateDialog::OnInitDialog();
        AttachGrid(&grid, 1002);
        grid.SetRowCount(4);
        grid.SetColCount(3);
        for (int r = 1; r <= 4; ++r) {
            for (int c = 1; c <= 3; ++c)
                grid.SetValueRange(GridRange(r, c), QStringLiteral("r%1c%2").arg(r).arg(c));
        }
        grid.SetStyleRange(GridRange(3, 2), CellStyle()
                                                .setReadOnly(true)
                                                .setControl(CellStyle::Control::Static)
                                                .setInterior(QColor(0x20, 0x40, 0x60))
                                                .setTextColor(QColor(Qt::white)));
        return true;
    }
    bool OnCommand(int id) override {
        if (id == 1010) {
            TemplateDialog nested(150, this);
            nestedResult = nested.DoModal();
            return true;
        }
        return TemplateDialog::OnCommand(id);
    }
    void OnEditKillFocus(int id) override { killFocus << QString::number(id); }
};

class DialogAutomationTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(library(), nullptr);
        resources = std::make_unique<ScopedResourceHandle>(library());
        OvDialogAutomation& automation = OvDialogAutomation::instance();
        automation.install(OvDialogAutomation::Mode::Batch);
        automation.setLinePrinter([this](const QString& line) { lines << line; });
        automation.resetFailures();
        automation.clearMessages();
        automation.setTimeout(10);
        eval("(setq seen '())");
        eval("(defun note (x) (setq seen (append seen (list x))))");
    }
    void TearDown() override {
        OvDialogAutomation& automation = OvDialogAutomation::instance();
        EXPECT_EQ(automation.pending(), 0) << "a queued procedure was not used";
        automation.clearQueue();
        automation.setLinePrinter({});
        automation.install(OvDialogAutomation::Mode::Batch);
    }
    int failures() const { return OvDialogAutomation::instance().failures(); }

    std::unique_ptr<ScopedResourceHandle> resources;
    QStringList lines;
};

// The procedure of a dialog types, ticks, reads and clicks; a dialog opened meanwhile takes
// the next procedure, and the first goes on when it closes.
TEST_F(DialogAutomationTest, ProcedureDrivesTheDialogAndANestedOneTakesTheNextProcedure) {
    eval(R"((orvex-dialog-queue
              (lambda ()
                (note (orvex-dialog-title))
                (note (orvex-dialog-set-text 1019 "Wire-%N"))
                (orvex-dialog-check 1008 T)
                (note (orvex-dialog-checked 1008))
                (note (orvex-dialog-enabled 1))
                (orvex-dialog-click 1010)
                (note "outer again")
                (orvex-dialog-click 1))))");
    eval(R"((orvex-dialog-queue
              (lambda () (note "nested") (note (orvex-dialog-visible 1028)) (orvex-dialog-click 1))))");
    HostDialog dialog;
    EXPECT_EQ(dialog.DoModal(), TemplateDialog::IDOK);
    EXPECT_EQ(dialog.nestedResult, TemplateDialog::IDOK);
    EXPECT_EQ(dialog.GetDlgItemText(1019), "Wire-%N");
    EXPECT_EQ(dialog.IsDlgButtonChecked(1008), 1);
    // The typed text was left with Tab, as a person leaves a field.
    EXPECT_TRUE(dialog.killFocus.contains("1019"));
    EXPECT_EQ(eval("seen"), QStringLiteral("(\"%1\" \"Wire-%N\" T T \"nested\" T \"outer again\")")
                                .arg(dialog.windowTitle()));
    EXPECT_EQ(failures(), 0);
    EXPECT_TRUE(lines.isEmpty()) << lines.join('\n').toStdString();
}

TEST_F(DialogAutomationTest, OnTheDesktopADialogWaitingUnderAProcedureTimesOut) {
    OvDialogAutomation::instance().install(OvDialogAutomation::Mode::Desktop);
    EXPECT_FALSE(ovcore::lisp::evalString("(orvex-dialog-timeout -1)").ok);
    eval("(orvex-dialog-timeout 0.3)");
    eval("(orvex-dialog-queue (lambda () (orvex-dialog-click 1010) (orvex-dialog-click 1)))");
    HostDialog dialog;
    EXPECT_EQ(dialog.DoModal(), TemplateDialog::IDOK);
    EXPECT_EQ(dialog.nestedResult, TemplateDialog::IDCANCEL);
    EXPECT_EQ(failures(), 1);
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines[0].contains("waited 0.3 s without a procedure: cancelled"))
        << lines[0].toStdString();
}

TEST_F(DialogAutomationTest, GridCellsStylesSelectionAndRowsDraggedByTheirHeader) {
    eval(R"((orvex-dialog-queue
              (lambda ()
                (note (list (orvex-grid-rows 1002) (orvex-grid-cols 1002)))
                (orvex-grid-click 1002 2 0)
                (orvex-grid-click 1002 4 0 "shift")
                (note (orvex-grid-selected-rows 1002))
                (orvex-grid-click 1002 0 3 "ctrl")
                (note (orvex-grid-selected-cols 1002))
                (orvex-grid-click 1002 1 2)
                (note (orvex-grid-current 1002))
                (orvex-grid-type 1002 2 1 "typed")
                (orvex-grid-key 1002 "Return")
                (note (orvex-grid-cell 1002 2 1))
                (note (orvex-grid-style 1002 3 2))
                (note (cdr (assoc "read-only" (orvex-grid-style 1002 1 1))))
                (orvex-grid-click 1002 1 0)
                (orvex-grid-drag-row 1002 1 3)
                (note (list (orvex-grid-cell 1002 1 1) (orvex-grid-cell 1002 3 1)))
                (orvex-dialog-click 1))))");
    HostDialog dialog;
    dialog.grid.GetParam()->EnableMoveRows(true);
    EXPECT_EQ(dialog.DoModal(), TemplateDialog::IDOK);
    EXPECT_EQ(failures(), 0) << lines.join('\n').toStdString();
    EXPECT_EQ(dialog.grid.GetValueRowCol(1, 1), "typed") << "typed in row 2, moved to row 1";
    EXPECT_EQ(eval("seen"), R"(((4 3) (2 3 4) (3) (1 2) "typed" )"
                            R"((("control" . "static") ("read-only" . T) ("interior" . "#204060") )"
                            R"(("text-color" . "#ffffff")) nil ("typed" "r1c1")))");
}

TEST_F(DialogAutomationTest, ListsAndCombosTakeAnItemByObjectName) {
    QDialog plain;
    plain.setWindowTitle("Plain");
    auto* combo = new QComboBox(&plain);
    combo->setObjectName("kind");
    combo->addItems({"Single", "Twisted pair", "Shielded"});
    auto* list = new QListWidget(&plain);
    list->setObjectName("names");
    list->addItems({"W1", "W2", "W3"});
    auto* layout = new QVBoxLayout(&plain);
    layout->addWidget(combo);
    layout->addWidget(list);
    auto* ok = new QPushButton("&OK", &plain);
    layout->addWidget(ok);
    QObject::connect(ok, &QPushButton::clicked, &plain, &QDialog::accept);
    eval(R"((orvex-dialog-queue
              (lambda ()
                (orvex-dialog-choose "kind" "Shielded")
                (orvex-dialog-choose "names" "W2")
                (note (list (orvex-dialog-text "kind") (orvex-dialog-text "names")))
                (orvex-dialog-choose "kind" "Single")
                (orvex-dialog-answer "OK"))))");
    EXPECT_EQ(plain.exec(), QDialog::Accepted);
    EXPECT_EQ(combo->currentText(), "Single");
    EXPECT_EQ(list->currentItem()->text(), "W2");
    EXPECT_EQ(eval("(car seen)"), R"(("Shielded" "W2"))");
    EXPECT_EQ(failures(), 0) << lines.join('\n').toStdString();
}

TEST_F(DialogAutomationTest, APopupMenuTakesTheNextProcedure) {
    eval(R"((orvex-dialog-queue
              (lambda ()
                (orvex-grid-right-click 1002 2 2)
                (note "after the menu")
                (orvex-dialog-click 1))))");
    eval(R"((orvex-dialog-queue
              (lambda ()
                (note (assoc 40023 (orvex-menu-items)))
                (orvex-menu-choose 40013))))");
    HostDialog dialog;
    EXPECT_EQ(dialog.DoModal(), TemplateDialog::IDOK);
    EXPECT_EQ(failures(), 0) << lines.join('\n').toStdString();
    EXPECT_EQ(dialog.grid.chosen, 40013);
    EXPECT_EQ(eval("seen"), R"(((40023 "Paste" nil) "after the menu"))");

    // A disabled command cannot be chosen, and a menu nobody drives is closed.
    eval("(orvex-dialog-queue (lambda () (orvex-grid-right-click 1002 1 1) (orvex-dialog-click "
         "1)))");
    eval("(orvex-dialog-queue (lambda () (orvex-menu-choose 40023)))");
    HostDialog refused;
    EXPECT_EQ(refused.DoModal(), TemplateDialog::IDOK);
    EXPECT_EQ(refused.grid.chosen, 0);
    EXPECT_EQ(failures(), 1);
    ASSERT_FALSE(lines.isEmpty());
    EXPECT_TRUE(lines.last().contains("command 40023 of the popup menu is disabled"))
        << lines.last().toStdString();
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true);
    QApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    // Listing the tests (as the build does to discover them) needs no LISP: Guile keeps
    // memory for the process, which the leak checker would report there.
    if (!GTEST_FLAG_GET(list_tests))
        ovcore::lisp::initialize();
    return RUN_ALL_TESTS();
}
