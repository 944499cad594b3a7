// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/formats/byte_range.h"

#include <functional>
#include <optional>

namespace clipheave::platform {

/// The ten bytes in front of every ID3v2 tag (ID3v2.2.0, v2.3.0 and v2.4.0 structure, section 3.1).
struct Id3Header {
    static constexpr std::uint64_t kSize = 10;

    int version = 0; ///< 2, 3 or 4; any other number is a tag of which only the size is known
    bool unsynchronised = false;
    bool compressed = false; ///< v2.2 only: contents undefined
    bool extended = false;   ///< v2.3 and v2.4: a further header follows
    std::uint32_t bodySize = 0;
    std::uint64_t totalSize = 0; ///< with header and footer
};
/// Takes a footer ("3DI") as well; nothing when `bytes` begins with neither.
[[nodiscard]] std::optional<Id3Header> parseId3Header(ByteView bytes);
[[nodiscard]] std::optional<Id3Header> id3HeaderAt(FileReader& reader, std::uint64_t offset);

/// Visits the tags in a row at the start of the file, eight at most, and returns where the last one
/// ends as its header says; 0 without any.
std::uint64_t visitLeadingId3(FileReader& reader,
                              const std::function<void(const ByteRange& tag)>& visit);

/// Four bytes of seven bits each (ID3v2.4.0 structure, section 6.2), as the number they stand for
/// and back. Top bits that are set all the same are ignored.
[[nodiscard]] constexpr std::uint32_t numberOfSyncSafe(std::uint32_t raw) {
    return (raw & 0x7F) | (raw >> 1 & 0x3F80) | (raw >> 2 & 0x1FC000) | (raw >> 3 & 0xFE00000);
}
[[nodiscard]] constexpr std::uint32_t syncSafeOfNumber(std::uint32_t number) {
    return (number & 0x7F) | (number << 1 & 0x7F00) | (number << 2 & 0x7F0000) |
           (number << 3 & 0x7F000000);
}
inline constexpr std::uint32_t kLargestSyncSafeNumber = (1u << 28) - 1;

} // namespace clipheave::platform
