#include "ovdb/ovut.h"

#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <limits>

// What a type code carries. Group codes follow the usual ranges of drawing data; the
// x-coordinate code of a point and its y and z companions all count as points, since a
// chain holds a whole point in one link:
//
//   -1, -2        Name     entity name, entity name reference
//   -3, -5        None     extended data sentinel, reactor chain marker
//   -4            String   conditional operator of a filter
//   0-4, 6-9      String   (5 is a Handle)
//   10-39         Point
//   40-59         Real
//   60-79         Int16
//   90-99         Int32
//   100-102       String   (105 is a Handle)
//   110-139       Point
//   140-149       Real
//   170-179       Int16
//   210-239       Point    (extrusion direction)
//   270-289       Int16
//   290-299       Bool
//   300-309       String
//   310-319       Binary
//   320-369       Handle
//   370-389       Int16
//   390-399       Handle
//   400-409       Int16
//   410-419       String
//   420-429       Int32
//   430-439       String
//   440-459       Int32
//   460-469       Real
//   470-479       String
//   480-481       Handle
//   999-1003      String   (comment, extended data strings, application and layer names)
//   1004          Binary
//   1005          Handle
//   1006-1009     String
//   1010-1039     Point
//   1040-1059     Real
//   1060-1070     Int16
//   1071          Int32
//   5000-5021     the LISP types of resbuf.h
//
// Everything else, 160-169 (64-bit integers, which a link cannot hold) and RTRESBUF
// (which never stands in a chain) included, is Unknown.
OvRbValueKind ovutValueKind(int code) {
    using K = OvRbValueKind;
    struct Range {
        int first;
        int last;
        K kind;
    };
    static constexpr Range kRanges[] = {
        {-5, -5, K::None},       {-4, -4, K::String},     {-3, -3, K::None},
        {-2, -1, K::Name},       {0, 4, K::String},       {5, 5, K::Handle},
        {6, 9, K::String},       {10, 39, K::Point},      {40, 59, K::Real},
        {60, 79, K::Int16},      {90, 99, K::Int32},      {100, 102, K::String},
        {105, 105, K::Handle},   {110, 139, K::Point},    {140, 149, K::Real},
        {170, 179, K::Int16},    {210, 239, K::Point},    {270, 289, K::Int16},
        {290, 299, K::Bool},     {300, 309, K::String},   {310, 319, K::Binary},
        {320, 369, K::Handle},   {370, 389, K::Int16},    {390, 399, K::Handle},
        {400, 409, K::Int16},    {410, 419, K::String},   {420, 429, K::Int32},
        {430, 439, K::String},   {440, 459, K::Int32},    {460, 469, K::Real},
        {470, 479, K::String},   {480, 481, K::Handle},   {999, 1003, K::String},
        {1004, 1004, K::Binary}, {1005, 1005, K::Handle}, {1006, 1009, K::String},
        {1010, 1039, K::Point},  {1040, 1059, K::Real},   {1060, 1070, K::Int16},
        {1071, 1071, K::Int32},
    };
    if (code >= RTNONE) {
        switch (code) {
        case RTNONE:
        case RTVOID:
        case RTLB:
        case RTLE:
        case RTDOTE:
        case RTNIL:
        case RTT:
            return K::None;
        case RTREAL:
        case RTANG:
        case RTORINT:
            return K::Real;
        case RTPOINT:
        case RT3DPOINT:
            return K::Point;
        case RTSHORT:
            return K::Int16;
        case RTLONG:
            return K::Int32;
        case RTSTR:
        case RTDXF0:
            return K::String;
        case RTENAME:
        case RTPICKS:
            return K::Name;
        default:
            return K::Unknown;
        }
    }
    for (const Range& r : kRanges) {
        if (code < r.first)
            break;
        if (code <= r.last)
            return r.kind;
    }
    return K::Unknown;
}

