// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <cstdint>

// Property lists. A dictionary is a QVariantMap, an array a QVariantList, a text a QString, a
// number a qlonglong or a double, a truth value a bool, a date a QDateTime in UTC, data a
// QByteArray.
namespace clipheave::platform {

inline constexpr std::uint64_t kMostPropertyListBytes = 8u << 20;
/// Containers within each other; libplist frees them recursively and runs out of stack.
inline constexpr int kMostPropertyListLevels = 64;

/// Returns the root of a list in the XML or the binary form. LimitExceeded for more than the limits
/// above and for values that would need over 64 MiB once each reference has its own copy;
/// InvalidData for anything that is no list and for one that declares entities or holds itself. A
/// date before 1933 or after 2069 becomes an invalid value: libplist counts 32 bits of seconds.
[[nodiscard]] Result<QVariant> propertyListWithData(const QByteArray& bytes);
/// The same of a file; fails as FileReader does, too.
[[nodiscard]] Result<QVariant> propertyListWithContentsOfFile(const QString& path);

/// Returns the list as XML, keys in the order of their characters. Invalid values and empty
/// keys are left out, and so are characters that XML cannot hold. InvalidArgument for a value of
/// another type or a date that libplist cannot count, LimitExceeded for too many levels.
[[nodiscard]] Result<QByteArray> dataWithPropertyList(const QVariant& list);
/// Writes the list as XML in one step, replacing a file at `path`.
[[nodiscard]] Result<void> writeToFile_atomically(const QVariant& list, const QString& path);

} // namespace clipheave::platform
