#include "ovdb/OvDbLineWeight.h"

#include <cstdlib>

namespace OvDb {

namespace {

// The widths in ascending order; legalLineWeights puts the special settings before them.
constexpr LineWeight kWidths[] = {
    kLnWt000, kLnWt005, kLnWt009, kLnWt013, kLnWt015, kLnWt018, kLnWt020, kLnWt025,
    kLnWt030, kLnWt035, kLnWt040, kLnWt050, kLnWt053, kLnWt060, kLnWt070, kLnWt080,
    kLnWt090, kLnWt100, kLnWt106, kLnWt120, kLnWt140, kLnWt158, kLnWt200, kLnWt211,
};

} // namespace

LineWeight nearestLineWeight(int value) {
    if (value == kLnWtByLayer || value == kLnWtByBlock || value == kLnWtByLwDefault)
        return static_cast<LineWeight>(value);
    if (value < 0)
        return kLnWtByLwDefault;
    LineWeight best = kWidths[0];
    for (LineWeight width : kWidths) {
        // Strictly closer only, so that a tie keeps the thinner weight found first.
        if (std::abs(width - value) < std::abs(best - value))
            best = width;
    }
    return best;
}

bool isLegalLineWeight(int value) {
    return value >= kLnWtByLwDefault && nearestLineWeight(value) == value;
}

const std::vector<LineWeight>& legalLineWeights() {
    static const std::vector<LineWeight> weights = [] {
        std::vector<LineWeight> all{kLnWtByLwDefault, kLnWtByBlock, kLnWtByLayer};
        all.insert(all.end(), std::begin(kWidths), std::end(kWidths));
        return all;
    }();
    return weights;
}

QString lineWeightText(LineWeight weight) {
    const LineWeight legal = nearestLineWeight(weight);
    switch (legal) {
    case kLnWtByLayer:
        return QStringLiteral("ByLayer");
    case kLnWtByBlock:
        return QStringLiteral("ByBlock");
    case kLnWtByLwDefault:
        return QStringLiteral("Default");
    default:
        return QStringLiteral("%1 mm").arg(static_cast<int>(legal) / 100.0, 0, 'f', 2);
    }
}

} // namespace OvDb
