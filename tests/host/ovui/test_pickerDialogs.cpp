#include "OvUiTest.h"

#include "OvPickerDialogs.h"

#include "../ovdb/OvdbBuild.h"

#include "ovdb/ovdb.h"

#include <QListWidget>
#include <QPushButton>
#include <QTreeWidget>

namespace {

QStringList namesIn(QTreeWidget* list) {
    QStringList names;
    for (int i = 0; i < list->topLevelItemCount(); ++i)
        names << list->topLevelItem(i)->text(0);
    return names;
}

void clickRow(QTreeWidget* list, const QString& name, bool twice = false) {
    const auto found = list->findItems(name, Qt::MatchExactly, 0);
    ASSERT_EQ(found.size(), 1) << name.toStdString();
    list->scrollToItem(found.first()); // as a person scrolls to it
    const QPoint at = list->visualItemRect(found.first()).center();
    // QTest's double click is the second click only: a person's first click comes before it.
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, at);
    if (twice)
        QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, at);
}

} // namespace

class LinetypeDialogTest : public OvUiTest {
protected:
    void SetUp() override {
        m_dashed = ovdbtest::addLinetype(m_db, "FENCE", {0.5, -0.25}, "Fence __ __");
        m_hidden = ovdbtest::addLinetype(m_db, "TRENCH", {0.25, -0.125}, "Trench _ _ _");
        OvDbHostApplicationServices::getRefPtr()->setWorkingDatabase(&m_db);
    }
    void TearDown() override {
        OvUiTest::TearDown();
        OvDbHostApplicationServices::getRefPtr()->setWorkingDatabase(nullptr);
        EXPECT_EQ(ovdbOpenObjectCount(), 0u);
    }

    OvDbDatabase m_db;
    OvDbObjectId m_dashed;
    OvDbObjectId m_hidden;
};

TEST_F(LinetypeDialogTest, OldOnePreselectedAnotherChosenByClick) {
    QString preselected;
    QStringList names;
    whenShown([&](QWidget* dialog) {
        auto* list = control<QTreeWidget>(dialog, "1001");
        names = namesIn(list);
        preselected = list->currentItem() ? list->currentItem()->text(0) : QString();
        clickRow(list, "TRENCH");
        click(dialog, "1");
    });
    wchar_t* name = nullptr;
    OvDbObjectId id;
    ASSERT_EQ(ovedLinetypeDialog(m_dashed, 0, name, id), 1);
    EXPECT_EQ(preselected, "FENCE");
    // In table order, without the two that stand for another linetype.
    EXPECT_EQ(names.first(), "Continuous");
    EXPECT_EQ(names.mid(names.size() - 2), (QStringList{"FENCE", "TRENCH"}));
    EXPECT_FALSE(names.contains("ByLayer"));
    ASSERT_NE(name, nullptr);
    EXPECT_EQ(QString::fromWCharArray(name), "TRENCH");
    EXPECT_EQ(id, m_hidden);
    ovutDelBuffer(name);
}

TEST_F(LinetypeDialogTest, ByBlockAndByLayerOnlyWhenAskedAndCancelLeavesNameAndId) {
    QStringList names;
    whenShown([&](QWidget* dialog) {
        auto* list = control<QTreeWidget>(dialog, "1001");
        names = namesIn(list);
        clickRow(list, "ByLayer", true); // double click is OK
    });
    wchar_t* name = nullptr;
    OvDbObjectId id;
    ASSERT_EQ(ovedLinetypeDialog(m_dashed, 1, name, id), 1);
    EXPECT_TRUE(names.contains("ByLayer"));
    EXPECT_TRUE(names.contains("ByBlock"));
    EXPECT_EQ(id, m_db.byLayerLinetype());
    ovutDelBuffer(name);

    whenShown([&](QWidget* dialog) {
        clickRow(control<QTreeWidget>(dialog, "1001"), "TRENCH");
        click(dialog, "2");
    });
    name = nullptr;
    id = m_dashed;
    EXPECT_EQ(ovedLinetypeDialog(m_dashed, 0, name, id), 0);
    EXPECT_EQ(name, nullptr);
    EXPECT_EQ(id, m_dashed);
}

class LineWeightDialogTest : public OvUiTest {};

TEST_F(LineWeightDialogTest, DashPreviewDrawsGapsOnlyWhereThePatternHasThem) {
    auto inkAlongMiddle = [](const std::vector<double>& dashes) {
        const QImage image = ovuiDashPreview(dashes, 150, 14, Qt::black).toImage();
        int ink = 0;
        for (int x = 2; x < 148; ++x)
            ink += qAlpha(image.pixel(x, 7)) > 0 ? 1 : 0;
        return ink;
    };
    EXPECT_EQ(inkAlongMiddle({}), 146);              // continuous
    const int dashed = inkAlongMiddle({0.5, -0.25}); // two thirds ink
    EXPECT_GT(dashed, 146 * 55 / 100);
    EXPECT_LT(dashed, 146 * 75 / 100);
    EXPECT_LT(inkAlongMiddle({0.0, -0.25}), 146 / 4); // dots
}

TEST_F(LineWeightDialogTest, OldWeightPreselectedKeyboardChoosesTheNext) {
    QString current;
    QStringList texts;
    whenShown([&](QWidget* dialog) {
        auto* list = control<QListWidget>(dialog, "1001");
        for (int i = 0; i < list->count(); ++i)
            texts << list->item(i)->text();
        current = list->currentItem() ? list->currentItem()->text() : QString();
        QTest::keyClick(list, Qt::Key_Down);
        QTest::keyClick(list, Qt::Key_Return);
    });
    OvDb::LineWeight chosen = OvDb::kLnWt000;
    ASSERT_EQ(ovedLineWeightDialog(OvDb::kLnWt025, 0, chosen), 1);
    EXPECT_EQ(current, "0.25 mm");
    EXPECT_EQ(chosen, OvDb::kLnWt030);
    EXPECT_EQ(texts.first(), "Default");
    EXPECT_FALSE(texts.contains("ByLayer"));
    EXPECT_EQ(texts.size(), 25); // Default and the 24 widths
}

TEST_F(LineWeightDialogTest, ByLayerOfferedWhenAskedAndCancelKeepsTheWeight) {
    QStringList texts;
    whenShown([&](QWidget* dialog) {
        auto* list = control<QListWidget>(dialog, "1001");
        for (int i = 0; i < list->count(); ++i)
            texts << list->item(i)->text();
        list->scrollToItem(list->item(0));
        const QPoint at = list->visualItemRect(list->item(0)).center();
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, at);
        QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, at);
    });
    OvDb::LineWeight chosen = OvDb::kLnWt100;
    ASSERT_EQ(ovedLineWeightDialog(OvDb::kLnWt100, 1, chosen), 1);
    EXPECT_EQ(texts.mid(0, 3), (QStringList{"ByLayer", "ByBlock", "Default"}));
    EXPECT_EQ(chosen, OvDb::kLnWtByLayer);

    whenShown([&](QWidget* dialog) {
        QTest::keyClick(control(dialog, "1001"), Qt::Key_Down);
        click(dialog, "2");
    });
    chosen = OvDb::kLnWt100;
    EXPECT_EQ(ovedLineWeightDialog(OvDb::kLnWt050, 1, chosen), 0);
    EXPECT_EQ(chosen, OvDb::kLnWt100);
}
