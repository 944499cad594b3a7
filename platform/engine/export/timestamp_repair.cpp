// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/export/timestamp_repair.h"

#include <algorithm>

namespace clipheave::platform {

namespace {

/// More than any codec reorders.
constexpr std::size_t kLookAhead = 32;

std::int64_t durationOf(const AVPacket& packet) {
    return std::max<std::int64_t>(packet.duration, 1);
}

bool hasTime(std::int64_t time) {
    return time != kNoTimestamp;
}

/// Counts back from the first decoding time that is known.
void fillDecodingTimes(const std::vector<Packet>& packets) {
    const auto known = std::find_if(packets.begin(), packets.end(),
                                    [](const Packet& packet) { return hasTime(packet->dts); });
    if (known == packets.end())
        return;
    for (auto later = known; later != packets.begin(); --later) {
        AVPacket& earlier = **std::prev(later);
        earlier.dts = (*later)->dts - durationOf(earlier);
    }
}

/// By how much frames are shown before they are decoded, at most.
std::int64_t lateness(const std::vector<Packet>& packets) {
    std::int64_t most = 0;
    for (const Packet& packet : packets)
        if (hasTime(packet->dts) && hasTime(packet->pts))
            most = std::max(most, packet->dts - packet->pts);
    return most;
}

} // namespace

void TimestampRepair::push(Packet packet, std::vector<Packet>& ready) {
    m_waiting.push_back(std::move(packet));
    if (m_looksAhead && m_waiting.size() < kLookAhead)
        return;
    finish(ready);
}

void TimestampRepair::finish(std::vector<Packet>& ready) {
    if (m_looksAhead) {
        fillDecodingTimes(m_waiting);
        m_earlier = lateness(m_waiting);
        m_looksAhead = false;
    }
    for (Packet& packet : m_waiting) {
        settle(*packet);
        ready.push_back(std::move(packet));
    }
    m_waiting.clear();
}

void TimestampRepair::settle(AVPacket& packet) {
    if (!hasTime(packet.dts))
        packet.dts = hasTime(m_last) ? m_last + m_lastDuration : packet.pts;
    else
        packet.dts -= m_earlier;
    if (!hasTime(packet.dts))
        packet.dts = m_start;
    if (!hasTime(packet.pts))
        packet.pts = packet.dts;
    packet.dts = std::min(packet.dts, packet.pts);
    if (hasTime(m_last) && packet.dts <= m_last)
        packet.dts = m_last + 1;
    // Nothing but a fault of the source gets here: the packets are in the order of decoding.
    packet.pts = std::max(packet.pts, packet.dts);
    m_last = packet.dts;
    m_lastDuration = durationOf(packet);
    packet.pts -= m_start;
    packet.dts -= m_start;
}

} // namespace clipheave::platform
