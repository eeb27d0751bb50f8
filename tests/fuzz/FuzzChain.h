#pragma once

// A value chain built from the fuzzer's bytes: the values a script or another program
// could hand over, lists and dotted pairs included, and groups of drawing data.

#include "FuzzSupport.h"

#include "ovdb/ovut.h"
#include "ovdb/resbuf.h"

#include <string>

namespace fuzzsupport {

// Group codes that wire type records and the current record use, and a few others.
inline constexpr short kGroupCodes[] = {1, 2, 3, 4, 5, 8, 10, 40, 62, 70, 90, 290, 330, 350};

inline resbuf* newLink(short type) {
    return ovutNewRb(type);
}

inline resbuf* textLink(short type, const QString& text) {
    resbuf* link = ovutNewRb(type);
    if (link && ovutNewString(text.toStdWString().c_str(), link->resval.rstring) != RTNORM) {
        ovutRelRb(link);
        return nullptr;
    }
    return link;
}

// One link from the bytes, or null for a kind that the bytes did not allow.
inline resbuf* nextLink(Bytes& bytes, bool groups) {
    const uint8_t kind = bytes.byte();
    if (groups && kind >= 0x80) {
        const short code = kGroupCodes[kind % std::size(kGroupCodes)];
        switch (ovutValueKind(code)) {
        case OvRbValueKind::String:
        case OvRbValueKind::Handle:
            return textLink(code, bytes.text());
        case OvRbValueKind::Int16:
        case OvRbValueKind::Bool: {
            resbuf* link = newLink(code);
            if (link)
                link->resval.rint = bytes.value<short>();
            return link;
        }
        case OvRbValueKind::Int32: {
            resbuf* link = newLink(code);
            if (link)
                link->resval.rlong = bytes.value<int32_t>();
            return link;
        }
        case OvRbValueKind::Real: {
            resbuf* link = newLink(code);
            if (link)
                link->resval.rreal = bytes.value<double>();
            return link;
        }
        case OvRbValueKind::Point: {
            resbuf* link = newLink(code);
            if (link)
                for (double& p : link->resval.rpoint)
                    p = bytes.value<double>();
            return link;
        }
        default:
            return textLink(1, bytes.text());
        }
    }
    switch (kind % 10) {
    case 0:
        return textLink(RTSTR, bytes.text());
    case 1: {
        resbuf* link = newLink(RTSHORT);
        if (link)
            link->resval.rint = bytes.value<short>();
        return link;
    }
    case 2: {
        resbuf* link = newLink(RTLONG);
        if (link)
            link->resval.rlong = bytes.value<int32_t>();
        return link;
    }
    case 3: {
        resbuf* link = newLink(RTREAL);
        if (link)
            link->resval.rreal = bytes.value<double>();
        return link;
    }
    case 4:
        return newLink(RTNIL);
    case 5:
        return newLink(RTT);
    case 6:
        return newLink(RTLB);
    case 7:
        return newLink(RTLE);
    case 8:
        return newLink(RTDOTE);
    default:
        // A long text: the size of what scripts sometimes pass.
        return textLink(RTSTR, QString(bytes.byte() * 64, QChar(u'A' + bytes.byte() % 26)));
    }
}

// Up to `max` links; the caller releases the chain with ovutRelRb.
inline resbuf* chainOf(Bytes& bytes, int max, bool groups) {
    resbuf* head = nullptr;
    resbuf* tail = nullptr;
    for (int i = 0; i < max && !bytes.empty(); ++i) {
        resbuf* link = nextLink(bytes, groups);
        if (!link)
            continue;
        (tail ? tail->rbnext : head) = link;
        tail = link;
    }
    return head;
}

} // namespace fuzzsupport
