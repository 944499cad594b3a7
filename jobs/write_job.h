// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "jobs/write_outcome.h"
#include "platform/media/export/av_asset_export_session.h"

#include <QDateTime>

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace clipheave::jobs {

/// How far the exports are that run now, in the order in which they were started.
struct RunProgress {
    struct Export {
        QString source;
        double done = 0; ///< 0 to 1
        int files = 1;   ///< how many of the run's files it stands for
    };
    std::vector<Export> exports;

    /// Of all together, in files: one that is half done counts 0.5.
    [[nodiscard]] double files() const;
    /// 0 to 1; -1 when nothing runs.
    [[nodiscard]] double mean() const;
};

/// The exports of one command run, for its progress and its end. Thread-safe.
class RunningExports {
public:
    /// Starts the export of `source`; after cancel() it ends as Cancelled at once. `files`: how
    /// many of the run's files it stands for.
    void start(const std::shared_ptr<platform::AVAssetExportSession>& session,
               const QString& source, std::function<void()> completionHandler, int files = 1);
    void cancel();
    [[nodiscard]] RunProgress progress() const;

private:
    mutable std::mutex m_mutex;
    struct Running {
        std::weak_ptr<platform::AVAssetExportSession> session;
        QString source;
        int files;
    };
    std::vector<Running> m_running;
    bool m_cancelled = false;
};

/// What a pass-through writes as the metadata of its output.
struct MetadataPlan {
    QList<platform::AVMetadataItem> metadata; ///< replaces the items of the source, in order
    QString outputFileType;                   ///< the container, whatever the file's extension
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
    int files = 1; ///< how many of the run's files end with it
    /// What a user should know whatever comes of it.
    platform::Notes notes;
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
/// The pass-through export by `plan`; its end sets the dates and returns the handler, on the
/// export's thread. A file that cannot be rewritten is copied unchanged with the dates asked for,
/// and the outcome says so (Failed): the user finds a file in the output folder in any case.
void startExport(const WriteJob& job, const platform::AVURLAsset& asset, const MetadataPlan& plan);
/// The unchanged copy with the dates asked for. With a `reason` it stands in for a failed rewrite.
void startCopy(const WriteJob& job, platform::NSFileManager::IfExists ifExists,
               const QString& reason = {});

} // namespace clipheave::jobs
