// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/formats/byte_range.h"

#include <functional>
#include <optional>

namespace clipheave::platform {

enum class FlacBlockType : std::uint8_t {
    StreamInfo = 0,
    VorbisComment = 4,
    Picture = 6,
    Invalid = 127,
};

/// A metadata block of a FLAC file (RFC 9639, section 8).
struct FlacBlock {
    static constexpr std::uint64_t kLargestBody = (1 << 24) - 1;

    FlacBlockType type = FlacBlockType::Invalid;
    std::uint64_t offset = 0, size = 0; ///< of the body in the file
    bool isLast = false;

    [[nodiscard]] ByteRange body(FileReader& reader) const { return {reader, offset, size}; }
};

/// Returns the four bytes in front of a body of `size` bytes, kLargestBody at most.
[[nodiscard]] QByteArray flacBlockHeader(FlacBlockType type, std::uint64_t size, bool isLast);

/// Returns the offset of "fLaC", behind the ID3 tags where there are any; nothing when the
/// signature is missing.
[[nodiscard]] std::optional<std::uint64_t> findFlacSignature(FileReader& reader);

/// How the blocks of a file end.
struct FlacBlocksEnd {
    enum class Reason { LastBlock, Damaged, TooMany };
    std::uint64_t offset = 0; ///< behind the last block that was visited
    Reason reason = Reason::LastBlock;
};
/// Visits the blocks from `offset` on in file order; every body lies within the file. Damaged when
/// a block is invalid or reaches beyond the file, TooMany behind 4096 blocks.
FlacBlocksEnd visitFlacBlocks(FileReader& reader, std::uint64_t offset,
                              const std::function<void(const FlacBlock&)>& visit);

} // namespace clipheave::platform
