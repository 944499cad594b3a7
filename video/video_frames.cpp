// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/messages.h"
#include "video/video_jobs.h"
#include "video/video_labels.h"

#include "platform/foundation/atomic_file.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/folder_syncs.h"
#include "platform/foundation/log.h"
#include "platform/foundation/paths.h"
#include "platform/image/cg_image_destination.h"
#include "platform/image/tiff_representation.h"
#include "platform/media/asset/av_asset_image_generator.h"
#include "platform/media/export/output_place.h"
#include "platform/media/messages.h"

#include <algorithm>
#include <cmath>
#include <future>

// The jobs that make frames of a video: an animated one, or single ones.
namespace clipheave::video {

using namespace platform;
using jobs::WriteOutcome;
using jobs::WriteStatus;
using Progress = std::function<bool(double)>;
using Clock = std::chrono::steady_clock;

namespace {

constexpr std::int32_t kTimescale = 600;
/// Seconds; a file that claims more ends much earlier, and the walk with it.
constexpr double kLongestVideo = 1e9;

/// After so many frames in a row that cannot be decoded nothing is hoped for any more: a header
/// may promise thousands of hours.
constexpr int kMostFailures = 600;

/// Judges frames that could not be had.
class FrameFailures {
public:
    void succeeded() { m_inARow = 0; }
    /// One that the video should have.
    void missed() { ++m_count; }
    /// False when there is no use in asking for later ones.
    [[nodiscard]] bool goesOnAfter(const Error& error) {
        // The video ends before its file says so.
        if (error.code == ErrorCode::InvalidArgument)
            return false;
        m_reason = error;
        return error.code != ErrorCode::NotSupported && ++m_inARow < kMostFailures;
    }
    [[nodiscard]] int count() const { return m_count; }
    /// Why there is no frame at all.
    [[nodiscard]] tl::unexpected<Error> none(const QString& path) const {
        if (m_reason && m_reason->code == ErrorCode::NotSupported)
            return tl::unexpected(*m_reason);
        return failure(ErrorCode::InvalidData, kReadFrames, path, kWithoutFrames);
    }

private:
    int m_count = 0, m_inARow = 0;
    std::optional<Error> m_reason; ///< of the latest
};

tl::unexpected<Error> stopped(const QString& path) {
    return failure(ErrorCode::Cancelled, kReadFrames, path);
}

struct Video {
    AVAssetImageGenerator generator;
    double duration; ///< seconds
};

/// Frames at exact times, upright.
Result<Video> openVideo(const QString& source) {
    const auto asset = AVURLAsset::assetWithPath(source);
    if (!asset)
        return tl::unexpected(asset.error());
    if (tracksWithMediaType(*asset, QString::fromUtf16(AVMediaTypeVideo)).empty())
        return failure(ErrorCode::NotSupported, kReadFrames, source, kWithoutVideo);
    AVAssetImageGenerator generator = AVAssetImageGenerator::initWithAsset(*asset);
    generator.setAppliesPreferredTrackTransform(true);
    generator.setRequestedTimeToleranceBefore(kCMTimeZero);
    generator.setRequestedTimeToleranceAfter(kCMTimeZero);
    const double duration = std::min(CMTimeGetSeconds(assetDuration(*asset)), kLongestVideo);
    if (!(duration > 0))
        return failure(ErrorCode::InvalidData, kReadFrames, source, kNoDuration);
    return Video{std::move(generator), duration};
}

/// That goes round for ever. Says at once when nothing can be written there.
Result<std::unique_ptr<CGImageDestination>> createGif(const QString& target, int allFrames) {
    const OutputPlace place(target);
    if (const auto usable = place.check(); !usable)
        return tl::unexpected(usable.error());
    place.removeLink();
    auto destination =
        CGImageDestinationCreateWithURL(target, QString::fromUtf16(kUTTypeGIF), allFrames);
    if (!destination)
        return destination;
    if (const auto set = CGImageDestinationSetProperties(**destination, {0}); !set)
        return tl::unexpected(set.error());
    return destination;
}

/// One frame a second, for ever in a circle. Without delays: players then use their own pace.
Result<Notes> writeGif(const QString& source, const QString& target, const Progress& progress) {
    auto videoFile = openVideo(source);
    if (!videoFile)
        return tl::unexpected(videoFile.error());
    const double duration = videoFile->duration;
    auto destination = createGif(target, static_cast<int>(std::ceil(duration)));
    if (!destination) {
        log(LogLevel::Info, QStringLiteral("Failed to create GIF destination"), source);
        return tl::unexpected(destination.error());
    }
    CGImageDestinationTakePermissionsOf(**destination, source);
    std::size_t frames = 0;
    FrameFailures failures;
    for (int second = 0; second < duration; ++second) {
        if (!progress(second / duration))
            return stopped(source);
        const auto frame =
            videoFile->generator.copyCGImageAtTime(CMTimeMakeWithSeconds(second, kTimescale));
        if (!frame) {
            if (!failures.goesOnAfter(frame.error()))
                break;
            failures.missed();
            continue;
        }
        failures.succeeded();
        ++frames;
        if (const auto added = CGImageDestinationAddImage(**destination, *frame); !added)
            return tl::unexpected(added.error());
    }
    if (frames == 0)
        return failures.none(source);
    if (const auto finalized = CGImageDestinationFinalize(**destination); !finalized) {
        log(LogLevel::Info, QStringLiteral("Failed to finalize GIF destination"), source);
        return tl::unexpected(finalized.error());
    }
    if (failures.count() == 0)
        return Notes();
    return Notes{{kFramesSkipped, {QString::number(failures.count())}}};
}

/// The frame as TIFF under `path`, with the dates and permissions of the video. The new name is not
/// durable yet.
Result<void> writeTiff(const QString& path, const RawFrame& frame, const QString& video,
                       const FileAttributes& dates) {
    const DeferredFolderSyncs deferred;
    const auto bytes = TIFFRepresentation(frame);
    if (!bytes)
        return tl::unexpected(bytes.error());
    OutputPlace(path).removeLink();
    auto file = AtomicFile::create(path, static_cast<std::uint64_t>(bytes->size()));
    if (!file)
        return tl::unexpected(file.error());
    file->takePermissionsOf(FileReference::ofPath(video));
    if (auto written = file->write(*bytes); !written)
        return written;
    const auto dated = NSFileManager::defaultManager().setAttributesOfOpenFile(
        file->fd(), path, dates.NSFileCreationDate, dates.NSFileModificationDate);
    return dated ? file->commit() : tl::unexpected(dated.error());
}

/// Writes single frames of one video.
class FrameWriter {
public:
    FrameWriter(QString source, QString folder, QString base, double interval,
                std::shared_ptr<jobs::Run> run, std::shared_ptr<QStringList> outputs)
        : m_source(std::move(source)), m_folder(std::move(folder)), m_base(std::move(base)),
          m_interval(interval), m_run(std::move(run)), m_outputs(std::move(outputs)) {}

