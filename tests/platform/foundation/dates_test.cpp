// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/dates.h"
#include "platform/foundation/utc.h"

#include "tests/testkit/testkit.h"

#include <QTimeZone>

using namespace clipheave::platform;

namespace {

QString shownInUtc(const char16_t* text, DatePattern pattern = DatePattern::Colon) {
    const auto date = parseDate(QStringView(text), pattern);
    return date ? dateDescription(*date) : u"refused"_s;
}

const QString kRefused = u"refused"_s;

} // namespace

TEST(Dates, ReadingIsStrictButForTheListedLiberties) {
    const testkit::ZoneGuard zone("UTC");
    const QString expected = u"2021-03-04 05:06:07 +0000"_s;
    for (const char16_t* text : {u"2021:03:04 05:06:07", u"  2021:03:04   05:06:07\t", // blanks
                                 u"2021:3:04 5:06:07", u"02021:003:04 005:06:07"})
        EXPECT_EQ(shownInUtc(text), expected) << QStringView(text).toString();
    for (const char16_t* text :
         {u"2021:03:4 05:06:07", u"2021:03:04 05:6:07", u"2021:03:04 05:06:7",
          u"2021:13:04 05:06:07", u"2021:00:04 05:06:07", u"2021:02:30 05:06:07",
          u"2021:03:04 24:06:07", u"2021:03:04 05:60:07", u"2021:03:04 05:06:60",
          u"2021:03:04T05:06:07", u"2021:03:04 05:06", u"2021-03-04 05:06:07",
          u"2021:03:04 05:06:07.5", u"2021:03:04 05:06:07 +0000", u"-2021:03:04 05:06:07",
          u"2021: 03:04 05:06:07", u"\u0662021:03:04 05:06:07",
          u"99999999999999999999:03:04 05:06:07", u""})
        EXPECT_EQ(shownInUtc(text), kRefused) << QStringView(text).toString();
    EXPECT_EQ(shownInUtc(u"2021-3-04 05:06:07", DatePattern::Dash), expected);
    EXPECT_EQ(shownInUtc(u"2021:03:04 05:06:07", DatePattern::Dash), kRefused);
    EXPECT_EQ(shownInUtc(u"15:03:04 05:06:07"), u"0015-03-04 05:06:07 +0000");
    EXPECT_TRUE(parseDateText(u"2021-03-04 05:06:07"));
    EXPECT_TRUE(parseDateText(u"2021:03:04 05:06:07"));
    EXPECT_FALSE(parseDateText(u"2021-03:04 05:06:07"));
}

TEST(Dates, SkippedClockTimesAreRefusedAndRepeatedOnesAreTheLater) {
    const testkit::ZoneGuard zone("Europe/Berlin");
    EXPECT_EQ(shownInUtc(u"2021:03:28 02:30:00"), kRefused);
    EXPECT_EQ(shownInUtc(u"2021:03:28 01:59:59"), u"2021-03-28 00:59:59 +0000");
    EXPECT_EQ(shownInUtc(u"2021:03:28 03:00:00"), u"2021-03-28 01:00:00 +0000");
    for (const char16_t* before : {u"2021:07:01 12:00:00", u"2021:12:01 12:00:00"}) {
        EXPECT_NE(shownInUtc(before), kRefused); // the system's result depends on the last one
        EXPECT_EQ(shownInUtc(u"2021:10:31 02:30:00"), u"2021-10-31 01:30:00 +0000");
        EXPECT_EQ(shownInUtc(u"2021:10:31 01:30:00"), u"2021-10-30 23:30:00 +0000");
        EXPECT_EQ(shownInUtc(u"2021:10:31 03:30:00"), u"2021-10-31 02:30:00 +0000");
    }
}

TEST(Dates, FormatsInLocalTimeAndReadsBack) {
    const testkit::ZoneGuard zone("Asia/Kathmandu"); // UTC+5:45
    const QDateTime date(QDate(2021, 3, 4), QTime(23, 30), kUtc);
    EXPECT_EQ(formatDate(date, DatePattern::Colon), u"2021:03:05 05:15:00");
    EXPECT_EQ(formatDate(date, DatePattern::Dash), u"2021-03-05 05:15:00");
    EXPECT_EQ(dateDescription(date), u"2021-03-04 23:30:00 +0000");
    EXPECT_EQ(formatDate({}, DatePattern::Colon), QString());
    EXPECT_EQ(dateDescription({}), QString());
    // Before 1970 the part of a second counts downwards.
    EXPECT_EQ(dateDescription(QDateTime::fromMSecsSinceEpoch(-500)), u"1969-12-31 23:59:59 +0000");
    for (const qint64 second : {-2'000'000'000LL, 0LL, 1'616'900'000LL, 4'102'444'800LL}) {
        const QDateTime moment = QDateTime::fromSecsSinceEpoch(second);
        const QString text = formatDate(moment, DatePattern::Colon);
        EXPECT_EQ(text, moment.toString(u"yyyy:MM:dd HH:mm:ss"_s));
        EXPECT_EQ(parseDateText(text), moment);
    }
}
