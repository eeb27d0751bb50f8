#include "ovdb/ovut.h"

#include <QString>

#include <gtest/gtest.h>

#include <string>

namespace {

class Printf : public ::testing::Test {
protected:
    void SetUp() override {
        ovutSetOutputSink([this](std::string_view text) { m_output += text; });
    }
    void TearDown() override { ovutResetOutputSink(); }

    std::string m_output;
};

TEST_F(Printf, FormatsWideArgumentsToUtf8AndLeavesStrayPercentSigns) {
    EXPECT_EQ(ovutPrintf(L"\n%ls: %d wire types, %.2f mm", L"GRÜN_2.5", 3, 2.5), RTNORM);
    ovutPrintf(L"|100%");
    ovutPrintf(L"|50%!|");
    ovutPrintf(L"|%n|");
    ovutPrintf(L"|LIKE 'W%%'"); // a doubled one is one percent sign
    EXPECT_EQ(m_output, "\nGRÜN_2.5: 3 wire types, 2.50 mm|100%|50%!||%n||LIKE 'W%'");

    // Long text is not cut.
    m_output.clear();
    const std::wstring longText(100000, L'é');
    ovutPrintf(L"<%ls>", longText.c_str());
    EXPECT_EQ(QString::fromStdString(m_output), "<" + QString(100000, u'é') + ">");
}

TEST(PrintfSink, ResetGoesBackToStandardOutput) {
    std::string captured;
    ovutSetOutputSink([&](std::string_view text) { captured += text; });
    ovutResetOutputSink();
    testing::internal::CaptureStdout();
    ovutPrintf(L"to stdout %d", 1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "to stdout 1");
    EXPECT_TRUE(captured.empty());
}

} // namespace
