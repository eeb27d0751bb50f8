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
        m_poll.reset(); // a procedure still waiting belongs to this test only
        // Whatever a failed test left open is closed, so that the next one starts clean.
        while (QWidget* modal = QApplication::activeModalWidget())
            modal->close();
    }

    // Runs `act` on the next modal dialog once it is shown. A dialog that does not appear
    // within a few seconds is given up on (acted() tells); one that `act` leaves open is
    // rejected then, so that no test waits forever.
    void whenShown(std::function<void(QWidget*)> act) {
        m_acted = false;
        QWidget* before = QApplication::activeModalWidget();
        QElapsedTimer clock;
        clock.start();
        m_poll = std::make_unique<QTimer>();
        QTimer* poll = m_poll.get();
        QObject::connect(poll, &QTimer::timeout, [this, poll, before, act, clock] {
            QWidget* modal = QApplication::activeModalWidget();
            if (modal && modal != before && modal->isVisible()) {
                poll->stop();
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
            } else if (clock.elapsed() > 5000) {
                poll->stop();
            }
        });
        poll->start(10);
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
    std::unique_ptr<QTimer> m_poll;
};