namespace {

// Everything a chain owns comes from malloc, so that ovutDelBuffer and ovutRelRb can free
// a string whichever of them ends up holding it.
wchar_t* copyText(const wchar_t* text) {
    const std::size_t length = text ? std::wcslen(text) : 0;
    auto* copy = static_cast<wchar_t*>(std::malloc((length + 1) * sizeof(wchar_t)));
    if (!copy)
        return nullptr;
    if (length)
        std::wmemcpy(copy, text, length);
    copy[length] = L'\0';
    return copy;
}

bool ownsText(OvRbValueKind kind) {
    return kind == OvRbValueKind::String || kind == OvRbValueKind::Handle;
}

void releaseValue(resbuf* link) {
    const OvRbValueKind kind = ovutValueKind(link->restype);
    if (ownsText(kind))
        std::free(link->resval.rstring);
    else if (kind == OvRbValueKind::Binary)
        std::free(link->resval.rbinary.buf);
}

resbuf* newLink(int code) {
    if (code < std::numeric_limits<short>::min() || code > std::numeric_limits<short>::max())
        return nullptr;
    auto* link = static_cast<resbuf*>(std::calloc(1, sizeof(resbuf)));
    if (link)
        link->restype = static_cast<short>(code);
    return link;
}

// Takes the value of one (code, value) pair off the argument list. With a link, the value
// is stored in it (strings and binary data copied); without, it is only skipped. False when
// a copy cannot be made.
bool takeValue(va_list* args, int code, OvRbValueKind kind, resbuf* link) {
    switch (kind) {
    case OvRbValueKind::None:
    case OvRbValueKind::Unknown:
        return true;
    case OvRbValueKind::String:
    case OvRbValueKind::Handle: {
        const wchar_t* text = va_arg(*args, const wchar_t*);
        if (!link)
            return true;
        link->resval.rstring = copyText(text);
        return link->resval.rstring != nullptr;
    }
    case OvRbValueKind::Int16:
    case OvRbValueKind::Bool: {
        const int value = va_arg(*args, int);
        if (link)
            link->resval.rint =
                static_cast<short>(kind == OvRbValueKind::Bool ? value != 0 : value);
        return true;
    }
    case OvRbValueKind::Int32: {
        const int value = va_arg(*args, int);
        if (link)
            link->resval.rlong = value;
        return true;
    }
    case OvRbValueKind::Real: {
        const double value = va_arg(*args, double);
        if (link)
            link->resval.rreal = value;
        return true;
    }
    case OvRbValueKind::Point: {
        const double* point = va_arg(*args, const double*);
        if (link && point)
            std::memcpy(link->resval.rpoint, point, (code == RTPOINT ? 2 : 3) * sizeof(double));
        return true;
    }
    case OvRbValueKind::Name: {
        const std::int64_t* name = va_arg(*args, const std::int64_t*);
        if (link && name) {
            link->resval.rlname[0] = name[0];
            link->resval.rlname[1] = name[1];
        }
        return true;
    }
    case OvRbValueKind::Binary: {
        const int length = va_arg(*args, int);
        const char* data = va_arg(*args, const char*);
        if (!link)
            return true;
        if (length < 0 || length > std::numeric_limits<short>::max() || (length && !data))
            return false;
        if (length == 0)
            return true;
        link->resval.rbinary.buf = static_cast<char*>(std::malloc(length));
        if (!link->resval.rbinary.buf)
            return false;
        std::memcpy(link->resval.rbinary.buf, data, length);
        link->resval.rbinary.clen = static_cast<short>(length);
        return true;
    }
    }
    return true;
}

resbuf* tailOf(resbuf* chain) {
    while (chain->rbnext)
        chain = chain->rbnext;
    return chain;
}

} // namespace

