// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

// The date that a camera, a phone or a screen recorder has put into the name of a file.
namespace clipheave::batch {

/// Returns the date in the name of a file (with its extension) as "YYYY:MM:DD HH:MM:SS", at
/// midnight where the name holds a day alone; null when it holds none. Only digits, "_", blanks,
/// "." and "-" count, and the parts between the first of "_", blank and "-" that occurs (where
/// those hold no date, between all three): a day of eight digits, of four and four, or in three
/// parts, and a clock time of six digits or more, or in parts. A day alone without separators is
/// none. Where no such shape fits, detectedDate() searches the name; its date is logged and is
/// given in UTC. Dates that no calendar has do not count.
[[nodiscard]] QString dateFromFileName(const QString& fileName);

} // namespace clipheave::batch
