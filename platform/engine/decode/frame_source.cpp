// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/decode/frame_source.h"

#include "platform/engine/convert/frame_maker.h"
#include "platform/engine/decode/media_decoder.h"
#include "platform/engine/decode/video_packets.h"
#include "platform/engine/decode/video_stream.h"
#include "platform/engine/io/file_input.h"
#include "platform/engine/messages.h"
#include "platform/media/model/cv_pixel_buffer.h"

#include <algorithm>
#include <cmath>

namespace clipheave::platform {

namespace {

constexpr int kAllCores = 0;
constexpr int kMostSide = CVPixelBuffer::kMostSide;
constexpr std::int64_t kProbeVideoBytes = 16 << 20;
/// Packets without a frame after which a video is given up.
constexpr int kMostPacketsWithoutFrame = 20000;
/// Tolerance for durations that other readers round differently.
constexpr double kDurationRounding = 0.001;
/// Duration of a frame without one in a video without a frame rate, in seconds.
constexpr double kUnknownDuration = 1;
/// A longer duration of a frame, in seconds, is damage.
constexpr double kLongestFrame = 60;
/// How far a search goes back from where nothing can be decoded in time, in seconds.
constexpr double kWaysBack[] = {0, 1, 4, 15};

/// Returns the size in square pixels, upright; the sample aspect ratio changes the width.
QSize squareSize(AVFormatContext& context, AVStream& video) {
    const AVRational aspect = av_guess_sample_aspect_ratio(&context, &video, nullptr);
    const double stretch = std::clamp(seconds(aspect) > 0 ? seconds(aspect) : 1.0, 1.0 / 16, 16.0);
    const double width = video.codecpar->width * stretch, height = video.codecpar->height;
    if (width <= 0 || height <= 0)
        return {};
    const double scale =
        std::min({1.0, kMostSide / width, kMostSide / height,
                  std::sqrt(static_cast<double>(CVPixelBuffer::kMostPixels) / width / height)});
    const auto side = [scale](double length) {
        return std::clamp(static_cast<int>(std::lround(length * scale)), 1, kMostSide);
    };
    const QSize size(side(width), side(height));
    return rotationOfStream(video).swapsSides() ? size.transposed() : size;
}

/// Returns how long a frame is shown, in the video's units: its own duration, else that of the
/// frame rate.
std::int64_t shownFor(const AVFrame& frame, const AVStream& video) {
    const double unit = seconds(video.time_base);
    const std::int64_t own = durationOf(frame);
    if (own > 0 && static_cast<double>(own) * unit <= kLongestFrame)
        return own;
    const bool isAverage = video.avg_frame_rate.num > 0;
    const double rate = seconds(isAverage ? video.avg_frame_rate : video.r_frame_rate);
    const double usual = rate > 1 / kLongestFrame ? 1 / rate : kUnknownDuration;
    return std::max<std::int64_t>(std::llround(usual / unit), 1);
}

/// Returns the time of the video at second 0 of the file's presentation.
std::int64_t presentationStart(const AVFormatContext& context, const AVStream& video) {
    const std::int64_t own = video.start_time == kNoTimestamp ? 0 : video.start_time;
    if (context.start_time == kNoTimestamp)
        return own;
    const std::int64_t start = startMicroseconds(context);
    // The time of the video is exact, that of the file rounded.
    const std::int64_t rounded = av_rescale_q(own, video.time_base, AV_TIME_BASE_Q);
    return rounded == start ? own : av_rescale_q(start, AV_TIME_BASE_Q, video.time_base);
}

class DecodedVideo final : public FrameSource {
public:
    explicit DecodedVideo(FileReader reader) : m_reader(std::move(reader)) {}
    ~DecodedVideo() override {
        if (m_decoder)
            logDamage(m_reader.path(), m_decoder->damaged());
    }
    DecodedVideo(const DecodedVideo&) = delete;
    DecodedVideo& operator=(const DecodedVideo&) = delete;
    [[nodiscard]] Result<void> open(std::optional<QSize> size);

    Result<RawFrame> frameAt(CMTime time) override;
    CMTime shownTime() const override;
    QSize size() const override { return m_size; }
    double durationSeconds() const override { return m_duration; }

private:
    /// A frame and when it begins; `number` identifies it.
    struct Shown {
        Frame frame;
        std::int64_t time = kNoTimestamp, number = 0;
    };
    [[nodiscard]] tl::unexpected<Error> failed(ErrorCode code, const Message& detail) const {
        return failure(code, kReadFrame, m_reader.path(), detail);
    }
    [[nodiscard]] std::optional<std::int64_t> videoTime(CMTime time) const;
    [[nodiscard]] bool isBeyondEnd(std::int64_t wanted) const;
    [[nodiscard]] bool mustGoBack(std::int64_t wanted) const;
    void goTo(std::int64_t wanted);
    void restartFor(std::int64_t wanted);
    [[nodiscard]] bool decodeFrom(std::int64_t wanted, std::optional<std::int64_t> back);
    void decodeUpTo(std::int64_t wanted);
    void feed(std::int64_t wanted);
    void take(std::int64_t wanted);
    [[nodiscard]] Result<RawFrame> frameOf(const Shown& shown);

