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

} // namespace platform
