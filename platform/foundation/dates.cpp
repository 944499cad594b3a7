// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/dates.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>

namespace clipheave::platform {
namespace {

constexpr qint64 kMillisecondsPerSecond = 1000;
// Years beyond this are nothing a clock has shown; QDateTime's milliseconds reach much further.
constexpr int kMaxYear = 999'999;
constexpr std::time_t kLongestClockChange = 2 * 3600;

struct ClockFields {
    int year, month, day, hour, minute, second;
};

/// Reads the fields of one pattern from text whose blanks are collapsed already.
class DateCursor {
public:
    explicit DateCursor(QStringView text) : m_text(text) {}

    /// One number of at least `least` digits, leading zeros allowed; -1 when there is none.
    int number(qsizetype least) {
        const qsizetype start = m_at;
        int value = 0;
        while (m_at < m_text.size() && m_text[m_at] >= u'0' && m_text[m_at] <= u'9') {
            value = value * 10 + (m_text[m_at++].unicode() - u'0');
            if (value > kMaxYear)
                return -1;
        }
        return m_at - start < least ? -1 : value;
    }
    bool take(char16_t expected) {
        if (m_at >= m_text.size() || m_text[m_at] != expected)
            return false;
        ++m_at;
        return true;
    }
    [[nodiscard]] bool atEnd() const { return m_at == m_text.size(); }

private:
    QStringView m_text;
    qsizetype m_at = 0;
};

std::optional<ClockFields> readFields(QStringView text, char16_t separator) {
    DateCursor cursor(text);
    ClockFields f{};
    // A one-digit month or hour is accepted, a one-digit day, minute or second is not.
    const bool read = (f.year = cursor.number(1)) >= 0 && cursor.take(separator) &&
                      (f.month = cursor.number(1)) >= 0 && cursor.take(separator) &&
                      (f.day = cursor.number(2)) >= 0 && cursor.take(u' ') &&
                      (f.hour = cursor.number(1)) >= 0 && cursor.take(u':') &&
                      (f.minute = cursor.number(2)) >= 0 && cursor.take(u':') &&
                      (f.second = cursor.number(2)) >= 0 && cursor.atEnd();
    const bool possible = read && f.hour < 24 && f.minute < 60 && f.second < 60 &&
                          QDate::isValid(f.year, f.month, f.day);
    return possible ? std::optional(f) : std::nullopt;
}

bool showsClock(const std::tm& fields, const ClockFields& f) {
    return fields.tm_hour == f.hour && fields.tm_min == f.minute && fields.tm_sec == f.second &&
           fields.tm_mday == f.day;
}

/// The moment of a local clock time; nothing for a time that the clock has skipped. mktime does
/// this in a fraction of the time that a QDateTime made of date and time takes.
std::optional<std::time_t> localMoment(const ClockFields& f) {
    std::tm fields{};
    fields.tm_year = f.year - 1900;
    fields.tm_mon = f.month - 1;
    fields.tm_mday = f.day;
    fields.tm_hour = f.hour;
    fields.tm_min = f.minute;
    fields.tm_sec = f.second;
    fields.tm_isdst = -1;
    const std::time_t moment = std::mktime(&fields);
    if (!showsClock(fields, f))
        return std::nullopt;
    // A time that the clock shows twice is the later one. mktime takes either, depending on what it
    // was asked before.
    std::tm later{};
    const std::time_t afterChange = moment + kLongestClockChange;
    if (!::localtime_r(&afterChange, &later) || later.tm_gmtoff >= fields.tm_gmtoff)
        return moment;
    const std::time_t second = moment + (fields.tm_gmtoff - later.tm_gmtoff);
    return ::localtime_r(&second, &later) && showsClock(later, f) ? second : moment;
}

std::time_t wholeSeconds(const QDateTime& date) {
    const qint64 ms = date.toMSecsSinceEpoch();
    const qint64 seconds = ms / kMillisecondsPerSecond;
    return ms % kMillisecondsPerSecond < 0 ? seconds - 1 : seconds;
}

/// "yyyy?MM?dd HH:mm:ss" with at least four digits for the year.
QString clockText(const std::tm& fields, char separator) {
    std::array<char, 48> text{};
    // Wide enough for every int, so nothing is ever cut.
    const int length = std::snprintf(
        text.data(), text.size(), "%04lld%c%02u%c%02u %02u:%02u:%02u", 1900LL + fields.tm_year,
        separator, static_cast<unsigned>(fields.tm_mon + 1) % 100u, separator,
        static_cast<unsigned>(fields.tm_mday) % 100u, static_cast<unsigned>(fields.tm_hour) % 100u,
        static_cast<unsigned>(fields.tm_min) % 100u, static_cast<unsigned>(fields.tm_sec) % 100u);
    return QString::fromLatin1(text.data(), std::max(length, 0));
}

} // namespace

std::optional<QDateTime> parseDate(QStringView text, DatePattern pattern) {
    const QString collapsed = text.toString().simplified();
    const auto fields = readFields(collapsed, pattern == DatePattern::Colon ? u':' : u'-');
    if (!fields)
        return std::nullopt;
    const std::optional<std::time_t> moment = localMoment(*fields);
    if (!moment)
        return std::nullopt;
    return QDateTime::fromMSecsSinceEpoch(*moment * kMillisecondsPerSecond);
}

std::optional<QDateTime> parseDateText(QStringView text) {
    if (auto date = parseDate(text, DatePattern::Colon))
        return date;
    return parseDate(text, DatePattern::Dash);
}

QString formatDate(const QDateTime& date, DatePattern pattern) {
    const std::time_t moment = date.isValid() ? wholeSeconds(date) : 0;
    std::tm fields{};
    if (!date.isValid() || !::localtime_r(&moment, &fields))
        return {};
    return clockText(fields, pattern == DatePattern::Colon ? ':' : '-');
}

QString dateDescription(const QDateTime& date) {
    const std::time_t moment = date.isValid() ? wholeSeconds(date) : 0;
    std::tm fields{};
    if (!date.isValid() || !::gmtime_r(&moment, &fields))
        return {};
    return clockText(fields, '-') + QLatin1String(" +0000");
}

} // namespace clipheave::platform
