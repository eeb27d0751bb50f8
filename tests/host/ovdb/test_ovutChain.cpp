#include "ovdb/ovut.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using Codes = std::vector<short>;

Codes codesOf(const resbuf* chain) {
    Codes codes;
    for (; chain; chain = chain->rbnext)
        codes.push_back(chain->restype);
    return codes;
}

std::wstring textOf(const resbuf* link) {
    return link && link->resval.rstring ? link->resval.rstring : L"<null>";
}

TEST(ValueKind, CodesTheBridgeAndXrecordsRelyOn) {
    for (int code : {1, 4, 1000, int(RTSTR)})
        EXPECT_EQ(ovutValueKind(code), OvRbValueKind::String) << code;
    EXPECT_EQ(ovutValueKind(90), OvRbValueKind::Int32);
    EXPECT_EQ(ovutValueKind(290), OvRbValueKind::Bool);
    EXPECT_EQ(ovutValueKind(RTSHORT), OvRbValueKind::Int16);
    EXPECT_EQ(ovutValueKind(RTENAME), OvRbValueKind::Name);
    for (int code : {int(RTLB), int(RTLE), int(RTNIL), int(RTT)})
        EXPECT_EQ(ovutValueKind(code), OvRbValueKind::None) << code;
    // Gaps between ranges and the splice marker are not link types.
    for (int code : {80, 160, 5011, int(RTRESBUF)})
        EXPECT_EQ(ovutValueKind(code), OvRbValueKind::Unknown) << code;
}

TEST(BuildList, ValuesOfEachKindWithStringsCopied) {
    const ov_name name = {11, 22};
    const double point[3] = {1.5, 2.5, 3.5};
    wchar_t text[] = L"RED_1.5";
    resbuf* chain =
        ovutBuildList(RTLB, RTSTR, text, RTSHORT, 15, 90, 70000, 290, 7, 40, 0.25, RT3DPOINT, point,
                      RTENAME, name, 2, static_cast<const wchar_t*>(nullptr), RTLE, 0);
    ASSERT_NE(chain, nullptr);
    text[0] = L'X';
    EXPECT_EQ(codesOf(chain),
              (Codes{RTLB, RTSTR, RTSHORT, 90, 290, 40, RT3DPOINT, RTENAME, 2, RTLE}));
    const resbuf* p = chain->rbnext;
    EXPECT_EQ(textOf(p), L"RED_1.5");
    EXPECT_EQ((p = p->rbnext)->resval.rint, 15);
    EXPECT_EQ((p = p->rbnext)->resval.rlong, 70000);
    EXPECT_EQ((p = p->rbnext)->resval.rint, 1); // a bool is stored as 0 or 1
    EXPECT_DOUBLE_EQ((p = p->rbnext)->resval.rreal, 0.25);
    EXPECT_DOUBLE_EQ((p = p->rbnext)->resval.rpoint[2], 3.5);
    EXPECT_EQ((p = p->rbnext)->resval.rlname[1], 22);
    EXPECT_EQ(textOf(p->rbnext), L""); // a null string becomes empty
    ovutRelRb(chain);
}

TEST(BuildList, SpliceAtStartExtendsTheGivenChain) {
    resbuf* chain = ovutBuildList(RTSTR, L"A", RTSTR, L"B", 0);
    resbuf* const head = chain;
    chain = ovutBuildList(RTRESBUF, chain, RTSTR, L"C", 0);
    EXPECT_EQ(chain, head);
    EXPECT_EQ(codesOf(chain), (Codes{RTSTR, RTSTR, RTSTR}));
    EXPECT_EQ(textOf(chain->rbnext->rbnext), L"C");
    ovutRelRb(chain);
}

TEST(BuildList, SpliceInTheMiddleAndAtTheEnd) {
    resbuf* inner = ovutBuildList(RTSTR, L"x", RTSTR, L"y", 0);
    resbuf* last = ovutBuildList(RTSHORT, 1, 0);
    resbuf* chain = ovutBuildList(RTLB, RTRESBUF, inner, RTLE, RTRESBUF,
                                  static_cast<resbuf*>(nullptr), RTRESBUF, last, 0);
    EXPECT_EQ(codesOf(chain), (Codes{RTLB, RTSTR, RTSTR, RTLE, RTSHORT}));
    ASSERT_NE(chain, nullptr);
    EXPECT_EQ(chain->rbnext, inner);
    EXPECT_EQ(chain->rbnext->rbnext->rbnext->rbnext, last);
    ovutRelRb(chain); // frees inner and last with it
    EXPECT_EQ(ovutBuildList(RTRESBUF, static_cast<resbuf*>(nullptr), 0), nullptr);
}

TEST(BuildList, FailureFreesOnlyWhatTheCallMade) {
    // Strings already copied are freed (the leak checker would say otherwise), and a
    // chain given for splicing stays its caller's, unchanged.
    resbuf* given = ovutBuildList(RTSTR, L"kept", 0);
    EXPECT_EQ(ovutBuildList(RTSTR, L"a", RTRESBUF, given, 1, L"b", 4711, 0), nullptr);
    ASSERT_NE(given, nullptr);
    EXPECT_EQ(given->rbnext, nullptr);
    EXPECT_EQ(textOf(given), L"kept");
    ovutRelRb(given);

    const char byte = 0;
    EXPECT_EQ(ovutBuildList(RTSTR, L"a", 310, 40000, &byte, 0), nullptr);
    EXPECT_EQ(ovutBuildList(310, -1, &byte, 0), nullptr);
}

TEST(Chain, CopyIsDeep) {
    const char data[] = {1, 0, 2};
    resbuf* chain = ovutBuildList(1, L"WIRE", 310, 3, data, RTNIL, 0);
    resbuf* copy = ovutCopyChain(chain);
    ovutRelRb(chain);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(codesOf(copy), (Codes{1, 310, RTNIL}));
    EXPECT_EQ(textOf(copy), L"WIRE");
    ASSERT_EQ(copy->rbnext->resval.rbinary.clen, 3);
    EXPECT_EQ(copy->rbnext->resval.rbinary.buf[2], 2);
    ovutRelRb(copy);
    EXPECT_EQ(ovutCopyChain(nullptr), nullptr);
    EXPECT_EQ(ovutRelRb(nullptr), RTNORM);
}

TEST(Chain, NewStringsCanBeHandedToAChain) {
    resbuf* link = ovutNewRb(RTSTR);
    ASSERT_NE(link, nullptr);
    EXPECT_EQ(link->resval.rstring, nullptr);
    EXPECT_EQ(ovutNewString(L"layer", link->resval.rstring), RTNORM);
    EXPECT_EQ(textOf(link), L"layer");
    ovutRelRb(link); // frees the string with the link

    wchar_t* buffer = nullptr;
    EXPECT_EQ(ovutNewString(nullptr, buffer), RTERROR);
    EXPECT_EQ(buffer, nullptr);
}

} // namespace
