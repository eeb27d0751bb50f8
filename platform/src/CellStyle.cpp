#include "platform/CellStyle.h"

namespace platform {

namespace {

template <typename T>
void take(std::optional<T>& target, const std::optional<T>& source, CellStyle::Modify mode) {
    switch (mode) {
    case CellStyle::Modify::Override:
        if (source) {
            target = source;
        }
        break;
    case CellStyle::Modify::Copy:
        target = source;
        break;
    case CellStyle::Modify::ApplyNew:
        if (!target && source) {
            target = source;
        }
        break;
    }
}

} // namespace

void CellStyle::apply(const CellStyle& other, Modify mode) {
    take(control, other.control, mode);
    take(readOnly, other.readOnly, mode);
    take(interior, other.interior, mode);
    take(textColor, other.textColor, mode);
    take(font, other.font, mode);
    take(alignment, other.alignment, mode);
    take(choices, other.choices, mode);
    take(tip, other.tip, mode);
    take(wrapText, other.wrapText, mode);
}

CellStyle::Setters CellStyle::setters() const {
    Setters out;
    if (control)
        out.add([](CellStyle& t, const CellStyle& s) { t.control = s.control; });
    if (readOnly)
        out.add([](CellStyle& t, const CellStyle& s) { t.readOnly = s.readOnly; });
    if (interior)
        out.add([](CellStyle& t, const CellStyle& s) { t.interior = s.interior; });
    if (textColor)
        out.add([](CellStyle& t, const CellStyle& s) { t.textColor = s.textColor; });
    if (font)
        out.add([](CellStyle& t, const CellStyle& s) { t.font = s.font; });
    if (alignment)
        out.add([](CellStyle& t, const CellStyle& s) { t.alignment = s.alignment; });
    if (choices)
        out.add([](CellStyle& t, const CellStyle& s) { t.choices = s.choices; });
    if (tip)
        out.add([](CellStyle& t, const CellStyle& s) { t.tip = s.tip; });
    if (wrapText)
        out.add([](CellStyle& t, const CellStyle& s) { t.wrapText = s.wrapText; });
    return out;
}

} // namespace platform
