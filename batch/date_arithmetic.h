// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QString>

#include <cstdint>

// What the date commands do with dates as text. Pure; local time, ASCII digits.
namespace clipheave::batch {

/// How far every date is moved.
struct DateAmounts {
    std::int32_t years = 0, months = 0, days = 0, hours = 0, minutes = 0, seconds = 0;
};

/// Returns whether a text is "YYYY:MM:DD HH:MM:SS" or "YYYY-MM-DD HH:MM:SS".
[[nodiscard]] bool CheckDateFormatWithDateString(const QString& text);

/// Returns the date moved on, as "YYYY:MM:DD HH:MM:SS" without zeros before the year.
/// Deliberate: every month has 31 days and each field is carried at most once, from the second up,
/// when it goes over 59, 59, 23, 30 and 11; so 31 January becomes day 0 of February, any December
/// date month 0 of the next year, and 120 seconds more leave a second over 59.
[[nodiscard]] QString AddTimeIntwithDate(const QDateTime& date, const DateAmounts& amounts);
/// Returns the date moved back, likewise. Deliberate: a field that is equal to its amount borrows
/// as well, so 12:30:00 less one hour is 11:29:60.
[[nodiscard]] QString SubTimeIntwithDate(const QDateTime& date, const DateAmounts& amounts);

/// Returns the moment of a date text moved by seconds, as "YYYY-MM-DD HH:MM:SS" in UTC; a text that
/// is no date comes back as it is. Logs the text.
[[nodiscard]] QString GetChangeDateforExifDate_withTime(const QString& text, double seconds);

/// Returns the text of a moment as tags get it: "YYYY:MM:DD HH:MM:SS" in UTC; empty when invalid.
[[nodiscard]] QString tagTextOf(const QDateTime& date);

/// Returns whether a text in the form of AddTimeIntwithDate() is a date that a calendar and a clock
/// have.
[[nodiscard]] bool isCalendarDate(const QString& text);

} // namespace clipheave::batch
