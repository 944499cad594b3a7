// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/video_metadata.h"

#include "media/media_kind.h"
#include "platform/foundation/dates.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/log.h"
#include "platform/foundation/paths.h"

#include <chrono>
#include <optional>

namespace clipheave::metadata {

namespace {

using namespace platform;
using Clock = std::chrono::steady_clock;

/// The dates that the output gets: what the created-date field asks for, else the source's own.
struct OutputDates {
    std::optional<QDateTime> creation, modification;
};

/// All that the end of an export needs, captured when it starts.
struct SaveJob {
    QString source;
    QString output;
    OutputDates dates;
    OutcomeHandler handler;
    Clock::time_point start = Clock::now();
};

OutputDates datesFor(const SaveRequest& request, const FileAttributes& attributes) {
    OutputDates dates{attributes.NSFileCreationDate, attributes.NSFileModificationDate};
    const QString& text = request.pane.texts.mediaCreatedDate;
    if (text == request.pane.shown.oldMovieCreatedDate)
        return dates;
    if (const auto date = parseDateText(text))
        dates = {*date, *date};
    return dates;
}

void finish(const SaveJob& job, WriteStatus status, QStringList outputs,
            const QStringList& messages) {
    WriteOutcome outcome;
    outcome.source = job.source;
    outcome.outputs = std::move(outputs);
    outcome.status = status;
    outcome.message = messages.join(QStringLiteral("; "));
    outcome.seconds = std::chrono::duration<double>(Clock::now() - job.start).count();
    job.handler(outcome);
}

/// Sets the dates of a finished output; adds what a user should know to `messages`.
void setOutputDates(const SaveJob& job, QStringList& messages) {
    const auto stored = NSFileManager::defaultManager().setAttributes(
        job.output, job.dates.creation, job.dates.modification);
    if (!stored)
        messages.append(stored.error().text());
    else if (*stored == CreationDateStored::NotStoredHere)
        messages.append(QStringLiteral("creation date not stored here"));
}

/// The unchanged copy with the dates asked for. With a `reason` it stands in for a failed rewrite:
/// the user finds a file in the output folder in any case.
void copySource(const SaveJob& job, const QString& reason) {
    QStringList messages;
    if (!reason.isEmpty())
        messages.append(reason);
    const auto copied = NSFileManager::defaultManager().copyItem(job.source, job.output,
                                                                 NSFileManager::IfExists::Replace);
    if (!copied) {
        messages.append(copied.error().text());
        log(LogLevel::Error, messages.join(QStringLiteral("; ")), job.source);
        return finish(job, WriteStatus::Failed, {}, messages);
    }
    if (!reason.isEmpty())
        messages.append(QStringLiteral("copied unchanged"));
    setOutputDates(job, messages);
    finish(job, reason.isEmpty() ? WriteStatus::Completed : WriteStatus::Failed, {job.output},
           messages);
}

void completeSave(const SaveJob& job, const AVAssetExportSession& session) {
    switch (session.status()) {
    case AVAssetExportSessionStatus::Unknown:
        log(LogLevel::Info, QStringLiteral("unknow"), job.source);
        return finish(job, WriteStatus::Failed, {}, {QStringLiteral("unknow")});
    case AVAssetExportSessionStatus::Waiting:
        log(LogLevel::Info, QStringLiteral("waiting"), job.source);
        return finish(job, WriteStatus::Failed, {}, {QStringLiteral("waiting")});
    case AVAssetExportSessionStatus::Cancelled:
        log(LogLevel::Info, QStringLiteral("cancelled"), job.source);
        return finish(job, WriteStatus::Cancelled, {}, {QStringLiteral("cancelled")});
    case AVAssetExportSessionStatus::Failed:
        log(LogLevel::Error, session.error().text(), job.source);
        return copySource(job, session.error().text());
    case AVAssetExportSessionStatus::Exporting:
    case AVAssetExportSessionStatus::Completed:
        break;
    }
    QStringList messages = session.notes();
    setOutputDates(job, messages);
    finish(job, WriteStatus::Completed, {job.output}, messages);
}

} // namespace

QString VideoMetadata::flatOutputPath(const SaveRequest& request) {
    const QString wanted = appendingPathComponent(request.storagelocation, request.item->fileName);
    const NSFileManager& files = NSFileManager::defaultManager();
    QString path = files.outputPathForSource(wanted, request.item->filePath);
    // Outputs of this run are not there yet or are just being written: step past them by name.
    for (int number = 2; m_taken.contains(path); ++number) {
        const QString extension = pathExtension(wanted);
        path = QStringLiteral("%1 %2").arg(deletingPathExtension(wanted)).arg(number);
        if (!extension.isEmpty())
            path += u'.' + extension;
        if (files.fileExistsAtPath(path) && !m_taken.contains(path))
            path = files.outputPathForSource(path, request.item->filePath);
    }
    m_taken.insert(path);
    return path;
}

void VideoMetadata::SaveMeidaFileChangesAction(const SaveRequest& request) {
    const QString& path = request.item->filePath;
    WriteOutcome outcome;
    outcome.source = path;
    outcome.status = WriteStatus::Failed;
    if (media::MediaKind::isAudio(path)) {
        outcome.message = QStringLiteral("saving audio tags is not available yet");
        return m_handler(outcome);
    }
    if (!media::MediaKind::isVideo(path)) {
        outcome.status = WriteStatus::Skipped;
        outcome.message = QStringLiteral("neither a video nor an audio file");
        return m_handler(outcome);
    }
    SaveChangedVideoExifDateAction(request);
}

void VideoMetadata::SaveChangedVideoExifDateAction(const SaveRequest& request) {
    SaveJob job{request.item->filePath, flatOutputPath(request), {}, m_handler};
    const auto attributes = NSFileManager::defaultManager().attributesOfItemAtPath(job.source);
    if (!attributes)
        return finish(job, WriteStatus::Failed, {}, {attributes.error().text()});
    job.dates = datesFor(request, *attributes);
    if (pathExtension(job.source).compare(u"mxf", Qt::CaseInsensitive) == 0)
        return copySource(job, {});
    const auto asset = AVURLAsset::assetWithPath(job.source);
    if (!asset)
        return copySource(job, asset.error().text());

    const SavePlan plan = planVideoSave(request.pane, asset->metadata());
    auto session = std::make_shared<AVAssetExportSession>(
        *asset, QString::fromUtf16(AVAssetExportPresetPassthrough));
    session->setOutputPath(job.output);
    session->setOutputFileType(plan.outputFileType);
    session->setMetadata(plan.metadata);
    m_sessions.push_back(session);
    session->exportAsynchronouslyWithCompletionHandler(
        [session, job] { completeSave(job, *session); });
}

double VideoMetadata::runningProgress() const {
    double sum = 0;
    int running = 0;
    for (const auto& weak : m_sessions) {
        const auto session = weak.lock();
        if (!session || session->status() != AVAssetExportSessionStatus::Exporting)
            continue;
        sum += session->progress();
        ++running;
    }
    return running > 0 ? sum / running : -1;
}

} // namespace clipheave::metadata
