// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/formats/byte_range.h"

#include <optional>

namespace clipheave::platform {

/// Header of one frame of MPEG audio (ISO/IEC 11172-3 2.4.1.3, 13818-3).
struct MpegFrameHeader {
    int version = 1; ///< 1, 2, or 25 for the lower rates of "MPEG 2.5"
    int layer = 3;
    int bitRate = 0;    ///< bit/s
    int sampleRate = 0; ///< Hz
    int channels = 2;
    int samples = 1152;           ///< in this frame, a channel
    std::uint32_t frameBytes = 0; ///< to the next header
    std::uint32_t sideInfo = 0;   ///< layer III: bytes between header and main data
};
/// Nothing for reserved values and for the free format, whose frames have no known length.
[[nodiscard]] std::optional<MpegFrameHeader> parseMpegHeader(ByteView head);

struct MpegStream {
    MpegFrameHeader header;
    std::uint64_t offset = 0; ///< of the first frame in the range
    double durationSeconds = 0;
    double bitRate = 0;     ///< bit/s, average
    bool estimated = false; ///< the duration comes from the size of the audio
};
/// Finds the first frame that a second one follows, and the facts from it: from the Xing, Info or
/// VBRI frame where there is one (encoder delay and padding taken off), else from the size of
/// `audio` and the average rate of the frames at its start. The free format, whose frames say no
/// length, is taken when it begins with the first byte.
[[nodiscard]] std::optional<MpegStream> readMpegStream(const ByteRange& audio);
/// Corrects an estimated duration for an audio file of `size` bytes: tags at the end are known
/// later.
void setAudioSize(MpegStream& stream, std::uint64_t size);

} // namespace clipheave::platform
