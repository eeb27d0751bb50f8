#include "support/ZelUiTest.h"

#include "grid/ZelWTGrid.h"
#include "shell/ResourceOverride.h"
#include "store/ZelWireTypeRec.h"
#include "support/ZelTestDrawing.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvApDocument.h"
#include "ovcore/OvEdBatchInput.h"
#include "ovdb/OvDbDatabase.h"
#include "ovdb/ovdbEntityName.h"
#include "ovdb/ovut.h"
#include "platform/GridWindow.h"
#include "platform/SettingsKey.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFile>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QTest>

namespace {

// Where a keyboard's keys go: the widget with the focus, else the window being worked.
QWidget* keyTarget() {
    QWidget* target = QApplication::focusWidget();
    return target ? target : QApplication::activeModalWidget();
}

QPoint cellCentre(platform::GridWindow& grid, int row, int col) {
    const QModelIndex index = grid.model()->index(row - 1, col - 1);
    grid.scrollTo(index);
    return grid.visualRect(index).center();
}

} // namespace

void ZelUiTest::SetUp() {
    ZelTestHost::SetUp();
    platform::SettingsKey::SetStoreFileName(tempPath(QStringLiteral("settings.ini")));
    OvEdBatchInput::instance().clear();
    // The rows of a copy outlive a dialog; each test starts as a new session does.
    ZelWTGrid::SetCopiedRows({});
    ZelWTGrid::SetCopiedCols({});
}

void ZelUiTest::TearDown() {
    m_saved.clear();
    m_poll.reset();
    m_dialog.reset();
    releaseSelDialog();
    OvEdBatchInput::instance().clear();
    settle();
    platform::SettingsKey::SetStoreFileName(QString());
    ZelTestHost::TearDown();
}

OvDbDatabase* ZelUiTest::wireTypeDrawing(const QStringList& names, const WireTypeDrawing& how) {
    OvDbDatabase* database = makeDrawing(QStringList{"PLAIN"}, QString());
    ZelWireTypeRec store;
    std::vector<QString> propNames;
    store.GetUsrPropNames(propNames);
    propNames.resize(how.values.size());
    for (int i = 0; i < names.size(); ++i) {
        const QString& name = names[i];
        std::vector<QString> rowNames = propNames;
        std::vector<QString> rowValues = how.values;
        const long row = std::size_t(i) < how.gridRows.size() ? how.gridRows[std::size_t(i)] : 0;
        const QString colour = how.lookFromNames ? name.section(u'_', 0, 0) : QString();
        const QString size = how.lookFromNames ? name.section(u'_', 1) : QString();
        EXPECT_EQ(store.AddNewWireType(0, name, rowNames, rowValues, colour, size, "WIRE",
                                       OvCmColor(), OvDbObjectId(), OvDb::kLnWtByLwDefault, row,
                                       true),
                  Orvex::eOk)
            << name.toStdString();
    }
    if (!how.current.isEmpty()) {
        setCurrentRecord(database, names.value(0), how.current, how.makeAllValid, "%C_%S");
        m_plainLine = ZelTestDrawing::addLine(database, "PLAIN");
        for (const QString& name : names)
            m_lines.insert(name, ZelTestDrawing::addLine(database, name));
    }
    if (how.saved) {
        ZelWireTypeRec::ResetKey();
        EXPECT_EQ(ovDocManagerPtr()->saveDocument(activeDocument()), Orvex::eOk);
    }
    return database;
}

OvDbDatabase* ZelUiTest::savedDrawing() {
    const QString path = activeDocument()->fileName();
    EXPECT_EQ(ovDocManagerPtr()->saveDocument(activeDocument()), Orvex::eOk);
    auto& saved = m_saved.emplace_back(std::make_unique<OvDbDatabase>(false, true));
    EXPECT_EQ(saved->readDwgFile(path.toStdWString().c_str()), Orvex::eOk);
    return saved.get();
}

void ZelUiTest::defineFunctions(bool withAddonLisp) {
    defineModuleFunctions();
    if (withAddonLisp) {
        loadAddonLisp(QStringLiteral("wd_base.scm"));
        loadAddonLisp(QStringLiteral("wd_wirlay.scm"));
    }
}

void ZelUiTest::loadAddonLisp(const QString& file) {
    const ovcore::lisp::EvalResult loaded =
        ovcore::lisp::loadFile(programFolder() + QStringLiteral("/addon-lisp/") + file);
    ASSERT_TRUE(loaded.ok) << file.toStdString() << ": " << loaded.error.toStdString();
}

