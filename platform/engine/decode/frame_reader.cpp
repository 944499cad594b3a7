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

/// Pictures that wait for the reader: few, and fewer where they are large.
constexpr std::int64_t kWaitingBytes = 32 << 20;
constexpr std::int64_t kMostWaitingRead = 4, kLeastWaitingRead = 2;

std::size_t waitingPictures(QSize size) {
    const std::int64_t bytes = std::int64_t{size.width()} * size.height() * 4;
    return static_cast<std::size_t>(std::clamp(kWaitingBytes / std::max<std::int64_t>(bytes, 1),
                                               kLeastWaitingRead, kMostWaitingRead));
}

/// The first to the last picture of a stream, at normal speed.
ExportPlan wholeFilm(const QString& path, int stream) {
    const CMTimeRange all{kCMTimeZero, CMTimeMake(kFarthestTicks / kTicksPerSecond, 1)};
    ExportPlan plan;
    plan.video.emplace().segments = {{path, stream, all, all}};
    return plan;
}

/// As it is stored, fields aside.
PictureLook lookOfFrame(const AVFrame& frame, AVRational aspect) {
    PictureLook look;
    look.width = frame.width;
    look.height = frame.height;
    look.aspect = aspect;
    look.format = static_cast<AVPixelFormat>(frame.format);
    look.range = frame.color_range;
    look.matrix = frame.colorspace;
    look.transfer = frame.color_trc;
    return look;
}

