#include "ovdb/OvCmColor.h"

#include "ovdb/resbuf.h"

#include <algorithm>
#include <array>

namespace {

// The seven standard colours, index 1 to 7.
constexpr std::array<const char*, 7> kStandardNames = {"red",  "yellow",  "green", "cyan",
                                                       "blue", "magenta", "white"};

QRgb rgb(int red, int green, int blue) {
    return 0xff000000u | (static_cast<QRgb>(red) << 16) | (static_cast<QRgb>(green) << 8) |
           static_cast<QRgb>(blue);
}

// A colour of the hue wheel: `hue` in steps of 15 degrees (0 to 23), `value` its brightest
// channel, `low` its darkest. The channels between move linearly with the hue.
QRgb wheelColor(int hue, int value, int low) {
    const int sector = hue / 4; // 60 degrees each
    const int step = hue % 4;   // quarters of a sector
    const int rising = low + (value - low) * step / 4;
    const int falling = low + (value - low) * (4 - step) / 4;
    switch (sector) {
    case 0:
        return rgb(value, rising, low);
    case 1:
        return rgb(falling, value, low);
    case 2:
        return rgb(low, value, rising);
    case 3:
        return rgb(low, falling, value);
    case 4:
        return rgb(rising, low, value);
    default:
        return rgb(value, low, falling);
    }
}

} // namespace

Orvex::ErrorStatus OvCmColor::setColorIndex(int index) {
    if (index < kByBlock || index > kByLayer)
        return Orvex::eInvalidInput;
    m_index = index;
    return Orvex::eOk;
}

QString OvCmColor::colorName() const {
    if (isByLayer())
        return QStringLiteral("BYLAYER");
    if (isByBlock())
        return QStringLiteral("BYBLOCK");
    if (m_index >= 1 && m_index <= 7)
        return QString::fromLatin1(kStandardNames[m_index - 1]);
    return QString::number(m_index);
}

// The index palette: 1 to 7 the standard colours (7 shows white on the dark drawing area),
// 8 and 9 two greys, 10 to 249 a wheel of 24 hues, and 250 to 255 a ramp of greys.
// On the wheel, the tens give the hue (10 is red, each further ten 15 degrees on), and the
// last digit the shade: even digits are full colours, odd ones the same colour half washed
// out, and each pair of digits is darker than the one before.
QRgb OvCmColor::rgbOfIndex(int index) {
    static constexpr int kHueOfStandard[] = {0, 4, 8, 12, 16, 20}; // red .. magenta
    static constexpr int kShadeValues[] = {255, 204, 153, 127, 76};
    if (index >= 1 && index <= 6)
        return wheelColor(kHueOfStandard[index - 1], 255, 0);
    if (index == 8)
        return rgb(128, 128, 128);
    if (index == 9)
        return rgb(192, 192, 192);
    if (index >= 10 && index <= 249) {
        const int hue = index / 10 - 1;
        const int shade = index % 10;
        const int value = kShadeValues[shade / 2];
        return wheelColor(hue, value, shade % 2 ? value / 2 : 0);
    }
    if (index >= 250 && index <= 255) {
        const int grey = 51 + ((index - 250) * 204 + 2) / 5;
        return rgb(grey, grey, grey);
    }
    return rgb(255, 255, 255);
}

int ovcmGetColorFromOXIName(OvCmColor& color, const wchar_t* name) {
    if (!name)
        return RTERROR;
    const QString text = QString::fromWCharArray(name).trimmed();
    if (text.isEmpty())
        return RTERROR;

    int index = -1;
    if (text.compare(QLatin1String("BYLAYER"), Qt::CaseInsensitive) == 0) {
        index = OvCmColor::kByLayer;
    } else if (text.compare(QLatin1String("BYBLOCK"), Qt::CaseInsensitive) == 0) {
        index = OvCmColor::kByBlock;
    } else if (text.size() <= 3 && std::all_of(text.cbegin(), text.cend(), [](QChar c) {
                   return c >= QLatin1Char('0') && c <= QLatin1Char('9');
               })) {
        index = text.toInt();
    } else {
        for (std::size_t i = 0; i < kStandardNames.size(); ++i) {
            if (text.compare(QLatin1String(kStandardNames[i]), Qt::CaseInsensitive) == 0)
                index = static_cast<int>(i) + 1;
        }
    }
    return color.setColorIndex(index) == Orvex::eOk ? RTNORM : RTERROR;
}
