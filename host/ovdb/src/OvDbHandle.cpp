#include "ovdb/OvDbHandle.h"

QString OvDbHandle::toString() const {
    return QString::number(m_value, 16).toUpper();
}

OvDbHandle OvDbHandle::fromString(QStringView text, bool* ok) {
    bool good = !text.isEmpty() && text.size() <= 16;
    std::uint64_t value = 0;
    for (qsizetype i = 0; good && i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        int digit = -1;
        if (c >= u'0' && c <= u'9')
            digit = c - u'0';
        else if (c >= u'a' && c <= u'f')
            digit = c - u'a' + 10;
        else if (c >= u'A' && c <= u'F')
            digit = c - u'A' + 10;
        if (digit < 0)
            good = false;
        else
            value = (value << 4) | static_cast<std::uint64_t>(digit);
    }
    if (ok)
        *ok = good;
    return good ? OvDbHandle(value) : OvDbHandle();
}
