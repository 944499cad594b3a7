// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/video_jobs.h"

#include "media/media_kind.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/log.h"
#include "platform/foundation/paths.h"

namespace clipheave::video {

using namespace platform;
using jobs::WriteOutcome;
using jobs::WriteStatus;

namespace {

void logText(const char* text, const WriteOutcome& outcome) {
    if (text)
        log(LogLevel::Info, QString::fromLatin1(text).replace(u"%1"_qs, outcome.message),
            outcome.source);
}

} // namespace

jobs::OutcomeHandler tellingReplacement(const QString& output,
                                        const jobs::OutcomeHandler& handler) {
    if (!NSFileManager::defaultManager().fileExistsAtPath(output))
        return handler;
    return [handler](WriteOutcome outcome) {
        if (outcome.status == WriteStatus::Completed)
            outcome.message += (outcome.message.isEmpty() ? u""_qs : u"; "_qs) +
                               QStringLiteral("replaced an older file");
        handler(outcome);
    };
}

void VideoJobs::refuse(const QString& source, const QString& reason, WriteStatus status) const {
    WriteOutcome outcome;
    outcome.source = source;
    outcome.status = status;
    outcome.message = reason;
    m_handler(outcome);
}

bool VideoJobs::skips(const media::ItemPointer& item) const {
    const QString& path = item->filePath;
    const QString extension = pathExtension(path);
    if (media::MediaKind::GetViedoType(extension.toUtf8().constData()) >= 0)
        return false;
    const bool isOther =
        extension.isEmpty() || media::MediaKind::isAudio(path) || media::MediaKind::isPhoto(path);
    refuse(path,
           isOther ? QStringLiteral("not a video")
                   : QStringLiteral("\".%1\" is none of the known kinds of video").arg(extension),
           WriteStatus::Skipped);
    return true;
}

void VideoJobs::startExport(const media::ItemPointer& item, const QString& wanted,
                            const ExportRecipe& recipe) {
    const QString output = m_paths.claimShared(wanted);
    const auto handler = [turns = m_turns, output, texts = recipe.texts,
                          report = m_handler](const WriteOutcome& outcome) {
        const bool failed = outcome.status == WriteStatus::Failed ||
                            (texts.cancelledIsFailed && outcome.status == WriteStatus::Cancelled);
        if (outcome.status == WriteStatus::Completed)
            logText(texts.completed, outcome);
        if (failed)
            logText(texts.failed, outcome);
        if (failed)
            logText(texts.afterFailure, outcome);
        turns->ended(output);
        report(outcome);
    };
    m_turns->begin(output, [this, source = item->filePath, output, recipe, handler] {
        beginExport(source, output, recipe, handler);
    });
}

void VideoJobs::beginExport(const QString& source, const QString& output,
                            const ExportRecipe& recipe, const jobs::OutcomeHandler& handler) {
    auto job = jobs::beginJob(source, output, tellingReplacement(output, handler), m_running);
    if (!job)
        return;
    job->copiesOnFailure = false;
    const auto asset = AVURLAsset::assetWithPath(source);
    if (!asset)
        return jobs::failJob(*job, asset.error().text());
    const auto session = recipe.maker(*asset, output);
    if (!session)
        return jobs::failJob(*job, session.error().text());
    (*session)->setOutputPath(output);
    jobs::startSession(*job, *session);
}

} // namespace clipheave::video
