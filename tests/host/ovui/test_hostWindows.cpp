#include "OvUiTest.h"

#include "OvHelpWindow.h"

#include "ovui/NqTaskDialog.h"
#include "ovui/OvUiFileDialog.h"
#include "ovui/OvUiHelp.h"

#include "ovcore/OvEdBatchInput.h"
#include "ovcore/OvEdInput.h"
#include "ovcore/OvLisp.h"
#include "ovdb/ovut.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTextBrowser>

#include <string>

namespace {

const wchar_t* const kModuleResource = L"/ZelTaskDialogsRes;component/TaskDialogs.xaml";

// What the command line received while `body` ran.
template <typename F> QString printedBy(F&& body) {
    auto text = std::make_shared<std::string>();
    ovutSetOutputSink([text](std::string_view utf8) { text->append(utf8); });
    body();
    ovutResetOutputSink();
    return QString::fromStdString(*text);
}

} // namespace

class HostWindowsTest : public OvUiTest {};

TEST_F(HostWindowsTest, FrameIsAHiddenWindowUntilTheDesktopRegistersOne) {
    QWidget* frame = ovedGetOrvexFrame();
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(ovqw_orvexMainWnd(), frame);
    EXPECT_TRUE(frame->isWindow());
    EXPECT_FALSE(frame->isVisible());
    EXPECT_EQ(ovedGetOrvexFrame(), frame); // made once

    QWidget main;
    ovuiSetMainWindow(&main);
    EXPECT_EQ(ovedGetOrvexFrame(), &main);
    EXPECT_EQ(ovqw_orvexMainWnd(), &main);
    ovuiSetMainWindow(nullptr);
    EXPECT_EQ(ovedGetOrvexFrame(), frame);
}

TEST_F(HostWindowsTest, EveryTopicTheModuleNamesHasItsOwnPage) {
    qunsetenv("ORVEX_HELP_DIR");
    const QString index = ovuiHelpPage({}, QStringLiteral("no_such_topic"));
    ASSERT_TRUE(index.endsWith(QStringLiteral("/help/index.md"))) << index.toStdString();
    for (const QString topic :
         {"create_edit_wire_type_dialog", "set_wire_type_dialog", "change_convert_wire_type_dialog",
          "import_wire_types_dialog", "set_edit_wire_type_dialog", "user_property_names_dialog",
          "import_wire_types", "color_dialog", "linetype_dialog", "lineweight_dialog"}) {
        const QString page = ovuiHelpPage({}, topic);
        EXPECT_EQ(QFileInfo(page).fileName(), topic + QStringLiteral(".md"));
    }
    // A topic is a name in the help folder, never a way out of it.
    EXPECT_EQ(ovuiHelpPage({}, QStringLiteral("../user-guide")), index);
}

// An unknown topic showing the index is run by the batch script.
TEST_F(HostWindowsTest, HelpShowsTheTopic) {
    QString shown;
    QString text;
    whenShown([&](QWidget* dialog) {
        auto* window = qobject_cast<OvHelpWindow*>(dialog);
        ASSERT_NE(window, nullptr);
        shown = QFileInfo(window->page()).fileName();
        text = control<QTextBrowser>(dialog, QStringLiteral("1001"))->toPlainText();
        click(dialog, QStringLiteral("2"));
    });
    // Through the host's entry point, as the module calls it; the run's log names it.
    const QString printed =
        printedBy([&] { EXPECT_EQ(ovedHelp(L"", L"set_wire_type_dialog", 0), RTNORM); });
    EXPECT_TRUE(acted());
    EXPECT_EQ(shown, QStringLiteral("set_wire_type_dialog.md"));
    EXPECT_FALSE(text.trimmed().isEmpty());
    EXPECT_TRUE(printed.contains(QStringLiteral("set_wire_type_dialog"))) << printed.toStdString();
}

