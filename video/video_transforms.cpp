// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/messages.h"
#include "video/video_jobs.h"
#include "video/video_labels.h"

#include "platform/foundation/file_manager.h"
#include "platform/foundation/log.h"
#include "platform/foundation/paths.h"
#include "platform/media/model/frame_rotation.h"

#include <cmath>
#include <numbers>

// The jobs that compose a new video: rotate, merge, change the speed, silence.
namespace clipheave::video {

using namespace platform;
using jobs::WriteOutcome;
using jobs::WriteStatus;

namespace {

using SessionResult = Result<std::shared_ptr<AVAssetExportSession>>;

const QString kVideo = QString::fromUtf16(AVMediaTypeVideo);
const QString kAudio = QString::fromUtf16(AVMediaTypeAudio);

QString preset(const char16_t* name) {
    return QString::fromUtf16(name);
}

Result<AVAssetTrack> firstVideo(const AVURLAsset& asset) {
    const auto videos = tracksWithMediaType(asset, kVideo);
    if (videos.empty())
        return failure(ErrorCode::NotSupported, {}, asset.path(), kWithoutVideo);
    return videos.front();
}

/// The first track of the type at `at`, from its start to its end; the result is that of the
/// insertion, or success where the file has no such track.
Result<void> insertFirst(AVMutableCompositionTrack& track, const AVURLAsset& asset, CMTime at) {
    const auto sources = tracksWithMediaType(asset, track.mediaType());
    if (sources.empty())
        return {};
    if (track.segments().empty())
        track.preferredTransform = sources.front().preferredTransform;
    return track.insertTimeRange_ofTrack_atTime(CMTimeRangeMake(kCMTimeZero, assetDuration(asset)),
                                                asset, sources.front(), at);
}

Result<void> videoOrAudioOf(const AVURLAsset& asset) {
    if (tracksWithMediaType(asset, kVideo).empty() && tracksWithMediaType(asset, kAudio).empty())
        return failure(ErrorCode::NotSupported, {}, asset.path(), kWithoutTracks);
    return {};
}

/// The first video and the first audio of a file, as a composition; a video must be there.
Result<AVMutableComposition> compositionOfAsset(const AVURLAsset& asset) {
    const auto videoFile = firstVideo(asset);
    if (!videoFile)
        return tl::unexpected(videoFile.error());
    AVMutableComposition composition;
    for (const QString& type : {kVideo, kAudio}) {
        const auto inserted =
            insertFirst(composition.addMutableTrackWithMediaType(type), asset, kCMTimeZero);
        if (!inserted)
            return tl::unexpected(inserted.error());
    }
    return composition;
}

struct Rotation {
    CGAffineTransform transform;
    QSize renderSize;
};

/// The turn of the label for a frame of this size, which then fills `renderSize`.
Rotation labelledRotation(int degrees, QSize size) {
    const double width = size.width(), height = size.height();
    const auto turned = [](double angle, double tx, double ty) {
        return CGAffineTransformConcat(CGAffineTransformMakeRotation(angle),
                                       CGAffineTransformMakeTranslation(tx, ty));
    };
    constexpr double kPi = std::numbers::pi;
    switch (degrees) {
    case 90:
        return {turned(kPi / 2, height, 0), size.transposed()};
    case 180:
        return {turned(kPi, width, height), size};
    case 270:
        return {turned(3 * kPi / 2, 0, width), size.transposed()};
    default:
        return {{}, size};
    }
}

/// A track that is rotated already is rotated on from how it is shown.
Rotation rotationOfTrack(const AVAssetTrack& track, int degrees) {
    CGAffineTransform own = transformOfMatrix(track.preferredTransform);
    // A matrix of zeros shows nothing; players take it for none.
    if (own.a == 0 && own.b == 0 && own.c == 0 && own.d == 0)
        own = {};
    const auto shown = rotationOfTransform(own);
    const bool lies = shown && shown->swapsSides();
    Rotation rotation =
        labelledRotation(degrees, lies ? track.naturalSize.transposed() : track.naturalSize);
    rotation.transform = CGAffineTransformConcat(own, rotation.transform);
    return rotation;
}

void logTrack(const AVURLAsset& asset, const AVAssetTrack& track) {
    log(LogLevel::Trace,
        QString::asprintf("videoTrack.naturalSize.width==%f, videoTrack.naturalSize.height===%f",
                          static_cast<double>(track.naturalSize.width()),
                          static_cast<double>(track.naturalSize.height())),
        asset.path());
    log(LogLevel::Trace,
        QString::asprintf("[videoTrack preferredTransform].tx==%f, [videoTrack "
                          "preferredTransform].ty===%f",
                          track.preferredTransform[6], track.preferredTransform[7]),
        asset.path());
}

SessionResult rotatingSession(const AVURLAsset& asset, const QString& output, int degrees) {
    auto composition = compositionOfAsset(asset);
    if (!composition)
        return tl::unexpected(composition.error());
    const AVAssetTrack videoFile = tracksWithMediaType(asset, kVideo).front();
    logTrack(asset, videoFile);
    const Rotation rotation = rotationOfTrack(videoFile, degrees);
    AVMutableVideoCompositionLayerInstruction layer;
    layer.setTransform_atTime(rotation.transform, kCMTimeZero);
    AVMutableVideoComposition instructions;
    instructions.setFrameDuration(CMTimeMake(1, 30));
    instructions.setRenderSize(rotation.renderSize);
    instructions.instructions.push_back(
        {CMTimeRangeMake(kCMTimeZero, composition->duration()), {layer}});
    auto session = std::make_shared<AVAssetExportSession>(
        std::move(*composition), preset(AVAssetExportPresetHighestQuality));
    session->setVideoComposition(std::move(instructions));
    session->setOutputFileType(outputFileTypeOfPath(output));
    session->setShouldOptimizeForNetworkUse(true);
    return session;
}

SessionResult cuttingSession(const AVURLAsset& asset, double factor) {
    if (const auto videoFile = firstVideo(asset); !videoFile)
        return tl::unexpected(videoFile.error());
    auto session =
        std::make_shared<AVAssetExportSession>(asset, preset(AVAssetExportPresetHighestQuality));
    session->setOutputFileType(QString::fromUtf16(AVFileTypeQuickTimeMovie));
    session->setTimeRange(
        CMTimeRangeMake(kCMTimeZero, CMTimeMultiplyByFloat64(assetDuration(asset), 1 / factor)));
    return session;
}

/// A pass-through of the whole video into a QuickTime movie.
SessionResult copyingSession(const AVURLAsset& asset) {
    if (const auto videoFile = firstVideo(asset); !videoFile)
        return tl::unexpected(videoFile.error());
    auto session =
        std::make_shared<AVAssetExportSession>(asset, preset(AVAssetExportPresetPassthrough));
    session->setOutputFileType(QString::fromUtf16(AVFileTypeQuickTimeMovie));
    session->setLeavesOutUnheldTracks(true);
    return session;
}

SessionResult slowingSession(const AVURLAsset& asset, double factor) {
    if (factor == 1)
        return copyingSession(asset);
    auto composition = compositionOfAsset(asset);
    if (!composition)
        return tl::unexpected(composition.error());
    const CMTime duration = assetDuration(asset);
    composition->scaleTimeRange_toDuration(CMTimeRangeMake(kCMTimeZero, duration),
                                           CMTimeMultiplyByFloat64(duration, 1 / factor));
    auto session = std::make_shared<AVAssetExportSession>(std::move(*composition),
                                                          preset(AVAssetExportPresetPassthrough));
    session->setOutputFileType(QString::fromUtf16(AVFileTypeQuickTimeMovie));
    return session;
}

SessionResult silencingSession(const AVURLAsset& asset) {
    auto composition = compositionOfAsset(asset);
    if (!composition)
        return tl::unexpected(composition.error());
    AVMutableAudioMixInputParameters silence;
    silence.setVolume_atTime(0, kCMTimeZero);
    auto session = std::make_shared<AVAssetExportSession>(
        std::move(*composition), preset(AVAssetExportPresetHighestQuality));
    session->setAudioMix({{silence}});
    session->setOutputFileType(QString::fromUtf16(AVFileTypeQuickTimeMovie));
    return session;
}

QString flatPath(const VideoJobRequest& request, const QString& name) {
    return appendingPathComponent(request.settings.storagelocation, name);
}

constexpr char kSpeedText[] = "Change Video Speed Success";
const QString kMergingFailed = QStringLiteral("Merging failed: ");

} // namespace

void VideoJobs::RotateVideoMediaFileFileThreader(const VideoJobRequest& request) {
    const int degrees = rotationOfTitle(request.title).value_or(0);
    for (const auto& item : request.items)
        startExport(item, flatPath(request, item->fileName),
                    {{}, [degrees](const AVURLAsset& asset, const QString& output) {
                         return rotatingSession(asset, output, degrees);
                     }});
}

void VideoJobs::SpeedUpVideoMediaFileFileThreader(const VideoJobRequest& request) {
    const double factor = speedUpFactor(request.title);
    for (const auto& item : request.items)
        startExport(item, flatPath(request, item->fileName),
                    {{kSpeedText}, [factor](const AVURLAsset& asset, const QString&) {
                         return cuttingSession(asset, factor);
                     }});
}

void VideoJobs::SlowDownVideoMediaFileFileThreader(const VideoJobRequest& request) {
    const double factor = slowDownFactor(request.title);
    for (const auto& item : request.items)
        startExport(item, flatPath(request, item->fileName),
                    {{kSpeedText}, [factor](const AVURLAsset& asset, const QString&) {
                         return slowingSession(asset, factor);
                     }});
}

void VideoJobs::RemoveAudioMediaFileFileThreader(const VideoJobRequest& request) {
    for (const auto& item : request.items)
        startExport(
            item, flatPath(request, item->fileName),
            {{"Background sound removed successfully.", "Error removing background sound: %1"},
             [](const AVURLAsset& asset, const QString&) { return silencingSession(asset); }});
}

void VideoJobs::MergeVideoMediaFileFileThreader(const VideoJobRequest& request) {
    AVMutableComposition composition;
    auto& videoFile = composition.addMutableTrackWithMediaType(kVideo);
    auto& audio = composition.addMutableTrackWithMediaType(kAudio);
    std::vector<jobs::Ticket> merged;
    QString first;
    CMTime cursor = kCMTimeZero;
    QString output;
    for (const auto& item : request.items) {
        const QString extension = pathExtension(item->fileName);
        output = flatPath(request, QStringLiteral("MergeVideo.") + extension);
        if (NSFileManager::defaultManager().fileExistsAtPath(output))
            output = flatPath(request, deletingPathExtension(item->fileName) +
                                           QStringLiteral("_MergeVideo.") + extension);
        const auto asset = AVURLAsset::assetWithPath(item->filePath);
        auto inserted =
            asset ? insertFirst(videoFile, *asset, cursor) : tl::unexpected(asset.error());
        if (inserted)
            inserted = insertFirst(audio, *asset, cursor);
        if (inserted) {
            const CMTime duration = assetDuration(*asset);
            cursor = CMTimeCompare(cursor, duration) > 0 ? cursor : duration;
            inserted = videoOrAudioOf(*asset);
        }
        const jobs::Ticket ticket = m_run.ticket(item->filePath);
        if (!inserted) {
            WriteOutcome outcome;
            outcome.status = WriteStatus::Failed;
            outcome.failure = inserted.error();
            ticket.report(outcome);
            continue;
        }
        if (merged.empty())
            first = item->filePath;
        merged.push_back(ticket);
    }
    if (!merged.empty())
        finishMerge(m_run.paths().claimShared(output), merged, first, composition);
    else if (!request.items.empty())
        log(LogLevel::Info, kMergingFailed + Message(kNothingToMerge).text(),
            request.items.front()->filePath);
}

void VideoJobs::finishMerge(const QString& output, const std::vector<jobs::Ticket>& tickets,
                            const QString& first, const AVMutableComposition& composition) {
    const bool replaces = NSFileManager::defaultManager().fileExistsAtPath(output);
    const auto reportOthers = [tickets, replaces,
                               name = lastPathComponent(output)](WriteOutcome& outcome) {
        if (outcome.status == WriteStatus::Completed)
            log(LogLevel::Info, QStringLiteral("Merging completed!"), outcome.source);
        else if (outcome.status == WriteStatus::Failed)
            log(LogLevel::Info, kMergingFailed + outcome.text(), outcome.source);
        if (replaces && outcome.status == WriteStatus::Completed)
            outcome.notes.append(kReplacedOlderFile);
        WriteOutcome other = outcome;
        other.outputs.clear();
        if (outcome.status == WriteStatus::Completed)
            other.notes = {{kMergedInto, {name}}};
        for (std::size_t i = 1; i < tickets.size(); ++i)
            tickets[i].report(other);
    };
    auto job = jobs::beginJob(tickets.front(), first, output, reportOthers);
    if (!job)
        return;
    job->copiesOnFailure = false;
    job->files = static_cast<int>(tickets.size());
    auto session = std::make_shared<AVAssetExportSession>(
        composition, preset(AVAssetExportPresetHighestQuality));
    session->setOutputPath(output);
    session->setOutputFileType(outputFileTypeOfPath(output));
    jobs::startSession(*job, session);
}

} // namespace clipheave::video
