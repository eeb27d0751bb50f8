// Makes the screenshots of the user guide from the real desktop program: a session on a
// copy of the demo project, driven with input events as a drafter would, each picture
// taken from the screen (so that open menus show). Run it on an X display, normally under
// xvfb-run: scripts/make-screenshots does.
//
//   orvex-screenshots DEMO-FOLDER OUTPUT-FOLDER

#include "OvCommandLine.h"
#include "OvDesktop.h"
#include "OvDrawingView.h"
#include "OvLispConsole.h"
#include "OvMainWindow.h"

#include "ovcore/OvApDocManager.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QDockWidget>
#include <QFile>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPixmap>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <cstdio>

namespace {

QString s_output;
int s_failures = 0;

void settle(int ms = 300) {
    QTest::qWait(ms);
}

// The screen area of a widget (or of the whole screen), saved as a PNG.
void shoot(const QString& name, const QRect& area) {
    settle();
    QScreen* screen = QGuiApplication::primaryScreen();
    const QPixmap picture = screen->grabWindow(0, area.x(), area.y(), area.width(), area.height());
    const QString file = QDir(s_output).filePath(name + QStringLiteral(".png"));
    if (picture.isNull() || !picture.save(file)) {
        std::fprintf(stderr, "orvex-screenshots: could not save %s\n", qPrintable(file));
        ++s_failures;
        return;
    }
    std::printf("%s\n", qPrintable(file));
}

void type(OvMainWindow* window, const QString& text) {
    QLineEdit* input = window->commandLine()->input();
    input->setFocus();
    QTest::keyClicks(input, text);
    QTest::keyClick(input, Qt::Key_Return);
}

bool copyDemo(const QString& from, const QString& to) {
    QDir().mkpath(to + QStringLiteral("/drawings"));
    bool ok = true;
    for (const char* file : {"demo.zpj", "demo.db", "drawings/demo.dwg", "drawings/import.dwg",
                             "drawings/template.dwt"})
        ok = QFile::copy(QDir(from).filePath(QLatin1String(file)),
                         QDir(to).filePath(QLatin1String(file))) &&
             ok;
    return ok;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: orvex-screenshots DEMO-FOLDER OUTPUT-FOLDER\n");
        return 2;
    }
    QTemporaryDir work;
    // A fresh settings store: the pictures show the program as it first opens.
    qputenv("XDG_CONFIG_HOME", work.filePath(QStringLiteral("config")).toUtf8());
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Orvex"));
    QApplication::setApplicationName(QStringLiteral("Orvex"));
    s_output = QDir(QString::fromLocal8Bit(argv[2])).absolutePath();
    QDir().mkpath(s_output);
    const QString demo = work.filePath(QStringLiteral("demo"));
    if (!copyDemo(QString::fromLocal8Bit(argv[1]), demo)) {
        std::fprintf(stderr, "orvex-screenshots: cannot copy the demo project from %s\n", argv[1]);
        return 1;
    }

    const QString bin = QCoreApplication::applicationDirPath();
    OvDesktop desktop(bin, bin);
    OvDesktopOptions options;
    options.project = demo + QStringLiteral("/demo.zpj");
    options.drawings = {demo + QStringLiteral("/drawings/demo.dwg")};
    if (!desktop.start(options))
        return 1;
    OvMainWindow* window = desktop.window();
    window->move(0, 0);
    window->resize(1280, 860);
    if (!QTest::qWaitForWindowExposed(window))
        return 1;
    window->activateWindow();
    settle(600);
    const QRect whole = QRect(QPoint(0, 0), window->frameGeometry().size());

    // 1. The demo project as it opens.
    shoot(QStringLiteral("desktop-demo"), whole);

    // 2. The Wire types menu, open.
    QTest::keyClick(window, Qt::Key_W, Qt::AltModifier);
    settle();
    shoot(QStringLiteral("wire-types-menu"), whole);
    QTest::keyClick(QApplication::activePopupWidget() ? QApplication::activePopupWidget()
                                                      : static_cast<QWidget*>(window),
                    Qt::Key_Escape);
    settle();

