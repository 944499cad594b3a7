// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/export/video_writer.h"

#include "platform/engine/convert/frame_filter.h"
#include "platform/engine/encode/video_encoder.h"
#include "platform/engine/export/lane_writer.h"
#include "platform/engine/io/bounded_queue.h"
#include "platform/engine/messages.h"
#include "platform/engine/plan/export_plan_reader.h"

#include <algorithm>
#include <thread>

namespace clipheave::platform {

namespace {

constexpr std::size_t kVideoLane = 0;
/// Frames that wait to be encoded: few, but as many small ones as keep the encoder at work while
/// somebody sleeps for a tenth of a second.
constexpr std::int64_t kWaitingVideoBytes = 64 << 20;
constexpr std::int64_t kMostWaitingVideo = 64, kLeastWaitingVideo = 2;
constexpr AVRational kUsualVideoRate{25, 1};

std::size_t waitingFor(QSize size) {
    const std::int64_t bytes = std::int64_t{size.width()} * size.height() * 4;
    return static_cast<std::size_t>(
        std::clamp(kWaitingVideoBytes / std::max<std::int64_t>(bytes, 1), kLeastWaitingVideo,
                   kMostWaitingVideo));
}

tl::unexpected<Error> videoError(ErrorCode code, const Message& detail) {
    return failure(code, kWriteVideo, {}, detail);
}

QStringList sides(QSize size) {
    return {QString::number(size.width()), QString::number(size.height())};
}

AVRational aspectOfBuffer(const CVPixelBuffer& buffer) {
    const bool given = buffer.pixelAspectWidth > 0 && buffer.pixelAspectHeight > 0;
    return given ? AVRational{buffer.pixelAspectWidth, buffer.pixelAspectHeight} : AVRational{1, 1};
}

/// Borrows the frame's memory and keeps it alive.
Frame frameOfBuffer(const std::shared_ptr<CVPixelBuffer>& buffer) {
    Frame frame(av_frame_alloc());
    if (!frame)
        return frame;
    using Holder = std::shared_ptr<CVPixelBuffer>;
    auto holder = std::make_unique<Holder>(buffer);
    const auto release = [](void* held, std::uint8_t*) { delete static_cast<Holder*>(held); };
    const std::size_t bytes = static_cast<std::size_t>(buffer->bytesPerRow()) *
                              static_cast<std::size_t>(buffer->height());
    frame->buf[0] = av_buffer_create(buffer->baseAddress(), bytes, release, holder.get(),
                                     AV_BUFFER_FLAG_READONLY);
    if (frame->buf[0] == nullptr)
        return nullptr;
    static_cast<void>(holder.release()); // now the frame's
    frame->data[0] = buffer->baseAddress();
    frame->linesize[0] = buffer->bytesPerRow();
    frame->width = buffer->width();
    frame->height = buffer->height();
    frame->format = AV_PIX_FMT_BGR0;
    return frame;
}

/// Returns the format of the video for its first frame; one of another size is fitted into it.
FrameFormat formatFor(const VideoWriterSettings& settings, const CVPixelBuffer& first) {
    FrameFormat format = standardFormat(settings.size.width(), settings.size.height());
    if (first.size() == settings.size)
        format.aspect = aspectOfBuffer(first);
    return format;
}

AVRational timeBaseFor(const CMSampleBuffer& first) {
    std::vector<std::int64_t> units{first.presentationTimeStamp.timescale};
    if (first.duration.timescale > 0)
        units.push_back(first.duration.timescale);
    return wholeTimeBase(units, kLeastVideoUnits);
}

AVRational rateFor(const CMSampleBuffer& first) {
    const double length = CMTimeGetSeconds(first.duration);
    if (!(length >= 0.001 && length <= 10) || first.duration.value > INT32_MAX)
        return kUsualVideoRate;
    AVRational rate{};
    av_reduce(&rate.num, &rate.den, first.duration.timescale, first.duration.value, INT32_MAX);
    return rate;
}

class EncodedVideo final : public VideoWriter {
public:
    EncodedVideo(const VideoWriterSettings& settings, const QString& target, int threads)
        : m_settings(settings), m_target(target), m_threads(threads), m_lanes(1),
          m_input(waitingFor(settings.size), [this] { return m_lanes.stopped(); }),
          m_frames(kMostWaitingFrames, [this] { return m_lanes.stopped(); }),
          m_encoding([this] { encode(); }), m_writing([this] { write(); }) {}
    ~EncodedVideo() override {
        cancel();
        join();
    }

