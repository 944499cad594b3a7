// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/formats/byte_range.h"

#include <optional>

namespace clipheave::platform {

/// An image in a FLAC file (RFC 9639, section 8.8). The tag library's class for it wants the whole
/// block in memory; this one leaves the image in the file.
struct FlacPicture {
    static constexpr std::uint32_t kFrontCover = 3;

    std::uint32_t type = 0;
    ByteRange data;
};
/// Returns nothing when a length is missing or the block holds no data.
[[nodiscard]] std::optional<FlacPicture> parseFlacPicture(const ByteRange& block);
/// Returns the type alone, also that of a block that is damaged behind it.
[[nodiscard]] std::optional<std::uint32_t> flacPictureType(const ByteRange& block);

/// Returns the body of a block with `image` as the front cover; empty when it cannot be read.
[[nodiscard]] QByteArray renderFlacFrontCover(const EncodedImage& image);

} // namespace clipheave::platform
