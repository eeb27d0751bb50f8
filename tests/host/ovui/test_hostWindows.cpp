#include "OvUiTest.h"

#include "ovui/NqTaskDialog.h"
#include "ovui/OvUiFileDialog.h"
#include "ovui/OvUiHelp.h"

#include "ovcore/OvEdInput.h"
#include "ovcore/OvLisp.h"
#include "ovdb/ovut.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QTemporaryDir>

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

// A file of `text` in `dir`; its path as the host's entry points take it.
std::wstring writeFile(const QTemporaryDir& dir, const char* name, const QByteArray& text) {
    QFile file(dir.filePath(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << name;
    file.write(text);
    return file.fileName().toStdWString();
}

} // namespace

class HostWindowsTest : public OvUiTest {};

// Without the desktop's main window, dialogs get one hidden frame as their parent.
TEST_F(HostWindowsTest, FrameIsOneHiddenWindowWithoutTheDesktop) {
    QWidget* frame = ovedGetOrvexFrame();
    ASSERT_NE(frame, nullptr);
    EXPECT_TRUE(frame->isWindow());
    EXPECT_FALSE(frame->isVisible());
    EXPECT_EQ(ovedGetOrvexFrame(), frame); // made once
}

TEST_F(HostWindowsTest, EveryTopicTheModuleNamesHasItsOwnPage) {
    qunsetenv("ORVEX_HELP_DIR");
    const QString index = ovuiHelpPage({}, "no_such_topic");
    ASSERT_TRUE(index.endsWith("/help/index.md")) << index.toStdString();
    for (const QString topic :
         {"create_edit_wire_type_dialog", "set_wire_type_dialog", "change_convert_wire_type_dialog",
          "import_wire_types_dialog", "set_edit_wire_type_dialog", "user_property_names_dialog",
          "import_wire_types", "color_dialog", "linetype_dialog", "lineweight_dialog"}) {
        const QString page = ovuiHelpPage({}, topic);
        EXPECT_EQ(QFileInfo(page).fileName(), topic + ".md");
    }
    // A topic is a name in the help folder, never a way out of it.
    EXPECT_EQ(ovuiHelpPage({}, "../user-guide"), index);
}

TEST_F(HostWindowsTest, MissingKeyOrDamagedFileShowsNothing) {
    NqTaskDialog task;
    EXPECT_EQ(task.LoadFromFile(kModuleResource, L"ZelImportWireType.NoSuchKey", nullptr, 0), 0);
    whenShown([](QWidget* dialog) { dialog->close(); });
    EXPECT_EQ(task.ShowDialog(nullptr), 0);
    QTest::qWait(100);
    EXPECT_FALSE(acted()); // nothing was shown

    QTemporaryDir dir;
    const std::wstring broken =
        writeFile(dir, "broken.xml", "<taskDialogs><taskDialog key=\"a\"><title>x</title>");
    const QString printed =
        printedBy([&] { EXPECT_EQ(task.LoadFromFile(broken.c_str(), L"b", nullptr, 0), 0); });
    EXPECT_TRUE(printed.contains("damaged")) << printed.toStdString();
}

TEST_F(HostWindowsTest, TaskDialogFillsPlaceholdersAndNumbersItsButtons) {
    QTemporaryDir dir;
    const std::wstring mine = writeFile(dir, "mine.xml", R"(<taskDialogs>
      <taskDialog key="Ask"><title>Delete {0}</title><instruction>Delete {0}?</instruction>
        <content>{1} drawings use it.</content>
        <buttons default="7" cancel="8"><button id="7">Delete</button><button id="8">Keep</button>
        </buttons></taskDialog></taskDialogs>)");
    const wchar_t* values[] = {L"WIRE-1", L"3"};
    NqTaskDialog task;
    ASSERT_EQ(task.LoadFromFile(mine.c_str(), L"Ask", values, 2), 1);
    QString title, content;
    whenShown([&](QWidget* dialog) {
        title = dialog->windowTitle();
        content = control<QLabel>(dialog, "1002")->text();
        click(dialog, "8");
    });
    EXPECT_EQ(task.ShowDialog(nullptr), 8);
    EXPECT_EQ(title, "Delete WIRE-1");
    EXPECT_EQ(content, "3 drawings use it.");

    whenShown([&](QWidget* dialog) { QTest::keyClick(dialog, Qt::Key_Escape); });
    EXPECT_EQ(task.ShowDialog(nullptr), 8); // Esc is the cancel button
}

// A colour given by name is taken, and a cancel gives nil; a name that is no colour is said at
// the command line, and no dialog opens.
TEST_F(HostWindowsTest, LispColorDialogTakesANameAndRefusesABadOne) {
    whenShown([&](QWidget* dialog) { click(dialog, "2"); });
    ovcore::lisp::EvalResult result = ovcore::lisp::evalString("(orvex-color-dialog \"red\" T)");
    EXPECT_TRUE(result.ok) << result.error.toStdString();
    EXPECT_TRUE(acted()) << "the name opened the dialog";
    EXPECT_EQ(result.value, "nil");

    whenShown([](QWidget* dialog) { dialog->close(); });
    const QString printed =
        printedBy([&] { result = ovcore::lisp::evalString("(orvex-color-dialog \"mauve\")"); });
    QTest::qWait(50);
    EXPECT_FALSE(acted());
    EXPECT_EQ(result.value, "nil");
    EXPECT_TRUE(printed.contains("orvex-color-dialog")) << printed.toStdString();
}

TEST_F(HostWindowsTest, FileDialogFiltersByTheExtensionsAndReturnsTheTypedFile) {
    EXPECT_EQ(ovuiFileNameFilter("dwg; .dwt"), "DWG files (*.dwg *.dwt);;All files (*)");
    EXPECT_EQ(ovuiFileNameFilter(QString()), "All files (*)");

    QTemporaryDir dir;
    const QString drawing = QString::fromStdWString(writeFile(dir, "plan.dwg", {}));
    QStringList filters;
    whenShown([&](QWidget* dialog) {
        auto* files = qobject_cast<QFileDialog*>(dialog);
        ASSERT_NE(files, nullptr);
        filters = files->nameFilters();
        auto* name = control<QLineEdit>(dialog, "fileNameEdit");
        name->setFocus();
        QTest::keyClicks(name, "plan.dwg");
        QTest::keyClick(name, Qt::Key_Return);
    });
    // Through the host's entry point, as the module asks for a drawing to import from.
    resbuf* result = ovutNewRb(RTSTR);
    const std::wstring start = dir.path().toStdWString();
    ASSERT_EQ(ovedGetFileD(L"Import", start.c_str(), L"dwg;dwt", 0, result), RTNORM);
    EXPECT_EQ(QString::fromWCharArray(result->resval.rstring), drawing);
    EXPECT_EQ(filters.first(), "DWG files (*.dwg *.dwt)");
    ovutRelRb(result);

    // Cancelled: the result stays as it was.
    whenShown([&](QWidget* dialog) { QTest::keyClick(dialog, Qt::Key_Escape); });
    QString path = "unchanged";
    EXPECT_EQ(ovuiFileDialog(nullptr, "Open", dir.path(), "dwg", 0, path), RTCAN);
    EXPECT_EQ(path, "unchanged");
}