QString ZelUiTest::importDrawing() {
    const QString copy = tempPath(QStringLiteral("import.dwg"));
    QFile::remove(copy);
    EXPECT_TRUE(QFile::copy(QStringLiteral(ZEL_DEMO_DIR "/drawings/import.dwg"), copy));
    return copy;
}

int ZelUiTest::runModal(platform::TemplateDialog& target, const std::function<void()>& script) {
    platform::TemplateDialog* dialog = &target;
    platform::TemplateDialog* outer = m_active;
    m_active = dialog;
    bool ran = false;
    QTimer::singleShot(0, [&] {
        ran = true;
        if (!QTest::qWaitForWindowExposed(dialog)) {
            ADD_FAILURE() << "the dialog was not shown";
        } else {
            QApplication::setActiveWindow(dialog);
            settle();
            script();
        }
        if (dialog->isVisible()) {
            ADD_FAILURE() << "the script left the dialog open";
            dialog->EndDialog(platform::TemplateDialog::IDCANCEL);
        }
    });
    // As the command runs it: under the module's resources.
    int result = 0;
    {
        const ResourceOverride resources;
        result = dialog->DoModal();
    }
    EXPECT_TRUE(ran);
    settle();
    m_active = outer;
    return result;
}

int ZelUiTest::runEditDialog(const std::function<void()>& script) {
    m_dialog = std::make_unique<ZelEditWTDlg>(nullptr, false);
    m_grid = &m_dialog->Grid();
    return runModal(*m_dialog, script);
}

void ZelUiTest::releaseSelDialog() {
    if (m_selDialog)
        ovutRelRb(m_selDialog->GetResult());
    m_selDialog.reset();
}

int ZelUiTest::runSelDialog(const std::function<void()>& script, bool setOnly) {
    const ov_name none = {0, 0};
    releaseSelDialog();
    m_selDialog = std::make_unique<ZelWireTypeSelDlg>(none, nullptr, setOnly);
    m_grid = &m_selDialog->Grid();
    return runModal(*m_selDialog, script);
}

QString ZelUiTest::runWith(const QString& expression, std::deque<Step> steps) {
    m_openings.clear();
    bool leftOver = false;
    QTimer driver;
    driver.setInterval(20);
    QObject::connect(&driver, &QTimer::timeout, [&] {
        auto* dialog = qobject_cast<platform::TemplateDialog*>(QApplication::activeModalWidget());
        if (!dialog || !dialog->isVisible() || !dialog->IsInModal())
            return;
        if (steps.empty()) {
            leftOver = true;
            dialog->EndDialog(platform::TemplateDialog::IDCANCEL);
            return;
        }
        Step step = std::move(steps.front());
        steps.pop_front();
        m_openings.push_back(dialog);
        m_active = dialog;
        m_grid = dynamic_cast<ZelWTGrid*>(dialog->GetDlgItem(1002));
        QApplication::setActiveWindow(dialog);
        settle();
        step(*dialog);
    });
    driver.start();
    const ovcore::lisp::EvalResult result = ovcore::lisp::evalString(expression);
    driver.stop();
    m_active = nullptr;
    EXPECT_TRUE(result.ok) << result.error.toStdString();
    EXPECT_FALSE(leftOver) << "a dialog was left open";
    EXPECT_TRUE(steps.empty()) << steps.size() << " steps did not run";
    return result.value;
}

void ZelUiTest::whenModal(std::function<void(QWidget*)> action) {
    m_modalSeen = false;
    m_poll = std::make_unique<QTimer>();
    m_poll->setInterval(20);
    QObject::connect(m_poll.get(), &QTimer::timeout, [this, action] {
        QWidget* modal = QApplication::activeModalWidget();
        if (!modal || modal == m_active || !modal->isVisible())
            return;
        m_poll->stop();
        m_modalSeen = true;
        action(modal);
        // The dialog gets the keyboard back, as the desktop gives it back to the window
        // under a closed one.
        if (m_active && m_active->isVisible())
            QApplication::setActiveWindow(m_active);
    });
    m_poll->start();
}

void ZelUiTest::settle() {
    for (int i = 0; i < 5; ++i)
        QApplication::processEvents();
}

void ZelUiTest::clickCell(platform::GridWindow& grid, int row, int col,
                          Qt::KeyboardModifiers modifiers) {
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, modifiers, cellCentre(grid, row, col));
    settle();
}

void ZelUiTest::doubleClickCell(int row, int col) {
    const QPoint point = cellCentre(grid(), row, col);
    // A double click arrives as press, release, double click, release, as a mouse sends it.
    QTest::mouseClick(grid().viewport(), Qt::LeftButton, Qt::NoModifier, point);
    QTest::mouseDClick(grid().viewport(), Qt::LeftButton, Qt::NoModifier, point);
    settle();
}

