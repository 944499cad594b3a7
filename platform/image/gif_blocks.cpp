// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/gif_blocks.h"

namespace clipheave::platform {

namespace {

constexpr std::uint64_t kFlagsOfScreen = 10, kHeaderAndScreen = 13, kImageHead = 10;
constexpr std::uint64_t kNameAt = 3, kNameSize = 11;

std::uint64_t colourTableSize(std::uint8_t flags) {
    return (flags & 0x80U) != 0 ? 3ull << ((flags & 7U) + 1) : 0;
}

std::uint8_t gifByte(FileReader& reader, std::uint64_t at) {
    return reader.viewUpTo(at, 1).u8(0).value_or(0);
}

/// Returns where the sub-blocks that begin at `at` end; nothing when the file does first.
std::optional<std::uint64_t> endOfSubBlocks(FileReader& reader, std::uint64_t at) {
    while (const auto size = reader.viewUpTo(at, 1).u8(0)) {
        at += 1ull + *size;
        if (*size == 0)
            return at;
    }
    return std::nullopt;
}

} // namespace

std::uint64_t firstGifBlock(FileReader& reader) {
    return kHeaderAndScreen + colourTableSize(gifByte(reader, kFlagsOfScreen));
}

std::optional<GifBlock> gifBlockAt(FileReader& reader, std::uint64_t offset) {
    GifBlock block{gifByte(reader, offset), 0, {}, offset, 0};
    std::optional<std::uint64_t> end;
    if (block.type == kGifTrailer) {
        end = offset + 1;
    } else if (block.type == kGifExtension) {
        block.label = gifByte(reader, offset + 1);
        if (block.label == kGifApplication)
            block.name = reader.viewUpTo(offset + kNameAt, kNameSize).toByteArray();
        end = endOfSubBlocks(reader, offset + 2);
    } else if (block.type == kGifImage) {
        const std::uint8_t flags = gifByte(reader, offset + kImageHead - 1);
        constexpr std::uint64_t kCodeSize = 1;
        end = endOfSubBlocks(reader, offset + kImageHead + colourTableSize(flags) + kCodeSize);
    }
    if (!end)
        return std::nullopt;
    block.size = *end - offset;
    return block;
}

} // namespace clipheave::platform
