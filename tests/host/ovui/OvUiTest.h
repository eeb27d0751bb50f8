#pragma once

#include "ovui/OvUi.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPointer>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <ostream>

inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}
inline void PrintTo(const QStringList& texts, std::ostream* out) {
    *out << '{' << texts.join(QStringLiteral(", ")).toStdString() << '}';
}

// Host dialogs under test: a widget application, and a way to act on a modal dialog once it
// is shown and waiting, as a person would.
class OvUiTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        if (!qApp) {
            static int argc = 1;
            static char name[] = "ovui_test";
            static char* argv[] = {name, nullptr};
            new QApplication(argc, argv);
        }
        InitOvUiDLL();
    }

    void TearDown() override {
        ++s_generation; // a procedure still waiting belongs to this test only
        // Whatever a failed test left open is closed, so that the next one starts clean.
        while (QWidget* modal = QApplication::activeModalWidget())
            modal->close();
    }

    // Runs `act` on the next modal dialog once it is shown. A dialog that does not appear
    // within a few seconds fails the test; one that `act` leaves open is rejected then, so
    // that no test waits forever.
    void whenShown(std::function<void(QWidget*)> act) {
        m_acted = false;
        const int generation = ++s_generation;
        QWidget* before = QApplication::activeModalWidget();
        auto timer = std::make_shared<QElapsedTimer>();
        timer->start();
        auto poll = std::make_shared<std::function<void()>>();
        *poll = [this, generation, before, act, timer, poll] {
            if (generation != s_generation) { // its test is over: `this` is gone
                *poll = {};
                return;
            }
            QWidget* modal = QApplication::activeModalWidget();
            if (modal && modal != before && modal->isVisible()) {
                QPointer<QWidget> guard(modal);
                act(modal);
                m_acted = true;
                // A procedure that leaves its dialog open is a failure, not a hang.
                QTimer::singleShot(3000, [guard] {
                    if (guard && guard->isVisible()) {
                        ADD_FAILURE() << "dialog left open: " << guard->windowTitle().toStdString();
                        guard->close();
                    }
                });
                *poll = {}; // breaks the cycle of the procedure holding itself
                return;
            }
            if (timer->elapsed() > 5000) {
                *poll = {}; // nothing came: the caller sees acted() false
                return;
            }
            QTimer::singleShot(10, *poll);
        };
        QTimer::singleShot(0, *poll);
    }

    bool acted() const { return m_acted; }

    template <typename T = QWidget> static T* control(QWidget* dialog, const QString& name) {
        T* found = dialog->findChild<T*>(name);
        EXPECT_NE(found, nullptr) << "no control " << name.toStdString();
        return found;
    }

    static void click(QWidget* dialog, const QString& name) {
        if (QWidget* widget = control(dialog, name))
            QTest::mouseClick(widget, Qt::LeftButton);
    }

private:
    bool m_acted = false;
    // Outlives the fixtures, so that a procedure of a finished test can tell without them.
    static inline int s_generation = 0;
};
