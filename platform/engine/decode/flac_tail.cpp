// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/decode/flac_tail.h"

extern "C" {
#include <libavutil/crc.h>
}

namespace clipheave::platform {
namespace {

std::uint64_t id3v1Size(ByteView bytes) {
    constexpr std::uint64_t kSize = 128;
    return bytes.size() >= kSize && bytes.sub(bytes.size() - kSize).startsWith("TAG") ? kSize : 0;
}

/// Version 2000 may have a header besides the footer, which its size does not count.
std::uint64_t apeSize(ByteView bytes) {
    constexpr std::uint64_t kEdge = 32;
    constexpr std::uint32_t kHasHeader = 0x80000000;
    if (bytes.size() < kEdge)
        return 0;
    const ByteView footer = bytes.sub(bytes.size() - kEdge);
    if (!footer.startsWith("APETAGEX"))
        return 0;
    const std::uint64_t size = footer.le32(12).value_or(0);
    return size + ((footer.le32(20).value_or(0) & kHasHeader) != 0 ? kEdge : 0);
}

std::uint64_t lyrics3Size(ByteView bytes) {
    constexpr std::uint64_t kEnd = 9;
    if (bytes.size() < kEnd || !bytes.sub(bytes.size() - kEnd).startsWith("LYRICS"))
        return 0;
    const qsizetype begin = bytes.bytes().lastIndexOf("LYRICSBEGIN");
    return begin < 0 ? 0 : bytes.size() - static_cast<std::uint64_t>(begin);
}

std::uint64_t lastTagSize(ByteView bytes) {
    for (const auto& sizeOf : {&id3v1Size, &apeSize, &lyrics3Size})
        if (const std::uint64_t size = sizeOf(bytes); size > 0 && size <= bytes.size())
            return size;
    return 0;
}

/// Every frame ends with the CRC-16 of all its bytes (RFC 9639, section 9.3).
bool isWholeFrame(ByteView bytes) {
    const auto* data =
        static_cast<const std::uint8_t*>(static_cast<const void*>(bytes.bytes().data()));
    return av_crc(av_crc_get_table(AV_CRC_16_ANSI), 0, data, bytes.size()) == 0;
}

} // namespace

std::uint64_t flacAudioSize(ByteView packet) {
    ByteView audio = packet;
    while (const std::uint64_t size = lastTagSize(audio))
        audio = audio.sub(0, audio.size() - size);
    return audio.size() == packet.size() || isWholeFrame(packet) ? packet.size() : audio.size();
}

} // namespace clipheave::platform
