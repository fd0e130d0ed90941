#include "diagnostics/text.h"

#include <gtest/gtest.h>

namespace {

TEST(Text, FormattingIsBoundedAndTellsWhatDoesNotFit) {
    char buffer[4];
    EXPECT_EQ(FormatText(buffer, sizeof buffer, "%d", 123), 3);
    EXPECT_STREQ(buffer, "123");
    EXPECT_EQ(FormatText(buffer, sizeof buffer, "%d", 1234), -1);
    EXPECT_EQ(buffer[3], '\0');

    char field[32];
    EXPECT_EQ(FormatText32(field, "%s%llu", ":", 18446744073709551615ULL), 21);
    EXPECT_STREQ(field, ":18446744073709551615");
    char digits[16];
    EXPECT_EQ(FormatText16(digits, "%02X", 0xAu), 2);
    EXPECT_STREQ(digits, "0A");
}

TEST(Text, ScanningCountsTheFieldsAssigned) {
    unsigned number = 7;
    EXPECT_EQ(ScanText(" 480x", "%u", &number), 1);
    EXPECT_EQ(number, 480u);
    EXPECT_EQ(ScanText("none", "%u", &number), 0);
    EXPECT_EQ(ScanText("", "%u", &number), 0) << "the end of the text is no negative count";
    EXPECT_EQ(number, 480u);
}

}  // namespace
