// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/export/video_lane.h"

#include "platform/engine/convert/frame_filter.h"
#include "platform/engine/convert/output_format.h"
#include "platform/engine/decode/video_segment_reader.h"
#include "platform/engine/encode/video_encoder.h"
#include "platform/engine/messages.h"

#include <algorithm>
#include <thread>

namespace clipheave::platform {

namespace {

/// Black at a variable frame rate still has a frame this often, for players to seek to.
constexpr Ticks kBlackStretch = kTicksPerSecond * 10;
constexpr std::int64_t kLeastScaledUnits = 90'000; ///< of a time base in a second

/// Returns a time base in which the times of all segments are whole, where there is one.
AVRational commonTimeBase(const ExportVideo& video, const std::vector<PlannedSegment>& segments) {
    if (video.frameDuration) {
        AVRational base{0, 1};
        av_reduce(&base.num, &base.den, video.frameDuration->value, video.frameDuration->timescale,
                  INT_MAX);
        return base;
    }
    std::vector<std::int64_t> units;
    bool scaled = false;
    for (const PlannedSegment& segment : segments) {
        units.push_back(segment.facts->timeBase.den);
        scaled = scaled || segment.stretch.speed() != 1;
    }
    return wholeTimeBase(units, scaled ? kLeastScaledUnits : kLeastVideoUnits);
}

AVRational frameRateOf(const ExportVideo& video, const PlannedSegment& first, AVRational base) {
    if (video.frameDuration)
        return av_inv_q(base);
    const AVRational rate = first.facts->frameRate;
    return rate.num > 0 && rate.den > 0 ? rate : AVRational{25, 1};
}

bool survivesEncoding(AVPacketSideDataType type, const FrameFormat& output, bool rotated) {
    if (type == AV_PKT_DATA_MASTERING_DISPLAY_METADATA || type == AV_PKT_DATA_CONTENT_LIGHT_LEVEL)
        return isHdr(output.transfer);
    return (type == AV_PKT_DATA_SPHERICAL || type == AV_PKT_DATA_STEREO3D) && !rotated;
}

/// The reading half: fills the queue with the frames of all segments and the black between them.
class FrameFeeder {
public:
    FrameFeeder(const ExportVideo& video, std::vector<PlannedSegment>& segments,
                const FrameFormat& output, AVRational timeBase, int threads, PacketLanes& lanes,
                FrameQueue& queue)
        : m_segments(segments), m_output(output), m_threads(threads), m_lanes(lanes),
          m_queue(queue), m_pacer(timeBase, video.frameDuration.has_value()) {}

    void run() {
        Ticks end = 0;
        for (PlannedSegment& segment : m_segments) {
            auto fed = feedBlack(end, segment.stretch.targetStart);
            if (fed)
                fed = feedSegment(segment);
            if (!fed) {
                m_lanes.fail(fed.error());
                break;
            }
            if (m_lanes.stopped())
                break;
            end = segment.stretch.targetEnd;
        }
        m_queue.close();
    }

private:
    Result<void> feedBlack(Ticks start, Ticks end);
    Result<void> feedSegment(PlannedSegment& segment);
    int place(TimedFrame timed);
    Result<void> checked(int code, const QString& path) const;

    std::vector<PlannedSegment>& m_segments;
    const FrameFormat& m_output;
    int m_threads;
    PacketLanes& m_lanes;
    FrameQueue& m_queue;
    FramePacer m_pacer;
    int m_placed = 0; ///< outcome of the last place()
};

Result<void> FrameFeeder::checked(int code, const QString& path) const {
    if (code >= 0 || code == AVERROR_EXIT)
        return {};
    if (code == AVERROR(ERANGE))
        return failure(ErrorCode::LimitExceeded, kEncodeVideo, path, kGapTooLong);
    return failure(ErrorCode::Io, kFilterVideo, path, ffmpegReason(code));
}

int FrameFeeder::place(TimedFrame timed) {
    return m_pacer.place(std::move(timed),
                         [this](StampedFrame stamped) { return m_queue.push(std::move(stamped)); });
}

Result<void> FrameFeeder::feedBlack(Ticks start, Ticks end) {
    if (end - start < kSliverTicks)
        return {};
    int code = end - start > kLongestFiller ? AVERROR(ERANGE) : 0;
    const Frame black = code < 0 ? nullptr : blackFrame(m_output);
    for (Ticks at = start; code >= 0 && at < end && !m_lanes.stopped(); at += kBlackStretch) {
        Frame copy(black ? av_frame_clone(black.get()) : nullptr);
        code = copy ? place({std::move(copy), at, std::min(at + kBlackStretch, end)})
                    : AVERROR(ENOMEM);
    }
    return checked(code, {});
}

Result<void> FrameFeeder::feedSegment(PlannedSegment& segment) {
    auto reader = VideoSegmentReader::open(segment, m_threads);
    if (!reader)
        return tl::unexpected(reader.error());
    FrameFilter filter(segment.facts->parameters.get(), m_output, segment.orientation, m_threads);
    const auto sink = [this](TimedFrame timed) {
        m_placed = place(std::move(timed));
        return m_placed >= 0;
    };
    int code = 0;
    while (code >= 0 && !m_lanes.stopped()) {
        auto timed = (*reader)->next();
        if (!timed)
            return tl::unexpected(timed.error());
        if (!timed->frame) {
            code = filter.finish(sink);
            break;
        }
        if (!m_pacer.wants(timed->start, timed->end))
            continue;
        const AVRational aspect = (*reader)->aspectOf(*timed->frame);
        code = filter.push(std::move(*timed), aspect, sink);
    }
    for (const Message& note : (*reader)->notes())
        m_lanes.note(note);
    if (code >= 0 && !m_lanes.stopped() && !(*reader)->anyDecoded())
        return failure(ErrorCode::InvalidData, kDecodeVideo, segment.path,
                       (*reader)->nothingDecodedReason());
    return checked(m_placed < 0 ? m_placed : code, segment.path);
}

} // namespace

void encodeVideo(const ExportVideo& video, std::vector<PlannedSegment>& segments, int threads,
                 PacketLanes& lanes, std::size_t lane) {
    Notes notes;
    const FrameFormat output = outputFormat(video, segments, notes);
    for (const Message& note : notes)
        lanes.note(note);
    const AVRational base = commonTimeBase(video, segments);
    auto encoder = VideoEncoder::open(
        output, video, base, frameRateOf(video, segments.front(), base), encoderThreads(threads));
    if (!encoder)
        return lanes.fail(encoder.error());
    auto track = (*encoder)->track();
    if (!track)
        return lanes.fail(track.error());
    track->displayMatrix = video.preferredTransform;
    track->language = segments.front().facts->language;
    const bool rotated = !segments.front().orientation.isIdentity();
    for (const OutputTrack::SideData& data : segments.front().facts->sideData)
        if (survivesEncoding(data.type, output, rotated))
            track->sideData.push_back(data);
    if (!lanes.announce(lane, std::move(*track)))
        return;
    FrameQueue queue(kMostWaitingFrames, [&lanes] { return lanes.stopped(); });
    FrameFeeder feeder(video, segments, output, base, threads, lanes, queue);
    std::thread reading([&] { feeder.run(); });
    encodeFrames(**encoder, queue, lanes, lane);
    reading.join();
    lanes.finish(lane);
}

} // namespace clipheave::platform
