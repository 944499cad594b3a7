// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/flac/flac_blocks.h"

#include "platform/formats/mpeg/id3_header.h"

#include <QtEndian>

namespace clipheave::platform {
namespace {

constexpr int kMostFlacBlocks = 4096;
constexpr std::uint64_t kFlacBlockHeaderSize = 4;
constexpr std::uint32_t kLastFlacBlock = 0x80000000;

/// One bit for the last block, seven of type, 24 of size. Nothing when the block is damaged.
std::optional<FlacBlock> flacBlockAt(FileReader& reader, std::uint64_t at) {
    const auto header = reader.viewUpTo(at, kFlacBlockHeaderSize).be32(0);
    if (!header)
        return std::nullopt;
    FlacBlock block;
    block.type = static_cast<FlacBlockType>(*header >> 24 & 0x7F);
    block.offset = at + kFlacBlockHeaderSize;
    block.size = *header & 0xFFFFFF;
    block.isLast = (*header & kLastFlacBlock) != 0;
    if (block.type == FlacBlockType::Invalid || block.size > reader.size() - block.offset)
        return std::nullopt;
    return block;
}

} // namespace

QByteArray flacBlockHeader(FlacBlockType type, std::uint64_t size, bool isLast) {
    QByteArray header(kFlacBlockHeaderSize, '\0');
    qToBigEndian((isLast ? kLastFlacBlock : 0u) | static_cast<quint32>(type) << 24 |
                     static_cast<quint32>(size),
                 header.data());
    return header;
}

std::optional<std::uint64_t> findFlacSignature(FileReader& reader) {
    const std::uint64_t at = visitLeadingId3(reader, [](const ByteRange&) {});
    return reader.viewUpTo(at, 4).startsWith("fLaC") ? std::optional(at) : std::nullopt;
}

FlacBlocksEnd visitFlacBlocks(FileReader& reader, std::uint64_t offset,
                              const std::function<void(const FlacBlock&)>& visit) {
    for (int i = 0; i < kMostFlacBlocks; ++i) {
        const auto block = flacBlockAt(reader, offset);
        if (!block)
            return {offset, FlacBlocksEnd::Reason::Damaged};
        offset = block->offset + block->size;
        visit(*block);
        if (block->isLast)
            return {offset, FlacBlocksEnd::Reason::LastBlock};
    }
    return {offset, FlacBlocksEnd::Reason::TooMany};
}

} // namespace clipheave::platform