void ZelUiTest::clickRowHeader(int row, Qt::KeyboardModifiers modifiers) {
    QHeaderView* header = grid().verticalHeader();
    const QPoint point(header->width() / 2,
                       header->sectionViewportPosition(row - 1) + header->sectionSize(row - 1) / 2);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, modifiers, point);
    settle();
}

void ZelUiTest::doubleClickColumnHeader(platform::GridWindow& grid, int col) {
    QHeaderView* header = grid.horizontalHeader();
    const QPoint point(header->sectionViewportPosition(col - 1) + header->sectionSize(col - 1) / 2,
                       header->height() / 2);
    QTest::mouseDClick(header->viewport(), Qt::LeftButton, Qt::NoModifier, point);
    settle();
}

void ZelUiTest::key(int key, Qt::KeyboardModifiers modifiers) {
    QWidget* target = keyTarget();
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

void ZelUiTest::typeText(const QString& text) {
    for (const QChar c : text)
        QTest::keyClick(keyTarget(), c.toLatin1());
    settle();
}

void ZelUiTest::typeInto(int row, int col, const QString& text) {
    clickCell(row, col);
    typeText(text);
    key(Qt::Key_Tab);
}

void ZelUiTest::clickButton(platform::TemplateDialog& dialog, int id) {
    auto* button = qobject_cast<QAbstractButton*>(dialog.GetDlgItem(id));
    ASSERT_NE(button, nullptr) << id;
    ASSERT_TRUE(button->isVisible() && button->isEnabled()) << "button " << id << " not usable";
    QTest::mouseClick(button, Qt::LeftButton);
    settle();
}

void ZelUiTest::clickControl(int id) {
    QWidget* control = m_active->GetDlgItem(id);
    ASSERT_NE(control, nullptr) << id;
    QTest::mouseClick(control, Qt::LeftButton, Qt::NoModifier, QPoint(5, control->height() / 2));
    settle();
}

QStringList ZelUiTest::contextMenu(int row, int col, int command) {
    QStringList offered;
    bool shown = false;
    // The menu runs its own loop: the choice is made from inside it, once the menu is up.
    QTimer picker;
    picker.setInterval(20);
    QObject::connect(&picker, &QTimer::timeout, [&] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (!menu || !menu->isVisible())
            return;
        picker.stop();
        shown = true;
        QAction* chosen = nullptr;
        for (QAction* action : menu->actions()) {
            if (action->isSeparator() || !action->isVisible() || !action->isEnabled())
                continue;
            offered << action->objectName();
            if (action->objectName() == QString::number(command))
                chosen = action;
        }
        if (chosen)
            QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier,
                              menu->actionGeometry(chosen).center());
        else
            menu->close();
    });
    picker.start();
    QTest::mouseClick(grid().viewport(), Qt::RightButton, Qt::NoModifier,
                      cellCentre(grid(), row, col));
    settle();
    QTest::qWait(200);
    settle();
    if (!shown)
        offered << QStringLiteral("no menu");
    return offered;
}

QString ZelUiTest::cell(const platform::GridWindow& grid, int row, int col) {
    return grid.GetValueRowCol(row, col);
}

std::pair<int, int> ZelUiTest::currentCell() const {
    int row = 0;
    int col = 0;
    grid().GetCurrentCell(row, col);
    return {row, col};
}

QStringList ZelUiTest::gridNames() const {
    QStringList names;
    for (int row = 1; row <= grid().GetWireTypeRows(); ++row)
        names << cell(row, 5);
    return names;
}

int ZelUiTest::rowOf(const QString& layer) const {
    return static_cast<int>(gridNames().indexOf(layer)) + 1;
}

const WireLayerRec* ZelUiTest::rowRecord(int row) const {
    const auto& rows = grid().Rows();
    const auto found = rows.find(cell(row, 1).toInt());
    return found == rows.end() ? nullptr : found->second;
}

void ZelUiTest::queuePickOf(OvDbObjectId id) {
    ov_name name = {0, 0};
    ASSERT_EQ(ovdbGetOvName(name, id), RTNORM);
    OvEdBatchInput::instance().queuePick(name);
}

QStringList ZelUiTest::selectedLayers(const platform::GridWindow& grid) {
    QStringList layers;
    for (const quint32 row : grid.GetSelectedRows(true, false))
        layers << grid.GetValueRowCol(int(row), 3);
    return layers;
}
