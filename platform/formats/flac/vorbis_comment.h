// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/formats/byte_range.h"
#include "platform/media/model/tag_mapping.h"

#include <optional>

namespace clipheave::platform {

/// "NAME=value" texts of a Vorbis comment (xiph.org, Ogg Vorbis I comment field): lengths
/// little-endian, texts UTF-8. A comment cut short gives what stands before the cut.
[[nodiscard]] QList<NamedTag> parseVorbisComment(const ByteRange& block);

/// A FLAC picture block (RFC 9639, section 8.8), also the contents of METADATA_BLOCK_PICTURE.
struct FlacPicture {
    std::uint32_t type = 0; ///< 3: front cover
    ByteRange data;
};
[[nodiscard]] std::optional<FlacPicture> parseFlacPicture(const ByteRange& block);

} // namespace clipheave::platform
