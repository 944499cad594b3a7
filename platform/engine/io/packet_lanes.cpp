// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/io/packet_lanes.h"

#include "platform/engine/messages.h"

#include <algorithm>

namespace clipheave::platform {

namespace {

// One lane may run this far ahead of the other.
constexpr std::size_t kMostPackets = 512;
constexpr std::size_t kMostPacketBytes = 16 << 20;
/// The writer is woken for so many packets at once, or looks by itself when its patience ends: a
/// change of threads costs more than a packet of audio.
constexpr std::size_t kPacketsAtOnce = 32;

} // namespace

bool PacketLanes::announce(std::size_t lane, OutputTrack track) {
    const std::lock_guard lock(m_mutex);
    m_lanes[lane].track = std::move(track);
    m_changed.notify_all();
    return !m_stopped;
}

bool PacketLanes::push(std::size_t lane, Packet packet) {
    std::unique_lock lock(m_mutex);
    Lane& to = m_lanes[lane];
    if (to.packets.size() >= kMostPackets || to.bytes >= kMostPacketBytes) {
        to.blocked = true;
        m_changed.notify_all();
        m_changed.wait(lock, [&] { return m_stopped || !to.blocked; });
    }
    if (m_stopped)
        return false;
    to.bytes += static_cast<std::size_t>(std::max(packet->size, 0));
    to.packets.push_back(std::move(packet));
    if (to.packets.size() % kPacketsAtOnce == 0)
        m_changed.notify_all();
    return true;
}

void PacketLanes::finish(std::size_t lane) {
    const std::lock_guard lock(m_mutex);
    m_lanes[lane].finished = true;
    m_changed.notify_all();
}

void PacketLanes::fail(const Error& error) {
    const std::lock_guard lock(m_mutex);
    if (!m_error && !m_stopped)
        m_error = error;
    m_stopped = true;
    m_changed.notify_all();
}

void PacketLanes::stop() {
    const std::lock_guard lock(m_mutex);
    m_stopped = true;
    m_changed.notify_all();
}

void PacketLanes::note(const Message& note) {
    const std::lock_guard lock(m_mutex);
    if (!note.isEmpty() && !m_notes.contains(note))
        m_notes << note;
}

PacketLanes::Outcome PacketLanes::waitForTracks(std::chrono::milliseconds patience) {
    std::unique_lock lock(m_mutex);
    const auto isKnown = [](const Lane& lane) { return lane.track || lane.finished; };
    const bool known = m_changed.wait_for(lock, patience, [&] {
        return m_error || std::all_of(m_lanes.begin(), m_lanes.end(), isKnown);
    });
    if (m_error)
        return Outcome::Failed;
    return known ? Outcome::Ready : Outcome::Waiting;
}

OutputTrack* PacketLanes::track(std::size_t lane) {
    const std::lock_guard lock(m_mutex);
    return m_lanes[lane].track ? &*m_lanes[lane].track : nullptr;
}

bool PacketLanes::isEarlier(const Lane& a, const Lane& b) const {
    return av_compare_ts(a.packets.front()->dts, a.track->timeBase, b.packets.front()->dts,
                         b.track->timeBase) < 0;
}

/// The lane to take from; none while one that may still give an earlier packet is empty.
std::optional<std::size_t> PacketLanes::nextLane() const {
    std::optional<std::size_t> best;
    for (std::size_t i = 0; i < m_lanes.size(); ++i) {
        const Lane& lane = m_lanes[i];
        if (lane.packets.empty() && !lane.finished)
            return std::nullopt;
        if (!lane.packets.empty() && (!best || isEarlier(lane, m_lanes[*best])))
            best = i;
    }
    return best;
}

PacketLanes::Outcome PacketLanes::take(std::chrono::milliseconds patience, Packet& packet,
                                       std::size_t& lane) {
    std::unique_lock lock(m_mutex);
    std::optional<std::size_t> next;
    bool ended = false;
    m_changed.wait_for(lock, patience, [&] {
        next = nextLane();
        ended = std::all_of(m_lanes.begin(), m_lanes.end(),
                            [](const Lane& l) { return l.finished && l.packets.empty(); });
        return next || ended || m_error;
    });
    if (m_error)
        return Outcome::Failed;
    if (!next)
        return ended ? Outcome::End : Outcome::Waiting;
    Lane& from = m_lanes[*next];
    packet = std::move(from.packets.front());
    from.packets.pop_front();
    from.bytes -= static_cast<std::size_t>(std::max(packet->size, 0));
    lane = *next;
    const bool roomy =
        from.packets.size() <= kMostPackets / 2 && from.bytes <= kMostPacketBytes / 2;
    if (from.blocked && roomy) {
        from.blocked = false;
        m_changed.notify_all();
    }
    return Outcome::Ready;
}

Error PacketLanes::error() const {
    const std::lock_guard lock(m_mutex);
    return m_error.value_or(Error{ErrorCode::Cancelled, kRunExport, {}, {}});
}

Notes PacketLanes::notes() const {
    const std::lock_guard lock(m_mutex);
    return m_notes;
}

} // namespace clipheave::platform
