// The one message box in its three modes: scripted for tests, batch, desktop.

#include "platform/MessageBox.h"
#include "platform/MessageBoxScript.h"
#include "platform/Resources.h"
#include "platform/ScopedResourceHandle.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

namespace {

using namespace platform;

class BatchPrinter {
public:
    BatchPrinter() : m_previousMode(messageBoxMode()) {
        setMessageBoxPrinter([this](const QString& line) { m_lines << line; });
    }
    ~BatchPrinter() {
        setMessageBoxPrinter({});
        setMessageBoxMode(m_previousMode);
    }
    const QStringList& lines() const { return m_lines; }

private:
    MessageBoxMode m_previousMode;
    QStringList m_lines;
};

TEST(ScriptedMessageBox, AnswersFromTheQueueInOrderAndRecordsEveryBox) {
    const MessageBoxMode before = messageBoxMode();
    {
        MessageBoxScript script;
        script.answer(IDNO);
        script.answer(IDCANCEL);

        EXPECT_EQ(messageBox(QStringLiteral("Remove?"), QStringLiteral("Wire Types"), MB_YESNO),
                  IDNO);
        EXPECT_EQ(messageBox(QStringLiteral("Save?"), QStringLiteral("Wire Types"), MB_YESNOCANCEL),
                  IDCANCEL);
        // The queue is empty: the default answer, recorded all the same.
        EXPECT_EQ(messageBox(QStringLiteral("In use."), QString(), MB_OK | MB_ICONWARNING), IDOK);
        EXPECT_EQ(messageBox(QStringLiteral("Again?"), QString(), MB_YESNO, IDNO), IDNO);

        ASSERT_EQ(script.shown().size(), 4u);
        EXPECT_EQ(script.shownTexts(),
                  (std::vector<QString>{QStringLiteral("Remove?"), QStringLiteral("Save?"),
                                        QStringLiteral("In use."), QStringLiteral("Again?")}));
        EXPECT_EQ(script.shown()[0].caption, QStringLiteral("Wire Types"));
        EXPECT_TRUE(script.shown()[1].answeredFromQueue);
        EXPECT_FALSE(script.shown()[2].answeredFromQueue);
        EXPECT_EQ(script.shown()[2].flags, MB_OK | MB_ICONWARNING);
    }
    EXPECT_EQ(messageBoxMode(), before);
}

TEST(ScriptedMessageBox, AppBoxByNumberShowsTheTextOfTheCurrentHandle) {
    ResourceHandle* library = loadResourceLibrary(ZEL_RESOURCE_LIBRARY);
    ASSERT_NE(library, nullptr);
    MessageBoxScript script;
    appMessageBoxById(143);
    {
        ScopedResourceHandle scope(library);
        appMessageBoxById(143, MB_YESNOCANCEL);
    }
    ASSERT_EQ(script.shown().size(), 2u);
    EXPECT_TRUE(script.shown()[0].text.isEmpty()) << "the host's handle holds no number 143";
    EXPECT_EQ(script.shown()[1].text, loadString(library, 143));
    EXPECT_EQ(script.shown()[1].answer, IDYES);
    freeResourceLibrary(library);
}

TEST(BatchMessageBox, PrintsCaptionAndTextAndTakesTheDefault) {
    BatchPrinter printer;
    setMessageBoxMode(MessageBoxMode::Batch);
    const QString caption = QStringLiteral("Wire Types");

    EXPECT_EQ(messageBox(QStringLiteral("In use."), caption), IDOK);
    EXPECT_EQ(messageBox(QStringLiteral("Remove?"), caption, MB_YESNO | MB_DEFBUTTON2), IDNO);
    EXPECT_EQ(messageBox(QStringLiteral("Save?"), QString(), MB_YESNOCANCEL | MB_DEFBUTTON3),
              IDCANCEL);
    // A default beyond the buttons is the first button.
    EXPECT_EQ(messageBox(QStringLiteral("Go?"), caption, MB_YESNO | MB_DEFBUTTON3), IDYES);
    // The caller's default answer wins over the flags.
    EXPECT_EQ(messageBox(QStringLiteral("Retry?"), caption, MB_RETRYCANCEL, IDCANCEL), IDCANCEL);

    EXPECT_EQ(printer.lines(), (QStringList{QStringLiteral("Wire Types: In use.\n"),
                                            QStringLiteral("Wire Types: Remove? [No]\n"),
                                            QStringLiteral("Save? [Cancel]\n"),
                                            QStringLiteral("Wire Types: Go? [Yes]\n"),
                                            QStringLiteral("Wire Types: Retry? [Cancel]\n")}));
}

TEST(BatchMessageBox, WritesToStandardOutputUntilTheHostSetsAPrinter) {
    const MessageBoxMode before = messageBoxMode();
    setMessageBoxMode(MessageBoxMode::Batch);
    setMessageBoxPrinter({});
    ::testing::internal::CaptureStdout();
    const int answer = messageBox(QStringLiteral("Größe ø"), QStringLiteral("Wire Types"));
    const std::string output = ::testing::internal::GetCapturedStdout();
    setMessageBoxMode(before);
    EXPECT_EQ(answer, IDOK);
    EXPECT_EQ(output, "Wire Types: Größe ø\n");
}

TEST(DesktopMessageBox, WithoutAWidgetApplicationItBehavesAsInBatch) {
    ASSERT_EQ(QCoreApplication::instance(), nullptr);
    BatchPrinter printer;
    setMessageBoxMode(MessageBoxMode::Desktop);
    EXPECT_EQ(messageBox(QStringLiteral("Remove?"), QStringLiteral("Wire Types"), MB_YESNO), IDYES);
    EXPECT_EQ(printer.lines(), QStringList{QStringLiteral("Wire Types: Remove? [Yes]\n")});
}

// Runs `act` on the message box once it is up, from inside its modal loop.
void whenTheBoxIsShown(QObject* context, const std::function<void(QMessageBox*)>& act) {
    auto* timer = new QTimer(context);
    timer->setInterval(10);
    QObject::connect(timer, &QTimer::timeout, [timer, act] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box != nullptr && box->isVisible()) {
            timer->stop();
            timer->deleteLater();
            act(box);
        }
    });
    timer->start();
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
    whenTheBoxIsShown(&application, [&](QMessageBox* box) {
        icon = box->icon();
        text = box->text();
        noIsDefault = box->defaultButton() == box->button(QMessageBox::No);
        box->button(QMessageBox::Yes)->click();
    });
    EXPECT_EQ(messageBox(QStringLiteral("Remove?"), QStringLiteral("Wire Types"),
                         MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2),
              IDYES);
    EXPECT_EQ(icon, QMessageBox::Question);
    EXPECT_EQ(text, QStringLiteral("Remove?"));
    EXPECT_TRUE(noIsDefault);

    // Closing the window of a box with Cancel is Cancel.
    whenTheBoxIsShown(&application, [](QMessageBox* box) { box->close(); });
    EXPECT_EQ(messageBox(QStringLiteral("Save?"), QStringLiteral("Wire Types"),
                         MB_YESNOCANCEL | MB_ICONWARNING),
              IDCANCEL);
}

} // namespace
