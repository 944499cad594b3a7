// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/date_arithmetic.h"

#include "platform/foundation/dates.h"
#include "platform/foundation/log.h"

#include <QStringList>

#include <array>
#include <cstddef>

namespace clipheave::batch {

using namespace platform;

namespace {

/// Second, minute, hour, day, month, year: the order in which they are carried. Wide, so that no
/// amount overflows.
using Fields = std::array<std::int64_t, 6>;

/// How much of a field makes one of the next, and how much of it can stand.
struct Carry {
    std::int64_t unit, largest;
};
constexpr std::array<Carry, 5> kCarries = {{{60, 59}, {60, 59}, {24, 23}, {31, 30}, {12, 11}}};

Fields fieldsOf(const QDateTime& date) {
    const QDateTime local = date.toLocalTime();
    return {local.time().second(), local.time().minute(), local.time().hour(),
            local.date().day(),    local.date().month(),  local.date().year()};
}

Fields fieldsOf(const DateAmounts& amounts) {
    return {amounts.seconds, amounts.minutes, amounts.hours,
            amounts.days,    amounts.months,  amounts.years};
}

/// A zero stands before everything below 10, a negative number too ("0-5").
QString padded(std::int64_t number) {
    return number < 10 ? QStringLiteral("0%1").arg(number) : QString::number(number);
}

QString textOf(const Fields& fields) {
    return QStringLiteral("%1:%2:%3 %4:%5:%6")
        .arg(QString::number(fields[5]), padded(fields[4]), padded(fields[3]), padded(fields[2]),
             padded(fields[1]), padded(fields[0]));
}

} // namespace

bool CheckDateFormatWithDateString(const QString& text) {
    return parseDateText(text).has_value();
}

QString AddTimeIntwithDate(const QDateTime& date, const DateAmounts& amounts) {
    Fields fields = fieldsOf(date);
    const Fields added = fieldsOf(amounts);
    for (std::size_t i = 0; i < fields.size(); ++i) {
        fields[i] += added[i];
        if (i < kCarries.size() && fields[i] > kCarries[i].largest) {
            fields[i] -= kCarries[i].unit;
            ++fields[i + 1];
        }
    }
    return textOf(fields);
}

QString SubTimeIntwithDate(const QDateTime& date, const DateAmounts& amounts) {
    Fields fields = fieldsOf(date);
    const Fields taken = fieldsOf(amounts);
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const bool borrows = i < kCarries.size() && fields[i] <= taken[i];
        fields[i] -= taken[i];
        if (borrows) {
            fields[i] += kCarries[i].unit;
            --fields[i + 1];
        }
    }
    return textOf(fields);
}

QString GetChangeDateforExifDate_withTime(const QString& text, double seconds) {
    log(LogLevel::Trace, QStringLiteral("origStampString==%1==").arg(text));
    const auto date = parseDateText(text);
    if (!date)
        return text;
    constexpr double kMilliseconds = 1000;
    const QString moved =
        dateDescription(date->addMSecs(static_cast<qint64>(seconds * kMilliseconds)));
    const QStringList pieces = moved.split(u' ');
    return pieces.size() == 3 ? pieces[0] + u' ' + pieces[1] : text;
}

QString tagTextOf(const QDateTime& date) {
    return dateDescription(date).section(u' ', 0, 1).replace(u'-', u':');
}

bool isCalendarDate(const QString& text) {
    const QStringList halves = text.split(u' ');
    const QStringList day = halves.value(0).split(u':'), clock = halves.value(1).split(u':');
    return halves.size() == 2 && day.size() == 3 && clock.size() == 3 &&
           QDate::isValid(day[0].toInt(), day[1].toInt(), day[2].toInt()) &&
           QTime::isValid(clock[0].toInt(), clock[1].toInt(), clock[2].toInt());
}

} // namespace clipheave::batch
