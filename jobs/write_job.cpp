// SPDX-License-Identifier: GPL-3.0-or-later
#include "jobs/write_job.h"

#include "jobs/messages.h"

#include "platform/foundation/dates.h"
#include "platform/foundation/exact_dates.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/log.h"
#include "platform/foundation/paths.h"

namespace clipheave::jobs {

namespace {

using namespace platform;
using Status = AVAssetExportSessionStatus;

void finish(const WriteJob& job, WriteStatus status, const std::optional<Error>& failure,
            const Notes& notes, const QStringList& outputs = {}) {
    WriteOutcome outcome;
    outcome.source = job.source;
    outcome.outputs = outputs;
    outcome.status = status;
    outcome.failure = failure;
    outcome.notes = notes + job.notes;
    outcome.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - job.start).count();
    if (job.beforeReport)
        job.beforeReport(outcome);
    job.ticket.report(outcome);
}

/// Returns whether the file has another modification date than this: file systems end somewhere
/// (ext4 in 2446), and the system stores the last date that they have. FAT counts two seconds.
bool hasOtherDate(const QString& path, const QDateTime& date) {
    constexpr qint64 kCoarsest = 2000; // milliseconds
    const auto stored = NSFileManager::defaultManager().attributesOfItemAtPath(path);
    return stored && qAbs(stored->NSFileModificationDate.msecsTo(date)) > kCoarsest;
}

/// Sets the dates of a finished output; adds what a user should know to `notes`.
void setOutputDates(const WriteJob& job, Notes& notes) {
    const auto stored = NSFileManager::defaultManager().setAttributes(
        job.output, job.dates.creation, job.dates.modification);
    restoreExactDates(job.source, job.output);
    if (!stored)
        notes.append(stored.error().text());
    else if (*stored == CreationDateStored::NotStoredHere &&
             job.ticket.run()->isFirst(kCreationDateNotStored))
        notes.append(kCreationDateNotStored);
    if (stored && job.dates.modification && hasOtherDate(job.output, *job.dates.modification))
        notes.append(Message(kDateBeyondFileSystem,
                             {formatDate(*job.dates.modification, DatePattern::Colon)}));
}

/// The ends that leave no output. True when the job has ended with one of them.
bool endedWithoutOutput(const WriteJob& job, Status status) {
    const auto ended = [&](const QString& text, WriteStatus outcome) {
        log(LogLevel::Info, text, job.source);
        // That it was cancelled is the outcome's status already.
        finish(job, outcome, {}, outcome == WriteStatus::Cancelled ? Notes{} : Notes{text});
        return true;
    };
    switch (status) {
    case Status::Unknown:
        return ended(QStringLiteral("unknow"), WriteStatus::Failed);
    case Status::Waiting:
        return ended(QStringLiteral("waiting"), WriteStatus::Failed);
    case Status::Cancelled:
        return ended(QStringLiteral("cancelled"), WriteStatus::Cancelled);
    case Status::Exporting:
    case Status::Completed:
    case Status::Failed:
        break;
    }
    return false;
}

void completeExport(const WriteJob& job, const AVAssetExportSession& session) {
    const Status status = session.status();
    if (endedWithoutOutput(job, status))
        return;
    if (status == Status::Failed) {
        if (!job.copiesOnFailure)
            return failJob(job, session.error());
        return startCopy(job, NSFileManager::IfExists::Replace, session.error());
    }
    Notes notes = session.notes();
    setOutputDates(job, notes);
    finish(job, WriteStatus::Completed, {}, notes, {job.output});
}

/// Returns whether the second failure says nothing new: a disk that is full is so for the rewrite
/// and for the copy in its place.
bool isSameReason(const Error& first, const Error& second) {
    return first.code == second.code && first.detail == second.detail;
}

/// `reason`: the copy stands in for a rewrite that failed.
void completeCopy(const WriteJob& job, const AVAssetExportSession& session,
                  const std::optional<Error>& reason) {
    const Status status = session.status();
    if (endedWithoutOutput(job, status))
        return;
    Notes notes;
    if (status == Status::Failed) {
        if (reason && !isSameReason(*reason, session.error()))
            notes.append(session.error().text());
        return finish(job, WriteStatus::Failed, reason ? *reason : session.error(), notes);
    }
    if (reason)
        notes.append(kCopiedUnchanged);
    setOutputDates(job, notes);
    finish(job, reason ? WriteStatus::Failed : WriteStatus::Completed, reason, notes, {job.output});
}

} // namespace

std::optional<WriteJob> beginJob(const Ticket& ticket, const QString& source, const QString& output,
                                 const std::function<void(WriteOutcome& outcome)>& beforeReport) {
    WriteJob job;
    job.source = source;
    job.output = output;
    job.ticket = ticket;
    job.beforeReport = beforeReport;
    if (!ticket.run() ||
        (ticket.run()->isCancelled() && endedWithoutOutput(job, Status::Cancelled)))
        return std::nullopt;
    const NSFileManager& files = NSFileManager::defaultManager();
    const auto attributes = files.attributesOfItemAtPath(source);
    if (!attributes) {
        failJob(job, attributes.error());
        return std::nullopt;
    }
    job.dates = {attributes->NSFileCreationDate, attributes->NSFileModificationDate};
    if (const auto made = files.createDirectoryAtPath(deletingLastPathComponent(output)); !made) {
        failJob(job, made.error());
        return std::nullopt;
    }
    return job;
}

void startSession(const WriteJob& job, const std::shared_ptr<AVAssetExportSession>& session) {
    job.ticket.run()->start(
        session, job.source, [session, job] { completeExport(job, *session); }, job.files);
}

void failJob(const WriteJob& job, const Error& error) {
    finish(job, WriteStatus::Failed, error, {});
}

void startExport(const WriteJob& job, const AVURLAsset& asset, const MetadataPlan& plan) {
    auto session = std::make_shared<AVAssetExportSession>(
        asset, QString::fromUtf16(AVAssetExportPresetPassthrough));
    session->setOutputPath(job.output);
    session->setOutputFileType(plan.outputFileType);
    session->setRemovesMetadata(job.removes);
    // An empty list would strip the file. A writer that has nothing to say about a file without
    // items leaves it as it is.
    if (job.removes || !plan.metadata.isEmpty() || !asset.metadata().isEmpty())
        session->setMetadata(plan.metadata);
    startSession(job, session);
}

void startCopy(const WriteJob& job, NSFileManager::IfExists ifExists,
               const std::optional<Error>& reason) {
    const auto session = AVAssetExportSession::unchangedCopy(job.source, job.output, ifExists);
    job.ticket.run()->start(session, job.source,
                            [session, job, reason] { completeCopy(job, *session, reason); });
}

} // namespace clipheave::jobs