// The value after a code, by the kind of the code: String and Handle a const wchar_t*
// (null gives an empty string); Int16, Bool and Int32 an int; Real a double; Point a
// const double* to three coordinates (two for RTPOINT); Name a const std::int64_t* to two
// words; Binary an int length (0 to 32767) and then a const char* to the bytes; None nothing.
// A chain given with RTRESBUF must not be given twice nor be part of another argument.
//
// Two passes over the arguments. The first makes the new links on their own, so that a
// failure frees only what this call made and leaves every chain given with RTRESBUF to
// its caller. The second, which cannot fail, threads the new links and the given chains
// together in argument order.
resbuf* ovutBuildList(int code, ...) {
    va_list args;
    va_start(args, code);
    va_list again;
    va_copy(again, args);

    resbuf* made = nullptr;
    resbuf* madeTail = nullptr;
    bool failed = false;
    for (int c = code; c != 0; c = va_arg(args, int)) {
        if (c == RTRESBUF) {
            (void)va_arg(args, resbuf*);
            continue;
        }
        const OvRbValueKind kind = ovutValueKind(c);
        resbuf* link = kind == OvRbValueKind::Unknown ? nullptr : newLink(c);
        if (!link) {
            failed = true;
            break;
        }
        const bool stored = takeValue(&args, c, kind, link);
        if (madeTail)
            madeTail->rbnext = link;
        else
            made = link;
        madeTail = link;
        if (!stored) {
            failed = true;
            break;
        }
    }
    va_end(args);
    if (failed) {
        va_end(again);
        ovutRelRb(made);
        return nullptr;
    }

    resbuf* head = nullptr;
    resbuf* tail = nullptr;
    auto append = [&](resbuf* chain) {
        if (tail)
            tail->rbnext = chain;
        else
            head = chain;
        tail = tailOf(chain);
    };
    for (int c = code; c != 0; c = va_arg(again, int)) {
        if (c == RTRESBUF) {
            if (resbuf* chain = va_arg(again, resbuf*))
                append(chain);
            continue;
        }
        takeValue(&again, c, ovutValueKind(c), nullptr);
        resbuf* link = made;
        made = made->rbnext;
        link->rbnext = nullptr;
        append(link);
    }
    va_end(again);
    return head;
}

int ovutRelRb(resbuf* chain) {
    while (chain) {
        resbuf* next = chain->rbnext;
        releaseValue(chain);
        std::free(chain);
        chain = next;
    }
    return RTNORM;
}

resbuf* ovutNewRb(int code) {
    return newLink(code);
}

resbuf* ovutCopyChain(const resbuf* chain) {
    resbuf* head = nullptr;
    resbuf* tail = nullptr;
    for (const resbuf* from = chain; from; from = from->rbnext) {
        resbuf* link = newLink(from->restype);
        if (!link) {
            ovutRelRb(head);
            return nullptr;
        }
        link->resval = from->resval;
        const OvRbValueKind kind = ovutValueKind(from->restype);
        bool copied = true;
        if (ownsText(kind) && from->resval.rstring) {
            link->resval.rstring = copyText(from->resval.rstring);
            copied = link->resval.rstring != nullptr;
        } else if (kind == OvRbValueKind::Binary) {
            link->resval.rbinary.buf = nullptr;
            const short length = from->resval.rbinary.clen;
            if (length > 0 && from->resval.rbinary.buf) {
                link->resval.rbinary.buf = static_cast<char*>(std::malloc(length));
                copied = link->resval.rbinary.buf != nullptr;
                if (copied)
                    std::memcpy(link->resval.rbinary.buf, from->resval.rbinary.buf, length);
            } else {
                link->resval.rbinary.clen = 0;
            }
        }
        if (!copied) {
            // The link must not free what it shares with the original.
            std::memset(&link->resval, 0, sizeof link->resval);
            std::free(link);
            ovutRelRb(head);
            return nullptr;
        }
        if (tail)
            tail->rbnext = link;
        else
            head = link;
        tail = link;
    }
    return head;
}

int ovutNewString(const wchar_t* text, wchar_t*& target) {
    target = text ? copyText(text) : nullptr;
    return target ? RTNORM : RTERROR;
}

void ovutDelBuffer(void* buffer) {
    std::free(buffer);
}
