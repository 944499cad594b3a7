// SPDX-License-Identifier: GPL-3.0-or-later
#include "jobs/write_job.h"

#include "platform/foundation/file_manager.h"
#include "platform/foundation/log.h"
#include "platform/foundation/paths.h"

namespace clipheave::jobs {

namespace {

using namespace platform;
using Status = AVAssetExportSessionStatus;

void finish(const WriteJob& job, WriteStatus status, const QStringList& outputs,
            const Notes& messages) {
    WriteOutcome outcome;
    outcome.source = job.source;
    outcome.outputs = outputs;
    outcome.status = status;
    outcome.message = textOf(messages + job.notes);
    outcome.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - job.start).count();
    job.handler(outcome);
}

/// Sets the dates of a finished output; adds what a user should know to `messages`.
void setOutputDates(const WriteJob& job, Notes& messages) {
    const auto stored = NSFileManager::defaultManager().setAttributes(
        job.output, job.dates.creation, job.dates.modification);
    if (!stored)
        messages.append(stored.error().text());
    else if (*stored == CreationDateStored::NotStoredHere)
        messages.append(QStringLiteral("creation date not stored here"));
}

/// The ends that leave no output. True when the job has ended with one of them.
bool endedWithoutOutput(const WriteJob& job, Status status) {
    const auto ended = [&](const QString& text, WriteStatus outcome) {
        log(LogLevel::Info, text, job.source);
        finish(job, outcome, {}, {text});
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
            return failJob(job, session.error().text());
        return startCopy(job, NSFileManager::IfExists::Replace, session.error().text());
    }
    Notes messages = session.notes();
    setOutputDates(job, messages);
    finish(job, WriteStatus::Completed, {job.output}, messages);
}

void completeCopy(const WriteJob& job, const AVAssetExportSession& session, const QString& reason) {
    const Status status = session.status();
    if (endedWithoutOutput(job, status))
        return;
    Notes messages;
    if (!reason.isEmpty())
        messages.append(reason);
    if (status == Status::Failed) {
        messages.append(session.error().text());
        return finish(job, WriteStatus::Failed, {}, messages);
    }
    if (!reason.isEmpty())
        messages.append(QStringLiteral("copied unchanged"));
    setOutputDates(job, messages);
    finish(job, reason.isEmpty() ? WriteStatus::Completed : WriteStatus::Failed, {job.output},
           messages);
}

} // namespace

double RunProgress::files() const {
    double sum = 0;
    for (const Export& running : exports)
        sum += running.done * running.files;
    return sum;
}

double RunProgress::mean() const {
    int all = 0;
    for (const Export& running : exports)
        all += running.files;
    return all > 0 ? files() / all : -1;
}

void RunningExports::start(const std::shared_ptr<AVAssetExportSession>& session,
                           const QString& source, std::function<void()> completionHandler,
                           int files) {
    {
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_running, [](const Running& ended) { return ended.session.expired(); });
        m_running.push_back({session, source, files});
        if (m_cancelled)
            session->cancelExport();
    }
    session->exportAsynchronouslyWithCompletionHandler(std::move(completionHandler));
}

void RunningExports::cancel() {
    const std::lock_guard lock(m_mutex);
    m_cancelled = true;
    for (const Running& running : m_running)
        if (const auto session = running.session.lock())
            session->cancelExport();
}

RunProgress RunningExports::progress() const {
    const std::lock_guard lock(m_mutex);
    RunProgress progress;
    for (const auto& [weak, source, files] : m_running)
        if (const auto session = weak.lock(); session && session->status() == Status::Exporting)
            progress.exports.push_back({source, session->progress(), files});
    return progress;
}

std::optional<WriteJob> beginJob(const QString& source, const QString& output,
                                 const OutcomeHandler& handler,
                                 const std::shared_ptr<RunningExports>& running) {
    WriteJob job;
    job.source = source;
    job.output = output;
    job.handler = handler;
    job.running = running;
    const NSFileManager& files = NSFileManager::defaultManager();
    const auto attributes = files.attributesOfItemAtPath(source);
    if (!attributes) {
        failJob(job, attributes.error().text());
        return std::nullopt;
    }
    job.dates = {attributes->NSFileCreationDate, attributes->NSFileModificationDate};
    if (const auto made = files.createDirectoryAtPath(deletingLastPathComponent(output)); !made) {
        failJob(job, made.error().text());
        return std::nullopt;
    }
    return job;
}

void startSession(const WriteJob& job, const std::shared_ptr<AVAssetExportSession>& session) {
    job.running->start(
        session, job.source, [session, job] { completeExport(job, *session); }, job.files);
}

void failJob(const WriteJob& job, const QString& reason) {
    finish(job, WriteStatus::Failed, {}, {reason});
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

void startCopy(const WriteJob& job, NSFileManager::IfExists ifExists, const QString& reason) {
    const auto session = AVAssetExportSession::unchangedCopy(job.source, job.output, ifExists);
    job.running->start(session, job.source,
                       [session, job, reason] { completeCopy(job, *session, reason); });
}

} // namespace clipheave::jobs
