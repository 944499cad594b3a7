// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/text.h"

#include "tests/testkit/testkit.h"

#include <clocale>
#include <cmath>

using namespace clipheave::platform;

TEST(Text, LeadingWholeNumber) {
    EXPECT_EQ(intValue(u" \t-12abc"), -12);
    EXPECT_EQ(intValue(u"+7.9"), 7);
    EXPECT_EQ(intValue(u"abc"), 0);
    EXPECT_EQ(intValue(u"- 1"), 0);
    EXPECT_EQ(intValue(u"0x10"), 0);
    EXPECT_EQ(intValue(u"2147483647"), 2147483647);
    EXPECT_EQ(intValue(u"2147483648"), 2147483647);
    EXPECT_EQ(intValue(u"-2147483648"), INT32_MIN);
    EXPECT_EQ(intValue(u"-99999999999999999999999"), INT32_MIN);
    EXPECT_EQ(intValue(u"\u0661"), 0); // digits of other scripts do not count
}

TEST(Text, LeadingNumberTakesTheLongestPrefixInAnyLocale) {
    std::setlocale(LC_NUMERIC, "de_DE.UTF-8");
    EXPECT_DOUBLE_EQ(doubleValue(u"1.2.3"), 1.2);
    EXPECT_DOUBLE_EQ(doubleValue(u"2e3.1"), 2000);
    EXPECT_DOUBLE_EQ(doubleValue(u".e1"), 0);
    EXPECT_DOUBLE_EQ(doubleValue(u" +.5x"), 0.5);
    EXPECT_DOUBLE_EQ(doubleValue(u"-5.e-1"), -0.5);
    EXPECT_DOUBLE_EQ(doubleValue(u"7e"), 7);
    EXPECT_DOUBLE_EQ(doubleValue(u"7e+"), 7);
    EXPECT_DOUBLE_EQ(doubleValue(u"1,5"), 1);
    EXPECT_DOUBLE_EQ(doubleValue(u"inf"), 0);
    EXPECT_DOUBLE_EQ(doubleValue(u"nan"), 0);
    EXPECT_DOUBLE_EQ(doubleValue(u"0x1p4"), 0);
    EXPECT_EQ(doubleValue(u"-1e999"), -HUGE_VAL);
    EXPECT_EQ(doubleValue(u"1e-999"), 0);
    EXPECT_DOUBLE_EQ(doubleValue(u""), 0);
    EXPECT_EQ(describeNumber(0.5), u"0.5");
    std::setlocale(LC_NUMERIC, "C");
}

TEST(Text, NumbersAreDescribedInTheShortestForm) {
    EXPECT_EQ(describeNumber(44100), u"44100");
    EXPECT_EQ(describeNumber(44100.5), u"44100.5");
    EXPECT_EQ(describeNumber(-0.0), u"0");
    EXPECT_EQ(describeNumber(0.1), u"0.1");
    EXPECT_EQ(describeNumber(3e12), u"3000000000000");
    EXPECT_EQ(describeNumber(29.97002997002997), u"29.97002997002997");
}

TEST(Text, DigitRunsCompareByValue) {
    EXPECT_EQ(compareNumeric(u"file2", u"file10", false), -1);
    EXPECT_EQ(compareNumeric(u"a01", u"a1", false), 0);
    EXPECT_EQ(compareNumeric(u"a1b", u"a01c", false), -1);
    EXPECT_EQ(compareNumeric(u"99999999999999999999998", u"99999999999999999999999", false), -1);
    EXPECT_EQ(compareNumeric(u"B", u"a", false), -1);
    EXPECT_EQ(compareNumeric(u"B", u"a", true), 1);
    EXPECT_EQ(compareNumeric(u"\u00DCber 3", u"\u00FCber 003", true), 0);
    EXPECT_EQ(compareNumeric(u"a", u"a0", false), -1);
    // By code point, not by code unit: U+FF21 before U+1F3AC.
    EXPECT_EQ(compareNumeric(u"\uFF21", u"\U0001F3AC", false), -1);
}
