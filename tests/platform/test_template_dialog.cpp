// Dialogs built from the templates of the resource library, run modal and driven by
// real input; popup menus of the library; the settings store.

#include "GuiTestHelpers.h"
#include "platform/GridWindow.h"
#include "platform/HandlerGuard.h"
#include "platform/MessageBoxScript.h"
#include "platform/PrivateMessage.h"
#include "platform/ResourceMenu.h"
#include "platform/Resources.h"
#include "platform/ScopedResourceHandle.h"
#include "platform/SettingsKey.h"
#include "platform/TemplateDialog.h"

#include <QAction>
#include <QFile>
#include <QMenu>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

#include <sys/stat.h>

namespace {

using namespace platform;
using namespace guitest;

ResourceHandle* library() {
    static ResourceHandle* handle = loadResourceLibrary(ZEL_RESOURCE_LIBRARY);
    return handle;
}

void click(TemplateDialog* dialog, int id) {
    auto* button = qobject_cast<QAbstractButton*>(dialog->GetDlgItem(id));
    ASSERT_NE(button, nullptr) << id;
    QTest::mouseClick(button, Qt::LeftButton);
}

bool isModifier(const QKeyEvent* event) {
    return event->key() == Qt::Key_Control || event->key() == Qt::Key_Shift ||
           event->key() == Qt::Key_Alt;
}

// A dialog that logs what reaches it.
class LoggingDialog : public TemplateDialog {
public:
    using TemplateDialog::TemplateDialog;
    std::vector<QString> log;
    GridWindow grid;
    GridWindow* attached = &grid;
    int inits = 0;
    bool swallowEsc = false;
    int throwOn = 0;

