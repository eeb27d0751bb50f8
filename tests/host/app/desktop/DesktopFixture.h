#pragma once

#include "OvCommandLine.h"
#include "OvDesktop.h"
#include "OvDrawingView.h"
#include "OvMainWindow.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvLisp.h"
#include "platform/MessageBoxScript.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

// A desktop session on a copy of the demo project, with the add-on and the wire type
// module of the build, its settings in a folder of its own.
class DesktopFixture : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        static QTemporaryDir config;
        qputenv("XDG_CONFIG_HOME", config.path().toUtf8());
        if (!qApp) {
            static int argc = 1;
            static char name[] = "desktop_test";
            static char* argv[] = {name, nullptr};
            new QApplication(argc, argv);
            QApplication::setOrganizationName("OrvexTest");
            QApplication::setApplicationName("OrvexTest");
        }
    }

    void SetUp() override {
        ASSERT_TRUE(m_dir.isValid());
        const QDir demo(QStringLiteral(ZEL_DEMO_DIR));
        QDir(m_dir.path()).mkpath("drawings");
        for (const QString file : {"demo.zpj", "demo.db", "drawings/demo.dwg",
                                   "drawings/import.dwg", "drawings/template.dwt"})
            ASSERT_TRUE(QFile::copy(demo.filePath(file), path(file))) << file.toStdString();
    }

    void TearDown() override {
        m_desktop.reset();
        m_boxes.reset();
    }

    // Starts the session on the demo drawing, or on `drawings` when given.
    void start(QStringList drawings = {}) {
        OvDesktopOptions options;
        options.project = path("demo.zpj");
        options.drawings = drawings.isEmpty() ? QStringList{demoDrawing()} : drawings;
        const QString bin = QStringLiteral(ORVEX_BIN_DIR);
        m_desktop = std::make_unique<OvDesktop>(bin, bin);
        ASSERT_TRUE(m_desktop->start(options));
        // A message box nobody answers would wait for ever: every box of a test is answered
        // from the script (its default when the test queued nothing) and recorded.
        m_boxes = std::make_unique<platform::MessageBoxScript>();
        window()->resize(1100, 800);
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window()));
        // Shortcuts reach only the active window.
        window()->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window()));
    }

    QString path(const QString& relative) const { return m_dir.filePath(relative); }
    QString demoDrawing() const { return path("drawings/demo.dwg"); }
    OvMainWindow* window() const { return m_desktop->window(); }
    OvDrawingView* view() const { return window()->activeView(); }
    OvApDocManager* manager() const { return ovDocManagerPtr(); }

    // Types a line into the command line and presses Enter, as a person does.
    void type(const QString& text) {
        QLineEdit* input = window()->commandLine()->input();
        input->setFocus();
        QTest::keyClicks(input, text);
        QTest::keyClick(input, Qt::Key_Return);
    }

    // The value of a LISP expression in the active drawing, as the command line would not
    // show it to a test directly.
    QString lisp(const QString& expression) {
        const auto result = ovcore::lisp::evalString(expression);
        EXPECT_TRUE(result.ok) << expression.toStdString() << ": " << result.error.toStdString();
        return result.value;
    }

    QString output() const { return window()->commandLine()->output(); }

    platform::MessageBoxScript& boxes() { return *m_boxes; }

    QTemporaryDir m_dir;
    std::unique_ptr<OvDesktop> m_desktop;
    std::unique_ptr<platform::MessageBoxScript> m_boxes;
};