TEST_F(HostWindowsTest, MissingKeyOrDamagedFileShowsNothing) {
    NqTaskDialog task;
    EXPECT_EQ(task.LoadFromFile(kModuleResource, L"ZelImportWireType.NoSuchKey", nullptr, 0), 0);
    whenShown([](QWidget* dialog) { dialog->close(); });
    EXPECT_EQ(task.ShowDialog(nullptr), 0);
    QTest::qWait(100);
    EXPECT_FALSE(acted()); // nothing was shown

    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("broken.xml"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("<taskDialogs><taskDialog key=\"a\"><title>x</title>");
    file.close();
    const std::wstring widePath = path.toStdWString();
    const QString printed =
        printedBy([&] { EXPECT_EQ(task.LoadFromFile(widePath.c_str(), L"b", nullptr, 0), 0); });
    EXPECT_TRUE(printed.contains(QStringLiteral("damaged"))) << printed.toStdString();
}

TEST_F(HostWindowsTest, TaskDialogFillsPlaceholdersAndNumbersItsButtons) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("mine.xml"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(R"(<taskDialogs>
      <taskDialog key="Ask"><title>Delete {0}</title><instruction>Delete {0}?</instruction>
        <content>{1} drawings use it.</content>
        <buttons default="7" cancel="8"><button id="7">Delete</button><button id="8">Keep</button>
        </buttons></taskDialog></taskDialogs>)");
    file.close();
    const std::wstring widePath = path.toStdWString();
    const wchar_t* values[] = {L"WIRE-1", L"3"};
    NqTaskDialog task;
    ASSERT_EQ(task.LoadFromFile(widePath.c_str(), L"Ask", values, 2), 1);
    QString title, content;
    whenShown([&](QWidget* dialog) {
        title = dialog->windowTitle();
        content = control<QLabel>(dialog, QStringLiteral("1002"))->text();
        click(dialog, QStringLiteral("8"));
    });
    EXPECT_EQ(task.ShowDialog(nullptr), 8);
    EXPECT_EQ(title, QStringLiteral("Delete WIRE-1"));
    EXPECT_EQ(content, QStringLiteral("3 drawings use it."));

    whenShown([&](QWidget* dialog) { QTest::keyClick(dialog, Qt::Key_Escape); });
    EXPECT_EQ(task.ShowDialog(nullptr), 8); // Esc is the cancel button
}

// A colour given by name is taken, and a cancel gives nil; a name that is no colour is said at
// the command line, and no dialog opens.
TEST_F(HostWindowsTest, LispColorDialogTakesANameAndRefusesABadOne) {
    whenShown([&](QWidget* dialog) { click(dialog, QStringLiteral("2")); });
    ovcore::lisp::EvalResult result =
        ovcore::lisp::evalString(QStringLiteral("(orvex-color-dialog \"red\" T)"));
    EXPECT_TRUE(result.ok) << result.error.toStdString();
    EXPECT_EQ(result.value, QStringLiteral("nil"));

    whenShown([](QWidget* dialog) { dialog->close(); });
    const QString printed = printedBy([&] {
        result = ovcore::lisp::evalString(QStringLiteral("(orvex-color-dialog \"mauve\")"));
    });
    QTest::qWait(50);
    EXPECT_FALSE(acted());
    EXPECT_EQ(result.value, QStringLiteral("nil"));
    EXPECT_TRUE(printed.contains(QStringLiteral("orvex-color-dialog"))) << printed.toStdString();
}

TEST_F(HostWindowsTest, FileDialogFiltersByTheExtensionsAndReturnsTheTypedFile) {
    EXPECT_EQ(ovuiFileNameFilter(QStringLiteral("dwg; .dwt")),
              QStringLiteral("DWG files (*.dwg *.dwt);;All files (*)"));
    EXPECT_EQ(ovuiFileNameFilter(QString()), QStringLiteral("All files (*)"));

    QTemporaryDir dir;
    QFile drawing(dir.filePath(QStringLiteral("plan.dwg")));
    ASSERT_TRUE(drawing.open(QIODevice::WriteOnly));
    drawing.close();
    QStringList filters;
    whenShown([&](QWidget* dialog) {
        auto* files = qobject_cast<QFileDialog*>(dialog);
        ASSERT_NE(files, nullptr);
        filters = files->nameFilters();
        auto* name = control<QLineEdit>(dialog, QStringLiteral("fileNameEdit"));
        name->setFocus();
        QTest::keyClicks(name, QStringLiteral("plan.dwg"));
        QTest::keyClick(name, Qt::Key_Return);
    });
    // Through the host's entry point, as the module asks for a drawing to import from.
    resbuf* result = ovutNewRb(RTSTR);
    const std::wstring start = dir.path().toStdWString();
    ASSERT_EQ(ovedGetFileD(L"Import", start.c_str(), L"dwg;dwt", 0, result), RTNORM);
    EXPECT_EQ(QString::fromWCharArray(result->resval.rstring),
              QFileInfo(drawing).absoluteFilePath());
    EXPECT_EQ(filters.first(), QStringLiteral("DWG files (*.dwg *.dwt)"));
    ovutRelRb(result);

    // Cancelled: the result stays as it was.
    whenShown([&](QWidget* dialog) { QTest::keyClick(dialog, Qt::Key_Escape); });
    QString path = QStringLiteral("unchanged");
    EXPECT_EQ(
        ovuiFileDialog(nullptr, QStringLiteral("Open"), dir.path(), QStringLiteral("dwg"), 0, path),
        RTCAN);
    EXPECT_EQ(path, QStringLiteral("unchanged"));
}

TEST_F(HostWindowsTest, AQueuedFileAnswersBeforeAnyDialogOpens) {
    OvEdBatchInput::instance().clear();
    OvEdBatchInput::instance().queueFile(QStringLiteral("/tmp/queued.dwg"));
    whenShown([](QWidget* dialog) { dialog->close(); });
    resbuf* result = ovutNewRb(RTSTR);
    EXPECT_EQ(ovedGetFileD(L"Save", L"", L"dwg", 1, result), RTNORM);
    QTest::qWait(50);
    EXPECT_FALSE(acted());
    EXPECT_EQ(QString::fromWCharArray(result->resval.rstring), QStringLiteral("/tmp/queued.dwg"));
    ovutRelRb(result);
}
