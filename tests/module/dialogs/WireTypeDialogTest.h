#pragma once

// What the tests of the wire type choosers share: a widget application, a saved drawing
// with wire types and plain lines, zel_wire_type_sel defined in it, and a driver that works
// each modal opening of a dialog with mouse and key events once it is up and waiting.

#include "lisp/ZelLispFunctions.h"
#include "store/ZelWireTypeRec.h"
#include "support/ZelTestDrawing.h"
#include "support/ZelTestHost.h"

#include "grid/ZelWTGrid.h"
#include "ovcore/OvEdBatchInput.h"
#include "ovcore/OvLisp.h"
#include "ovcore/oved.h"
#include "ovdb/ovdbEntityName.h"
#include "platform/SettingsKey.h"
#include "platform/TemplateDialog.h"

#include <QAbstractButton>
#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QTest>
#include <QTimer>

#include <deque>
#include <functional>

class WireTypeDialogTest : public ZelTestHost {
protected:
    using Step = std::function<void(platform::TemplateDialog&)>;

    static void SetUpTestSuite() {
        if (QApplication::instance())
            return;
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        static int argc = 1;
        static char name[] = "wire_type_dialog_test";
        static char* argv[] = {name, nullptr};
        // Lives for the program: the host and the dialogs of every test run inside it.
        new QApplication(argc, argv);
    }

    void SetUp() override {
        ZelTestHost::SetUp();
        platform::SettingsKey::SetStoreFileName(tempPath(QStringLiteral("settings.ini")));
        OvEdBatchInput::instance().clear();
    }

    void TearDown() override {
        OvEdBatchInput::instance().clear();
        settle();
        platform::SettingsKey::SetStoreFileName(QString());
        ZelTestHost::TearDown();
    }

    // A drawing with these wire types (sorted by name in the grid), the plain layer PLAIN,
    // a line on PLAIN and one on each wire type, and `current` as the current wire type.
    OvDbDatabase* wireTypeDrawing(const QStringList& names, const QString& current,
                                  bool makeAllValidWire = false) {
        OvDbDatabase* database = makeDrawing({"PLAIN"}, QString());
        ZelWireTypeRec store;
        // Wire colour and size as the name spells them: "RED_1.5" is RED, 1.5.
        for (const QString& name : names) {
            std::vector<QString> propNames;
            std::vector<QString> values;
            EXPECT_EQ(store.AddNewWireType(0, name, propNames, values, name.section(u'_', 0, 0),
                                           name.section(u'_', 1), "WIRE", OvCmColor(),
                                           OvDbObjectId(), OvDb::kLnWtByLwDefault, 0, true),
                      Orvex::eOk)
                << name.toStdString();
        }
        setCurrentRecord(database, names.value(0), current, makeAllValidWire, "%C_%S");
        m_plainLine = ZelTestDrawing::addLine(database, "PLAIN");
        for (const QString& name : names)
            m_lines.insert(name, ZelTestDrawing::addLine(database, name));
        defineFunction();
        return database;
    }

    void defineFunction() {
        static const int module = 0;
        ovcore::lisp::setActiveModule(&module, nullptr);
        ovedDefun(L"zel_wire_type_sel", 1);
        ovedRegFunc(zel_wire_type_sel, 1);
        ovcore::lisp::setActiveModule(nullptr, nullptr);
    }

    // The entity name of a line, as LISP and the pick queue know it.
    static void nameOf(OvDbObjectId id, ov_name name) {
        ASSERT_EQ(ovdbGetOvName(name, id), RTNORM);
    }
    void queuePickOf(OvDbObjectId id) {
        ov_name name = {0, 0};
        nameOf(id, name);
        OvEdBatchInput::instance().queuePick(name);
    }

