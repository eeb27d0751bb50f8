// The desktop program as a drafter uses it: the demo opens, a pick answers a waiting
// command, the command line runs commands and LISP, the layer panel follows the drawing,
// and drawings are saved, closed and opened again.

#include "DesktopFixture.h"

#include "OvLayerModel.h"
#include "OvLayerPanel.h"
#include "OvLispConsole.h"

#include "ovcore/OvEdCommandStack.h"
#include "ovcore/OvEdInput.h"
#include "ovcore/OvRxSystemRegistry.h"
#include "ovcore/oved.h"
#include "ovdb/ovdb.h"
#include "platform/MessageBoxScript.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSettings>
#include <QTabWidget>
#include <QTimer>

#include <functional>

namespace {

// What the test command's pick answered.
struct PickRecord {
    int status = 0;
    std::int64_t name[2] = {0, 0};
    double point[3] = {0, 0, 0};
    int runs = 0;
};
PickRecord s_pick;

void pickCommand() {
    ++s_pick.runs;
    s_pick.status = ovedEntSel(L"\nSelect a wire: ", s_pick.name, s_pick.point);
}

OvEdCommandStack* commands() {
    return OvEdCommandStack::cast(ovrxSysRegistry()->at(L"ORVEX_REGISTERED_COMMANDS"));
}

// Runs `act` once the nested loop that the next statement starts is running.
void whileWaiting(std::function<void()> act) {
    QTimer::singleShot(0, qApp, std::move(act));
}

int rowOf(const OvLayerModel* model, const QString& layer) {
    for (int row = 0; row < model->rowCount(); ++row) {
        if (model->index(row, OvLayerModel::Name).data().toString() == layer)
            return row;
    }
    return -1;
}

class DesktopSession : public DesktopFixture {
protected:
    // A line of our own, far from the demo's, so that a click at its middle finds it alone.
    void addLine() {
        type(QStringLiteral("(entmake '((0 . \"LINE\") (8 . \"RD_1.5\") (10 5000.0 5000.0 0.0) "
                            "(11 5100.0 5000.0 0.0)))"));
        view()->zoomExtents();
    }

