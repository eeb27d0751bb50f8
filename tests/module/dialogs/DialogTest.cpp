#include "DialogTest.h"

#include "dialogs/ZelEditWTDlg.h"
#include "dialogs/ZelWireTypeSelDlg.h"
#include "lisp/ZelLispFunctions.h"
#include "ovdb/ovut.h"
#include "shell/ResourceOverride.h"
#include "store/ZelWireTypeRec.h"

#include "ovcore/OvApDocManager.h"
#include "ovcore/OvApDocument.h"
#include "ovcore/oved.h"
#include "ovdb/OvDbDatabase.h"
#include "platform/SettingsKey.h"

#include <QAbstractButton>
#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QTest>
#include <QTimer>

void DialogTest::SetUp() {
    ZelTestHost::SetUp();
    platform::SettingsKey::SetStoreFileName(tempPath(QStringLiteral("settings.ini")));
}

void DialogTest::TearDown() {
    m_poll.reset();
    m_dialog.reset();
    releaseSelDialog();
    settle();
    platform::SettingsKey::SetStoreFileName(QString());
    ZelTestHost::TearDown();
}

OvDbDatabase* DialogTest::wireTypeDrawing(const QStringList& names,
                                          const QStringList& plainLayers) {
    OvDbDatabase* database = makeDrawing(QStringList{"PLAIN"} + plainLayers, QString());
    ZelWireTypeRec store;
    for (const QString& name : names)
        EXPECT_EQ(addWireType(store, name), Orvex::eOk) << name.toStdString();
    ZelWireTypeRec::ResetKey();
    EXPECT_EQ(ovDocManagerPtr()->saveDocument(activeDocument()), Orvex::eOk);
    return database;
}

int DialogTest::runEditDialog(const std::function<void()>& script) {
    m_dialog = std::make_unique<ZelEditWTDlg>(nullptr, false);
    m_grid = &m_dialog->Grid();
    return runModal(*m_dialog, script);
}

// The answer belongs to whoever ran the dialog, as it does to a LISP caller.
void DialogTest::releaseSelDialog() {
    if (m_selDialog)
        ovutRelRb(m_selDialog->GetResult());
    m_selDialog.reset();
}

int DialogTest::runSelDialog(const std::function<void()>& script, bool setOnly) {
    const ov_name none = {0, 0};
    releaseSelDialog();
    m_selDialog = std::make_unique<ZelWireTypeSelDlg>(none, nullptr, setOnly);
    m_grid = &m_selDialog->Grid();
    return runModal(*m_selDialog, script);
}

int DialogTest::runModal(platform::TemplateDialog& target, const std::function<void()>& script) {
    platform::TemplateDialog* dialog = &target;
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
    m_active = nullptr;
    return result;
}

void DialogTest::whenModal(std::function<void(QWidget*)> action) {
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

void DialogTest::settle() {
    for (int i = 0; i < 5; ++i)
        QApplication::processEvents();
}

void DialogTest::clickCell(int row, int col, Qt::KeyboardModifiers modifiers) {
    ZelWTGrid& view = grid();
    const QModelIndex index = view.model()->index(row - 1, col - 1);
    view.scrollTo(index);
    QTest::mouseClick(view.viewport(), Qt::LeftButton, modifiers, view.visualRect(index).center());
    settle();
}

void DialogTest::clickRowHeader(int row, Qt::KeyboardModifiers modifiers) {
    QHeaderView* header = grid().verticalHeader();
    const QPoint point(header->width() / 2,
                       header->sectionViewportPosition(row - 1) + header->sectionSize(row - 1) / 2);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, modifiers, point);
    settle();
}

void DialogTest::key(int key, Qt::KeyboardModifiers modifiers) {
    QWidget* target = QApplication::focusWidget();
    if (!target)
        target = &grid();
    // Each press carries its own time, as a keyboard's do.
    static quint64 timestamp = 1;
    QKeyEvent press(QEvent::KeyPress, key, modifiers);
    press.setTimestamp(++timestamp);
    QApplication::sendEvent(target, &press);
    QKeyEvent release(QEvent::KeyRelease, key, modifiers);
    release.setTimestamp(++timestamp);
    QApplication::sendEvent(target, &release);
    settle();
}

void DialogTest::typeText(const QString& text) {
    for (const QChar c : text) {
        QWidget* target = QApplication::focusWidget();
        if (!target)
            target = &grid();
        QTest::keyClick(target, c.toLatin1());
    }
    settle();
}

void DialogTest::typeInto(int row, int col, const QString& text) {
    clickCell(row, col);
    typeText(text);
    key(Qt::Key_Tab);
}

void DialogTest::clickButton(int id) {
    auto* button = qobject_cast<QAbstractButton*>(m_active->GetDlgItem(id));
    ASSERT_NE(button, nullptr) << id;
    ASSERT_TRUE(button->isVisible() && button->isEnabled()) << "button " << id << " not usable";
    QTest::mouseClick(button, Qt::LeftButton);
    settle();
}

void DialogTest::clickControl(int id) {
    QWidget* control = m_active->GetDlgItem(id);
    ASSERT_NE(control, nullptr) << id;
    QTest::mouseClick(control, Qt::LeftButton, Qt::NoModifier, QPoint(5, control->height() / 2));
    settle();
}

QStringList DialogTest::contextMenu(int row, int col, int command) {
    QStringList offered;
    bool shown = false;
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
    ZelWTGrid& view = grid();
    const QModelIndex index = view.model()->index(row - 1, col - 1);
    view.scrollTo(index);
    QTest::mouseClick(view.viewport(), Qt::RightButton, Qt::NoModifier,
                      view.visualRect(index).center());
    settle();
    QTest::qWait(200);
    settle();
    if (!shown)
        offered << QStringLiteral("no menu");
    return offered;
}

QString DialogTest::cell(int row, int col) const {
    const QAbstractItemModel* model = m_grid->model();
    return model->data(model->index(row - 1, col - 1), Qt::DisplayRole).toString();
}

std::pair<int, int> DialogTest::currentCell() const {
    int row = 0;
    int col = 0;
    m_grid->GetCurrentCell(row, col);
    return {row, col};
}

QStringList DialogTest::gridNames() const {
    QStringList names;
    for (int row = 1; row <= m_grid->GetWireTypeRows(); ++row)
        names << cell(row, 5);
    return names;
}

void DialogTest::saveAndReadBack(OvDbDatabase& saved) {
    const QString path = activeDocument()->fileName();
    ASSERT_EQ(ovDocManagerPtr()->saveDocument(activeDocument()), Orvex::eOk);
    ASSERT_EQ(saved.readDwgFile(path.toStdWString().c_str()), Orvex::eOk);
}

void DialogTest::defineImportFunctions() {
    static const int module = 0;
    ovcore::lisp::setActiveModule(&module, nullptr);
    ovedDefun(L"zel_get_active_dwg_wiretype", 1);
    ovedRegFunc(zel_get_active_dwg_wiretype, 1);
    ovedDefun(L"zel_get_dwg_wiretype_settings", 2);
    ovedRegFunc(zel_get_dwg_wiretype_settings, 2);
    ovcore::lisp::setActiveModule(nullptr, nullptr);
    loadAddonLisp(QStringLiteral("wd_base.scm"));
    loadAddonLisp(QStringLiteral("wd_wirlay.scm"));
}

void DialogTest::loadAddonLisp(const QString& file) {
    const ovcore::lisp::EvalResult loaded =
        ovcore::lisp::loadFile(programFolder() + QStringLiteral("/addon-lisp/") + file);
    ASSERT_TRUE(loaded.ok) << loaded.error.toStdString();
}