    bool isReady() const override { return m_lanes.stopped() || m_input.hasRoom(); }
    Result<void> append(const CMSampleBuffer& sample) override;
    Result<void> finish() override {
        m_input.close();
        join();
        m_finished = true;
        return m_written;
    }
    void cancel() override { stop({ErrorCode::Cancelled, kWriteVideo, {}, {}}); }
    std::optional<Error> failure() const override {
        return m_lanes.stopped() ? std::optional(m_lanes.error()) : std::nullopt;
    }

private:
    [[nodiscard]] Result<void> check(const CMSampleBuffer& sample) const;
    void stop(const Error& error);
    void join();
    void encode();
    void write();
    [[nodiscard]] bool place(TimedFrame timed);
    void feed(CMSampleBuffer sample, FrameFilter& filter);
    [[nodiscard]] Result<void> feedAll(CMSampleBuffer sample, FrameFilter& filter);
    [[nodiscard]] Result<void> push(const CMSampleBuffer& sample, Ticks end, FrameFilter& filter);

    const VideoWriterSettings m_settings;
    const QString m_target;
    const int m_threads;
    PacketLanes m_lanes;
    BoundedQueue<CMSampleBuffer> m_input; ///< as they were appended
    FrameQueue m_frames;                  ///< in the colours of the video
    std::optional<FramePacer> m_pacer;    ///< of the feeding thread
    bool m_anyPlaced = false;             ///< of the feeding thread
    CMTime m_last{0, 0};                  ///< timestamp of the newest frame
    QSize m_frameSize;                    ///< of the first
    bool m_finished = false;
    Result<void> m_written;
    std::thread m_encoding, m_writing;
};

Result<void> EncodedVideo::check(const CMSampleBuffer& sample) const {
    if (sample.imageBuffer == nullptr)
        return videoError(ErrorCode::InvalidArgument, kSampleWithoutFrame);
    const QSize size = sample.imageBuffer->size();
    if (!m_frameSize.isEmpty() && size != m_frameSize)
        return videoError(ErrorCode::InvalidArgument,
                          {kFrameSizeChanges, sides(size) + sides(m_frameSize)});
    const auto start = ticksOf(sample.presentationTimeStamp);
    const auto length = ticksOf(sample.duration);
    if (!start || (length && *length < 0))
        return videoError(ErrorCode::InvalidArgument, kFrameWithoutTime);
    if (m_last.timescale > 0 && CMTimeCompare(sample.presentationTimeStamp, m_last) <= 0)
        return videoError(ErrorCode::InvalidArgument, kFrameNotLater);
    return {};
}

Result<void> EncodedVideo::append(const CMSampleBuffer& sample) {
    if (const auto failed = failure())
        return tl::unexpected(*failed);
    if (m_finished || !m_input.hasRoom())
        return videoError(m_finished ? ErrorCode::InvalidArgument : ErrorCode::LimitExceeded,
                          m_finished ? kVideoIsComplete : kTooManyFramesWait);
    if (auto checked = check(sample); !checked) {
        stop(checked.error());
        return checked;
    }
    m_last = sample.presentationTimeStamp;
    m_frameSize = sample.imageBuffer->size();
    return m_input.push(sample) ? Result<void>() : tl::unexpected(m_lanes.error());
}

void EncodedVideo::stop(const Error& error) {
    m_lanes.fail(error);
    m_input.wake();
    m_frames.wake();
}

void EncodedVideo::join() {
    if (m_encoding.joinable())
        m_encoding.join();
    if (m_writing.joinable())
        m_writing.join();
}

void EncodedVideo::write() {
    ExportPlan plan;
    plan.container = m_settings.container;
    plan.moovFirst = m_settings.moovFirst;
    PlannedExport planned;
    planned.creationTime = creationTimeOf(m_settings.headerDatesOf);
    m_written = writeLanes(m_lanes, plan, planned, m_target, {});
    if (!m_written)
        stop(m_written.error());
}

void EncodedVideo::encode() {
    auto first = m_input.pop();
    if (!first) {
        stop({ErrorCode::InvalidArgument, kWriteVideo, {}, kNoFrameGiven});
        return;
    }
    const FrameFormat format = formatFor(m_settings, *first->imageBuffer);
    const AVRational base = timeBaseFor(*first);
    auto encoder =
        VideoEncoder::open(format, ExportVideo(), base, rateFor(*first), encoderThreads(m_threads));
    auto track = encoder ? (*encoder)->track() : tl::unexpected(encoder.error());
    if (!track)
        return stop(track.error());
    track->displayMatrix = m_settings.preferredTransform;
    if (!m_lanes.announce(kVideoLane, std::move(*track)))
        return;
    m_pacer.emplace(base, false);
    FrameFilter filter(nullptr, format, Orientation(), m_threads);
    std::thread feeding([&] { feed(std::move(*first), filter); });
    encodeFrames(**encoder, m_frames, m_lanes, kVideoLane);
    feeding.join();
    m_lanes.finish(kVideoLane);
}

void EncodedVideo::feed(CMSampleBuffer sample, FrameFilter& filter) {
    if (const auto fed = feedAll(std::move(sample), filter); !fed)
        stop(fed.error());
    m_frames.close();
}

/// A frame lasts to the next one; the last as long as it says, or as the one before did.
Result<void> EncodedVideo::feedAll(CMSampleBuffer sample, FrameFilter& filter) {
    Ticks length = ticksOf(1, av_inv_q(kUsualVideoRate)).value_or(0);
    while (auto following = m_input.pop()) {
        const Ticks start = ticksOf(sample.presentationTimeStamp).value_or(0);
        const Ticks end = ticksOf(following->presentationTimeStamp).value_or(start);
        length = end - start;
        if (auto pushed = push(sample, end, filter); !pushed)
            return pushed;
        sample = std::move(*following);
    }
    if (m_lanes.stopped())
        return {};
    const Ticks given = ticksOf(sample.duration).value_or(0);
    const Ticks start = ticksOf(sample.presentationTimeStamp).value_or(0);
    if (auto pushed = push(sample, start + (given > 0 ? given : length), filter); !pushed)
        return pushed;
    const int code = filter.finish([this](TimedFrame timed) { return place(std::move(timed)); });
    if (code < 0 && code != AVERROR_EXIT)
        return videoError(ErrorCode::Io, ffmpegReason(code));
    if (!m_anyPlaced && !m_lanes.stopped())
        return videoError(ErrorCode::InvalidArgument, kNoFrameGiven);
    return {};
}

bool EncodedVideo::place(TimedFrame timed) {
    m_anyPlaced = true;
    return m_pacer->place(std::move(timed), [this](StampedFrame stamped) {
        return m_frames.push(std::move(stamped));
    }) >= 0;
}

Result<void> EncodedVideo::push(const CMSampleBuffer& sample, Ticks end, FrameFilter& filter) {
    if (end <= 0)
        return {};
    TimedFrame timed{frameOfBuffer(sample.imageBuffer)};
    timed.start = std::max<Ticks>(ticksOf(sample.presentationTimeStamp).value_or(0), 0);
    timed.end = end;
    int code = AVERROR(ENOMEM);
    if (timed.frame)
        code = filter.push(std::move(timed), aspectOfBuffer(*sample.imageBuffer),
                           [this](TimedFrame filtered) { return place(std::move(filtered)); });
    return code < 0 && code != AVERROR_EXIT ? videoError(ErrorCode::Io, ffmpegReason(code))
                                            : Result<void>();
}

} // namespace

Result<std::unique_ptr<VideoWriter>> makeVideoWriter(const VideoWriterSettings& settings,
                                                     const QString& target,
                                                     const ExportResources& resources) {
    const QSize size = settings.size;
    if (size.width() < 2 || size.height() < 2 || size.width() > CVPixelBuffer::kMostSide ||
        size.height() > CVPixelBuffer::kMostSide)
        return videoError(ErrorCode::InvalidArgument, {kFrameSizeOutOfRange, sides(size)});
    return std::make_unique<EncodedVideo>(settings, target, threadsOf(resources));
}

} // namespace clipheave::platform
