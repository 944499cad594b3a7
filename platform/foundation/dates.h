// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QString>
#include <QStringView>

#include <optional>

namespace clipheave::platform {

/// The two date-text patterns of the "en_US" locale: ASCII digits, Gregorian calendar, local time.
enum class DatePattern {
    Colon, ///< "yyyy:MM:dd HH:mm:ss"
    Dash,  ///< "yyyy-MM-dd HH:mm:ss"
};

/// Strict reading in the local time zone. Outer blanks are trimmed and inner ones collapsed; a
/// one-digit month or hour, leading zeros and a short year (taken literally) are accepted; a
/// one-digit day, minute or second, an impossible date, a time in the gap of a clock change, a "T"
/// and anything left over are not.
[[nodiscard]] std::optional<QDateTime> parseDate(QStringView text, DatePattern pattern);
/// The colon pattern first, then the dash pattern.
[[nodiscard]] std::optional<QDateTime> parseDateText(QStringView text);
/// The date in local time; empty for an invalid date.
[[nodiscard]] QString formatDate(const QDateTime& date, DatePattern pattern);
/// "YYYY-MM-DD HH:MM:SS +0000", always UTC.
[[nodiscard]] QString dateDescription(const QDateTime& date);

} // namespace clipheave::platform