    // Runs `expression` while the steps work the dialogs it opens, one step for each time a
    // modal dialog is up and waiting, in order. A dialog still up when the steps have run
    // out fails the test and is cancelled, so that nothing hangs.
    QString runWith(const QString& expression, std::deque<Step> steps) {
        m_openings.clear();
        ShowCounter counter(m_openings);
        qApp->installEventFilter(&counter);
        bool leftOver = false;
        QTimer driver;
        driver.setInterval(20);
        QObject::connect(&driver, &QTimer::timeout, [&] {
            auto* dialog =
                qobject_cast<platform::TemplateDialog*>(QApplication::activeModalWidget());
            if (!dialog || !dialog->isVisible() || !dialog->IsInModal())
                return;
            if (steps.empty()) {
                leftOver = true;
                dialog->EndDialog(platform::TemplateDialog::IDCANCEL);
                return;
            }
            Step step = std::move(steps.front());
            steps.pop_front();
            settle();
            step(*dialog);
        });
        driver.start();
        const ovcore::lisp::EvalResult result = ovcore::lisp::evalString(expression);
        driver.stop();
        qApp->removeEventFilter(&counter);
        EXPECT_TRUE(result.ok) << result.error.toStdString();
        EXPECT_FALSE(leftOver) << "a dialog was left open";
        EXPECT_TRUE(steps.empty()) << steps.size() << " steps did not run";
        return result.value;
    }

    static void settle() {
        for (int i = 0; i < 5; ++i)
            QApplication::processEvents();
    }

    static ZelWTGrid& gridOf(platform::TemplateDialog& dialog) {
        auto* grid = dynamic_cast<ZelWTGrid*>(dialog.GetDlgItem(1002));
        EXPECT_NE(grid, nullptr);
        return *grid;
    }

    // The grid row that shows a layer; 0 when none.
    static int rowOf(platform::TemplateDialog& dialog, const QString& layer) {
        ZelWTGrid& grid = gridOf(dialog);
        for (int row = 1; row <= grid.GetWireTypeRows(); ++row)
            if (grid.GetValueRowCol(row, 5) == layer)
                return row;
        return 0;
    }

    static QPoint cellCentre(ZelWTGrid& grid, int row, int col) {
        const QModelIndex index = grid.model()->index(row - 1, col - 1);
        grid.scrollTo(index);
        return grid.visualRect(index).center();
    }

    static void clickCell(platform::TemplateDialog& dialog, int row, int col) {
        ZelWTGrid& grid = gridOf(dialog);
        QTest::mouseClick(grid.viewport(), Qt::LeftButton, Qt::NoModifier,
                          cellCentre(grid, row, col));
        settle();
    }

    static void clickRowHeader(platform::TemplateDialog& dialog, int row) {
        QHeaderView* header = gridOf(dialog).verticalHeader();
        const QPoint point(header->width() / 2, header->sectionViewportPosition(row - 1) +
                                                    header->sectionSize(row - 1) / 2);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier, point);
        settle();
    }

    static void doubleClickCell(platform::TemplateDialog& dialog, int row, int col) {
        ZelWTGrid& grid = gridOf(dialog);
        const QPoint point = cellCentre(grid, row, col);
        // A double click arrives as press, release, double click, release, as a mouse sends it.
        QTest::mouseClick(grid.viewport(), Qt::LeftButton, Qt::NoModifier, point);
        QTest::mouseDClick(grid.viewport(), Qt::LeftButton, Qt::NoModifier, point);
        settle();
    }

    static void clickButton(platform::TemplateDialog& dialog, int id) {
        auto* button = qobject_cast<QAbstractButton*>(dialog.GetDlgItem(id));
        ASSERT_NE(button, nullptr) << id;
        QTest::mouseClick(button, Qt::LeftButton);
        settle();
    }

    // A key to whatever has the focus, as a keyboard sends it.
    static void pressKey(platform::TemplateDialog& dialog, int key) {
        QWidget* target = QApplication::focusWidget();
        QTest::keyClick(target ? target : &dialog, static_cast<Qt::Key>(key));
        settle();
    }

    QString currentLayer(OvDbDatabase* database) const {
        return currentRecord(database).section(u'|', 1, 1);
    }

    OvDbObjectId m_plainLine;
    QMap<QString, OvDbObjectId> m_lines;
    // The dialog of each opening, in order: the same object again when a dialog reopens.
    QList<const QObject*> m_openings;

private:
    // Notes each dialog of the module as it is shown.
    class ShowCounter : public QObject {
    public:
        explicit ShowCounter(QList<const QObject*>& openings) : m_list(openings) {}
        bool eventFilter(QObject* watched, QEvent* event) override {
            if (event->type() == QEvent::Show && qobject_cast<platform::TemplateDialog*>(watched))
                m_list.push_back(watched);
            return false;
        }

    private:
        QList<const QObject*>& m_list;
    };
};
