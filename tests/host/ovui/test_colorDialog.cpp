#include "OvUiTest.h"

#include "OvColorDialog.h"

#include <QLineEdit>
#include <QPushButton>

namespace {

OvCmColor colorOf(int index) {
    OvCmColor color;
    color.setColorIndex(index);
    return color;
}

} // namespace

class ColorDialogTest : public OvUiTest {};

// A click chooses a swatch and shows its number; a double click is OK as well.
TEST_F(ColorDialogTest, ClickingASwatchShowsItsNumberAndDoubleClickIsOk) {
    OvCmColor color = colorOf(7);
    QString edited;
    whenShown([&](QWidget* dialog) {
        QWidget* swatch = control(dialog, "color-250");
        QTest::mouseClick(swatch, Qt::LeftButton); // QTest's double click is the second click
        edited = control<QLineEdit>(dialog, "1001")->text();
        QTest::mouseDClick(swatch, Qt::LeftButton);
    });
    EXPECT_EQ(ovedSetColorDialogTrueColor(color, 0, colorOf(7), 7), 1);
    EXPECT_TRUE(acted());
    EXPECT_EQ(edited, "250");
    EXPECT_EQ(color.colorIndex(), 250);
}

TEST_F(ColorDialogTest, TypedNamesAndNumbersChooseTheColour) {
    for (const auto& [typed, expected] :
         {std::pair{QStringLiteral(" Magenta"), 6}, std::pair{QStringLiteral("121"), 121}}) {
        OvCmColor color = colorOf(1);
        bool swatchChosen = false;
        whenShown([&](QWidget* dialog) {
            auto* edit = control<QLineEdit>(dialog, "1001");
            edit->setFocus();
            QTest::keyClick(edit, Qt::Key_A, Qt::ControlModifier);
            QTest::keyClicks(edit, typed);
            // The typed colour is the one the palette marks, not only the edit's text.
            swatchChosen = qobject_cast<OvColorDialog*>(dialog)->color().colorIndex() == expected;
            QTest::keyClick(edit, Qt::Key_Return);
        });
        EXPECT_EQ(ovedSetColorDialogTrueColor(color, 0, colorOf(7), 7), 1) << typed.toStdString();
        EXPECT_EQ(color.colorIndex(), expected) << typed.toStdString();
        EXPECT_TRUE(swatchChosen);
    }
}

TEST_F(ColorDialogTest, ByLayerAndByBlockOnlyWhenAllowed) {
    // Not allowed: no buttons, and the typed name leaves nothing to accept.
    OvCmColor color = colorOf(3);
    bool buttons = true;
    bool okEnabled = true;
    whenShown([&](QWidget* dialog) {
        buttons = dialog->findChild<QWidget*>("1003") || dialog->findChild<QWidget*>("1004");
        auto* edit = control<QLineEdit>(dialog, "1001");
        edit->setFocus();
        QTest::keyClick(edit, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(edit, "bylayer");
        okEnabled = control<QPushButton>(dialog, "1")->isEnabled();
        QTest::keyClick(edit, Qt::Key_Return); // Enter on a bad text must not accept it
        if (dialog->isVisible())
            click(dialog, "2");
    });
    EXPECT_EQ(ovedSetColorDialogTrueColor(color, 0, colorOf(7), 7), 0);
    EXPECT_FALSE(buttons);
    EXPECT_FALSE(okEnabled);
    EXPECT_EQ(color.colorIndex(), 3);

    // Allowed: the buttons choose the meta colours.
    for (const QString button : {"1003", "1004"}) {
        color = colorOf(3);
        whenShown([&](QWidget* dialog) {
            click(dialog, button);
            click(dialog, "1");
        });
        EXPECT_EQ(ovedSetColorDialogTrueColor(color, 1, colorOf(7), 7), 1);
        EXPECT_EQ(color.colorIndex(), button == "1003" ? OvCmColor::kByLayer : OvCmColor::kByBlock);
    }
}

// The arrows walk the palette; Esc then leaves the colour as it was.
TEST_F(ColorDialogTest, ArrowKeysWalkThePaletteAndEscapeLeavesTheColourUntouched) {
    OvCmColor color = colorOf(10);
    int marked = 0;
    whenShown([&](QWidget* dialog) {
        QWidget* palette = control(dialog, "1002");
        palette->setFocus();
        QTest::keyClick(palette, Qt::Key_Right); // next hue: 20
        QTest::keyClick(palette, Qt::Key_Down);  // next shade row: 22
        QTest::keyClick(palette, Qt::Key_Left);  // back a hue: 12
        marked = qobject_cast<OvColorDialog*>(dialog)->color().colorIndex();
        QTest::keyClick(palette, Qt::Key_Escape);
    });
    EXPECT_EQ(ovedSetColorDialogTrueColor(color, 0, colorOf(7), 7), 0);
    EXPECT_EQ(marked, 12);
    EXPECT_EQ(color.colorIndex(), 10);
}

TEST_F(ColorDialogTest, EverySwatchIsThereWithItsPaletteColour) {
    OvColorDialog dialog(colorOf(1), false, colorOf(7));
    for (int index = 1; index <= 255; ++index) {
        auto* swatch = dialog.findChild<OvColorSwatch*>(QStringLiteral("color-%1").arg(index));
        ASSERT_NE(swatch, nullptr) << index;
        if (index == 7)
            continue; // drawn half white, half black
        const QImage picture = swatch->grab().toImage();
        const QRgb centre = picture.pixel(picture.width() / 2, picture.height() / 2);
        EXPECT_EQ(centre | 0xff000000u, OvCmColor::rgbOfIndex(index)) << index;
    }
}
