// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/mpeg/id3_header.h"

namespace clipheave::platform {
namespace {

constexpr int kMostLeadingTags = 8;

} // namespace

std::optional<Id3Header> parseId3Header(ByteView bytes) {
    if (bytes.size() < Id3Header::kSize || !(bytes.startsWith("ID3") || bytes.startsWith("3DI")))
        return std::nullopt;
    if (bytes.u8(3) == 0xFF || bytes.u8(4) == 0xFF)
        return std::nullopt;
    const int flags = *bytes.u8(5);
    Id3Header header;
    header.version = *bytes.u8(3);
    header.unsynchronised = flags & 0x80;
    header.compressed = header.version == 2 && (flags & 0x40);
    header.extended = header.version > 2 && (flags & 0x40);
    // Real files with a top bit set in the size have the right size without it.
    header.bodySize = numberOfSyncSafe(*bytes.be32(6));
    const bool hasFooter = header.version == 4 && (flags & 0x10);
    header.totalSize = Id3Header::kSize + header.bodySize + (hasFooter ? Id3Header::kSize : 0);
    return header;
}

std::optional<Id3Header> id3HeaderAt(FileReader& reader, std::uint64_t offset) {
    return parseId3Header(reader.viewUpTo(offset, Id3Header::kSize));
}

std::uint64_t visitLeadingId3(FileReader& reader,
                              const std::function<void(const ByteRange& tag)>& visit) {
    std::uint64_t end = 0;
    for (int i = 0; i < kMostLeadingTags; ++i) {
        const auto header = id3HeaderAt(reader, end);
        if (!header)
            break;
        visit(ByteRange(reader, end, header->totalSize));
        end += header->totalSize;
    }
    return end;
}

} // namespace clipheave::platform
