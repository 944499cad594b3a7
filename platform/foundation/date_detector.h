// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDateTime>
#include <QLocale>
#include <QStringView>

#include <optional>

namespace clipheave::platform {

/// Returns the first date that a text holds, as local time; nothing when it holds none. Shapes:
/// "2020-01-31" (also with ":", "/" or "." between the numbers), "31/01/2020" or "01/31/2020" as
/// the locale writes dates, "31 Jan 2020" and "Jan 31, 2020" with English month names, short or in
/// full. A time may follow, after a blank or "T": "10:00" or "10.00", with seconds or without.
/// Without a time the date is at noon. Digits are ASCII; dates that no calendar has, clock times
/// that a clock change skips, and numbers that go on after the date do not count.
[[nodiscard]] std::optional<QDateTime> detectedDate(QStringView text,
                                                    const QLocale& locale = QLocale());

} // namespace clipheave::platform