    Result<Notes> run(const Progress& progress) {
        auto videoFile = openVideo(m_source);
        if (!videoFile)
            return tl::unexpected(videoFile.error());
        if (const auto found = NSFileManager::defaultManager().attributesOfItemAtPath(m_source))
            m_dates = *found;
        const auto made = NSFileManager::defaultManager().createDirectoryAtPath(m_folder);
        if (!made)
            return tl::unexpected(made.error());
        const OutputPlace place(appendingPathComponent(m_folder, m_base));
        if (const auto usable = place.check(); !usable)
            return tl::unexpected(usable.error());
        const double duration = videoFile->duration;
        double t = 0;
        while (t < duration && !m_ended) {
            if (!progress(t / duration)) {
                ignoreFailure(awaitWriting(), "the job was stopped");
                return stopped(m_source);
            }
            const auto written = writeNext(videoFile->generator, timesOfOneName(t, duration));
            if (!written)
                return tl::unexpected(written.error());
        }
        if (const auto written = awaitWriting(); !written)
            return tl::unexpected(written.error());
        syncFolders({m_folder});
        if (m_outputs->isEmpty())
            return m_failures.none(m_source);
        Notes notes{{kFramesWritten, {QString::number(m_outputs->size())}}};
        if (m_failures.count() > 0)
            notes.append(Message(kFramesSkipped, {QString::number(m_failures.count())}));
        return notes;
    }

private:
    /// The times from `t` on whose frames have one name, that of their whole second; moves `t`
    /// past them. The last one wins.
    std::vector<double> timesOfOneName(double& t, double duration) const {
        std::vector<double> times;
        for (const double second = std::floor(t); t < duration && std::floor(t) == second;
             t += m_interval)
            times.push_back(t);
        return times;
    }

