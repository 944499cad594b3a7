// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/video_plans.h"
#include "metadata/write_outcome.h"

#include <QDateTime>

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace clipheave::metadata {

/// The exports of one command run, for its progress and its end. Thread-safe.
class RunningExports {
public:
    /// Starts the job; after cancel() it ends as Cancelled at once.
    void start(const std::shared_ptr<platform::AVAssetExportSession>& session,
               std::function<void()> completionHandler);
    void cancel();
    /// Mean progress of those that are running now, 0 to 1; -1 when none is.
    [[nodiscard]] double progress() const;

private:
    mutable std::mutex m_mutex;
    std::vector<std::weak_ptr<platform::AVAssetExportSession>> m_sessions;
    bool m_cancelled = false;
};

/// The dates that an output gets.
struct OutputDates {
    std::optional<QDateTime> creation, modification;
};

/// One item on its way to its output: all that its end needs, captured when it starts.
struct WriteJob {
    QString source, output;
    OutputDates dates;
    OutcomeHandler handler;
    std::shared_ptr<RunningExports> running;
    /// A removal: see AVAssetExportSession::setRemovesMetadata().
    bool removes = false;
    /// A failed rewrite still delivers the source unchanged; else it leaves no output.
    bool copiesOnFailure = true;
    /// What a user should know whatever comes of it.
    QStringList notes;
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

/// The job of one item with the dates of its source; none when the source cannot be looked at or
/// there is no folder for the output, which the handler has been told.
[[nodiscard]] std::optional<WriteJob> beginJob(const QString& source, const QString& output,
                                               const OutcomeHandler& handler,
                                               const std::shared_ptr<RunningExports>& running);
/// Runs a session that has been set up for the job; ends as startExport() says.
void startSession(const WriteJob& job,
                  const std::shared_ptr<platform::AVAssetExportSession>& session);
/// Ends a job that wrote nothing.
void failJob(const WriteJob& job, const QString& reason);
/// The pass-through export by `plan`; its end sets the dates and answers the handler, on the
/// export's thread. A file that cannot be rewritten is copied unchanged with the dates asked for,
/// and the outcome says so (Failed): the user finds a file in the output folder in any case.
void startExport(const WriteJob& job, const platform::AVURLAsset& asset, const VideoPlan& plan);
/// The unchanged copy with the dates asked for. With a `reason` it stands in for a failed rewrite.
void startCopy(const WriteJob& job, platform::NSFileManager::IfExists ifExists,
               const QString& reason = {});

} // namespace clipheave::metadata
