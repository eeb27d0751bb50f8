#include "ImpDlgTest.h"

#include "lisp/ZelLispDialogs.h"
#include "lisp/ZelLispFunctions.h"

#include "ovcore/OvLisp.h"
#include "ovcore/oved.h"
#include "platform/GridWindow.h"
#include "platform/TemplateDialog.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QHeaderView>
#include <QKeyEvent>
#include <QTest>
#include <QTimer>

void ImpDlgTest::SetUp() {
    ZelTestHost::SetUp();
    ASSERT_NE(newDocument(), nullptr);
    static const int module = 0;
    static const std::pair<const wchar_t*, int (*)()> functions[] = {
        {L"zel_get_active_dwg_wiretype", zel_get_active_dwg_wiretype},
        {L"zel_get_dwg_wiretype_settings", zel_get_dwg_wiretype_settings},
        {L"zel_rename_wire_properties", zel_rename_wire_properties},
        {L"zel_invoke_importwt_dlg", zel_invoke_importwt_dlg},
    };
    ovcore::lisp::setActiveModule(&module, nullptr);
    int number = 0;
    for (const auto& [name, handler] : functions) {
        ovedDefun(name, ++number);
        ovedRegFunc(handler, number);
    }
    ovcore::lisp::setActiveModule(nullptr, nullptr);
    const QDir scheme(programFolder() + QStringLiteral("/addon-lisp"));
    for (const QString& file : {QStringLiteral("wd_base.scm"), QStringLiteral("wd_wirlay.scm")}) {
        const ovcore::lisp::EvalResult loaded = ovcore::lisp::loadFile(scheme.filePath(file));
        ASSERT_TRUE(loaded.ok) << file.toStdString() << ": " << loaded.error.toStdString();
    }
}

void ImpDlgTest::TearDown() {
    settle();
    ZelTestHost::TearDown();
}

QString ImpDlgTest::importDrawing() {
    const QString copy = tempPath(QStringLiteral("import.dwg"));
    QFile::remove(copy);
    EXPECT_TRUE(QFile::copy(QStringLiteral(ZEL_DEMO_DIR "/drawings/import.dwg"), copy));
    return copy;
}

QString ImpDlgTest::runWithDialog(const QString& expression,
                                  const std::function<void(platform::TemplateDialog&)>& act,
                                  bool* shown) {
    bool seen = false;
    QTimer watcher;
    watcher.setInterval(20);
    QObject::connect(&watcher, &QTimer::timeout, [&] {
        auto* dialog = dynamic_cast<platform::TemplateDialog*>(QApplication::activeModalWidget());
        if (!dialog || !dialog->IsInModal() || !dialog->isVisible())
            return;
        watcher.stop();
        seen = true;
        QApplication::setActiveWindow(dialog);
        settle();
        act(*dialog);
        // A test that forgot to close the dialog must not hang the run.
        if (dialog->isVisible())
            click(*dialog, platform::TemplateDialog::IDCANCEL);
    });
    watcher.start();
    const QString value = evalLisp(expression).value;
    watcher.stop();
    if (shown)
        *shown = seen;
    return value;
}

void ImpDlgTest::settle() {
    for (int i = 0; i < 5; ++i)
        QApplication::processEvents();
}

void ImpDlgTest::click(platform::TemplateDialog& dialog, int id) {
    auto* button = qobject_cast<QAbstractButton*>(dialog.GetDlgItem(id));
    ASSERT_NE(button, nullptr) << id;
    QTest::mouseClick(button, Qt::LeftButton);
    settle();
}

void ImpDlgTest::clickCell(platform::GridWindow& grid, int row, int col,
                           Qt::KeyboardModifiers modifiers) {
    const QModelIndex index = grid.model()->index(row - 1, col - 1);
    grid.scrollTo(index);
    QTest::mouseClick(grid.viewport(), Qt::LeftButton, modifiers, grid.visualRect(index).center());
    settle();
}

void ImpDlgTest::doubleClickHeader(platform::GridWindow& grid, int col) {
    QHeaderView* header = grid.horizontalHeader();
    const QPoint point(header->sectionViewportPosition(col - 1) + header->sectionSize(col - 1) / 2,
                       header->height() / 2);
    QTest::mouseDClick(header->viewport(), Qt::LeftButton, Qt::NoModifier, point);
    settle();
}

void ImpDlgTest::key(int key, Qt::KeyboardModifiers modifiers) {
    QWidget* target = QApplication::focusWidget();
    if (!target)
        target = QApplication::activeModalWidget();
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

void ImpDlgTest::typeText(const QString& text) {
    for (const QChar c : text)
        QTest::keyClick(QApplication::focusWidget(), c.toLatin1());
    settle();
}

QString ImpDlgTest::cell(const platform::GridWindow& grid, int row, int col) {
    return grid.GetValueRowCol(row, col);
}

QStringList ImpDlgTest::selectedLayers(const platform::GridWindow& grid) {
    QStringList layers;
    for (const quint32 row : grid.GetSelectedRows(true, false))
        layers << grid.GetValueRowCol(int(row), 3);
    return layers;
}
