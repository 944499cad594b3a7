// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/mpeg/tag_footers.h"

#include "platform/formats/mpeg/id3_header.h"

namespace clipheave::platform {

std::optional<std::uint64_t> lyrics3TagSize(ByteView footer) {
    if (!footer.sub(6).startsWith("LYRICS200"))
        return std::nullopt;
    bool isNumber = false;
    const qulonglong size = footer.sub(0, 6).bytes().toByteArray().toULongLong(&isNumber);
    return isNumber ? std::optional(size + kLyrics3FooterSize) : std::nullopt;
}

std::optional<std::uint64_t> appendedId3TagSize(ByteView footer) {
    const auto header = footer.startsWith("3DI") ? parseId3Header(footer) : std::nullopt;
    return header ? std::optional(2 * Id3Header::kSize + header->bodySize) : std::nullopt;
}

} // namespace clipheave::platform
