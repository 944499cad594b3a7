// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/decode/video_packets.h"

#include "platform/engine/decode/disposable_frame.h"

#include <algorithm>

namespace clipheave::platform {

namespace {

/// More than any reordering of frames.
constexpr std::size_t kPacketsAhead = 24;
constexpr std::size_t kMostBytesAhead = 48 << 20;
/// After this many packets a video without keyframes (intra refresh) is decoded from anywhere.
constexpr int kPacketsWithoutKeyFrame = 600;
/// Beyond the index, a time this far ahead is reached by a seek instead of by decoding.
constexpr double kFarSeconds = 8;

std::int64_t shownTime(const AVPacket& packet) {
    return packet.pts != kNoTimestamp ? packet.pts : packet.dts;
}

} // namespace

int VideoPackets::indexSize() const {
    // In transport and program streams the index holds only what a seek came across.
    const bool isStream = (m_context.iformat->flags & AVFMT_TS_DISCONT) != 0;
    return isStream ? 0 : avformat_index_get_entries_count(&m_video);
}

Packet VideoPackets::read() {
    Packet packet(av_packet_alloc());
    while (packet != nullptr && !m_atEnd) {
        if (av_read_frame(&m_context, packet.get()) < 0)
            break;
        if (packet->stream_index == m_video.index)
            return packet;
        av_packet_unref(packet.get());
    }
    m_atEnd = true;
    return nullptr;
}

void VideoPackets::readAhead() {
    while (!m_atEnd && m_ahead.size() < kPacketsAhead && m_aheadBytes < kMostBytesAhead) {
        Packet packet = read();
        if (packet == nullptr)
            return;
        if (packet->dts != kNoTimestamp)
            m_newest = packet->dts;
        // Differences of hostile times may be anything.
        std::int64_t delay = 0;
        if (packet->dts != kNoTimestamp && packet->pts != kNoTimestamp &&
            !__builtin_sub_overflow(packet->pts, packet->dts, &delay))
            m_reorder = std::max(m_reorder, delay);
        m_aheadBytes += static_cast<std::size_t>(std::max(packet->size, 0));
        m_ahead.push_back(std::move(packet));
    }
}

Packet VideoPackets::next() {
    readAhead();
    if (m_ahead.empty())
        return nullptr;
    Packet packet = std::move(m_ahead.front());
    m_ahead.pop_front();
    m_aheadBytes -= static_cast<std::size_t>(std::max(packet->size, 0));
    return packet;
}

bool VideoPackets::dropUntilKeyFrame() {
    for (int seen = 0; seen < kPacketsWithoutKeyFrame; ++seen) {
        readAhead();
        if (m_ahead.empty())
            return false;
        if ((m_ahead.front()->flags & AV_PKT_FLAG_KEY) != 0)
            return true;
        static_cast<void>(next());
    }
    return true;
}

bool VideoPackets::seekFor(std::int64_t wanted, std::optional<std::int64_t> back) {
    const std::int64_t start = m_video.start_time == kNoTimestamp ? 0 : m_video.start_time;
    std::int64_t target = start;
    if (back && !__builtin_sub_overflow(wanted, *back, &target))
        target = std::max(target, start);
    // A container without an index finds its start for certain only by its byte position.
    int sought =
        !back && indexSize() == 0 ? av_seek_frame(&m_context, -1, 0, AVSEEK_FLAG_BYTE) : -1;
    if (sought < 0)
        sought = av_seek_frame(&m_context, m_video.index, target, AVSEEK_FLAG_BACKWARD);
    if (sought < 0)
        return false;
    m_ahead.clear();
    m_aheadBytes = 0;
    m_atEnd = false;
    m_newest = kNoTimestamp;
    if (!dropUntilKeyFrame())
        return false;
    const std::int64_t first = shownTime(*m_ahead.front());
    return !back || first == kNoTimestamp || first <= wanted;
}

bool VideoPackets::shouldSeek(std::int64_t wanted) {
    readAhead();
    std::int64_t safe = 0, distance = 0;
    if (m_atEnd || m_newest == kNoTimestamp || __builtin_sub_overflow(wanted, m_reorder, &safe))
        return false;
    const int entries = indexSize();
    const AVIndexEntry* last =
        entries > 0 ? avformat_index_get_entry(&m_video, entries - 1) : nullptr;
    if (last != nullptr && last->timestamp >= safe) {
        const AVIndexEntry* key =
            avformat_index_get_entry_from_timestamp(&m_video, safe, AVSEEK_FLAG_BACKWARD);
        return key != nullptr && key->timestamp > m_newest;
    }
    return !__builtin_sub_overflow(wanted, m_newest, &distance) &&
           static_cast<double>(distance) * seconds(m_video.time_base) > kFarSeconds;
}

bool VideoPackets::isUnneeded(const AVPacket& packet, std::int64_t wanted) const {
    if (packet.pts == kNoTimestamp || packet.pts >= wanted)
        return false;
    const bool isFollowed = std::any_of(m_ahead.begin(), m_ahead.end(), [&](const Packet& later) {
        return later->pts != kNoTimestamp && later->pts > packet.pts && later->pts <= wanted;
    });
    return isFollowed && isDisposableFrame(packet, *m_video.codecpar);
}

} // namespace clipheave::platform
