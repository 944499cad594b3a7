// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/io/caf_padding.h"

namespace clipheave::platform {

namespace {

constexpr int kMostCafChunks = 10'000;
constexpr std::uint64_t kCafHeader = 8, kCafChunkHeader = 12;
/// Keeps sums and products of the numbers below from overflowing; days at any rate.
constexpr std::uint64_t kMostCafFrames = std::uint64_t{1} << 40;

struct PacketTable {
    std::uint64_t framesPerPacket = 0; ///< 0: each packet has its own
    std::uint64_t packets = 0, valid = 0, priming = 0, remainder = 0;

    [[nodiscard]] bool isConsistent() const {
        // A negative number of the file is a large one here.
        const bool bounded = packets <= kMostCafFrames && valid <= kMostCafFrames &&
                             priming <= kMostCafFrames && remainder <= kMostCafFrames;
        if (!bounded || valid == 0)
            return false;
        const std::uint64_t frames = priming + valid + remainder;
        return framesPerPacket == 0 ||
               (frames % framesPerPacket == 0 && frames / framesPerPacket == packets);
    }
};

PacketTable readPacketTable(FileReader& reader) {
    PacketTable table;
    std::uint64_t at = kCafHeader;
    for (int i = 0; i < kMostCafChunks && at + kCafChunkHeader <= reader.size(); ++i) {
        const ByteView chunk = reader.viewUpTo(at, kCafChunkHeader + 24);
        const std::uint64_t size = chunk.be64(4).value_or(0);
        const ByteView body = chunk.sub(kCafChunkHeader);
        if (chunk.startsWith("desc"))
            table.framesPerPacket = body.be32(20).value_or(0);
        if (chunk.startsWith("pakt")) {
            table.packets = body.be64(0).value_or(0);
            table.valid = body.be64(8).value_or(0);
            table.priming = body.be32(16).value_or(0);
            table.remainder = body.be32(20).value_or(0);
        }
        if (size > reader.size() - at - kCafChunkHeader)
            break; // the data chunk may be of unknown size, which is the last then
        at += kCafChunkHeader + size;
    }
    return table;
}

} // namespace

AudioPadding cafPadding(FileReader& reader) {
    if (!reader.viewUpTo(0, 4).startsWith("caff"))
        return {};
    const PacketTable table = readPacketTable(reader);
    if (!table.isConsistent())
        return {};
    return {static_cast<std::int64_t>(table.priming), static_cast<std::int64_t>(table.valid)};
}

} // namespace clipheave::platform
