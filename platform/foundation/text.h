// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>

#include <cstdint>

namespace clipheave::platform {

/// The leading whole number: blanks, sign, digits; stops at the first other character. 0 when there
/// is none; clamps to the 32-bit limits. Never depends on the locale.
[[nodiscard]] std::int32_t intValue(QStringView text);
/// The leading number: blanks, sign, digits, ".", exponent; the longest prefix counts ("1.2.3" is
/// 1.2, "2e3.1" is 2000, ".e1" is 0). "." is the only decimal sign.
[[nodiscard]] double doubleValue(QStringView text);
/// The "%@" form of a number: integers without decimals, others in the shortest form that reads
/// back (44100 -> "44100", 44100.5 -> "44100.5").
[[nodiscard]] QString describeNumber(double value);
/// Returns the shortest decimals that read back, without an exponent (0.00001 -> "0.00001"); "nan",
/// "inf" and "-inf" as describeNumber().
[[nodiscard]] QString plainDecimals(double value);
/// -1, 0 or 1. Digit runs compare by value, leading zeros ignored ("file2" before "file10");
/// other characters by code point, folded first when `caseInsensitive`.
[[nodiscard]] int compareNumeric(QStringView a, QStringView b, bool caseInsensitive);

} // namespace clipheave::platform
