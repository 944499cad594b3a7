// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/byte_view.h"

#include <optional>

namespace clipheave::platform {

/// ID3v1: 128 bytes that begin with "TAG"; in front of them its enhanced form may stand, "TAG+".
inline constexpr std::uint64_t kId3v1Size = 128, kId3v1EnhancedSize = 227;

/// The last bytes of a Lyrics3 tag of version 2.00: six digits of size, "LYRICS200".
inline constexpr std::uint64_t kLyrics3FooterSize = 15;
/// Returns the bytes of the tag with its footer; nothing when `footer` is not one. Not checked:
/// that "LYRICSBEGIN" stands at its start.
[[nodiscard]] std::optional<std::uint64_t> lyrics3TagSize(ByteView footer);

/// Returns the bytes of an ID3v2.4 tag with header and footer, of which `footer` are the last ten;
/// nothing when it is not one. Not checked: that "ID3" stands at its start.
[[nodiscard]] std::optional<std::uint64_t> appendedId3TagSize(ByteView footer);

} // namespace clipheave::platform