class DecodedPictures final : public PictureReader {
public:
    DecodedPictures(PlannedSegment segment, std::unique_ptr<VideoSegmentReader> reader, QSize size,
                    int threads)
        : m_segment(std::move(segment)), m_reader(std::move(reader)),
          m_pool(size, waitingPictures(size) + 2),
          m_painter(*m_segment.facts->parameters, size, threads), m_threads(threads),
          m_queue(waitingPictures(size), [this] { return m_stopped.load(); }) {
        int units = std::max(m_segment.facts->timeBase.den, 1);
        while (units < kLeastFilmUnits)
            units *= 2;
        m_units = units;
    }
    ~DecodedPictures() override {
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
    QStringList notes() const override {
        const std::lock_guard lock(m_mutex);
        return m_notes;
    }

private:
    void run();
    Result<void> readAll();
    Result<void> deliver(TimedPicture picture);
    Result<void> deliverWithoutFields(TimedPicture picture);
    Result<void> filtered(int code);

    PlannedSegment m_segment;
    std::unique_ptr<VideoSegmentReader> m_reader;
    CVPixelBufferPool m_pool;
    PicturePainter m_painter;
    std::optional<PictureFilter> m_fields; ///< once a picture made of fields has come
    Result<void> m_delivered;              ///< of the filter's last picture
    int m_threads;
    int m_units = 1; ///< of the times, in a second
    std::atomic<bool> m_stopped = false;
    BoundedQueue<CMSampleBuffer> m_queue;
    mutable std::mutex m_mutex; ///< guards what follows
    std::optional<Error> m_error;
    QStringList m_notes;
    std::thread m_thread;
};

Result<void> DecodedPictures::begin() {
    if (auto first = m_pool.createPixelBuffer(); !first)
        return failure(first.error().code, QStringLiteral("read the film"), m_segment.path,
                       first.error().detail);
    m_thread = std::thread([this] { run(); });
    return {};
}

Result<CMSampleBuffer> DecodedPictures::next() {
    if (auto sample = m_queue.pop())
        return std::move(*sample);
    if (m_stopped)
        return failure(ErrorCode::Cancelled, QStringLiteral("read the film"), m_segment.path);
    const std::lock_guard lock(m_mutex);
    return m_error ? Result<CMSampleBuffer>(tl::unexpected(*m_error)) : CMSampleBuffer{};
}

void DecodedPictures::run() {
    const auto done = readAll();
    {
        const std::lock_guard lock(m_mutex);
        if (!done)
            m_error = done.error();
    }
    m_queue.close();
}

Result<void> DecodedPictures::readAll() {
    while (!m_stopped) {
        auto picture = m_reader->next();
        QStringList notes = m_reader->notes();
        notes.removeAll(QString());
        {
            const std::lock_guard lock(m_mutex);
            m_notes = std::move(notes);
        }
        if (!picture)
            return tl::unexpected(picture.error());
        if (!picture->frame)
            break;
        const bool fields = m_fields || picture->frame->interlaced_frame != 0;
        auto delivered =
            fields ? deliverWithoutFields(std::move(*picture)) : deliver(std::move(*picture));
        if (!delivered)
            return delivered;
    }
    if (!m_stopped && !m_reader->anyDecoded())
        return failure(ErrorCode::InvalidData, QStringLiteral("decode the film"), m_segment.path,
                       QStringLiteral("nothing of it can be decoded: ") + m_reader->complaint());
    if (!m_fields || m_stopped)
        return {};
    return filtered(m_fields->finish([this](TimedPicture picture) {
        m_delivered = deliver(std::move(picture));
        return m_delivered.has_value();
    }));
}

Result<void> DecodedPictures::filtered(int code) {
    if (!m_delivered)
        return m_delivered;
    if (code < 0 && code != AVERROR_EXIT)
        return failure(ErrorCode::Io, QStringLiteral("filter the film"), m_segment.path,
                       ffmpegText(code));
    return {};
}

/// Pictures woven of two fields become whole ones, as in exports that change the picture.
Result<void> DecodedPictures::deliverWithoutFields(TimedPicture picture) {
    normalizeRange(*picture.frame);
    const AVRational aspect = m_segment.facts->aspect;
    if (!m_fields)
        m_fields.emplace(lookOfFrame(*picture.frame, aspect), 0, false, m_threads);
    return filtered(m_fields->push(std::move(picture), aspect, [this](TimedPicture whole) {
        m_delivered = deliver(std::move(whole));
        return m_delivered.has_value();
    }));
}

Result<void> DecodedPictures::deliver(TimedPicture picture) {
    auto buffer = m_pool.createPixelBuffer();
    if (!buffer)
        return tl::unexpected(buffer.error());
    if (!m_painter.paint(*picture.frame, (*buffer)->baseAddress(), (*buffer)->bytesPerRow()))
        return failure(ErrorCode::NotSupported, QStringLiteral("read the film"), m_segment.path,
                       QStringLiteral("unknown kind of pixels"));
    (*buffer)->pixelAspectWidth = m_segment.facts->aspect.num;
    (*buffer)->pixelAspectHeight = m_segment.facts->aspect.den;
    const std::int64_t from = ticksToUnits(picture.start, m_units),
                       to = ticksToUnits(picture.end, m_units);
    // Answers false only when it was stopped, which the loop sees.
    static_cast<void>(m_queue.push(
        {std::move(*buffer), CMTimeMake(from, m_units), CMTimeMake(to - from, m_units)}));
    return {};
}

} // namespace

Result<std::unique_ptr<PictureReader>> openPictureReader(const QString& path, int stream,
                                                         const ExportResources& resources) {
    auto planned = readExportPlan(wholeFilm(path, stream));
    if (!planned)
        return tl::unexpected(planned.error());
    PlannedSegment segment = std::move(planned->video.front());
    const AVCodecParameters& film = *segment.facts->parameters;
    const QSize size(film.width, film.height);
    const int threads = threadsOf(resources);
    auto reader = VideoSegmentReader::open(segment, threads);
    if (!reader)
        return tl::unexpected(reader.error());
    auto pictures =
        std::make_unique<DecodedPictures>(std::move(segment), std::move(*reader), size, threads);
    if (auto begun = pictures->begin(); !begun)
        return tl::unexpected(begun.error());
    return pictures;
}

} // namespace clipheave::platform
