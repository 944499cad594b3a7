// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/export/export_video.h"

#include "platform/engine/decode/video_segment_reader.h"
#include "platform/engine/encode/video_encoder.h"

#include <algorithm>
#include <thread>

namespace clipheave::platform {

namespace {

/// Black that is not repeated is still told this often, for players to jump into.
constexpr Ticks kBlackPiece = kTicksPerSecond * 10;
constexpr std::int64_t kLeastScaledUnits = 90'000; ///< of a time base in a second

/// A time base in which the times of all segments are whole, where there is one.
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

bool survivesEncoding(AVPacketSideDataType type, const FrameFormat& look, bool turned) {
    if (type == AV_PKT_DATA_MASTERING_DISPLAY_METADATA || type == AV_PKT_DATA_CONTENT_LIGHT_LEVEL)
        return isHighDynamicRange(look.transfer);
    return (type == AV_PKT_DATA_SPHERICAL || type == AV_PKT_DATA_STEREO3D) && !turned;
}

/// The reading half: fills the queue with the frames of all segments and the black between them.
class FrameFeeder {
public:
    FrameFeeder(const ExportVideo& video, std::vector<PlannedSegment>& segments,
                const FrameFormat& look, AVRational timeBase, int threads, ExportLanes& lanes,
                FrameQueue& queue)
        : m_segments(segments), m_look(look), m_threads(threads), m_lanes(lanes), m_queue(queue),
          m_pacer(timeBase, video.frameDuration.has_value()) {}

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
    int place(TimedFrame videoFrame);
    Result<void> checked(int code, const QString& path) const;

    std::vector<PlannedSegment>& m_segments;
    const FrameFormat& m_look;
    int m_threads;
    ExportLanes& m_lanes;
    FrameQueue& m_queue;
    FramePacer m_pacer;
    int m_placed = 0; ///< outcome of the last place()
};

Result<void> FrameFeeder::checked(int code, const QString& path) const {
    if (code >= 0 || code == AVERROR_EXIT)
        return {};
    if (code == AVERROR(ERANGE))
        return failure(ErrorCode::LimitExceeded, QStringLiteral("encode the film"), path,
                       QStringLiteral("a gap of more than half a day"));
    return failure(ErrorCode::Io, QStringLiteral("filter the film"), path, ffmpegText(code));
}

int FrameFeeder::place(TimedFrame videoFrame) {
    return m_pacer.place(std::move(videoFrame),
                         [this](StampedFrame stamped) { return m_queue.push(std::move(stamped)); });
}

Result<void> FrameFeeder::feedBlack(Ticks start, Ticks end) {
    if (end - start < kSliverTicks)
        return {};
    int code = end - start > kLongestFiller ? AVERROR(ERANGE) : 0;
    const Frame black = code < 0 ? nullptr : blackFrame(m_look);
    for (Ticks at = start; code >= 0 && at < end && !m_lanes.stopped(); at += kBlackPiece) {
        Frame copy(black ? av_frame_clone(black.get()) : nullptr);
        code =
            copy ? place({std::move(copy), at, std::min(at + kBlackPiece, end)}) : AVERROR(ENOMEM);
    }
    return checked(code, {});
}

Result<void> FrameFeeder::feedSegment(PlannedSegment& segment) {
    auto reader = VideoSegmentReader::open(segment, m_threads);
    if (!reader)
        return tl::unexpected(reader.error());
    FrameFilter filter(m_look, segment.turn, segment.mirrored, m_threads);
    const auto sink = [this](TimedFrame videoFrame) {
        m_placed = place(std::move(videoFrame));
        return m_placed >= 0;
    };
    int code = 0;
    while (code >= 0 && !m_lanes.stopped()) {
        auto videoFrame = (*reader)->next();
        if (!videoFrame)
            return tl::unexpected(videoFrame.error());
        if (!videoFrame->frame) {
            code = filter.finish(sink);
            break;
        }
        if (!m_pacer.wants(videoFrame->start, videoFrame->end))
            continue;
        const AVRational aspect = (*reader)->aspectOf(*videoFrame->frame);
        code = filter.push(std::move(*videoFrame), aspect, sink);
    }
    for (const Message& note : (*reader)->notes())
        m_lanes.note(note);
    if (code >= 0 && !m_lanes.stopped() && !(*reader)->anyDecoded())
        return failure(ErrorCode::InvalidData, QStringLiteral("decode the film"), segment.path,
                       QStringLiteral("nothing of it can be decoded: ") + (*reader)->complaint());
    return checked(m_placed < 0 ? m_placed : code, segment.path);
}

} // namespace

void encodeVideo(const ExportVideo& video, std::vector<PlannedSegment>& segments, int threads,
                 ExportLanes& lanes, std::size_t lane) {
    Notes notes;
    const FrameFormat look = lookOf(video, segments, notes);
    for (const Message& note : notes)
        lanes.note(note);
    const AVRational base = commonTimeBase(video, segments);
    auto encoder = VideoEncoder::open(look, video, base, frameRateOf(video, segments.front(), base),
                                      encoderThreads(threads));
    if (!encoder)
        return lanes.fail(encoder.error());
    auto track = (*encoder)->track();
    if (!track)
        return lanes.fail(track.error());
    track->displayMatrix = video.preferredTransform;
    track->language = segments.front().facts->language;
    const bool turned = segments.front().turn != 0 || segments.front().mirrored;
    for (const OutputTrack::SideData& data : segments.front().facts->sideData)
        if (survivesEncoding(data.type, look, turned))
            track->sideData.push_back(data);
    if (!lanes.announce(lane, std::move(*track)))
        return;
    FrameQueue queue(kMostWaitingFrames, [&lanes] { return lanes.stopped(); });
    FrameFeeder feeder(video, segments, look, base, threads, lanes, queue);
    std::thread reading([&] { feeder.run(); });
    encodeFrames(**encoder, queue, lanes, lane);
    reading.join();
    lanes.finish(lane);
}

} // namespace clipheave::platform
