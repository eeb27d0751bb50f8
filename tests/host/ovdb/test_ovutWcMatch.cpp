#include "ovdb/ovut.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(WcMatch, Patterns) {
    const struct {
        const wchar_t* text;
        const wchar_t* pattern;
        bool matches;
    } cases[] = {
        // Wildcard characters.
        {L"WIR", L"WIR*", true},
        {L"ABCBCD", L"*BCD", true}, // the star gives back what it took
        {L"WIREX", L"WIR*E", false},
        {L"W12", L"W##", true},
        {L"1AB", L"#@@", true},
        {L"1A_", L"#@@", false},
        {L"RED_2.5", L"RED.#.#", true},
        {L"A1B", L"A.B", false},
        {L"wire", L"WIR*", false}, // case-sensitive
        // A non-ASCII text counts characters.
        {L"GRÜN", L"GR?N", true},
        {L"ДРОТ_1", L"@@@@.#", true},
        {L"W°", L"W.", true},
        // Sets.
        {L"B1", L"[ABC]#", true},
        {L"m", L"[A-Z]", false},
        {L"M", L"[Z-A]", true},
        {L"-", L"[A-]", true},  // a dash at the end is a member
        {L"]", L"[]A]", true},  // so is a bracket at the start
        {L",", L"[,;]", true},  // a comma inside a set does not separate
        {L"X", L"[*?]", false}, // nor are wildcards special there
        {L"]", L"[`]]", true},
        {L"D", L"[~ABC]", true},
        {L"A", L"[~ABC]", false},
        {L"", L"[~ABC]", false},
        {L"~", L"[A~]", true},
        // The back-quote takes the next character literally.
        {L"W21", L"W`#1", false}, // an escaped # is no digit wildcard
        {L"A,B", L"A`,B", true},
        {L"A", L"A`,B", false},
        {L"~X", L"`~X", true},
        // Negation and alternatives.
        {L"WIRE_1", L"WIR*,RED*,BLU*,GNYE_2.5", true},
        {L"GNYE_2-5", L"WIR*,RED*,BLU*,GNYE_2.5", true},
        {L"GNYE_2.50", L"WIR*,RED*,BLU*,GNYE_2.5", false},
        {L"RED_1", L"~WIR*,RED*", false},
        {L"BLU", L"~WIR*,RED*", true},
        {L"X", L"~", true},
        {L"", L"~", false},
        {L"~B", L"A,~B", true}, // a later ~ is plain
        // Malformed patterns have a fixed meaning. An unclosed bracket stands for itself
        // and does not swallow a comma.
        {L"[ABC", L"[A*", true},
        {L"A", L"[A", false},
        {L"[]", L"[]", true},
        {L"B", L"[A,B", true},
        // A trailing back-quote stands for itself.
        {L"A`", L"A`", true},
        {L"A", L"A`", false},
        // An empty alternative matches only the empty text.
        {L"", L"", true},
        {L"", L"A,", true},
        {L"B", L"A,,B", true},
        {L"X", L",,,", false},
        // Null never matches, even negated.
        {L"A", nullptr, false},
        {nullptr, L"~A", false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(ovutWcMatch(c.text, c.pattern), c.matches ? RTNORM : 0)
            << "text \"" << (c.text ? c.text : L"<null>") << "\" pattern \""
            << (c.pattern ? c.pattern : L"<null>") << '"';
    }
}

TEST(WcMatch, ManyStarsStayLinear) {
    // A backtracking matcher takes exponential time here.
    std::wstring text(5000, L'A');
    std::wstring pattern;
    for (int i = 0; i < 40; ++i)
        pattern += L"*A";
    pattern += L"*B";
    EXPECT_EQ(ovutWcMatch(text.c_str(), pattern.c_str()), 0);
    text += L'B';
    EXPECT_EQ(ovutWcMatch(text.c_str(), pattern.c_str()), RTNORM);
}

} // namespace
