// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/decode/amr_frames.h"

#include <algorithm>
#include <array>

namespace clipheave::platform {

namespace {

// Bytes of a frame by its type, header included: 3GPP TS 26.101 and TS 26.201, as stored by RFC
// 4867.
constexpr std::array kNarrowbandBytes = {13, 14, 16, 18, 20, 21, 27, 32, 6, 1, 1, 1, 1, 1, 1, 1};
constexpr std::array kWidebandBytes = {18, 24, 33, 37, 41, 47, 51, 59, 61, 6, 1, 1, 1, 1, 1, 1};
constexpr AVRational kFrameSeconds{1, 50};

int firstFrameBytes(AVCodecID codec, const AVPacket& packet) {
    const auto type = static_cast<std::size_t>(packet.data[0] >> 3 & 0xF);
    const auto& bytes = codec == AV_CODEC_ID_AMR_NB ? kNarrowbandBytes : kWidebandBytes;
    return std::min(bytes[type], packet.size);
}

} // namespace

AmrFrames::AmrFrames(const AVCodecParameters& stream, AVRational timeBase) {
    const bool isAmr =
        stream.codec_id == AV_CODEC_ID_AMR_NB || stream.codec_id == AV_CODEC_ID_AMR_WB;
    if (!isAmr || stream.ch_layout.nb_channels > 1 || timeBase.num <= 0 || timeBase.den <= 0)
        return;
    m_codec = stream.codec_id;
    m_duration = av_rescale_q(1, kFrameSeconds, timeBase);
}

int AmrFrames::cutFirst(AVPacket& packet, AVPacket& frame) const {
    const int bytes = packet.size > 0 ? firstFrameBytes(m_codec, packet) : 0;
    if (bytes == packet.size) {
        av_packet_move_ref(&frame, &packet);
        return 0;
    }
    if (const int code = av_packet_ref(&frame, &packet); code < 0)
        return code;
    frame.size = bytes;
    frame.duration = m_duration;
    packet.data += bytes;
    packet.size -= bytes;
    packet.duration = std::max<std::int64_t>(packet.duration - m_duration, 0);
    if (packet.pts != kNoTimestamp)
        packet.pts += m_duration;
    if (packet.dts != kNoTimestamp)
        packet.dts += m_duration;
    av_packet_free_side_data(&packet);
    return 0;
}

} // namespace clipheave::platform
