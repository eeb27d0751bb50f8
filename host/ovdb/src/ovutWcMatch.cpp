#include "ovdb/ovut.h"

#include <QChar>

#include <utility>

// The host's wildcard language; docs/wildcards.md is the user's reference. The matcher
// walks the pattern in place: no copy, no allocation, and at most one resumption point
// per alternative (the last star), so a call costs at most text length times pattern
// length steps, whatever the pattern.

namespace {

constexpr wchar_t kEscape = L'`';

bool isLetter(wchar_t c) {
    if (c < 0x80)
        return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z');
    return QChar::isLetter(static_cast<char32_t>(c));
}

bool isDigit(wchar_t c) {
    if (c < 0x80)
        return c >= L'0' && c <= L'9';
    return QChar::isDigit(static_cast<char32_t>(c));
}

// The closing bracket of a set opening at `open`, or null when the set is not closed
// before `end`. A ']' right after "[" or "[~" is a member, and a back-quote escapes.
const wchar_t* setEnd(const wchar_t* open, const wchar_t* end) {
    const wchar_t* p = open + 1;
    if (p < end && *p == L'~')
        ++p;
    if (p < end && *p == L']')
        ++p;
    while (p < end && *p != L']')
        p += (*p == kEscape && p + 1 < end) ? 2 : 1;
    return p < end ? p : nullptr;
}

// Where the alternative that starts at `p` ends: at the first comma that is neither
// escaped nor inside a set.
const wchar_t* alternativeEnd(const wchar_t* p, const wchar_t* end) {
    while (p < end && *p != L',') {
        if (*p == kEscape)
            p += p + 1 < end ? 2 : 1;
        else if (const wchar_t* close = *p == L'[' ? setEnd(p, end) : nullptr)
            p = close + 1;
        else
            ++p;
    }
    return p;
}

// Whether `c` is in the set whose members run from `first` to its closing bracket.
bool inSet(wchar_t c, const wchar_t* first, const wchar_t* close) {
    const bool negated = *first == L'~';
    bool found = false;
    for (const wchar_t* p = first + (negated ? 1 : 0); p < close && !found;) {
        wchar_t low = *p++;
        if (low == kEscape && p < close)
            low = *p++;
        wchar_t high = low;
        // A range; a '-' just before the closing bracket is a member.
        if (p + 1 < close && *p == L'-') {
            ++p;
            high = *p++;
            if (high == kEscape && p < close)
                high = *p++;
        }
        if (high < low)
            std::swap(low, high);
        found = c >= low && c <= high;
    }
    return found != negated;
}

// One element of a pattern: a star, or something that matches exactly one character.
struct Element {
    const wchar_t* next; // where the following element starts
    bool star;
};

// Reads the element at `p` and, unless it is a star, tests it against `c`.
Element element(const wchar_t* p, const wchar_t* end, wchar_t c, bool& matches) {
    switch (*p) {
    case L'*':
        return {p + 1, true};
    case L'?':
        matches = true;
        return {p + 1, false};
    case L'#':
        matches = isDigit(c);
        return {p + 1, false};
    case L'@':
        matches = isLetter(c);
        return {p + 1, false};
    case L'.':
        matches = !isLetter(c) && !isDigit(c);
        return {p + 1, false};
    case kEscape:
        if (p + 1 < end) {
            matches = c == p[1];
            return {p + 2, false};
        }
        break; // a trailing back-quote stands for itself
    case L'[':
        if (const wchar_t* close = setEnd(p, end)) {
            matches = inSet(c, p + 1, close);
            return {close + 1, false};
        }
        break; // an unclosed bracket stands for itself
    }
    matches = c == *p;
    return {p + 1, false};
}

bool matchAlternative(const wchar_t* text, const wchar_t* p, const wchar_t* end) {
    const wchar_t* resumePattern = nullptr; // just after the last star
    const wchar_t* resumeText = nullptr;    // where that star's run ends for now
    bool matches = false;
    while (*text) {
        if (p < end) {
            const Element e = element(p, end, *text, matches);
            if (e.star) {
                resumePattern = p = e.next;
                resumeText = text;
                continue;
            }
            if (matches) {
                p = e.next;
                ++text;
                continue;
            }
        }
        if (!resumePattern)
            return false;
        // Let the last star take one more character and try again from there.
        p = resumePattern;
        text = ++resumeText;
    }
    while (p < end && *p == L'*')
        ++p;
    return p == end;
}

} // namespace

int ovutWcMatch(const wchar_t* text, const wchar_t* pattern) {
    if (!text || !pattern)
        return 0;
    const bool negated = *pattern == L'~';
    const wchar_t* p = pattern + (negated ? 1 : 0);
    const wchar_t* end = p;
    while (*end)
        ++end;

    bool matched = false;
    while (!matched) {
        const wchar_t* altEnd = alternativeEnd(p, end);
        matched = matchAlternative(text, p, altEnd);
        if (altEnd == end)
            break;
        p = altEnd + 1;
    }
    return matched != negated ? RTNORM : 0;
}