    /// Of several frames for one name only the last one is decoded; an earlier one stands in
    /// where that fails.
    Result<void> writeNext(AVAssetImageGenerator& generator, const std::vector<double>& times) {
        for (auto time = times.rbegin(); time != times.rend(); ++time) {
            const auto frame =
                generator.copyCGImageAtTime(CMTimeMakeWithSeconds(*time, kTimescale));
            if (frame) {
                m_failures.succeeded();
                return write(*frame, static_cast<int>(times.front()));
            }
            if (!m_failures.goesOnAfter(frame.error()))
                m_ended = true;
            log(LogLevel::Info,
                QStringLiteral("Error while extracting image: ") + frame.error().text(), m_source);
        }
        if (!m_ended)
            m_failures.missed();
        return {};
    }

    /// Deliberate: TIFF bytes under a name that says JPEG, as this job has always written them.
    Result<void> write(const RawFrame& frame, int second) {
        const QString path = m_run->paths().claimShared(
            appendingPathComponent(m_folder, m_base + QStringLiteral("_%1.jpg").arg(second)));
        if (auto before = awaitWriting(); !before)
            return before;
        m_writingPath = path;
        m_writing =
            std::async(std::launch::async, [path, frame, video = m_source, dates = m_dates] {
                return writeTiff(path, frame, video, dates);
            });
        return {};
    }

    /// The frame before is on the disk; it is written while the next one is decoded.
    Result<void> awaitWriting() {
        if (!m_writing.valid())
            return {};
        auto written = m_writing.get();
        if (written)
            m_outputs->append(m_writingPath);
        return written;
    }

    QString m_source, m_folder, m_base;
    double m_interval;
    std::shared_ptr<jobs::Run> m_run;
    std::shared_ptr<QStringList> m_outputs;
    FileAttributes m_dates;
    std::future<Result<void>> m_writing;
    QString m_writingPath;
    FrameFailures m_failures;
    bool m_ended = false;
};

WriteStatus endOf(const AVAssetExportSession& session) {
    switch (session.status()) {
    case AVAssetExportSessionStatus::Completed:
        return WriteStatus::Completed;
    case AVAssetExportSessionStatus::Cancelled:
        return WriteStatus::Cancelled;
    default:
        return WriteStatus::Failed;
    }
}

/// One video whose frames are wanted.
struct FramesJob {
    QString source, folder, base;
    double interval;
};

void reportFrames(const AVAssetExportSession& session, WriteOutcome outcome,
                  const jobs::Ticket& ticket) {
    outcome.status = endOf(session);
    if (outcome.status == WriteStatus::Completed)
        outcome.notes = session.notes();
    else if (outcome.status == WriteStatus::Failed)
        outcome.failure = session.error();
    ticket.report(outcome);
}

/// The frames of one video, "BASE_SECOND.jpg".
void beginFrames(const FramesJob& job, const jobs::Ticket& ticket,
                 const std::shared_ptr<jobs::OutputTurn>& turn) {
    const auto outputs = std::make_shared<QStringList>();
    const auto writer = std::make_shared<FrameWriter>(job.source, job.folder, job.base,
                                                      job.interval, ticket.run(), outputs);
    const auto session = AVAssetExportSession::rewriting(
        job.source, appendingPathComponent(job.folder, job.base),
        [writer](const Progress& progress) { return writer->run(progress); });
    const auto ended = [session, outputs, ticket, turn, start = Clock::now()] {
        WriteOutcome outcome;
        outcome.outputs = *outputs;
        outcome.seconds = std::chrono::duration<double>(Clock::now() - start).count();
        turn->end();
        reportFrames(*session, outcome, ticket);
    };
    ticket.run()->start(session, job.source, ended);
}

} // namespace

void VideoJobs::ConvertGIFMediaFileFileThreader(const VideoJobRequest& request) {
    for (const auto& item : request.items)
        startExport(
            item,
            appendingPathComponent(request.settings.storagelocation,
                                   deletingPathExtension(item->fileName) + QStringLiteral(".gif")),
            {{},
             [](const AVURLAsset& asset,
                const QString& output) -> Result<std::shared_ptr<AVAssetExportSession>> {
                 const QString& source = asset.path();
                 return AVAssetExportSession::rewriting(
                     source, output, [source, output](const Progress& progress) {
                         return writeGif(source, output, progress);
                     });
             }});
}

void VideoJobs::ExtractImagesMediaFileFileThreader(const VideoJobRequest& request) {
    const double interval = extractInterval(request.title);
    for (const auto& item : request.items) {
        const QString base = deletingPathExtension(item->fileName);
        const FramesJob job{item->filePath, request.settings.storagelocation, base, interval};
        m_run.turns().begin(appendingPathComponent(job.folder, base),
                            [job, ticket = m_run.ticket(job.source)](const auto& turn) {
                                beginFrames(job, ticket, turn);
                            });
    }
}

} // namespace clipheave::video
