// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/byte_view.h"

#include <QString>

#include <cstdint>

namespace clipheave::platform {

/// UTF-8, or UTF-16 with a byte order mark; ends at a NUL.
[[nodiscard]] QString decodeUnicode(ByteView bytes);
/// UTF-16, big-endian without a byte order mark; a NUL unit ends it.
[[nodiscard]] QString decodeUtf16(ByteView bytes);
[[nodiscard]] QString decodeMacRoman(ByteView bytes);

/// BCP-47 of a packed ISO 639-2/T language or a Macintosh language code; empty when unspecified.
[[nodiscard]] QString languageTag(std::uint16_t code);
inline constexpr std::uint16_t kMacLanguageEnd = 0x400;
inline constexpr std::uint16_t kMacLanguageUnspecified = 0x7FFF;

} // namespace clipheave::platform
