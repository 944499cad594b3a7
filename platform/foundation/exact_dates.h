// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace clipheave::platform {

/// Gives the dates of the file at `to` the nanoseconds that they have at `from`, where both are
/// equal to the millisecond: a QDateTime holds no more. Best effort.
void restoreExactDates(const QString& from, const QString& to);

} // namespace clipheave::platform
