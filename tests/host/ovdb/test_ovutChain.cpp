#include "OvdbTest.h"

namespace {

using Chain = OvdbTest;

// The kinds of the usual codes show in every chain printed below; here the codes of no
// value, and the gaps between ranges and the splice marker, which are not link types.
TEST_F(Chain, CodesOfNoValueAndNoLinkType) {
    using K = OvRbValueKind;
    const std::pair<int, K> cases[] = {{RTNIL, K::None},   {RTT, K::None},
                                       {80, K::Unknown},   {160, K::Unknown},
                                       {5011, K::Unknown}, {RTRESBUF, K::Unknown}};
    for (const auto& [code, kind] : cases)
        EXPECT_EQ(ovutValueKind(code), kind) << code;
}

TEST_F(Chain, BuildListTakesValuesOfEachKindAndCopiesStrings) {
    const ov_name name = {11, 22};
    const double point[3] = {1.5, 2.5, 3.5};
    wchar_t text[] = L"RED_1.5";
    resbuf* chain =
        ovutBuildList(RTLB, RTSTR, text, RTSHORT, 15, 90, 70000, 290, 7, 40, 0.25, RT3DPOINT, point,
                      RTENAME, name, 2, static_cast<const wchar_t*>(nullptr), RTLE, 0);
    text[0] = L'X';
    // A bool is stored as 0 or 1, a null string as an empty one.
    EXPECT_EQ(chainText(chain), "5016 5005:RED_1.5 5003:15 90:70000 290:1 40:0.25 "
                                "5009:1.5,2.5,3.5 5006:11,22 2: 5017");
    ovutRelRb(chain);

    wchar_t* buffer = nullptr;
    EXPECT_EQ(ovutNewString(nullptr, buffer), RTERROR);
    EXPECT_EQ(buffer, nullptr);
}

// A splice at the start, the way handlers extend their results, is checked with them.
TEST_F(Chain, SpliceInTheMiddleAndAtTheEnd) {
    resbuf* inner = ovutBuildList(RTSTR, L"x", RTSTR, L"y", 0);
    resbuf* last = ovutBuildList(RTSHORT, 1, 0);
    resbuf* chain = ovutBuildList(RTLB, RTRESBUF, inner, RTLE, RTRESBUF,
                                  static_cast<resbuf*>(nullptr), RTRESBUF, last, 0);
    EXPECT_EQ(chainText(chain), "5016 5005:x 5005:y 5017 5003:1");
    ASSERT_NE(chain, nullptr);
    EXPECT_EQ(chain->rbnext, inner);
    EXPECT_EQ(chain->rbnext->rbnext->rbnext->rbnext, last);
    ovutRelRb(chain); // frees inner and last with it
    EXPECT_EQ(ovutBuildList(RTRESBUF, static_cast<resbuf*>(nullptr), 0), nullptr);
}

TEST_F(Chain, FailedBuildFreesOnlyWhatTheCallMade) {
    // Strings already copied are freed (the leak checker would say otherwise), and a
    // chain given for splicing stays its caller's, unchanged.
    resbuf* given = ovutBuildList(RTSTR, L"kept", 0);
    EXPECT_EQ(ovutBuildList(RTSTR, L"a", RTRESBUF, given, 1, L"b", 4711, 0), nullptr);
    EXPECT_EQ(chainText(given), "5005:kept");
    ovutRelRb(given);

    const char byte = 0;
    EXPECT_EQ(ovutBuildList(RTSTR, L"a", 310, 40000, &byte, 0), nullptr);
    EXPECT_EQ(ovutBuildList(310, -1, &byte, 0), nullptr);
}

} // namespace
