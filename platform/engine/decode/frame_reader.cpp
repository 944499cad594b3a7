// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/decode/frame_reader.h"

#include "platform/engine/convert/frame_filter.h"
#include "platform/engine/convert/frame_painter.h"
#include "platform/engine/decode/video_segment_reader.h"
#include "platform/engine/io/bounded_queue.h"
#include "platform/engine/messages.h"
#include "platform/engine/plan/export_plan_reader.h"

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

/// Returns a plan of the first to the last frame of a stream, at normal speed.
ExportPlan wholeVideo(const QString& path, int stream) {
    const CMTimeRange all{kCMTimeZero, CMTimeMake(kFarthestTicks / kTicksPerSecond, 1)};
    ExportPlan plan;
    plan.video.emplace().segments = {{path, stream, all, all}};
    return plan;
}

/// Returns the format of a frame as it is stored, fields aside.
FrameFormat formatWithoutFields(const AVFrame& frame, const SourceFacts& facts) {
    const Colours colours = coloursOf(frame, facts.parameters.get());
    FrameFormat format;
    format.width = frame.width;
    format.height = frame.height;
    format.aspect = facts.aspect;
    format.pixels = static_cast<AVPixelFormat>(frame.format);
    format.range = frame.color_range;
    format.matrix = colours.matrix;
    format.primaries = colours.primaries;
    format.transfer = colours.transfer;
    return format;
}

class DecodedFrames final : public FrameReader {
public:
    DecodedFrames(PlannedSegment segment, std::unique_ptr<VideoSegmentReader> reader, QSize size,
                  int threads)
        : m_segment(std::move(segment)), m_reader(std::move(reader)),
          m_pool(size, waitingFrames(size) + 2),
          m_painter(m_segment.facts->parameters.get(), size, threads), m_threads(threads),
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
    Result<void> deliver(TimedFrame timed);
    Result<void> deliverWithoutFields(TimedFrame timed);
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
        return failure(first.error().code, kReadVideo, m_segment.path, first.error().detail);
    m_thread = std::thread([this] { run(); });
    return {};
}

Result<CMSampleBuffer> DecodedFrames::next() {
    if (auto sample = m_queue.pop())
        return std::move(*sample);
    if (m_stopped)
        return failure(ErrorCode::Cancelled, kReadVideo, m_segment.path);
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
        auto timed = m_reader->next();
        Notes notes = m_reader->notes();
        {
            const std::lock_guard lock(m_mutex);
            m_notes = std::move(notes);
        }
        if (!timed)
            return tl::unexpected(timed.error());
        if (!timed->frame)
            break;
        const bool fields = m_fields || isInterlaced(*timed->frame);
        auto delivered =
            fields ? deliverWithoutFields(std::move(*timed)) : deliver(std::move(*timed));
        if (!delivered)
            return delivered;
    }
    if (!m_stopped && !m_reader->anyDecoded())
        return failure(ErrorCode::InvalidData, kDecodeVideo, m_segment.path,
                       m_reader->nothingDecodedReason());
    if (!m_fields || m_stopped)
        return {};
    return filtered(m_fields->finish([this](TimedFrame timed) {
        m_delivered = deliver(std::move(timed));
        return m_delivered.has_value();
    }));
}

Result<void> DecodedFrames::filtered(int code) {
    if (!m_delivered)
        return m_delivered;
    if (code < 0 && code != AVERROR_EXIT)
        return failure(ErrorCode::Io, kFilterVideo, m_segment.path, ffmpegReason(code));
    return {};
}

/// Deinterlaces frames woven of two fields, as exports do that change the frame.
Result<void> DecodedFrames::deliverWithoutFields(TimedFrame timed) {
    normalizeRange(*timed.frame);
    const AVRational aspect = m_segment.facts->aspect;
    if (!m_fields)
        m_fields.emplace(m_segment.facts->parameters.get(),
                         formatWithoutFields(*timed.frame, *m_segment.facts), Orientation(),
                         m_threads);
    return filtered(m_fields->push(std::move(timed), aspect, [this](TimedFrame whole) {
        m_delivered = deliver(std::move(whole));
        return m_delivered.has_value();
    }));
}

Result<void> DecodedFrames::deliver(TimedFrame timed) {
    auto buffer = m_pool.createPixelBuffer();
    if (!buffer)
        return tl::unexpected(buffer.error());
    if (!m_painter.paint(*timed.frame, (*buffer)->baseAddress(), (*buffer)->bytesPerRow()))
        return failure(ErrorCode::NotSupported, kReadVideo, m_segment.path, kUnknownPixelFormat);
    (*buffer)->pixelAspectWidth = m_segment.facts->aspect.num;
    (*buffer)->pixelAspectHeight = m_segment.facts->aspect.den;
    const std::int64_t from = ticksToUnits(timed.start, m_units),
                       to = ticksToUnits(timed.end, m_units);
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
    const AVCodecParameters& video = *segment.facts->parameters;
    const QSize size(video.width, video.height);
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
