// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/messages.h"
#include "video/video_jobs.h"
#include "video/video_labels.h"

#include "platform/foundation/file_manager.h"
#include "platform/foundation/log.h"
#include "platform/foundation/paths.h"

// The jobs that hand a whole file to an export: compress, convert, extract the audio.
namespace clipheave::video {

using namespace platform;

namespace {

/// The output rules of the metadata writers, which these jobs share.
jobs::WriteRequest pathRequest(const VideoJobRequest& request, const media::ItemPointer& item) {
    jobs::WriteRequest paths;
    paths.item = item;
    paths.settings = request.settings;
    return paths;
}

/// Deliberate: the folders of an imported tree appear in the storage folder although the converted
/// videos lie beside them, as they always have.
void makeMirroredFolders(const VideoJobRequest& request, const media::ItemPointer& item) {
    if (!request.settings.bImportLocalFolder)
        return;
    const QString mirrored = jobs::mirroredOutputPath(pathRequest(request, item));
    ignoreFailure(
        NSFileManager::defaultManager().createDirectoryAtPath(deletingLastPathComponent(mirrored)),
        "the videos do not go there");
}

constexpr char kFailedText[] = "Export failed: %1";

} // namespace

void VideoJobs::compressVideo_outputURL_withVideoQuality(const media::ItemPointer& item,
                                                         const QString& outputPath,
                                                         const QString& presetName) {
    startExport(item, outputPath,
                {{"22222", kFailedText, "11111", true},
                 [presetName](const AVURLAsset& asset, const QString& output)
                     -> Result<std::shared_ptr<AVAssetExportSession>> {
                     auto session = std::make_shared<AVAssetExportSession>(asset, presetName);
                     session->setOutputFileType(outputFileTypeOfPath(output));
                     session->setShouldOptimizeForNetworkUse(true);
                     return session;
                 }});
}

void VideoJobs::ConvertVideo_OutPutPath(const media::ItemPointer& item, const QString& outputPath) {
    startExport(item, outputPath,
                {{"22222", kFailedText, "11111", true},
                 [](const AVURLAsset& asset,
                    const QString& output) -> Result<std::shared_ptr<AVAssetExportSession>> {
                     auto session = std::make_shared<AVAssetExportSession>(
                         asset, QString::fromUtf16(AVAssetExportPresetPassthrough));
                     session->setOutputFileType(outputFileTypeOfPath(output));
                     session->setLeavesOutUnheldTracks(true);
                     session->setShouldOptimizeForNetworkUse(true);
                     return session;
                 }});
}

void VideoJobs::extractVideo_M4AoutputURL(const media::ItemPointer& item,
                                          const QString& outputPath) {
    startExport(item, outputPath,
                {{"22222", kFailedText, "11111", true},
                 [](const AVURLAsset& asset,
                    const QString&) -> Result<std::shared_ptr<AVAssetExportSession>> {
                     auto session = std::make_shared<AVAssetExportSession>(
                         asset, QString::fromUtf16(AVAssetExportPresetAppleM4A));
                     session->setOutputFileType(QString::fromUtf16(AVFileTypeAppleM4A));
                     return session;
                 }});
}

void VideoJobs::CompressVideoMediaFileFileThreader(const VideoJobRequest& request) {
    for (const auto& item : request.items)
        if (!skips(item))
            compressVideo_outputURL_withVideoQuality(
                item, jobs::mirroredOutputPath(pathRequest(request, item)),
                compressPreset(request.title));
}

void VideoJobs::ConvertVideoMediaFileFileThreader(const VideoJobRequest& request) {
    for (const auto& item : request.items) {
        if (skips(item))
            continue;
        makeMirroredFolders(request, item);
        ConvertVideo_OutPutPath(item,
                                appendingPathComponent(request.settings.storagelocation,
                                                       deletingPathExtension(item->fileName) +
                                                           u'.' + convertExtension(request.title)));
    }
}

void VideoJobs::ExtractAudioMediaFileFileThreader(const VideoJobRequest& request) {
    for (const auto& item : request.items) {
        if (skips(item))
            continue;
        // Deliberate: an older output of the video itself goes, not one of its audio (that one is
        // replaced). A file of the list is never removed.
        const QString older =
            appendingPathComponent(request.settings.storagelocation, item->fileName);
        bool isDirectory = false;
        if (NSFileManager::defaultManager().fileExistsAtPath(older, isDirectory) && !isDirectory &&
            !m_run.paths().isProtected(older)) {
            ignoreFailure(NSFileManager::defaultManager().removeItemAtPath(older),
                          "the audio goes under another name");
            log(LogLevel::Info, Message(kOlderOutputRemoved).text(), older);
        }
        extractVideo_M4AoutputURL(item, older + QStringLiteral(".m4a"));
    }
}

} // namespace clipheave::video
