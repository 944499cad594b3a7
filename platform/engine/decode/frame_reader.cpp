// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/decode/frame_reader.h"

#include "platform/engine/convert/frame_painter.h"
#include "platform/engine/decode/video_segment_reader.h"
#include "platform/engine/export/export_runner.h"
#include "platform/engine/io/bounded_queue.h"

#include <algorithm>
#include <atomic>
#include <thread>

namespace clipheave::platform {

namespace {

/// Frames that wait for the reader: few, and fewer where they are large.
constexpr std::int64_t kWaitingBytes = 32 << 20;
constexpr std::int64_t kMostWaitingRead = 4, kLeastWaitingRead = 2;

std::size_t waitingFrames(QSize size) {
    const std::int64_t bytes = std::int64_t{size.width()} * size.height() * 4;
    return static_cast<std::size_t>(std::clamp(kWaitingBytes / std::max<std::int64_t>(bytes, 1),
                                               kLeastWaitingRead, kMostWaitingRead));
}

/// The first to the last frame of a stream, at normal speed.
ExportPlan wholeVideo(const QString& path, int stream) {
    const CMTimeRange all{kCMTimeZero, CMTimeMake(kFarthestTicks / kTicksPerSecond, 1)};
    ExportPlan plan;
    plan.video.emplace().segments = {{path, stream, all, all}};
    return plan;
}

/// As it is stored, fields aside.
FrameFormat lookOfFrame(const AVFrame& frame, AVRational aspect) {
    FrameFormat look;
    look.width = frame.width;
    look.height = frame.height;
    look.aspect = aspect;
    look.format = static_cast<AVPixelFormat>(frame.format);
    look.range = frame.color_range;
    look.matrix = frame.colorspace;
    look.transfer = frame.color_trc;
    return look;
}

class DecodedFrames final : public FrameReader {
public:
    DecodedFrames(PlannedSegment segment, std::unique_ptr<VideoSegmentReader> reader, QSize size,
                  int threads)
        : m_segment(std::move(segment)), m_reader(std::move(reader)),
          m_pool(size, waitingFrames(size) + 2),
          m_painter(*m_segment.facts->parameters, size, threads), m_threads(threads),
          m_queue(waitingFrames(size), [this] { return m_stopped.load(); }) {
        int units = std::max(m_segment.facts->timeBase.den, 1);
        while (units < kLeastVideoUnits)
            units *= 2;
        m_units = units;
    }
    ~DecodedFrames() override {
        cancel();
        if (m_thread.joinable())
            m_thread.join();
    }

    /// Fails for a size that no buffer can have.
    Result<void> begin();
    Result<CMSampleBuffer> next() override;
    void cancel() override {
        m_stopped = true;
        m_queue.wake();
    }
    Notes notes() const override {
        const std::lock_guard lock(m_mutex);
        return m_notes;
    }

private:
    void run();
    Result<void> readAll();
    Result<void> deliver(TimedFrame videoFrame);
    Result<void> deliverWithoutFields(TimedFrame videoFrame);
    Result<void> filtered(int code);

