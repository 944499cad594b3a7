// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/export/copy_lane.h"

#include "platform/engine/export/timestamp_repair.h"
#include "platform/engine/messages.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace clipheave::platform {

namespace {

constexpr Ticks kCopyShortestSeek = kTicksPerSecond;
constexpr int kLeastCopyUnits = 90'000; ///< of a stretched video's time base in a second
/// An audio decoder needs the packet before the first one that is heard.
constexpr Ticks kCopyPreroll = kTicksPerSecond / 40;
/// More packets that wait for the end are damage.
constexpr std::size_t kMostHeld = 64;

/// Returns whether packets of both can follow each other in one track.
bool isSameCodec(const AVCodecParameters& a, const AVCodecParameters& b) {
    const bool same = a.codec_id == b.codec_id && a.width == b.width && a.height == b.height &&
                      a.sample_rate == b.sample_rate &&
                      a.ch_layout.nb_channels == b.ch_layout.nb_channels &&
                      a.extradata_size == b.extradata_size;
    return same &&
           (a.extradata_size <= 0 ||
            std::memcmp(a.extradata, b.extradata, static_cast<std::size_t>(a.extradata_size)) == 0);
}

AVRational copyTimeBase(const std::vector<PlannedSegment>& segments) {
    const SourceFacts& first = *segments.front().facts;
    const bool audio = first.parameters->codec_type == AVMEDIA_TYPE_AUDIO;
    if (audio)
        return {1, first.parameters->sample_rate};
    AVRational base{1, first.timeBase.den};
    const bool scaled = std::any_of(segments.begin(), segments.end(),
                                    [](const PlannedSegment& s) { return s.stretch.speed() != 1; });
    while (scaled && base.den < kLeastCopyUnits)
        base.den *= 2;
    return base;
}

/// Copies the segments of one track.
class PacketCopier {
public:
    PacketCopier(AVRational base, PacketLanes& lanes, std::size_t lane)
        : m_base(base), m_lanes(lanes), m_lane(lane) {}
    Result<void> copy(PlannedSegment& segment, bool first);

private:
    struct Times {
        Ticks pts = 0, dts = 0, duration = 0;
    };
    std::optional<Times> timesOf(const AVPacket& packet);
    std::optional<Times> untilStart(AVPacket& packet, bool first);
    int readPackets(bool first);
    int takeReady(bool first);
    int take(AVPacket& packet, const Times& times);
    int give(Packet packet, const Times& times);
    int giveHeld();
    [[nodiscard]] bool isVideo() const {
        return m_source->codec().codec_type == AVMEDIA_TYPE_VIDEO;
    }
    /// Returns whether it lies behind the end of the edit list: not shown, though others may refer
    /// to it.
    [[nodiscard]] bool isCutOff(const AVPacket& packet, const Times& times) const {
        return (packet.flags & AV_PKT_FLAG_DISCARD) != 0 && times.pts >= m_stretch.sourceStart;
    }

