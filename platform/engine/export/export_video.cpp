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
    return wholeTimeBase(units, scaled ? kLeastScaledUnits : kLeastFilmUnits);
}

AVRational frameRateOf(const ExportVideo& video, const PlannedSegment& first, AVRational base) {
    if (video.frameDuration)
        return av_inv_q(base);
    const AVRational rate = first.facts->frameRate;
    return rate.num > 0 && rate.den > 0 ? rate : AVRational{25, 1};
}

bool survivesEncoding(AVPacketSideDataType type, const PictureLook& look, bool turned) {
    if (type == AV_PKT_DATA_MASTERING_DISPLAY_METADATA || type == AV_PKT_DATA_CONTENT_LIGHT_LEVEL)
        return isHighDynamicRange(look.transfer);
    return (type == AV_PKT_DATA_SPHERICAL || type == AV_PKT_DATA_STEREO3D) && !turned;
}

/// The reading half: fills the queue with the pictures of all segments and the black between them.
class PictureFeeder {
public:
    PictureFeeder(const ExportVideo& video, std::vector<PlannedSegment>& segments,
                  const PictureLook& look, AVRational timeBase, int threads, ExportLanes& lanes,
                  PictureQueue& queue)
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
    int place(TimedPicture picture);
    Result<void> checked(int code, const QString& path) const;

    std::vector<PlannedSegment>& m_segments;
    const PictureLook& m_look;
    int m_threads;
    ExportLanes& m_lanes;
    PictureQueue& m_queue;
    PicturePacer m_pacer;
    int m_placed = 0; ///< outcome of the last place()
};

Result<void> PictureFeeder::checked(int code, const QString& path) const {
    if (code >= 0 || code == AVERROR_EXIT)
        return {};
    if (code == AVERROR(ERANGE))
        return failure(ErrorCode::LimitExceeded, QStringLiteral("encode the film"), path,
                       QStringLiteral("a gap of more than half a day"));
    return failure(ErrorCode::Io, QStringLiteral("filter the film"), path, ffmpegText(code));
}

int PictureFeeder::place(TimedPicture picture) {
    return m_pacer.place(std::move(picture), [this](StampedPicture stamped) {
        return m_queue.push(std::move(stamped));
    });
}

Result<void> PictureFeeder::feedBlack(Ticks start, Ticks end) {
    if (end - start < kSliverTicks)
        return {};
    int code = end - start > kLongestFiller ? AVERROR(ERANGE) : 0;
    const Frame black = code < 0 ? nullptr : blackPicture(m_look);
    for (Ticks at = start; code >= 0 && at < end && !m_lanes.stopped(); at += kBlackPiece) {
        Frame copy(black ? av_frame_clone(black.get()) : nullptr);
        code =
            copy ? place({std::move(copy), at, std::min(at + kBlackPiece, end)}) : AVERROR(ENOMEM);
    }
    return checked(code, {});
}

Result<void> PictureFeeder::feedSegment(PlannedSegment& segment) {
    auto reader = VideoSegmentReader::open(segment, m_threads);
    if (!reader)
        return tl::unexpected(reader.error());
    PictureFilter filter(m_look, segment.turn, segment.mirrored, m_threads);
    const auto sink = [this](TimedPicture picture) {
        m_placed = place(std::move(picture));
        return m_placed >= 0;
    };
    int code = 0;
    while (code >= 0 && !m_lanes.stopped()) {
        auto picture = (*reader)->next();
        if (!picture)
            return tl::unexpected(picture.error());
        if (!picture->frame) {
            code = filter.finish(sink);
            break;
        }
        if (!m_pacer.wants(picture->start, picture->end))
            continue;
        const AVRational aspect = (*reader)->aspectOf(*picture->frame);
        code = filter.push(std::move(*picture), aspect, sink);
    }
    for (const QString& text : (*reader)->notes())
        m_lanes.note(text);
    if (code >= 0 && !m_lanes.stopped() && !(*reader)->anyDecoded())
        return failure(ErrorCode::InvalidData, QStringLiteral("decode the film"), segment.path,
                       QStringLiteral("nothing of it can be decoded: ") + (*reader)->complaint());
    return checked(m_placed < 0 ? m_placed : code, segment.path);
}

} // namespace

void encodeVideo(const ExportVideo& video, std::vector<PlannedSegment>& segments, int threads,
                 ExportLanes& lanes, std::size_t lane) {
    QStringList notes;
    const PictureLook look = lookOf(video, segments, notes);
    for (const QString& text : notes)
        lanes.note(text);
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
    PictureQueue queue(kMostWaitingPictures, [&lanes] { return lanes.stopped(); });
    PictureFeeder feeder(video, segments, look, base, threads, lanes, queue);
    std::thread reading([&] { feeder.run(); });
    encodePictures(**encoder, queue, lanes, lane);
    reading.join();
    lanes.finish(lane);
}

} // namespace clipheave::platform
