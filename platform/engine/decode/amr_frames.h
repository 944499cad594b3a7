// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/ffmpeg.h"

namespace clipheave::platform {

/// Takes packets of AMR audio apart, of which phones store several frames in one sample: FFmpeg 5
/// and 6 decode the first frame of a packet and drop the others. Packets of other codecs pass.
class AmrFrames {
public:
    AmrFrames(const AVCodecParameters& stream, AVRational timeBase);

    /// Returns whether packets of the stream are taken apart: AMR of one channel.
    [[nodiscard]] bool isNeeded() const { return m_codec != AV_CODEC_ID_NONE; }
    /// Cuts the first frame off `packet` into `frame`, at its own time; side data goes with the
    /// first. The last cut leaves `packet` empty. Negative without memory.
    [[nodiscard]] int cutFirst(AVPacket& packet, AVPacket& frame) const;

private:
    AVCodecID m_codec = AV_CODEC_ID_NONE;
    std::int64_t m_duration = 0; ///< of a frame, in units of the stream
};

} // namespace clipheave::platform