    QPoint middleOfLine() const { return view()->viewportPoint(QPointF(5050.0, 5000.0)); }
};

TEST_F(DesktopSession, OpensTheDemoTheModuleAnswersAndTheViewZoomsAndPans) {
    start();
    QTabWidget* tabs = window()->tabs();
    ASSERT_EQ(tabs->count(), 1);
    EXPECT_EQ(tabs->tabText(0), "demo.dwg");
    EXPECT_TRUE(window()->windowTitle().contains("Demo")) << window()->windowTitle().toStdString();
    ASSERT_NE(view(), nullptr);
    EXPECT_GT(view()->snapshot()->segments().size(), 0u);
    // The panel lists every layer of the drawing, as LISP reads them without the windows.
    EXPECT_EQ(window()->layerPanel()->model()->rowCount(), lisp("(length (layer-list))").toInt());

    // The wire type module's command, typed at the command line, opens its dialog over the
    // window with the drawing's wire types. A procedure stands in for the drafter: it reads
    // the dialog and cancels it.
    type(QStringLiteral("(orvex-dialog-queue (lambda () (princ (strcat \"[\" (orvex-dialog-title)"
                        " \"|\" (itoa (orvex-grid-rows 1002)) \"]\")) (orvex-dialog-click 2)))"));
    type("WireTypeSel1");
    // The demo's five wire types and the blank row for a new one.
    EXPECT_TRUE(output().contains("[Create/Edit Wire Types|6]")) << output().toStdString();

    // The wheel zooms about the cursor.
    OvDrawingView* v = view();
    const QPoint cursor(200, 150);
    const QPointF under = v->drawingPoint(cursor);
    const double scale = v->scale();
    QWheelEvent wheel(cursor, v->viewport()->mapToGlobal(cursor), QPoint(), QPoint(0, 120),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(v->viewport(), &wheel);
    EXPECT_NEAR(v->scale(), scale * 1.2, scale * 1e-6);
    const QPointF after = v->drawingPoint(cursor);
    EXPECT_NEAR(after.x(), under.x(), 2.0 / v->scale());
    EXPECT_NEAR(after.y(), under.y(), 2.0 / v->scale());

    // A drag with the left button moves the drawing with the mouse.
    const QPointF grabbed = v->drawingPoint(QPoint(300, 300));
    QTest::mousePress(v->viewport(), Qt::LeftButton, {}, QPoint(300, 300));
    QTest::mouseMove(v->viewport(), QPoint(340, 300));
    QTest::mouseMove(v->viewport(), QPoint(400, 330));
    QTest::mouseRelease(v->viewport(), Qt::LeftButton, {}, QPoint(400, 330));
    const QPointF dropped = v->drawingPoint(QPoint(400, 330));
    EXPECT_NEAR(dropped.x(), grabbed.x(), 2 / v->scale());
    EXPECT_NEAR(dropped.y(), grabbed.y(), 2 / v->scale());
    // Home brings the whole drawing back in sight.
    QTest::keyClick(v, Qt::Key_Home);
    const QRectF extents = v->snapshot()->extents();
    const QRect visible = v->viewport()->rect();
    EXPECT_TRUE(visible.contains(v->viewportPoint(extents.topLeft())));
    EXPECT_TRUE(visible.contains(v->viewportPoint(extents.bottomRight())));
}

TEST_F(DesktopSession, AClickInTheViewAnswersTheCommandsPickAndEscCancelsIt) {
    start();
    ASSERT_EQ(commands()->addCommand(L"DESKTOPTEST", L"DtPick", L"DtPick", 0, pickCommand),
              Orvex::eOk);
    addLine();

    // The command waits in its pick; the prompt stands in the command line meanwhile.
    s_pick = {};
    QString promptWhileWaiting;
    whileWaiting([&] {
        promptWhileWaiting = window()->commandLine()->prompt();
        QTest::mouseClick(view()->viewport(), Qt::LeftButton, {}, middleOfLine());
    });
    type("DtPick");
    EXPECT_EQ(s_pick.runs, 1);
    EXPECT_EQ(promptWhileWaiting, "Select a wire:");
    EXPECT_EQ(window()->commandLine()->prompt(), "Command:");
    ASSERT_EQ(s_pick.status, RTNORM);
    // The name the command got is the line's, as LISP sees it.
    resbuf* picked = ovutBuildList(RTENAME, s_pick.name, 0);
    ASSERT_EQ(ovedPutSym(L"picked_by_command", picked), RTNORM);
    ovutRelRb(picked);
    EXPECT_EQ(lisp("(equal picked_by_command (entlast))"), "T");
    EXPECT_NEAR(s_pick.point[0], 5050.0, 50.0);

    // Esc ends the pick as cancelled; a click on nothing finds nothing.
    whileWaiting([&] { QTest::keyClick(view(), Qt::Key_Escape); });
    type("DtPick");
    EXPECT_EQ(s_pick.status, RTCAN);
    whileWaiting([&] {
        QTest::mouseClick(view()->viewport(), Qt::LeftButton, {},
                          view()->viewportPoint(QPointF(5050.0, 5060.0)));
    });
    type(QString()); // Enter repeats the last command
    EXPECT_EQ(s_pick.runs, 3);
    EXPECT_EQ(s_pick.status, RTERROR);
    commands()->removeGroup(L"DESKTOPTEST");
}

TEST_F(DesktopSession, CommandLineAndLispConsoleRunLispAndTheLayerPanelFollows) {
    start();
    QLineEdit* input = window()->commandLine()->input();
    input->setFocus();
    // Tab completes a command of the module.
    QTest::keyClicks(input, "wiretypes");
    QTest::keyClick(input, Qt::Key_Tab);
    EXPECT_EQ(input->text(), "WireTypeSel1");
    input->clear();

    type("(+ 1 2)");
    EXPECT_TRUE(output().endsWith("Command: (+ 1 2)\n3\n")) << output().toStdString();
    type("(car 1)");
    EXPECT_TRUE(output().contains("; error: car")) << output().toStdString();
    type("NoSuchCommand");
    EXPECT_TRUE(output().contains("Unknown command \"NoSuchCommand\""));
    type("!(* 6 7)");
    EXPECT_TRUE(output().endsWith("42\n"));

    // Up walks back through what was typed, Down forward again.
    QTest::keyClick(input, Qt::Key_Up);
    EXPECT_EQ(input->text(), "!(* 6 7)");
    QTest::keyClick(input, Qt::Key_Up);
    QTest::keyClick(input, Qt::Key_Up);
    EXPECT_EQ(input->text(), "(car 1)");
    QTest::keyClick(input, Qt::Key_Down);
    EXPECT_EQ(input->text(), "NoSuchCommand");
    input->clear();

    // The LISP console evaluates what is typed in it, and whole files.
    OvLispConsole* console = window()->lispConsole();
    auto* evaluate = console->findChild<QPushButton*>("lispEvaluate");
    ASSERT_NE(evaluate, nullptr);
    console->editor()->setFocus();
    QTest::keyClicks(console->editor(), "(princ \"hello\")");
    QTest::keyClick(console->editor(), Qt::Key_Return);
    QTest::keyClicks(console->editor(), "(* 2 21)");
    QTest::mouseClick(evaluate, Qt::LeftButton);
    EXPECT_TRUE(console->transcript().contains("hello")) << console->transcript().toStdString();
    EXPECT_TRUE(console->transcript().endsWith("42\n"));

    console->editor()->clear();
    QTest::keyClicks(console->editor(), "(car 1)");
    QTest::keyClick(console->editor(), Qt::Key_Return, Qt::ControlModifier);
    EXPECT_EQ(console->transcript().count("; error:"), 1) << console->transcript().toStdString();

    QFile script(path("layers.lsp"));
    ASSERT_TRUE(script.open(QIODevice::WriteOnly));
    script.write("(entmake '((0 . \"LAYER\") (2 . \"FROM_FILE\")))\n(length (layer-list))\n");
    script.close();
    const OvLayerModel* model = window()->layerPanel()->model();
    const int layers = model->rowCount();
    console->loadFile(script.fileName());
    EXPECT_TRUE(console->transcript().endsWith(QString::number(layers + 1) + u'\n'))
        << console->transcript().toStdString();
    // The layer panel follows the drawing.
    EXPECT_EQ(model->rowCount(), layers + 1);
    const auto shown = [model](const QString& layer, int column, int role = Qt::DisplayRole) {
        return model->index(rowOf(model, layer), column).data(role);
    };
    type("(entmake '((0 . \"LAYER\") (2 . \"CABLE_TRAY\") (62 . 3)))");
    ASSERT_GE(rowOf(model, "CABLE_TRAY"), 0);
    EXPECT_EQ(shown("CABLE_TRAY", OvLayerModel::Color).toString(), "green");
    EXPECT_EQ(shown("CABLE_TRAY", OvLayerModel::WireType).toString(), QString());
    EXPECT_EQ(shown("CABLE_TRAY", OvLayerModel::InUse).toString(), QString());

    // The module makes a wire type: the panel shows it as one, with the pattern that
    // catches it, and as the current layer.
    type("(zel_add_wiretype \"VT_4\" \"_COLOR\" \"magenta\" \"Wire Size\" \"4\")");
    ASSERT_GE(rowOf(model, "VT_4"), 0) << output().toStdString();
    EXPECT_EQ(shown("VT_4", OvLayerModel::WireType).toString(), "Yes");
    EXPECT_EQ(shown("VT_4", OvLayerModel::Color).toString(), "magenta");
    EXPECT_FALSE(shown("VT_4", OvLayerModel::Pattern).toString().isEmpty());
    EXPECT_TRUE(shown("VT_4", OvLayerModel::Name, Qt::FontRole).value<QFont>().bold());

    // A line on the tray layer puts it in use, and the view draws one line more.
    const std::size_t lines = view()->snapshot()->segments().size();
    type("(entmake '((0 . \"LINE\") (8 . \"CABLE_TRAY\") (10 0 0 0) (11 10 0 0)))");
    EXPECT_EQ(shown("CABLE_TRAY", OvLayerModel::InUse).toString(), "Yes");
    EXPECT_EQ(view()->snapshot()->segments().size(), lines + 1);
}

TEST_F(DesktopSession, SavesClosesOpensAgainFromRecentFilesAndReadOnlyWhenHeld) {
    start();
    platform::MessageBoxScript& boxes = this->boxes();
    addLine();
    const std::size_t lines = view()->snapshot()->segments().size();
    EXPECT_EQ(window()->tabs()->tabText(0), "demo.dwg*");

    // Closing asks about the changes; Cancel keeps the drawing open.
    boxes.answer(platform::IDCANCEL);
    QTest::keyClick(window(), Qt::Key_W, Qt::ControlModifier);
    ASSERT_EQ(boxes.shown().size(), 1u);
    EXPECT_EQ(window()->tabs()->count(), 1);

    QTest::keyClick(window(), Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(window()->tabs()->tabText(0), "demo.dwg");
    QTest::keyClick(window(), Qt::Key_W, Qt::ControlModifier);
    EXPECT_EQ(window()->tabs()->count(), 0);
    EXPECT_EQ(boxes.shown().size(), 1u); // nothing unsaved, nothing asked

    // The settings store remembers the drawing, and the recent files menu opens it again.
    QSettings settings;
    EXPECT_EQ(settings.value("Desktop/recentFiles").toStringList().value(0),
              QFileInfo(demoDrawing()).absoluteFilePath());
    auto* recent = window()->menuBar()->findChild<QMenu*>("fileRecent");
    ASSERT_NE(recent, nullptr);
    ASSERT_FALSE(recent->actions().isEmpty());
    recent->actions().first()->trigger();
    ASSERT_EQ(window()->tabs()->count(), 1);
    EXPECT_EQ(view()->snapshot()->segments().size(), lines);

    // Changes answered with No are dropped.
    type("(entmake '((0 . \"LINE\") (10 0 0 0) (11 1 1 0)))");
    boxes.answer(platform::IDNO);
    QTest::keyClick(window(), Qt::Key_W, Qt::ControlModifier);
    EXPECT_EQ(window()->tabs()->count(), 0);
    ASSERT_TRUE(window()->openDrawing(demoDrawing()));
    EXPECT_EQ(view()->snapshot()->segments().size(), lines);

    // A drawing that another machine's session holds opens read-only, and says so.
    const QString held = path("drawings/import.dwg");
    QFile lock(held + ".ovlock");
    ASSERT_TRUE(lock.open(QIODevice::WriteOnly));
    lock.write(R"({"user":"someone","machine":"another-workstation","pid":4242,)"
               R"("time":"2026-01-01T08:00:00Z"})");
    lock.close();
    const std::size_t asked = boxes.shown().size();
    ASSERT_TRUE(window()->openDrawing(held));
    EXPECT_TRUE(manager()->mdiActiveDocument()->isReadOnly());
    EXPECT_EQ(window()->tabs()->tabText(window()->tabs()->currentIndex()),
              "import.dwg [read-only]");
    ASSERT_EQ(boxes.shown().size(), asked + 1);
    EXPECT_TRUE(boxes.shownTexts().back().contains("read-only"));
    EXPECT_TRUE(window()->windowTitle().contains("read-only"));
}

TEST_F(DesktopSession, QuittingAsksAboutEachUnsavedDrawingAndCancelKeepsTheWindow) {
    start({demoDrawing(), path("drawings/import.dwg")});
    platform::MessageBoxScript& boxes = this->boxes();
    type("(entmake '((0 . \"LAYER\") (2 . \"UNSAVED\")))");
    boxes.answer(platform::IDCANCEL);
    QTest::keyClick(window(), Qt::Key_Q, Qt::ControlModifier);
    ASSERT_EQ(boxes.shown().size(), 1u); // only the changed drawing is asked about
    EXPECT_TRUE(window()->isVisible());
    EXPECT_EQ(window()->tabs()->count(), 2);

    boxes.answer(platform::IDYES);
    QTest::keyClick(window(), Qt::Key_Q, Qt::ControlModifier);
    EXPECT_FALSE(window()->isVisible());
    EXPECT_EQ(manager()->documentCount(), 0);
    // Yes saved the changed drawing before it closed.
    QFile saved(demoDrawing());
    ASSERT_TRUE(saved.open(QIODevice::ReadOnly));
    EXPECT_TRUE(saved.readAll().contains("\"name\":\"UNSAVED\""));
}

} // namespace
