#include "ovdb/OvCmColor.h"
#include "ovdb/OvDbLineWeight.h"
#include "ovdb/resbuf.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

TEST(Color, FromNameAndBack) {
    const struct {
        const wchar_t* name;
        int index;
    } good[] = {{L"1", 1},       {L"255", 255},   {L"0", 0},     {L"256", 256},
                {L"RED", 1},     {L"Magenta", 6}, {L"white", 7}, {L"bylayer", 256},
                {L"BYBLOCK", 0}, {L" 42 ", 42},   {L"007", 7}};
    for (const auto& g : good) {
        OvCmColor color;
        color.setColorIndex(100);
        EXPECT_EQ(ovcmGetColorFromOXIName(color, g.name), RTNORM) << g.name;
        EXPECT_EQ(color.colorIndex(), g.index) << g.name;
        // The name shown for a colour reads back as the same colour.
        OvCmColor again;
        const std::wstring shown = color.colorName().toStdWString();
        EXPECT_EQ(ovcmGetColorFromOXIName(again, shown.c_str()), RTNORM) << shown;
        EXPECT_EQ(again.colorIndex(), g.index) << shown;
    }
    // Whatever the name, a bad one leaves the colour as it was.
    for (const wchar_t* bad : {L"", L"257", L"-1", L"1.5", L"+3", L"orange", L"red2", L"2 5",
                               L"99999999999999999999", static_cast<const wchar_t*>(nullptr)}) {
        OvCmColor color;
        color.setColorIndex(100);
        EXPECT_NE(ovcmGetColorFromOXIName(color, bad), RTNORM);
        EXPECT_EQ(color.colorIndex(), 100);
    }
}

TEST(Color, PaletteFollowsTheHueAndShadeRule) {
    EXPECT_EQ(OvCmColor::rgbOfIndex(1), 0xffff0000u);
    EXPECT_EQ(OvCmColor::rgbOfIndex(10), OvCmColor::rgbOfIndex(1)); // the wheel starts at red
    EXPECT_EQ(OvCmColor::rgbOfIndex(50), OvCmColor::rgbOfIndex(2)); // 60 degrees on: yellow
    EXPECT_EQ(OvCmColor::rgbOfIndex(11), 0xffff7f7fu);              // odd: washed out
    EXPECT_EQ(OvCmColor::rgbOfIndex(20), 0xffff3f00u);              // 15 degrees
    EXPECT_EQ(OvCmColor::rgbOfIndex(18), 0xff4c0000u);              // darkest shade
    EXPECT_EQ(OvCmColor::rgbOfIndex(250), 0xff333333u);             // greys at the end
}

TEST(LineWeight, NearestLegalWeight) {
    using namespace OvDb;
    const std::pair<int, LineWeight>
        cases[] = {{-1, kLnWtByLayer},     {-2, kLnWtByBlock}, {-3, kLnWtByLwDefault},
                   {-4, kLnWtByLwDefault}, {29, kLnWt030},     {27, kLnWt025},
                   {7, kLnWt005}, // a tie between 5 and 9 goes to the thinner
                   {179, kLnWt158},        {180, kLnWt200},    {212, kLnWt211},
                   {2147483647, kLnWt211}};
    for (const auto& [value, nearest] : cases)
        EXPECT_EQ(nearestLineWeight(value), nearest) << value;
}

} // namespace
