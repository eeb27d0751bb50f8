#include "GridTest.h"

#include "store/ZelWireTypeRec.h"

#include "platform/SettingsKey.h"

#include <QAbstractButton>
#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QTest>
#include <QTimer>

void GridTest::SetUp() {
    ZelTestHost::SetUp();
    platform::SettingsKey::SetStoreFileName(tempPath(QStringLiteral("settings.ini")));
}

void GridTest::TearDown() {
    m_owner.reset();
    settle();
    platform::SettingsKey::SetStoreFileName(QString());
    ZelTestHost::TearDown();
}

OvDbDatabase* GridTest::wireTypeDrawing(const QStringList& names,
                                        const std::vector<QString>& values,
                                        const std::vector<int>& gridRows) {
    OvDbDatabase* database = makeDrawing({"PLAIN"}, QString());
    ZelWireTypeRec store;
    std::vector<QString> propNames;
    store.GetUsrPropNames(propNames);
    propNames.resize(values.size());
    for (int i = 0; i < names.size(); ++i) {
        std::vector<QString> rowNames = propNames;
        std::vector<QString> rowValues = values;
        const long row = static_cast<std::size_t>(i) < gridRows.size() ? gridRows[i] : 0;
        EXPECT_EQ(store.AddNewWireType(0, names[i], rowNames, rowValues, QString(), QString(),
                                       "WIRE", OvCmColor(), OvDbObjectId(), OvDb::kLnWtByLwDefault,
                                       row, true),
                  Orvex::eOk)
            << names[i].toStdString();
    }
    return database;
}

GridTestOwner& GridTest::openOwner(bool makeAllValid, bool editMode) {
    m_owner = std::make_unique<GridTestOwner>(makeAllValid, editMode);
    EXPECT_TRUE(m_owner->openGrid());
    EXPECT_TRUE(QTest::qWaitForWindowExposed(m_owner.get()));
    QApplication::setActiveWindow(m_owner.get());
    m_owner->grid().setFocus();
    settle();
    return *m_owner;
}

void GridTest::settle() {
    for (int i = 0; i < 5; ++i)
        QApplication::processEvents();
}

void GridTest::clickCell(int row, int col, Qt::KeyboardModifiers modifiers) {
    ZelWTGrid& view = grid();
    const QModelIndex index = view.model()->index(row - 1, col - 1);
    view.scrollTo(index);
    QTest::mouseClick(view.viewport(), Qt::LeftButton, modifiers, view.visualRect(index).center());
    settle();
}

void GridTest::clickRowHeader(int row, Qt::KeyboardModifiers modifiers) {
    QHeaderView* header = grid().verticalHeader();
    const QPoint point(header->width() / 2,
                       header->sectionViewportPosition(row - 1) + header->sectionSize(row - 1) / 2);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, modifiers, point);
    settle();
}

void GridTest::doubleClickColumnHeader(int col) {
    QHeaderView* header = grid().horizontalHeader();
    const QPoint point(header->sectionViewportPosition(col - 1) + header->sectionSize(col - 1) / 2,
                       header->height() / 2);
    QTest::mouseDClick(header->viewport(), Qt::LeftButton, Qt::NoModifier, point);
    settle();
}

void GridTest::key(int key, Qt::KeyboardModifiers modifiers) {
    QWidget* target = QApplication::focusWidget();
    if (!target)
        target = &grid();
    // Each press carries its own time, as a keyboard's do: two presses of the same key
    // are two keys, not one key on its way up the parents.
    static quint64 timestamp = 1;
    QKeyEvent press(QEvent::KeyPress, key, modifiers);
    press.setTimestamp(++timestamp);
    QApplication::sendEvent(target, &press);
    QKeyEvent release(QEvent::KeyRelease, key, modifiers);
    release.setTimestamp(++timestamp);
    QApplication::sendEvent(target, &release);
    settle();
}

void GridTest::typeText(const QString& text) {
    for (const QChar c : text) {
        QWidget* target = QApplication::focusWidget();
        if (!target)
            target = &grid();
        QTest::keyClick(target, c.toLatin1());
    }
    settle();
}

void GridTest::typeInto(int row, int col, const QString& text) {
    clickCell(row, col);
    typeText(text);
    key(Qt::Key_Tab);
}

void GridTest::clickButton(int id) {
    auto* button = qobject_cast<QAbstractButton*>(owner().GetDlgItem(id));
    ASSERT_NE(button, nullptr) << id;
    QTest::mouseClick(button, Qt::LeftButton);
    settle();
}

QString GridTest::cell(int row, int col) const {
    const QAbstractItemModel* model = m_owner->grid().model();
    return model->data(model->index(row - 1, col - 1), Qt::DisplayRole).toString();
}

std::pair<int, int> GridTest::currentCell() const {
    int row = 0;
    int col = 0;
    m_owner->grid().GetCurrentCell(row, col);
    return {row, col};
}

const WireLayerRec* GridTest::rowRecord(int row) const {
    const auto& rows = m_owner->grid().Rows();
    const auto found = rows.find(cell(row, 1).toInt());
    return found == rows.end() ? nullptr : found->second;
}

QStringList GridTest::gridNames() const {
    QStringList names;
    for (int row = 1; row <= m_owner->grid().GetWireTypeRows(); ++row)
        names << cell(row, 5);
    return names;
}

void GridTest::chooseFromContextMenu(int row, int col, int command) {
    bool chosen = false;
    // The menu runs its own loop: the choice is made from inside it, by a click, once the
    // menu is up.
    QTimer picker;
    picker.setInterval(20);
    QObject::connect(&picker, &QTimer::timeout, [&] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (!menu || !menu->isVisible())
            return;
        picker.stop();
        for (QAction* action : menu->actions()) {
            if (action->objectName() == QString::number(command) && action->isEnabled()) {
                QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier,
                                  menu->actionGeometry(action).center());
                chosen = true;
                return;
            }
        }
        menu->close();
    });
    picker.start();
    ZelWTGrid& view = grid();
    const QModelIndex index = view.model()->index(row - 1, col - 1);
    QTest::mouseClick(view.viewport(), Qt::RightButton, Qt::NoModifier,
                      view.visualRect(index).center());
    settle();
    QTest::qWait(200);
    settle();
    EXPECT_TRUE(chosen) << "command " << command << " was not offered";
}
