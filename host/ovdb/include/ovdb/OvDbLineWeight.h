#pragma once

#include <QString>

#include <vector>

namespace OvDb {

// Lineweights in hundredths of a millimetre, and the three special settings.
enum LineWeight : int {
    kLnWtByLayer = -1,
    kLnWtByBlock = -2,
    kLnWtByLwDefault = -3,
    kLnWt000 = 0,
    kLnWt005 = 5,
    kLnWt009 = 9,
    kLnWt013 = 13,
    kLnWt015 = 15,
    kLnWt018 = 18,
    kLnWt020 = 20,
    kLnWt025 = 25,
    kLnWt030 = 30,
    kLnWt035 = 35,
    kLnWt040 = 40,
    kLnWt050 = 50,
    kLnWt053 = 53,
    kLnWt060 = 60,
    kLnWt070 = 70,
    kLnWt080 = 80,
    kLnWt090 = 90,
    kLnWt100 = 100,
    kLnWt106 = 106,
    kLnWt120 = 120,
    kLnWt140 = 140,
    kLnWt158 = 158,
    kLnWt200 = 200,
    kLnWt211 = 211,
};

// The legal weight closest to any integer:
// - -1, -2 and -3 stay as they are; any other negative value becomes -3 (the default),
//   since a negative weight has no width to be near to;
// - 0..211 go to the closest weight of the list, a tie going to the thinner one;
// - above 211, 211.
LineWeight nearestLineWeight(int value);

// True for the three special settings and the weights of the list.
bool isLegalLineWeight(int value);

// Every legal value in ascending order: -3, -2, -1, then 0 to 211.
const std::vector<LineWeight>& legalLineWeights();

// "ByLayer", "ByBlock", "Default", or the width in millimetres with two decimals ("0.25 mm").
// An illegal value gives its nearest weight's text.
QString lineWeightText(LineWeight weight);

} // namespace OvDb
