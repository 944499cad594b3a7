// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/image/write/photo_change.h"

#include <cstdint>
#include <optional>
#include <utility>

namespace clipheave::platform {

/// Returns the fraction of the smallest denominator within a billionth of the value, which is 0 or
/// more; nothing when 32 bits do not hold it.
[[nodiscard]] std::optional<std::pair<std::uint32_t, std::uint32_t>> fractionOf(double value);

/// Returns the value in the byte order; nothing when it is empty or does not fit the type.
[[nodiscard]] std::optional<TiffValue> encodedTag(const AskedTag& asked,
                                                  const TiffStructure& structure);

} // namespace clipheave::platform
