#pragma once

#include "ovdb/OvErrorStatus.h"

#include <QString>
#include <QtGui/qrgb.h>

// An index colour of the drawing: 0 is BYBLOCK, 256 is BYLAYER, 1 to 255 are the
// palette colours. A default colour is BYLAYER, the colour a new object starts with.
class OvCmColor {
public:
    static constexpr int kByBlock = 0;
    static constexpr int kByLayer = 256;

    OvCmColor() = default;
    OvCmColor(const OvCmColor&) = default;
    OvCmColor& operator=(const OvCmColor&) = default;

    bool operator==(const OvCmColor& other) const { return m_index == other.m_index; }
    bool operator!=(const OvCmColor& other) const { return m_index != other.m_index; }

    int colorIndex() const { return m_index; }
    // eInvalidInput for a value outside 0..256; the colour is then unchanged.
    Orvex::ErrorStatus setColorIndex(int index);

    bool isByLayer() const { return m_index == kByLayer; }
    bool isByBlock() const { return m_index == kByBlock; }

    // "red" to "white" for 1 to 7, "BYLAYER", "BYBLOCK", else the index as a number.
    QString colorName() const;

    // Screen colour of an index colour on the desktop's dark background. BYBLOCK and
    // BYLAYER, which have no colour of their own, and indexes out of range give white.
    static QRgb rgbOfIndex(int index);

private:
    int m_index = kByLayer;
};

// Fills a colour from its text: an index "0" to "256", one of the seven standard colour
// names in any case, "BYLAYER" or "BYBLOCK" (surrounding blanks ignored). RTNORM on success;
// otherwise RTERROR and the colour is left as it was.
int ovcmGetColorFromOXIName(OvCmColor& color, const wchar_t* name);
