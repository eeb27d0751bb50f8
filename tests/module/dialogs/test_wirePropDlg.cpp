// The property names dialog as the add-on opens it through zel_rename_wire_properties.

#include "support/ZelUiTest.h"

#include "dialogs/ZelWirePropDlg.h"

#include <QApplication>
#include <QClipboard>

namespace {

class WirePropDialogTest : public ZelUiTest {
protected:
    void SetUp() override {
        ZelUiTest::SetUp();
        ASSERT_NE(newDocument(), nullptr);
        defineFunctions(true);
    }
};

QString call(const QString& list) {
    QString quoted = list;
    quoted.replace("\"", "\\\"");
    return "(zel_rename_wire_properties \"" + quoted + "\")";
}

// The answer's text, from its LISP notation.
QString text(const QString& value) {
    QString inner = value.mid(1, value.size() - 2);
    return inner.replace("\\\"", "\"");
}

ZelPropGrid& propGrid(platform::TemplateDialog& dialog) {
    return dynamic_cast<ZelWirePropDlg&>(dialog).grid();
}

// The empty names after the last one keep their places in the answer.
TEST_F(WirePropDialogTest, QuotedCommasAndInnerEmptyNamesComeBackAndCancelChangesNothing) {
    const QString quoted = "Insulation,\"Rating, max\",Temp";
    QString value = runWith(call(quoted), {[](platform::TemplateDialog& d) {
                                EXPECT_EQ(propGrid(d).GetRowCount(), 20);
                                EXPECT_EQ(cell(propGrid(d), 2, 2), "Rating, max");
                                clickButton(d, 1);
                            }});
    EXPECT_EQ(text(value), quoted + QString(17, u','));

    // Leading empty names vanish.
    value = runWith(call(""), {[](platform::TemplateDialog& d) {
                        clickCell(propGrid(d), 3, 2);
                        typeText("X");
                        key(Qt::Key_Return);
                        clickButton(d, 1);
                    }});
    EXPECT_EQ(text(value), "X" + QString(17, u','));

    value = runWith(call("A,B,C"), {[](platform::TemplateDialog& d) {
                        clickCell(propGrid(d), 2, 2);
                        key(Qt::Key_Delete);
                        clickButton(d, 1);
                    }});
    EXPECT_EQ(text(value), "A,,C" + QString(17, u','));

    // Cancel gives back the list as it came, even one it could not have written.
    const QString list = "one,\"two, three\",,four,\"unclosed";
    value = runWith(call(list), {[](platform::TemplateDialog& d) {
                        clickCell(propGrid(d), 1, 2);
                        typeText("changed");
                        key(Qt::Key_Return);
                        EXPECT_EQ(cell(propGrid(d), 1, 2), "changed");
                        clickButton(d, 2);
                    }});
    EXPECT_EQ(text(value), list);
}

TEST_F(WirePropDialogTest, EnterWalksTheNamesRoundAndAPasteKeepsTwentyRows) {
    runWith(call("A"), {[](platform::TemplateDialog& d) {
                ZelPropGrid& names = propGrid(d);
                const auto current = [&names] {
                    int row = 0;
                    int col = 0;
                    names.GetCurrentCell(row, col);
                    return std::make_pair(row, col);
                };
                EXPECT_EQ(current(), std::make_pair(1, 2)) << "the first name is ready";
                key(Qt::Key_Return, Qt::ShiftModifier);
                EXPECT_EQ(current(), std::make_pair(20, 2));
                key(Qt::Key_Return);
                EXPECT_EQ(current(), std::make_pair(1, 2));
                EXPECT_TRUE(d.isVisible())
                    << "Enter moves in the grid and does not close the dialog";

                // Lines past the twentieth name have nowhere to go.
                QStringList lines;
                for (int i = 1; i <= 25; ++i)
                    lines << "P" + QString::number(i);
                QApplication::clipboard()->setText(lines.join('\n'));
                clickCell(names, 18, 2);
                key(Qt::Key_V, Qt::ControlModifier);
                EXPECT_EQ(names.GetRowCount(), 20);
                EXPECT_EQ(cell(names, 20, 2), "P3");
                // The labels are not names: a paste onto them pastes nothing.
                clickCell(names, 5, 1);
                key(Qt::Key_V, Qt::ControlModifier);
                EXPECT_EQ(cell(names, 5, 1), moduleString(107) + "5");
                EXPECT_EQ(cell(names, 5, 2), "");
                clickButton(d, 2);
            }});
}

} // namespace
