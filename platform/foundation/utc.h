// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTimeZone>

// What differs between releases 6.4 and 6.5 of Qt: how a QDateTime is asked for in UTC.
namespace clipheave::platform {

#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
inline constexpr QTimeZone::Initialization kUtc = QTimeZone::UTC;
#else
inline constexpr Qt::TimeSpec kUtc = Qt::UTC;
#endif

} // namespace clipheave::platform
