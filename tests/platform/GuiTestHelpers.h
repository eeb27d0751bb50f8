#pragma once

// Real input for the window tests: keys go to the widget that has the focus, as a
// person's keys do, and clicks land on the centre of a cell or a header section.

#include <QApplication>
#include <QHeaderView>
#include <QTableView>
#include <QTest>
#include <QTimer>

#include <functional>

#include <ostream>

// Readable failures for texts and lists of texts.
inline void PrintTo(const QString& text, std::ostream* os) {
    *os << '"' << text.toStdString() << '"';
}

namespace guitest {

inline void key(int k, Qt::KeyboardModifiers mods = Qt::NoModifier) {
    if (QWidget* target = QApplication::focusWidget())
        QTest::keyClick(target, Qt::Key(k), mods);
}

inline void type(const QString& text) {
    for (QChar ch : text) {
        if (QWidget* target = QApplication::focusWidget())
            QTest::keyClick(target, ch.toLatin1());
    }
}

// Grid row r, column c (both from 1) of a table view.
inline void clickCell(QTableView* view, int row, int col,
                      Qt::KeyboardModifiers mods = Qt::NoModifier,
                      Qt::MouseButton button = Qt::LeftButton) {
    QTest::mouseClick(view->viewport(), button, mods,
                      view->visualRect(view->model()->index(row - 1, col - 1)).center());
}

inline QPoint sectionCentre(QHeaderView* header, int section) {
    const int along = header->sectionViewportPosition(section) + header->sectionSize(section) / 2;
    const int across =
        (header->orientation() == Qt::Horizontal ? header->height() : header->width()) / 2;
    return header->orientation() == Qt::Horizontal ? QPoint(along, across) : QPoint(across, along);
}

// Row header r (grid column 0) or column header c (grid row 0), from 1.
inline void clickHeader(QHeaderView* header, int number,
                        Qt::KeyboardModifiers mods = Qt::NoModifier) {
    QTest::mouseClick(header->viewport(), Qt::LeftButton, mods, sectionCentre(header, number - 1));
}

inline void doubleClickHeader(QHeaderView* header, int number) {
    QTest::mouseDClick(header->viewport(), Qt::LeftButton, Qt::NoModifier,
                       sectionCentre(header, number - 1));
}

// Runs `act` from inside the modal loop once a modal dialog or message box is up.
inline void whenShown(const std::function<void(QWidget*)>& act) {
    auto* timer = new QTimer;
    timer->setInterval(5);
    QObject::connect(timer, &QTimer::timeout, [timer, act] {
        QWidget* modal = QApplication::activeModalWidget();
        if (modal != nullptr && modal->isVisible()) {
            timer->stop();
            timer->deleteLater();
            QApplication::setActiveWindow(modal);
            act(modal);
        }
    });
    timer->start();
}

inline void showActive(QWidget* window) {
    window->show();
    window->activateWindow();
    QApplication::setActiveWindow(window);
    (void)QTest::qWaitForWindowActive(window);
}

} // namespace guitest