    bool OnInitDialog() override {
        ++inits;
        AttachGrid(attached, 1002);
        return true;
    }
    bool OnCommand(int id) override {
        log.push_back(QStringLiteral("command %1").arg(id));
        if (id == throwOn) {
            throw std::out_of_range("no such row");
        }
        if (id == 1010) {
            EndDialog(-5001);
            return true;
        }
        if (id == 1025) {
            PostMessage(WM_USER + 101, 7, 9);
            log.push_back(QStringLiteral("handler returns"));
            return true;
        }
        return TemplateDialog::OnCommand(id);
    }
    qintptr OnPrivateMessage(unsigned message, quintptr wParam, qintptr lParam) override {
        log.push_back(QStringLiteral("message %1 %2 %3").arg(message).arg(wParam).arg(lParam));
        return TemplateDialog::OnPrivateMessage(message, wParam, lParam);
    }
    void OnEditKillFocus(int id) override {
        if (logFocus) {
            log.push_back(QStringLiteral("killfocus %1").arg(id));
        }
    }
    bool logFocus = false;
    bool PreTranslateKey(QKeyEvent* event) override {
        if (!isModifier(event)) {
            log.push_back(QStringLiteral("dialog key %1").arg(event->key()));
        }
        if (throwOn != 0 && event->key() == Qt::Key_F2) {
            throw std::runtime_error("F2 failed");
        }
        return swallowEsc && event->key() == Qt::Key_Escape;
    }
    void OnCancel() override {
        log.push_back("cancel");
        TemplateDialog::OnCancel();
    }
};

// A template missing from the handle in force is an error that names it. Every numbered
// control of the module's templates has a name a screen reader can say, but 1033, a label
// whose text the dialog fills in.
TEST(TemplateDialog, TemplatesAreFoundOrNamedAndTheirControlsNamedToo) {
    ASSERT_NE(library(), nullptr) << resourceLibraryError().toStdString();
    MessageBoxScript script;
    TemplateDialog outside(101); // the host's handle holds none of the module's templates
    EXPECT_EQ(outside.DoModal(), -1);
    ScopedResourceHandle scope(library());
    TemplateDialog missing(4711);
    EXPECT_EQ(missing.DoModal(), -1);
    ASSERT_EQ(script.shown().size(), 2u);
    EXPECT_TRUE(script.shown()[0].text.contains("101"));
    EXPECT_TRUE(script.shown()[0].text.contains("host"));
    EXPECT_TRUE(script.shown()[1].text.contains("4711"));
    EXPECT_TRUE(script.shown()[1].text.contains("ZelWireTypeRes"));

    for (unsigned id : {101u, 107u, 150u, 1040u}) {
        TemplateDialog dialog(id);
        ASSERT_TRUE(dialog.Create()) << dialog.GetTemplateError().toStdString();
        EXPECT_FALSE(dialog.windowTitle().isEmpty()) << id;
        int numbered = 0;
        for (QWidget* widget : dialog.findChildren<QWidget*>()) {
            const int control = dialog.GetDlgCtrlId(widget);
            numbered += control != 0;
            EXPECT_FALSE(control != 0 && control != 1033 && widget->accessibleName().isEmpty())
                << id << ": " << control;
        }
        EXPECT_GE(numbered, 3) << id;
    }

    TemplateDialog dialog(101);
    ASSERT_TRUE(dialog.Create());
    GridWindow grid;
    const QString name = dialog.GetDlgItem(1002)->accessibleName();
    ASSERT_TRUE(dialog.AttachGrid(&grid, 1002));
    EXPECT_EQ(dialog.GetDlgItem(1002), &grid);
    EXPECT_EQ(grid.accessibleName(), name);
    EXPECT_EQ(dialog.findChildren<QWidget*>("1002").size(), 1) << "the placeholder is gone";
}

// A message posted from a handler arrives after the handler has returned.
TEST(TemplateDialog, DoModalReturnsTheEndCodeAndRunsAgainOnTheSameObject) {
    ScopedResourceHandle scope(library());
    LoggingDialog dialog(101);
    whenShown([&](QWidget*) {
        dialog.grid.SetRowCount(3);
        dialog.grid.SetColCount(2);
        dialog.grid.SetValueRange(GridRange(2, 2), "kept");
        click(&dialog, 1025);
        QTimer::singleShot(0, &dialog, [&] { click(&dialog, 1010); });
    });
    EXPECT_EQ(dialog.DoModal(), -5001);
    EXPECT_FALSE(dialog.isVisible());

    whenShown([&](QWidget*) { click(&dialog, 1); });
    EXPECT_EQ(dialog.DoModal(), 1);
    EXPECT_EQ(dialog.inits, 2);
    EXPECT_EQ(dialog.grid.GetValueRowCol(2, 2), "kept");

    whenShown([&](QWidget*) { click(&dialog, 2); });
    EXPECT_EQ(dialog.DoModal(), 2);
    // Enter in an edit presses button 1.
    whenShown([&](QWidget*) {
        dialog.SetFocusTo(1019);
        key(Qt::Key_Return);
    });
    EXPECT_EQ(dialog.DoModal(), 1);
    EXPECT_EQ(dialog.log, (std::vector<QString>{
                              "command 1025", "handler returns", "message 1125 7 9", "command 1010",
                              "command 1", "command 2", "cancel",
                              QStringLiteral("dialog key %1").arg(Qt::Key_Return), "command 1"}));

    // An end in OnInitDialog skips the run.
    struct Closing : TemplateDialog {
        using TemplateDialog::TemplateDialog;
        bool OnInitDialog() override {
            EndDialog(-5001);
            return true;
        }
    } closing(107);
    EXPECT_EQ(closing.DoModal(), -5001);
    EXPECT_FALSE(closing.isVisible());
}

TEST(TemplateDialog, KeysPassTheGridsFilterThenTheDialogsBeforeQtHandlesThem) {
    ScopedResourceHandle scope(library());
    struct FilterGrid : GridWindow {
        std::vector<QString>* log = nullptr;
        bool PreTranslateKey(QKeyEvent* event) override {
            if (!isModifier(event)) {
                log->push_back(QStringLiteral("grid key %1").arg(event->key()));
            }
            return false;
        }
    };
    LoggingDialog dialog(101);
    FilterGrid grid;
    grid.log = &dialog.log;
    dialog.attached = &grid;
    dialog.logFocus = true;
    whenShown([&](QWidget*) {
        grid.SetRowCount(2);
        grid.SetColCount(2);
        grid.setFocus();
        key(Qt::Key_C, Qt::ControlModifier);
        dialog.swallowEsc = true;
        key(Qt::Key_Escape); // swallowed: the dialog stays
        EXPECT_TRUE(dialog.isVisible());
        dialog.SetFocusTo(1019);
        key(Qt::Key_F1);
        dialog.SetFocusTo(1012);
        dialog.log.push_back("-");
        dialog.swallowEsc = false;
        key(Qt::Key_Escape); // now Qt's handling cancels the dialog
    });
    EXPECT_EQ(dialog.DoModal(), 2);
    const std::vector<QString> expected = {
        "killfocus 1019", // the format edit had the focus when the dialog opened
        QStringLiteral("grid key %1").arg(Qt::Key_C),
        QStringLiteral("dialog key %1").arg(Qt::Key_C),
        QStringLiteral("grid key %1").arg(Qt::Key_Escape),
        QStringLiteral("dialog key %1").arg(Qt::Key_Escape),
        QStringLiteral("dialog key %1").arg(Qt::Key_F1),
        "killfocus 1019",
        "-",
        QStringLiteral("dialog key %1").arg(Qt::Key_Escape),
        "cancel"};
    EXPECT_EQ(dialog.log, expected);
}

// An exception ends the handler it left, as a window procedure ends one message: it is
// reported, and the dialog goes on to the next input.
TEST(TemplateDialog, AnExceptionEndsItsHandlerAndTheDialogGoesOn) {
    ScopedResourceHandle scope(library());
    std::vector<QString> reports;
    setHandlerExceptionReporter(
        [&](const QString& where, const QString& what) { reports.push_back(where + ": " + what); });
    LoggingDialog dialog(101);
    dialog.throwOn = 1025;
    whenShown([&](QWidget*) {
        click(&dialog, 1025);
        dialog.PostMessage(WM_COMMAND, 1025, 0);
        QCoreApplication::processEvents();
        dialog.SetFocusTo(1019);
        key(Qt::Key_F2);
        EXPECT_TRUE(dialog.isVisible());
        click(&dialog, 1);
    });
    EXPECT_EQ(dialog.DoModal(), 1);
    setHandlerExceptionReporter({});
    EXPECT_EQ(reports, (std::vector<QString>{"a button of a dialog: no such row",
                                             "an event of a dialog: no such row",
                                             "a key press: F2 failed"}));
    EXPECT_EQ(dialog.log.back(), "command 1");
}

TEST(ResourceMenu, APopupWithGreyedCommandsDeliversTheChosenOneAfterwards) {
    ScopedResourceHandle scope(library());
    ResourceMenu menu;
    ASSERT_TRUE(menu.LoadMenu(103)) << menu.GetError().toStdString();
    QMenu* popup = menu.GetSubMenu(0);
    ASSERT_NE(popup, nullptr);
    std::vector<int> commands;
    for (QAction* action : popup->actions()) {
        if (!action->isSeparator()) {
            commands.push_back(action->data().toInt());
        }
    }
    std::sort(commands.begin(), commands.end());
    EXPECT_EQ(commands, (std::vector<int>{40013, 40014, 40023, 40028, 40039, 40043}));
    EXPECT_TRUE(ResourceMenu::EnableMenuItem(popup, 40013, false));
    EXPECT_TRUE(ResourceMenu::EnableMenuItem(popup, 40014, false));
    EXPECT_FALSE(ResourceMenu::EnableMenuItem(popup, 12345, false));

    LoggingDialog owner(101);
    ASSERT_TRUE(owner.Create());
    QTimer::singleShot(50, [] {
        QWidget* shown = QApplication::activePopupWidget();
        ASSERT_NE(shown, nullptr);
        QTest::keyClick(shown, Qt::Key_Down); // the greyed Copy and Cut are passed over
        QTest::keyClick(shown, Qt::Key_Return);
    });
    EXPECT_EQ(ResourceMenu::TrackPopupMenu(popup, QPoint(100, 100), &owner), 40023);
    EXPECT_TRUE(owner.log.empty());
    QCoreApplication::sendPostedEvents(&owner);
    EXPECT_EQ(owner.log, (std::vector<QString>{"message 273 40023 0", "command 40023"}));

    EXPECT_FALSE(menu.LoadMenu(104));
    EXPECT_TRUE(menu.GetError().contains("104"));
    EXPECT_FALSE(menu.LoadMenuText("<menu><item>no number</item></menu>", 7));
    EXPECT_TRUE(menu.GetError().contains("id"));
}

TEST(SettingsKey, TypedValuesInAKeyThatIsOpenedOrMade) {
    QTemporaryDir folder;
    SettingsKey::SetStoreFileName(folder.filePath("registry.ini"));
    const QString path = QStringLiteral("Software\\Orvex\\Test\\Settings\\WTS");
    SettingsKey key;
    EXPECT_EQ(key.Open(path), SettingsKey::FileNotFound);
    EXPECT_FALSE(key.IsOpen());
    ASSERT_EQ(key.Create(path), SettingsKey::Success);
    EXPECT_EQ(key.SetDWORDValue("ColWidth2", 120), SettingsKey::Success);
    EXPECT_EQ(key.SetStringValue("Name", "text"), SettingsKey::Success);
    // Written to the file together, when the key lets go or another key of the process
    // looks, not once per value.
    const auto onDisk = [&] {
        QFile file(SettingsKey::StoreFileName());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    };
    EXPECT_FALSE(onDisk().contains("ColWidth2"));

    SettingsKey again;
    ASSERT_EQ(again.Open(path), SettingsKey::Success); // an empty key opens too
    quint32 width = 0;
    EXPECT_EQ(again.QueryDWORDValue("ColWidth2", width), SettingsKey::Success);
    EXPECT_EQ(width, 120u);
    EXPECT_EQ(again.QueryDWORDValue("ColWidth3", width), SettingsKey::FileNotFound);
    EXPECT_EQ(again.QueryDWORDValue("Name", width), SettingsKey::InvalidData);
    EXPECT_EQ(width, 120u);
    EXPECT_EQ(again.Open("Software\\Orvex\\Test"), SettingsKey::Success);

    key.Close();
    EXPECT_TRUE(onDisk().contains("ColWidth2"));
    EXPECT_TRUE(onDisk().contains("sz:text"));
    ASSERT_EQ(key.Open(path), SettingsKey::Success);
    EXPECT_EQ(key.DeleteValue("Name"), SettingsKey::Success);
    EXPECT_EQ(key.DeleteValue("Name"), SettingsKey::FileNotFound);
    EXPECT_EQ(key.Flush(), SettingsKey::Success);
    EXPECT_FALSE(onDisk().contains("sz:text"));
    // A value set as it stands leaves the file alone; a new one has it written anew.
    const auto fileNumber = [] {
        struct stat st {};
        return ::stat(QFile::encodeName(SettingsKey::StoreFileName()).constData(), &st) == 0
                   ? st.st_ino
                   : ino_t{0};
    };
    const ino_t before = fileNumber();
    EXPECT_EQ(key.SetDWORDValue("ColWidth2", 120), SettingsKey::Success);
    EXPECT_EQ(key.Flush(), SettingsKey::Success);
    EXPECT_EQ(fileNumber(), before);
    EXPECT_EQ(key.SetDWORDValue("ColWidth2", 121), SettingsKey::Success);
    EXPECT_EQ(key.Flush(), SettingsKey::Success);
    EXPECT_NE(fileNumber(), before);

    SettingsKey::SetStoreFileName("/proc/zel-settings/registry.ini");
    SettingsKey nowhere;
    EXPECT_EQ(nowhere.Create(path), SettingsKey::AccessDenied);
    EXPECT_FALSE(nowhere.IsOpen());
    SettingsKey::SetStoreFileName(QString());
}

} // namespace
