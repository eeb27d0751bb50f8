// The one message box in its three modes: scripted for tests, batch, desktop.

#include "GuiTestHelpers.h"
#include "platform/MessageBox.h"
#include "platform/MessageBoxScript.h"
#include "platform/Resources.h"
#include "platform/ScopedResourceHandle.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

#include <gtest/gtest.h>

namespace {

using namespace platform;
using guitest::whenShown;

const QString kCaption = QStringLiteral("Wire Types");

TEST(ScriptedMessageBox, AnswersFromTheQueueInOrderAndRecordsEveryBox) {
    const MessageBoxMode before = messageBoxMode();
    {
        MessageBoxScript script;
        script.answer(IDNO);
        script.answer(IDCANCEL);
        EXPECT_EQ(messageBox("Remove?", kCaption, MB_YESNO), IDNO);
        EXPECT_EQ(messageBox("Save?", kCaption, MB_YESNOCANCEL), IDCANCEL);
        // The queue is empty: the default answer, recorded all the same.
        EXPECT_EQ(messageBox("In use.", QString(), MB_OK | MB_ICONWARNING), IDOK);
        EXPECT_EQ(messageBox("Again?", QString(), MB_YESNO, IDNO), IDNO);
        EXPECT_EQ(script.shownTexts(),
                  (std::vector<QString>{"Remove?", "Save?", "In use.", "Again?"}));
        EXPECT_EQ(script.shown()[0].caption, kCaption);
        EXPECT_TRUE(script.shown()[1].answeredFromQueue);
        EXPECT_FALSE(script.shown()[2].answeredFromQueue);
        EXPECT_EQ(script.shown()[2].flags, MB_OK | MB_ICONWARNING);

        // A box by number shows the text of the current resource handle: the host's holds
        // none of the module's numbers.
        ResourceHandle* library = loadResourceLibrary(ZEL_RESOURCE_LIBRARY);
        ASSERT_NE(library, nullptr);
        appMessageBoxById(143);
        {
            ScopedResourceHandle scope(library);
            appMessageBoxById(143, MB_YESNOCANCEL);
        }
        EXPECT_TRUE(script.shown()[4].text.isEmpty());
        EXPECT_EQ(script.shown()[5].text, loadString(library, 143));
        EXPECT_EQ(script.shown()[5].answer, IDYES);
        freeResourceLibrary(library);
    }
    EXPECT_EQ(messageBoxMode(), before);
}

TEST(BatchMessageBox, PrintsCaptionAndTextAndTakesTheDefault) {
    const MessageBoxMode before = messageBoxMode();
    setMessageBoxMode(MessageBoxMode::Batch);
    // Standard output until the host sets a printer.
    setMessageBoxPrinter({});
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(messageBox("Größe ø", kCaption), IDOK);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Wire Types: Größe ø\n");

    QStringList lines;
    setMessageBoxPrinter([&lines](const QString& line) { lines << line; });
    EXPECT_EQ(messageBox("Remove?", kCaption, MB_YESNO | MB_DEFBUTTON2), IDNO);
    EXPECT_EQ(messageBox("Save?", QString(), MB_YESNOCANCEL | MB_DEFBUTTON3), IDCANCEL);
    // A default beyond the buttons is the first button; the caller's default answer wins.
    EXPECT_EQ(messageBox("Go?", kCaption, MB_YESNO | MB_DEFBUTTON3), IDYES);
    EXPECT_EQ(messageBox("Retry?", kCaption, MB_RETRYCANCEL, IDCANCEL), IDCANCEL);
    // In desktop mode without a widget application it behaves as in batch.
    ASSERT_EQ(QCoreApplication::instance(), nullptr);
    setMessageBoxMode(MessageBoxMode::Desktop);
    EXPECT_EQ(messageBox("Sure?", kCaption, MB_YESNO), IDYES);
    EXPECT_EQ(lines, (QStringList{"Wire Types: Remove? [No]\n", "Save? [Cancel]\n",
                                  "Wire Types: Go? [Yes]\n", "Wire Types: Retry? [Cancel]\n",
                                  "Wire Types: Sure? [Yes]\n"}));
    setMessageBoxPrinter({});
    setMessageBoxMode(before);
}

TEST(DesktopMessageBox, ShowsAWindowAndAnswersWithTheButtonClicked) {
    int argc = 1;
    char name[] = "platform_test_message_box";
    char* argv[] = {name, nullptr};
    QApplication application(argc, argv);
    setMessageBoxMode(MessageBoxMode::Desktop);

    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QString text;
    bool noIsDefault = false;
    whenShown([&](QWidget* shown) {
        auto* box = qobject_cast<QMessageBox*>(shown);
        ASSERT_NE(box, nullptr);
        icon = box->icon();
        text = box->text();
        noIsDefault = box->defaultButton() == box->button(QMessageBox::No);
        box->button(QMessageBox::Yes)->click();
    });
    EXPECT_EQ(messageBox("Remove?", kCaption, MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2), IDYES);
    EXPECT_EQ(icon, QMessageBox::Question);
    EXPECT_EQ(text, QStringLiteral("Remove?"));
    EXPECT_TRUE(noIsDefault);

    // Closing the window of a box with Cancel is Cancel.
    whenShown([](QWidget* box) { box->close(); });
    EXPECT_EQ(messageBox("Save?", kCaption, MB_YESNOCANCEL | MB_ICONWARNING), IDCANCEL);
}

} // namespace