    PlannedSegment m_segment;
    std::unique_ptr<VideoSegmentReader> m_reader;
    CVPixelBufferPool m_pool;
    FramePainter m_painter;
    std::optional<FrameFilter> m_fields; ///< once a frame made of fields has come
    Result<void> m_delivered;            ///< of the filter's last frame
    int m_threads;
    int m_units = 1; ///< of the times, in a second
    std::atomic<bool> m_stopped = false;
    BoundedQueue<CMSampleBuffer> m_queue;
    mutable std::mutex m_mutex; ///< guards what follows
    std::optional<Error> m_error;
    Notes m_notes;
    std::thread m_thread;
};

Result<void> DecodedFrames::begin() {
    if (auto first = m_pool.createPixelBuffer(); !first)
        return failure(first.error().code, QStringLiteral("read the film"), m_segment.path,
                       first.error().detail);
    m_thread = std::thread([this] { run(); });
    return {};
}

Result<CMSampleBuffer> DecodedFrames::next() {
    if (auto sample = m_queue.pop())
        return std::move(*sample);
    if (m_stopped)
        return failure(ErrorCode::Cancelled, QStringLiteral("read the film"), m_segment.path);
    const std::lock_guard lock(m_mutex);
    return m_error ? Result<CMSampleBuffer>(tl::unexpected(*m_error)) : CMSampleBuffer{};
}

void DecodedFrames::run() {
    const auto done = readAll();
    {
        const std::lock_guard lock(m_mutex);
        if (!done)
            m_error = done.error();
    }
    m_queue.close();
}

Result<void> DecodedFrames::readAll() {
    while (!m_stopped) {
        auto videoFrame = m_reader->next();
        Notes notes = m_reader->notes();
        notes.removeAll(QString());
        {
            const std::lock_guard lock(m_mutex);
            m_notes = std::move(notes);
        }
        if (!videoFrame)
            return tl::unexpected(videoFrame.error());
        if (!videoFrame->frame)
            break;
        const bool fields = m_fields || videoFrame->frame->interlaced_frame != 0;
        auto delivered =
            fields ? deliverWithoutFields(std::move(*videoFrame)) : deliver(std::move(*videoFrame));
        if (!delivered)
            return delivered;
    }
    if (!m_stopped && !m_reader->anyDecoded())
        return failure(ErrorCode::InvalidData, QStringLiteral("decode the film"), m_segment.path,
                       QStringLiteral("nothing of it can be decoded: ") + m_reader->complaint());
    if (!m_fields || m_stopped)
        return {};
    return filtered(m_fields->finish([this](TimedFrame videoFrame) {
        m_delivered = deliver(std::move(videoFrame));
        return m_delivered.has_value();
    }));
}

Result<void> DecodedFrames::filtered(int code) {
    if (!m_delivered)
        return m_delivered;
    if (code < 0 && code != AVERROR_EXIT)
        return failure(ErrorCode::Io, QStringLiteral("filter the film"), m_segment.path,
                       ffmpegText(code));
    return {};
}

/// Frames woven of two fields become whole ones, as in exports that change the frame.
Result<void> DecodedFrames::deliverWithoutFields(TimedFrame videoFrame) {
    normalizeRange(*videoFrame.frame);
    const AVRational aspect = m_segment.facts->aspect;
    if (!m_fields)
        m_fields.emplace(lookOfFrame(*videoFrame.frame, aspect), 0, false, m_threads);
    return filtered(m_fields->push(std::move(videoFrame), aspect, [this](TimedFrame whole) {
        m_delivered = deliver(std::move(whole));
        return m_delivered.has_value();
    }));
}

Result<void> DecodedFrames::deliver(TimedFrame videoFrame) {
    auto buffer = m_pool.createPixelBuffer();
    if (!buffer)
        return tl::unexpected(buffer.error());
    if (!m_painter.paint(*videoFrame.frame, (*buffer)->baseAddress(), (*buffer)->bytesPerRow()))
        return failure(ErrorCode::NotSupported, QStringLiteral("read the film"), m_segment.path,
                       QStringLiteral("unknown kind of pixels"));
    (*buffer)->pixelAspectWidth = m_segment.facts->aspect.num;
    (*buffer)->pixelAspectHeight = m_segment.facts->aspect.den;
    const std::int64_t from = ticksToUnits(videoFrame.start, m_units),
                       to = ticksToUnits(videoFrame.end, m_units);
    // Returns false only when it was stopped, which the loop sees.
    static_cast<void>(m_queue.push(
        {std::move(*buffer), CMTimeMake(from, m_units), CMTimeMake(to - from, m_units)}));
    return {};
}

} // namespace

Result<std::unique_ptr<FrameReader>> makeFrameReader(const QString& path, int stream,
                                                     const ExportResources& resources) {
    auto planned = readExportPlan(wholeVideo(path, stream));
    if (!planned)
        return tl::unexpected(planned.error());
    PlannedSegment segment = std::move(planned->video.front());
    const AVCodecParameters& videoFile = *segment.facts->parameters;
    const QSize size(videoFile.width, videoFile.height);
    const int threads = threadsOf(resources);
    auto reader = VideoSegmentReader::open(segment, threads);
    if (!reader)
        return tl::unexpected(reader.error());
    auto frames =
        std::make_unique<DecodedFrames>(std::move(segment), std::move(*reader), size, threads);
    if (auto begun = frames->begin(); !begun)
        return tl::unexpected(begun.error());
    return frames;
}

} // namespace clipheave::platform
