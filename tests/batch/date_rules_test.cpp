// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/date_arithmetic.h"
#include "batch/date_from_name.h"
#include "platform/foundation/date_detector.h"
#include "platform/foundation/dates.h"
#include "tests/testkit/testkit.h"

#include <limits>

namespace {

using namespace clipheave;
using batch::DateAmounts;

QString shifted(QString (*shift)(const QDateTime&, const DateAmounts&), const char* date,
                const DateAmounts& amounts) {
    return shift(platform::parseDateText(QString::fromLatin1(date)).value_or(QDateTime()), amounts);
}
QString added(const char* date, const DateAmounts& amounts) {
    return shifted(&batch::AddTimeIntwithDate, date, amounts);
}
QString taken(const char* date, const DateAmounts& amounts) {
    return shifted(&batch::SubTimeIntwithDate, date, amounts);
}

TEST(DateArithmetic, CarriesEachFieldOnceAtItsThreshold) {
    EXPECT_EQ(added("2015:12:05 10:00:00", {}), u"2016:00:05 10:00:00");
    EXPECT_EQ(added("2015:01:31 10:00:00", {}), u"2015:02:00 10:00:00");
    EXPECT_EQ(added("2015:06:01 10:00:45", {.seconds = 30}), u"2015:06:01 10:01:15");
    EXPECT_EQ(added("2015:06:01 10:00:45", {.seconds = 150}), u"2015:06:01 10:01:135");
    EXPECT_EQ(added("2015-06-30 23:59:59", {.seconds = 1}), u"2015:07:00 00:00:00");
    EXPECT_EQ(added("2015:06:30 23:59:59", {.hours = 1}), u"2015:07:00 00:59:59");
    EXPECT_EQ(added("0999:06:01 10:00:00", {.years = 2, .days = -3}), u"1001:06:0-2 10:00:00");
    constexpr auto kMost = std::numeric_limits<std::int32_t>::max();
    EXPECT_EQ(added("2015:06:01 10:00:00", {.years = kMost}), u"2147485662:06:01 10:00:00");
}

TEST(DateArithmetic, BorrowsFromEqualFieldsToo) {
    EXPECT_EQ(taken("2015:06:01 12:30:00", {.hours = 1}), u"2015:06:01 11:29:60");
    EXPECT_EQ(taken("2015:06:01 00:00:00", {}), u"2015:05:31 23:59:60")
        << "nothing less is a second of 60, and what follows from it";
    EXPECT_EQ(taken("2015:01:02 10:10:10", {.days = 2}), u"2014:12:31 10:10:10");
    constexpr auto kLeast = std::numeric_limits<std::int32_t>::min();
    EXPECT_EQ(taken("2015:06:02 10:10:10", {.seconds = kLeast}), u"2015:06:02 10:10:2147483658");
}

TEST(DateArithmetic, KnowsFormsAndCalendarDates) {
    for (const char* text : {"2015:06:01 08:00:00", "2015-06-01 08:00:00", " 2015:6:01  8:00:00 "})
        EXPECT_TRUE(batch::CheckDateFormatWithDateString(QString::fromLatin1(text))) << text;
    for (const char* text : {"2015:06-01 08:00:00", "2015/06/01 08:00:00", "2015:13:01 08:00:00",
                             "2015:02:29 08:00:00", "2015:06:01", "2015:06:01T08:00:00", ""})
        EXPECT_FALSE(batch::CheckDateFormatWithDateString(QString::fromLatin1(text))) << text;
    EXPECT_FALSE(batch::CheckDateFormatWithDateString(u"２０１５:06:01 08:00:00"_s));
    EXPECT_TRUE(batch::isCalendarDate(u"2016:02:29 23:59:59"_s));
    for (const auto& text : {u"2015:02:29 10:00:00"_s, u"2016:00:05 10:00:00"_s,
                             u"2015:02:00 10:00:00"_s, u"2015:06:01 11:29:60"_s, u"tomorrow"_s})
        EXPECT_FALSE(batch::isCalendarDate(text)) << text;
}

TEST(DateArithmetic, MovesATextBySecondsAndTellsUniversalTime) {
    const testkit::ZoneGuard zone("Asia/Kolkata");
    EXPECT_EQ(batch::GetChangeDateforExifDate_withTime(u"2015:06:01 08:00:00"_s, 90),
              u"2015-06-01 02:31:30");
    EXPECT_EQ(batch::GetChangeDateforExifDate_withTime(u"no date"_s, 90), u"no date");
    EXPECT_EQ(batch::tagTextOf(*platform::parseDateText(u"2015-06-01 08:00:00"_s)),
              u"2015:06:01 02:30:00");
}

TEST(DateDetector, FindsTheFirstDateOfAText) {
    const QLocale english(QLocale::English, QLocale::UnitedStates), french(QLocale::French);
    const auto found = [](const char* text, const QLocale& locale) {
        const auto date = platform::detectedDate(QString::fromUtf8(text), locale);
        return date ? platform::formatDate(*date, platform::DatePattern::Dash) : QString();
    };
    const std::pair<const char*, const char*> cases[] = {
        {"on 2020-01-31 10:05", "2020-01-31 10:05:00"},
        {"2020/1/3T10.05.09.", "2020-01-03 10:05:09"},
        {"2020.01.31", "2020-01-31 12:00:00"},
        {"Jan 31, 2020 and 2 May 2021", "2020-01-31 12:00:00"},
        {"2 May 2021 23:59, January 31 2020", "2021-05-02 23:59:00"},
        {"5 Sept 2019", "2019-09-05 12:00:00"},
        {"3/4/2020", "2020-03-04 12:00:00"},
        {"2020-02-30, then 2020-03-01", "2020-03-01 12:00:00"},
        {"20200131", ""},
        {"12020-01-31", ""},
        {"2020-01:31", ""},
        {"tomorrow", ""},
        {"", ""},
    };
    for (const auto& [text, date] : cases)
        EXPECT_EQ(found(text, english), QLatin1String(date)) << text;
    EXPECT_EQ(found("3/4/2020", french), u"2020-04-03 12:00:00");
}

struct NamedDate {
    const char *name, *date;
};

TEST(DateFromName, ReadsTheShapesOfCamerasPhonesMessengersAndRecorders) {
    const testkit::ZoneGuard zone("UTC");
    constexpr NamedDate kNames[] = {
        {"VID_20150601_123045.mp4", "2015:06:01 12:30:45"},
        {"PXL_20210102_123456789.mp4", "2021:01:02 12:34:56"},
        {"PXL_20210102_123456789.LS.mp4", "2021:01:02 12:34:56"},
        {"20150601_123045.mp4", "2015:06:01 12:30:45"},
        {"20150601_123045_001.mp4", "2015:06:01 12:30:45"},
        {"20150601 123045.mov", "2015:06:01 12:30:45"},
        {"20150601-123045.mov", "2015:06:01 12:30:45"},
        {"VID-20150601-WA0007.mp4", "2015:06:01 00:00:00"},
        {"2015-06-01 12.30.45.mov", "2015:06:01 12:30:45"},
        {"2015-06-01_12-30-45.mkv", "2015:06:01 12:30:45"},
        {"2015-06-01 12-30-45.mkv", "2015:06:01 12:30:45"},
        {"2015-06-01 12-30.mkv", "2015:06:01 12:30:00"},
        {"2015-06-01-12-30-45.mp4", "2015:06:01 12:30:45"},
        {"2015_06_01_12_30_45.mp4", "2015:06:01 12:30:45"},
        {"2015 06 01 12 30 45.mp4", "2015:06:01 12:30:45"},
        {"Screen Recording 2020-01-31 at 10.05.09.mov", "2020:01:31 10:05:09"},
        {"WhatsApp Video 2020-01-31 at 10.05.09.mp4", "2020:01:31 10:05:09"},
        {"Screen Recording 2020-01-31 at 10.05.09 (2).mov", "2020:01:31 10:05:09"},
        {"Screenrecorder-2021-01-02-12-34-56-789.mp4", "2021:01:02 12:34:56"},
        {"Screen_Recording_20210102-123456_App.mp4", "2021:01:02 12:34:56"},
        {"screen-20210102-123456.mp4", "2021:01:02 12:34:56"},
        {"SVID_20210102_123456_1.mp4", "2021:01:02 12:34:56"},
        {"signal-2021-01-02-123456.mp4", "2021:01:02 12:34:56"},
        {"signal-2021-01-02-12-34-56-789.mp4", "2021:01:02 12:34:56"},
        {"video_2021-01-02_12-34-56.mp4", "2021:01:02 12:34:56"},
        {"DJI_20210102123456_0001_D.MP4", "2021:01:02 12:34:56"},
        {"2015_0601_123045_001.MP4", "2015:06:01 12:30:45"},
        {"MVI_1234_20150601_123045.MOV", "2015:06:01 12:30:45"},
        {"Simulator Screen Recording - 2021-01-02 at 12.34.56.mp4", "2021:01:02 12:34:56"},
        {"2021.01.02_12.34.56.mp4", "2021:01:02 12:34:56"},
        {"Holiday 31 January 2020.mp4", "2020:01:31 12:00:00"},
        {"Party Jan 31, 2020.mp4", "2020:01:31 12:00:00"},
        {"2020-01-31.mp4", "2020:01:31 00:00:00"},
        {"IMG_0001.MOV", ""},
        {"GH010123.MP4", ""},
        {"DSC00001.MP4", ""},
        {"clip_1920_1080.mp4", ""},
        {"20151301_123045.mp4", ""},
        {"20150601.mp4", ""},
        {"20150601_253045.mp4", "2015:06:01 00:00:00"},
        {"__.mp4", ""},
        {"-", ""},
        {"", ""},
        {"٢٠١٥٠٦٠١_123045.mp4", ""},
    };
    for (const NamedDate& each : kNames)
        EXPECT_EQ(batch::dateFromFileName(QString::fromUtf8(each.name)), QLatin1String(each.date))
            << each.name;
    EXPECT_EQ(batch::dateFromFileName(QString(255, u'2') + u".mp4"_s), QString());
}

} // namespace
