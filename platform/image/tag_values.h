// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/image/exiv2.h"

#include <QString>
#include <QVariant>

// Values of tags in the forms that the property dictionaries have. Each returns an invalid QVariant
// for what it cannot read. Only for the .cpp files that include Exiv2.
namespace clipheave::platform {

/// Text for ASCII, a number for one value, an array for several.
[[nodiscard]] QVariant tagPlainValue(const Exiv2::Exifdatum& datum);
/// The same, but an array also for one value.
[[nodiscard]] QVariant tagArrayValue(const Exiv2::Exifdatum& datum);
/// "0231" as the array 2, 3, 1.
[[nodiscard]] QVariant tagVersionValue(const Exiv2::Exifdatum& datum);
/// The text of a comment whose first eight bytes name its encoding.
[[nodiscard]] QVariant tagCommentValue(const Exiv2::Exifdatum& datum);
/// Three rationals as positive decimal degrees, 0 to 180.
[[nodiscard]] QVariant tagDegreesValue(const Exiv2::Exifdatum& datum);
/// Three rationals as "HH:mm:ss" or, with a fraction, "HH:mm:ss.ffffff".
[[nodiscard]] QVariant tagClockValue(const Exiv2::Exifdatum& datum);
/// Bytes as "2.2.0.0".
[[nodiscard]] QVariant tagDottedValue(const Exiv2::Exifdatum& datum);

} // namespace clipheave::platform