    FileReader m_reader;
    std::unique_ptr<FileInput> m_input;
    AVStream* m_video = nullptr;
    std::unique_ptr<MediaDecoder> m_decoder;
    std::optional<VideoPackets> m_packets;
    std::optional<FrameMaker> m_maker;
    QSize m_size;
    double m_duration = 0;
    bool m_isDurationExact = false;
    std::int64_t m_start = 0; ///< of the presentation, in the video's units

    Shown m_current; ///< the latest that begins at or before the time asked for
    Shown m_next;    ///< the one after it
    Frame m_spare;   ///< for the next frame that is decoded
    std::int64_t m_count = 0;
    bool m_isFromStart = true; ///< no search since the first packet
    bool m_isDrained = false;
    int m_withoutFrame = 0;
    std::int64_t m_first = kNoTimestamp; ///< where the video's first frame begins, once seen
    std::int64_t m_lastEnd = 0;          ///< where the newest frame ends
    std::int64_t m_end = kNoTimestamp;   ///< where the video's last frame ends, once seen
    RawFrame m_frame;                    ///< of the frame m_frameNumber
    std::int64_t m_frameNumber = 0, m_frameTime = 0;
};

Result<void> DecodedVideo::open(std::optional<QSize> size) {
    auto input = FileInput::open(m_reader, InputLimits::none());
    if (!input)
        return tl::unexpected(input.error());
    m_input = std::move(*input);
    AVFormatContext& context = *m_input->context();
    context.probesize = kProbeVideoBytes;
    if (!m_input->findStreamInfo())
        return failed(ErrorCode::InvalidData, kStreamsUnreadable);
    m_video = videoStream(context);
    if (m_video == nullptr || m_video->time_base.num <= 0 || m_video->time_base.den <= 0)
        return failed(ErrorCode::NotSupported, kNoVideoTrack);
    for (unsigned i = 0; i < context.nb_streams; ++i)
        if (context.streams[i] != m_video)
            context.streams[i]->discard = AVDISCARD_ALL;
    m_size = squareSize(context, *m_video);
    if (m_size.isEmpty())
        return failed(ErrorCode::InvalidData, kNoFrameSize);
    if (size && (size->isEmpty() || std::max(size->width(), size->height()) > kMostSide))
        return failed(ErrorCode::InvalidArgument,
                      Message(kFrameSizeOutOfRange,
                              {QString::number(size->width()), QString::number(size->height())}));
    m_size = size.value_or(m_size);
    auto decoder = MediaDecoder::open(*m_video, kAllCores);
    if (!decoder)
        return failed(decoder.error().code, decoder.error().detail);
    m_decoder = std::move(*decoder);
    m_start = presentationStart(context, *m_video);
    m_duration = context.duration > 0 ? static_cast<double>(context.duration) / AV_TIME_BASE : 0;
    // Transport and program streams have no duration in a header; a guess may be too short.
    m_isDurationExact = m_duration > 0 && (context.iformat->flags & AVFMT_TS_DISCONT) == 0 &&
                        context.duration_estimation_method != AVFMT_DURATION_FROM_BITRATE;
    m_packets.emplace(context, *m_video);
    m_maker.emplace(*m_video->codecpar, rotationOfStream(*m_video), m_size, Scaling::Fine);
    return {};
}

std::optional<std::int64_t> DecodedVideo::videoTime(CMTime time) const {
    if (time.timescale <= 0)
        return std::nullopt;
    const std::int64_t units =
        av_rescale_q_rnd(time.value, {1, time.timescale}, m_video->time_base, AV_ROUND_DOWN);
    std::int64_t wanted = 0;
    if (units == INT64_MIN || __builtin_add_overflow(units, m_start, &wanted))
        return std::nullopt;
    return m_first == kNoTimestamp ? wanted : std::max(wanted, m_first);
}

bool DecodedVideo::isBeyondEnd(std::int64_t wanted) const {
    return m_end != kNoTimestamp && wanted >= m_end;
}

bool DecodedVideo::mustGoBack(std::int64_t wanted) const {
    if (m_current.frame != nullptr)
        return wanted < m_current.time;
    return m_next.frame != nullptr && wanted < m_next.time && !m_isFromStart;
}

/// Keeps the frame that was decoded last. One whose time jumps back is shown at once, as a player
/// does.
void DecodedVideo::take(std::int64_t wanted) {
    Shown shown{std::move(m_spare), kNoTimestamp, ++m_count};
    const AVFrame& frame = *shown.frame;
    const std::int64_t time = frame.best_effort_timestamp;
    shown.time = time != kNoTimestamp ? time : m_count > 1 ? m_lastEnd : m_start;
    if (m_current.frame != nullptr)
        shown.time = std::max(shown.time, m_current.time);
    if (__builtin_add_overflow(shown.time, shownFor(frame, *m_video), &m_lastEnd))
        m_lastEnd = shown.time;
    if (m_isFromStart && m_first == kNoTimestamp)
        m_first = shown.time;
    if (shown.time > wanted) {
        m_next = std::move(shown);
        return;
    }
    std::swap(m_current, shown);
    m_spare = std::move(shown.frame);
}

void DecodedVideo::feed(std::int64_t wanted) {
    Packet packet = m_packets->next();
    while (packet != nullptr && m_packets->isUnneeded(*packet, wanted))
        packet = m_packets->next();
    static_cast<void>(m_decoder->send(packet.get())); // without memory no frame comes out either
    ++m_withoutFrame;
}

void DecodedVideo::decodeUpTo(std::int64_t wanted) {
    if (m_next.frame != nullptr && m_next.time <= wanted) {
        m_spare = std::move(m_current.frame);
        m_current = std::move(m_next);
        m_next = {};
    }
    while (m_next.frame == nullptr && !m_isDrained) {
        if (m_spare == nullptr)
            m_spare.reset(av_frame_alloc());
        const int received = m_spare != nullptr ? m_decoder->receive(*m_spare) : AVERROR_EOF;
        if (received >= 0) {
            m_withoutFrame = 0;
            take(wanted);
        } else if (received == AVERROR_EOF) {
            m_isDrained = true;
            m_end = m_count > 0 ? m_lastEnd : kNoTimestamp;
        } else if (m_withoutFrame > kMostPacketsWithoutFrame) {
            m_isDrained = true;
        } else {
            feed(wanted);
        }
    }
}

/// Decodes up to `wanted` from a place before it. False when no frame that starts by then came out,
/// or the place cannot be reached.
bool DecodedVideo::decodeFrom(std::int64_t wanted, std::optional<std::int64_t> back) {
    const bool found = m_packets->seekFor(wanted, back);
    if (!found && back)
        return false;
    m_decoder->flush();
    m_current = {};
    m_next = {};
    m_isDrained = false;
    m_isFromStart = !back;
    m_withoutFrame = 0;
    decodeUpTo(wanted);
    return m_current.frame != nullptr;
}

/// Containers without an index find a place only roughly: when what comes from there is later, the
/// search goes further back.
void DecodedVideo::restartFor(std::int64_t wanted) {
    for (const double back : kWaysBack) {
        const double units = back / seconds(m_video->time_base);
        if (units < 0x1p60 && decodeFrom(wanted, static_cast<std::int64_t>(units)))
            return;
    }
    static_cast<void>(decodeFrom(wanted, std::nullopt));
}

void DecodedVideo::goTo(std::int64_t wanted) {
    const bool isShown = m_next.frame != nullptr && m_next.time > wanted;
    if (mustGoBack(wanted))
        restartFor(wanted);
    else if (!isShown && !m_isDrained && m_packets->shouldSeek(wanted))
        restartFor(wanted);
    else
        decodeUpTo(wanted);
}

Result<RawFrame> DecodedVideo::frameOf(const Shown& shown) {
    if (m_frameNumber == shown.number)
        return m_frame;
    auto made = m_maker->make(*shown.frame);
    if (!made)
        return failed(ErrorCode::NotSupported, kUnknownPixelFormat);
    m_frame = std::move(*made);
    m_frameNumber = shown.number;
    m_frameTime = shown.time;
    return m_frame;
}

Result<RawFrame> DecodedVideo::frameAt(CMTime time) {
    const auto beyondEnd = [this] { return failed(ErrorCode::InvalidArgument, kTimeOutOfRange); };
    const auto wanted = videoTime(time);
    if (!wanted || isBeyondEnd(*wanted) ||
        (m_isDurationExact && CMTimeGetSeconds(time) > m_duration + kDurationRounding))
        return beyondEnd();
    goTo(*wanted);
    if (isBeyondEnd(*wanted))
        return beyondEnd();
    const Shown& shown = m_current.frame != nullptr ? m_current : m_next;
    if (shown.frame == nullptr)
        return failed(ErrorCode::InvalidData, kNoFrameDecoded);
    return frameOf(shown);
}

CMTime DecodedVideo::shownTime() const {
    std::int64_t units = 0;
    if (m_frameNumber == 0 || __builtin_sub_overflow(m_frameTime, m_start, &units) ||
        __builtin_mul_overflow(units, m_video->time_base.num, &units))
        return {0, 0};
    return {units, m_video->time_base.den};
}

} // namespace

Result<std::unique_ptr<FrameSource>> openFrameSource(const QString& path,
                                                     std::optional<QSize> size) {
    auto reader = FileReader::open(path);
    if (!reader)
        return tl::unexpected(reader.error());
    auto video = std::make_unique<DecodedVideo>(std::move(*reader));
    if (const auto opened = video->open(size); !opened)
        return tl::unexpected(opened.error());
    return video;
}

} // namespace clipheave::platform
