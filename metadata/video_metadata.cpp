// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/video_metadata.h"

#include "media/media_kind.h"
#include "metadata/messages.h"
#include "platform/foundation/dates.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/paths.h"

#include <memory>

namespace clipheave::metadata {

namespace {

using namespace platform;
using media::MediaKind;

bool isMaterialExchange(const QString& path) {
    return pathExtension(path).compare(u"mxf", Qt::CaseInsensitive) == 0;
}

/// What the created-date field asks for, else the source's own dates.
void takeDatesOfPane(jobs::WriteJob& job, const media::VideoPane& pane) {
    const QString& text = pane.texts.mediaCreatedDate;
    if (text == pane.shown.oldMovieCreatedDate)
        return;
    if (const auto date = parseDateText(text))
        job.dates = {*date, *date};
}

/// Exports what `plan` makes of the source's items; a source that cannot be read is copied.
template <class Planner> void exportByPlan(const jobs::WriteJob& job, const Planner& plan) {
    const auto asset = AVURLAsset::assetWithPath(job.source);
    if (!asset)
        return jobs::startCopy(job, NSFileManager::IfExists::Replace, asset.error());
    jobs::startExport(job, *asset, plan(asset->metadata()));
}

} // namespace

std::optional<jobs::WriteJob> VideoMetadata::begin(const QString& source, const QString& output) {
    return jobs::beginJob(m_run.ticket(source), source, output);
}

std::optional<jobs::WriteJob> VideoMetadata::begin(const jobs::WriteRequest& request,
                                                   const QString& output) {
    auto job = begin(request.item->filePath, output);
    if (job)
        takeDatesOfPane(*job, request.pane);
    return job;
}

void VideoMetadata::refuse(const jobs::WriteRequest& request, const Message& reason,
                           jobs::WriteStatus status) {
    const QString& source = request.item->filePath;
    m_run.ticket(source).report(jobs::refusal(source, reason, status));
}

void VideoMetadata::SaveMeidaFileChangesAction(const jobs::WriteRequest& request) {
    const QString& path = request.item->filePath;
    if (MediaKind::isAudio(path))
        return m_audio.save(request);
    if (!MediaKind::isVideo(path))
        return refuse(request, kNeitherVideoNorAudio, jobs::WriteStatus::Skipped);
    SaveChangedVideoExifDateAction(request);
}

void VideoMetadata::SaveChangedVideoExifDateAction(const jobs::WriteRequest& request) {
    if (!isMaterialExchange(request.item->filePath))
        if (const auto fault = savedPositionFault(request.pane))
            return refuse(request, *fault);
    m_run.paths().protect({request.item->filePath});
    auto job = begin(request, m_run.paths().claim(jobs::flatOutputPath(request)));
    if (!job)
        return;
    if (dropsPosition(request.pane))
        job->notes.append(kPositionIncomplete);
    if (isMaterialExchange(job->source))
        return jobs::startCopy(*job, NSFileManager::IfExists::Replace);
    exportByPlan(*job, [&](const auto& items) { return planVideoSave(request.pane, items); });
}

void VideoMetadata::RemoveMediaFileAction(const jobs::WriteRequest& request) {
    const QString& path = request.item->filePath;
    if (MediaKind::isVideo(path))
        return RemoveVideoExifDateAction(request);
    if (MediaKind::isAudio(path))
        return m_audio.remove(request);
    refuse(request, kNeitherVideoNorAudio, jobs::WriteStatus::Skipped);
}

void VideoMetadata::RemoveVideoExifDateAction(const jobs::WriteRequest& request) {
    m_run.paths().protect({request.item->filePath});
    auto job = begin(request, m_run.paths().claim(jobs::mirroredOutputPath(request)));
    if (!job)
        return;
    job->removes = true;
    exportByPlan(*job, [&](const auto&) { return planVideoRemoval(*request.item); });
}

void VideoMetadata::SetVideoFileWithFilePath_WithExifPath_withDateStr(const QString& filePath,
                                                                      const QString& exifPath,
                                                                      const QString& dateText) {
    m_run.paths().protect({filePath});
    auto job = begin(filePath, m_run.paths().claim(exifPath));
    if (!job)
        return;
    if (const auto date = parseDateText(dateText))
        job->dates = {*date, *date};
    exportByPlan(*job, [&](const auto& items) { return planVideoDate(dateText, items); });
}

void VideoMetadata::SetVideoDateItems(const jobs::WriteRequest& request, const QString& dateText) {
    const QString& path = request.item->filePath;
    m_run.paths().protect({path});
    auto job = begin(path, m_run.paths().claim(jobs::mirroredOutputPath(request)));
    if (!job)
        return;
    if (const auto date = parseDateText(dateText))
        job->dates = {*date, *date};
    exportByPlan(*job, [&](const auto& items) { return planVideoDateItems(dateText, items); });
}

void VideoMetadata::CopyvideoTitletoFileNameAction(const jobs::WriteRequest& request) {
    const QString output = jobs::titledOutputPath(request);
    if (output.isEmpty())
        return refuse(request, {kTitleLeadsOut, {request.item->fileTitle}});
    if (!m_run.paths().claimExactly(output))
        return refuse(request, {kTitleGivenOut, {output}});
    // The folder by the mirrored rule is made; one that only the title names is not.
    auto job = begin(request.item->filePath, jobs::mirroredOutputPath(request));
    if (!job)
        return;
    job->output = output;
    const QString folder = containingFolder(output);
    if (!NSFileManager::defaultManager().fileExistsAtPath(folder))
        return jobs::failJob(*job, {ErrorCode::NotFound, {}, {}, {kTitleNamesFolder, {folder}}});
    if (request.item->fileTitle.isEmpty())
        job->notes.append(kEmptyTitle);
    jobs::startCopy(*job, NSFileManager::IfExists::Fail);
}

void VideoMetadata::CopyvideofilenametoTitleAction(const jobs::WriteRequest& request) {
    const QString& path = request.item->filePath;
    m_run.paths().protect({path});
    const auto job = begin(path, m_run.paths().claim(jobs::mirroredOutputPath(request)));
    if (!job)
        return;
    const QString title = deletingPathExtension(request.item->fileName);
    exportByPlan(*job, [&](const auto& items) { return planVideoTitle(title, items); });
}

jobs::RunOrder writeOrder(Writer writer, std::vector<jobs::WriteRequest> requests) {
    jobs::RunOrder order;
    for (const jobs::WriteRequest& request : requests)
        order.sources.append(request.item->filePath);
    // Orders are copied at every hand-over; what they ask for, 2 KB an item, stays in one place.
    const auto kept = std::make_shared<const std::vector<jobs::WriteRequest>>(std::move(requests));
    order.work = [writer, kept](jobs::Run& run, const auto& items) {
        VideoMetadata writers(run);
        for (const std::size_t item : items)
            (writers.*writer)((*kept)[item]);
    };
    return order;
}

} // namespace clipheave::metadata
