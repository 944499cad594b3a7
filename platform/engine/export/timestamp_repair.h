// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/ffmpeg.h"

#include <vector>

namespace clipheave::platform {

/// Gives the packets of one stream the timestamps that a muxer needs: present, increasing, decoded
/// before they are shown. Presentation times stay, from zero at the start of the file: where a
/// frame is shown before it is decoded, decoding moves.
class TimestampRepair {
public:
    /// `start`: of the file, in units of the stream.
    TimestampRepair(const AVStream& stream, std::int64_t start)
        : m_start(start), m_looksAhead(stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO &&
                                       (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) == 0) {}

    /// Takes a packet and appends to `ready` those that are settled. The first ones of a video wait
    /// for each other: which decoding times they miss, the later ones show.
    void push(Packet packet, std::vector<Packet>& ready);
    /// Appends what still waits.
    void finish(std::vector<Packet>& ready);

private:
    void settle(AVPacket& packet);

    std::int64_t m_start;
    std::int64_t m_earlier = 0; ///< units by which all decoding moves
    std::int64_t m_last = kNoTimestamp, m_lastDuration = 1;
    bool m_looksAhead;
    std::vector<Packet> m_waiting;
};

} // namespace clipheave::platform