    AVRational m_base;
    PacketLanes& m_lanes;
    std::size_t m_lane;
    std::unique_ptr<StreamSource> m_source;
    Stretch m_stretch;
    std::optional<std::int64_t> m_lastDts;
    std::optional<Ticks> m_expected; ///< time of the next packet, audio of constant frames
    bool m_begun = false, m_skipped = false;
    std::optional<Ticks> m_cutOffFrom; ///< time of the first packet that is cut off
    /// Packets shown after the end: wanted only if one shown before it follows them.
    std::vector<std::pair<Packet, Times>> m_held;
    std::vector<Packet> m_ready; ///< with repaired timestamps
};

/// Returns the times in the source.
std::optional<PacketCopier::Times> PacketCopier::timesOf(const AVPacket& packet) {
    const auto pts = m_source->time(packet.pts), dts = m_source->time(packet.dts);
    const AVRational base = m_source->stream().time_base;
    Times times;
    times.duration = ticksOf(std::max<std::int64_t>(packet.duration, 0), base).value_or(0);
    if (times.duration == 0 && isVideo())
        times.duration = ticksOf(1, av_inv_q(m_source->stream().avg_frame_rate)).value_or(0);
    if (!pts || !dts)
        return std::nullopt; // beyond any real time
    times.dts = *dts;
    times.pts = *pts;
    const AVCodecParameters& codec = m_source->codec();
    if (!isVideo() && codec.frame_size > 0) {
        // Containers with milliseconds only round exact times.
        const auto exact = ticksOf(codec.frame_size, {1, codec.sample_rate});
        if (m_expected && std::abs(times.pts - *m_expected) <= 2 * kSliverTicks)
            times.pts = times.dts = *m_expected;
        times.duration = exact.value_or(times.duration);
        m_expected = times.pts + times.duration;
    }
    return times;
}

int PacketCopier::give(Packet packet, const Times& times) {
    const bool cutOff = isCutOff(*packet, times);
    const Ticks shownTo =
        cutOff ? times.pts : std::min(times.pts + times.duration, m_stretch.sourceEnd);
    const std::int64_t end = ticksTo(m_stretch.toTarget(shownTo), m_base);
    packet->pts = ticksTo(m_stretch.toTarget(times.pts), m_base);
    // What only others refer to, from beyond the end, stands where the edit list ends, for no time.
    if (cutOff || times.pts >= m_stretch.sourceEnd - kSliverTicks)
        packet->pts = end;
    packet->dts = ticksTo(m_stretch.toTarget(times.dts), m_base);
    packet->duration = std::max<std::int64_t>(end - packet->pts, 0);
    if (m_lastDts && packet->dts <= *m_lastDts)
        packet->dts = *m_lastDts + 1;
    packet->pts = std::max(packet->pts, packet->dts);
    m_lastDts = packet->dts;
    packet->pos = -1;
    return m_lanes.push(m_lane, std::move(packet)) ? 0 : AVERROR_EXIT;
}

int PacketCopier::giveHeld() {
    for (auto& [packet, times] : m_held)
        if (const int code = give(std::move(packet), times); code < 0)
            return code;
    m_held.clear();
    return 0;
}

/// Returns 1 when the segment is complete.
int PacketCopier::take(AVPacket& packet, const Times& times) {
    Packet copy(av_packet_alloc());
    if (!copy)
        return AVERROR(ENOMEM);
    av_packet_move_ref(copy.get(), &packet);
    if (times.dts >= m_stretch.sourceEnd - kSliverTicks)
        return 1;
    const bool cutOff = isCutOff(*copy, times);
    if (cutOff && !m_cutOffFrom)
        m_cutOffFrom = times.pts;
    // What is left out in the middle cannot be: the frames behind it may need it.
    if (!cutOff && m_cutOffFrom && times.pts > *m_cutOffFrom && isVideo())
        return AVERROR_PATCHWELCOME;
    if (cutOff || times.pts >= m_stretch.sourceEnd - kSliverTicks) {
        if (m_held.size() < kMostHeld) {
            m_held.emplace_back(std::move(copy), times);
            return 0;
        }
        if (cutOff)
            return 0; // no codec reorders that far
    }
    if (const int code = giveHeld(); code < 0)
        return code;
    return give(std::move(copy), times);
}

/// The packet's times once the segment has begun, none before.
std::optional<PacketCopier::Times> PacketCopier::untilStart(AVPacket& packet, bool first) {
    const auto times = timesOf(packet);
    if (!times || m_begun)
        return times;
    const bool key = !isVideo() || (packet.flags & AV_PKT_FLAG_KEY) != 0;
    const Ticks from = m_stretch.sourceStart;
    // Only the first segment's edit list can hide what comes before the start.
    const bool reached = isVideo()
                             ? first || times->pts >= from - kSliverTicks
                             : times->pts + times->duration > (first ? from - kCopyPreroll : from);
    if (!key || !reached) {
        m_skipped = m_skipped || (times->pts >= from && isVideo());
        return std::nullopt;
    }
    m_begun = true;
    return times;
}

int PacketCopier::takeReady(bool first) {
    int code = 0;
    for (const Packet& packet : m_ready)
        if (code == 0)
            if (const auto times = untilStart(*packet, first))
                code = take(*packet, *times);
    m_ready.clear();
    return code;
}

int PacketCopier::readPackets(bool first) {
    TimestampRepair repair(m_source->stream(), 0);
    int code = 0;
    while (code == 0) {
        if (m_lanes.stopped())
            return AVERROR_EXIT;
        Packet packet(av_packet_alloc());
        code = packet ? m_source->read(*packet) : AVERROR(ENOMEM);
        if (code == AVERROR_EOF)
            repair.finish(m_ready);
        else if (code >= 0)
            repair.push(std::move(packet), m_ready);
        if (code >= 0 || code == AVERROR_EOF)
            if (const int taken = takeReady(first); taken != 0)
                return taken == 1 ? 0 : taken;
    }
    return code == AVERROR_EOF ? 0 : code;
}

Result<void> PacketCopier::copy(PlannedSegment& segment, bool first) {
    auto source = openSegment(segment, segment.facts->parameters->codec_type);
    if (!source)
        return tl::unexpected(source.error());
    m_source = std::move(*source);
    m_stretch = segment.stretch;
    m_begun = m_skipped = false;
    m_expected.reset();
    m_cutOffFrom.reset();
    m_held.clear();
    m_ready.clear();
    if (m_stretch.sourceStart > kCopyShortestSeek && !m_source->seekBefore(m_stretch.sourceStart) &&
        !m_source->rewind())
        return m_source->failed(ErrorCode::Io, kCannotSeekToStart);
    const int code = readPackets(first);
    m_lanes.note(damageNote(*m_source, 0));
    if (m_skipped)
        m_lanes.note(kSegmentStartsLater);
    if (code == AVERROR_PATCHWELCOME)
        return m_source->failed(ErrorCode::NotSupported, kEditListTooComplex);
    if (code < 0 && code != AVERROR_EXIT)
        return m_source->failed(ErrorCode::Io, ffmpegReason(code));
    if (!m_begun && !m_lanes.stopped())
        return m_source->failed(ErrorCode::InvalidData, kNothingToCopy);
    return {};
}

Result<OutputTrack> copiedTrack(const std::vector<PlannedSegment>& segments) {
    const SourceFacts& first = *segments.front().facts;
    OutputTrack track;
    track.parameters.reset(avcodec_parameters_alloc());
    if (!track.parameters || copyParameters(track.parameters.get(), first.parameters.get()) < 0)
        return failure(ErrorCode::Io, kCopyStreams, {}, ffmpegReason(AVERROR(ENOMEM)));
    track.timeBase = copyTimeBase(segments);
    track.frameRate = first.frameRate;
    track.aspect = first.aspect;
    track.language = first.language;
    track.sideData = first.sideData;
    return track;
}

Result<void> copySegments(std::vector<PlannedSegment>& segments,
                          const std::array<double, 9>* displayMatrix, PacketLanes& lanes,
                          std::size_t lane) {
    const AVCodecParameters& codec = *segments.front().facts->parameters;
    for (const PlannedSegment& segment : segments) {
        if (!isSameCodec(codec, *segment.facts->parameters))
            return failure(ErrorCode::NotSupported, kCopyStreams, segment.path, kCodecChanges);
        if (codec.codec_type == AVMEDIA_TYPE_AUDIO && segment.stretch.speed() != 1)
            return failure(ErrorCode::InvalidArgument, kCopyStreams, segment.path,
                           kCopiedAudioSpeed);
    }
    auto track = copiedTrack(segments);
    if (!track)
        return tl::unexpected(track.error());
    if (displayMatrix != nullptr)
        track->displayMatrix = *displayMatrix;
    PacketCopier copier(track->timeBase, lanes, lane);
    if (!lanes.announce(lane, std::move(*track)))
        return {};
    for (PlannedSegment& segment : segments) {
        const bool first = &segment == &segments.front();
        if (auto copied = copier.copy(segment, first); !copied || lanes.stopped())
            return copied;
    }
    return {};
}

} // namespace

void copyTrack(std::vector<PlannedSegment>& segments, const std::array<double, 9>* displayMatrix,
               PacketLanes& lanes, std::size_t lane) {
    if (auto copied = copySegments(segments, displayMatrix, lanes, lane); !copied)
        return lanes.fail(copied.error());
    lanes.finish(lane);
}

} // namespace clipheave::platform