    // 3. The command line: LISP at the prompt and the module's answers.
    type(window, QStringLiteral("(zel_get_current_wiretype)"));
    type(window, QStringLiteral("(zel_add_wiretype \"VT_4\" \"_COLOR\" \"magenta\" \"Wire Size\" "
                                "\"4\")"));
    type(window, QStringLiteral("(entmake '((0 . \"LINE\") (8 . \"VT_4\") (10 40.0 60.0 0.0) "
                                "(11 260.0 60.0 0.0)))"));
    window->commandLine()->input()->setText(QStringLiteral("Wire"));
    shoot(QStringLiteral("command-line"), whole);
    window->commandLine()->input()->clear();

    // 4. A pick: the prompt stands in the command line while the view waits for a click.
    QTimer::singleShot(400, [window] {
        shoot(QStringLiteral("pick"), QRect(QPoint(0, 0), window->frameGeometry().size()));
        QTest::keyClick(window->activeView(), Qt::Key_Escape);
    });
    type(window, QStringLiteral("(entsel \"\\nSelect a wire: \")"));

    // 5. The LISP console with a short script.
    window->findChild<QDockWidget*>(QStringLiteral("lispConsoleDock"))->raise();
    OvLispConsole* console = window->lispConsole();
    console->editor()->setFocus();
    QTest::keyClicks(console->editor(), QStringLiteral("(setq n 0)"));
    QTest::keyClick(console->editor(), Qt::Key_Return);
    QTest::keyClicks(
        console->editor(),
        QStringLiteral(
            "(foreach l (layer-list) (if (vl-string-search \"_\" l) (setq n (+ n 1))))"));
    QTest::keyClick(console->editor(), Qt::Key_Return);
    QTest::keyClicks(console->editor(),
                     QStringLiteral("(princ (strcat \"Layers with a wire size: \" (itoa n)))"));
    QTest::mouseClick(console->findChild<QPushButton*>(QStringLiteral("lispEvaluate")),
                      Qt::LeftButton);
    shoot(QStringLiteral("lisp-console"), whole);
    window->findChild<QDockWidget*>(QStringLiteral("layerDock"))->raise();

    // 6. Zoomed in on the wires, the layer panel beside.
    if (OvDrawingView* view = window->activeView()) {
        view->setFocus();
        for (int i = 0; i < 3; ++i)
            QTest::keyClick(view, Qt::Key_Plus);
    }
    shoot(QStringLiteral("layers-zoomed"), whole);

    // 7. The help window with the user guide.
    QTest::keyClick(window, Qt::Key_F1);
    settle(500);
    if (auto* help = window->findChild<QDialog*>(QStringLiteral("helpWindow"))) {
        help->move(120, 60);
        settle();
        shoot(QStringLiteral("help"), QRect(help->frameGeometry()));
        help->close();
    }

    // 8. The create and edit wire types dialog of the command WireTypeSel1, two rows selected.
    QTimer::singleShot(800, [] {
        QWidget* dialog = QApplication::activeModalWidget();
        if (!dialog) {
            std::fprintf(stderr, "orvex-screenshots: the wire type dialog did not open\n");
            ++s_failures;
            return;
        }
        dialog->move(40, 40);
        if (auto* grid = dialog->findChild<QTableView*>(QStringLiteral("1002"))) {
            // A cell first, as a drafter starts, then the two rows by their headers.
            const QModelIndex cell = grid->model()->index(1, 4);
            QTest::mouseClick(grid->viewport(), Qt::LeftButton, Qt::NoModifier,
                              grid->visualRect(cell).center());
            QHeaderView* rows = grid->verticalHeader();
            for (const int row : {1, 2})
                QTest::mouseClick(rows->viewport(), Qt::LeftButton,
                                  row == 1 ? Qt::NoModifier : Qt::ShiftModifier,
                                  QPoint(rows->width() / 2, rows->sectionViewportPosition(row) +
                                                                rows->sectionSize(row) / 2));
        }
        settle();
        shoot(QStringLiteral("edit-wire-types"), dialog->frameGeometry());
        if (auto* cancel = dialog->findChild<QAbstractButton*>(QStringLiteral("2")))
            QTest::mouseClick(cancel, Qt::LeftButton);
    });
    type(window, QStringLiteral("WireTypeSel1"));
    settle();

    desktop.stop();
    return s_failures == 0 ? 0 : 1;
}
