// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/video_jobs.h"

#include "media/media_kind.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/log.h"
#include "platform/foundation/paths.h"
#include "video/messages.h"

namespace clipheave::video {

using namespace platform;
using jobs::WriteOutcome;
using jobs::WriteStatus;

namespace {

void logText(const char* text, const WriteOutcome& outcome) {
    if (text)
        log(LogLevel::Info, QString::fromLatin1(text).replace(QStringLiteral("%1"), outcome.text()),
            outcome.source);
}

} // namespace

bool VideoJobs::skips(const media::ItemPointer& item) const {
    const QString& path = item->filePath;
    const QString extension = pathExtension(path);
    if (media::MediaKind::GetViedoType(extension.toUtf8().constData()) >= 0)
        return false;
    const bool isOther =
        extension.isEmpty() || media::MediaKind::isAudio(path) || media::MediaKind::isPhoto(path);
    const Message reason =
        isOther ? Message(kNoVideoItem) : Message(kUnknownVideoKind, {extension});
    m_run.ticket(path).report(jobs::refusal(path, reason, WriteStatus::Skipped));
    return true;
}

void VideoJobs::startExport(const media::ItemPointer& item, const QString& wanted,
                            const ExportRecipe& recipe) {
    const QString output = m_run.paths().claimShared(wanted);
    m_run.turns().begin(
        output, [ticket = m_run.ticket(item->filePath), source = item->filePath, output,
                 recipe](const auto& turn) { beginExport(ticket, source, output, recipe, turn); });
}

void VideoJobs::beginExport(const jobs::Ticket& ticket, const QString& source,
                            const QString& output, const ExportRecipe& recipe,
                            const std::shared_ptr<jobs::OutputTurn>& turn) {
    const bool replaces = NSFileManager::defaultManager().fileExistsAtPath(output);
    auto job = jobs::beginJob(ticket, source, output,
                              [texts = recipe.texts, replaces, turn](WriteOutcome& outcome) {
                                  if (replaces && outcome.status == WriteStatus::Completed)
                                      outcome.notes.append(kReplacedOlderFile);
                                  logCompletion(texts, outcome);
                                  turn->end();
                              });
    if (!job)
        return;
    job->copiesOnFailure = false;
    const auto asset = AVURLAsset::assetWithPath(source);
    if (!asset)
        return jobs::failJob(*job, asset.error());
    const auto session = recipe.maker(*asset, output);
    if (!session)
        return jobs::failJob(*job, session.error());
    (*session)->setOutputPath(output);
    jobs::startSession(*job, *session);
}

void VideoJobs::logCompletion(const CompletionTexts& texts, const WriteOutcome& outcome) {
    const bool failed = outcome.status == WriteStatus::Failed ||
                        (texts.cancelledIsFailed && outcome.status == WriteStatus::Cancelled);
    if (outcome.status == WriteStatus::Completed)
        logText(texts.completed, outcome);
    if (failed) {
        logText(texts.failed, outcome);
        logText(texts.afterFailure, outcome);
    }
}

jobs::RunOrder videoOrder(Worker worker, VideoJobRequest request, bool isWhole) {
    jobs::RunOrder order;
    for (const auto& item : request.items)
        order.sources.append(item->filePath);
    order.isWhole = isWhole;
    order.work = [worker = std::move(worker), request = std::move(request)](jobs::Run& run,
                                                                            const auto& items) {
        VideoJobRequest part{request.title, {}, request.settings};
        for (const std::size_t item : items)
            part.items.push_back(request.items[item]);
        VideoJobs jobs(run);
        worker(jobs, part);
    };
    return order;
}

} // namespace clipheave::video
