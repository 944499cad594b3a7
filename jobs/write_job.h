// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "jobs/run.h"
#include "platform/media/export/av_asset_export_session.h"

#include <QDateTime>

#include <chrono>
#include <memory>
#include <optional>

namespace clipheave::jobs {

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
    Ticket ticket; ///< of the item
    /// Sees the outcome before it is reported, and may add to it; may be empty.
    std::function<void(WriteOutcome& outcome)> beforeReport;
    /// A removal: see AVAssetExportSession::setRemovesMetadata().
    bool removes = false;
    /// A failed rewrite still delivers the source unchanged; else it leaves no output.
    bool copiesOnFailure = true;
    int files = 1; ///< how many of the run's files end with it
    /// What a user should know whatever comes of it.
    platform::Notes notes;
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

/// Makes the job of one item with the dates of its source; none when the run is cancelled, the
/// source cannot be read or there is no folder for the output, which has been reported then.
/// `beforeReport`: see WriteJob.
[[nodiscard]] std::optional<WriteJob>
beginJob(const Ticket& ticket, const QString& source, const QString& output,
         const std::function<void(WriteOutcome& outcome)>& beforeReport = {});
/// Runs a session that has been set up for the job; ends as startExport() says.
void startSession(const WriteJob& job,
                  const std::shared_ptr<platform::AVAssetExportSession>& session);
/// Ends a job that wrote nothing.
void failJob(const WriteJob& job, const platform::Error& error);
/// The pass-through export by `plan`; its end sets the dates and reports, on the export's
/// thread. A file that cannot be rewritten is copied unchanged with the requested dates,
/// and the outcome says so (Failed): the user finds a file in the output folder in any case.
void startExport(const WriteJob& job, const platform::AVURLAsset& asset, const MetadataPlan& plan);
/// Copies the file unchanged with the requested dates; with a `reason`, in place of a failed
/// rewrite.
void startCopy(const WriteJob& job, platform::NSFileManager::IfExists ifExists,
               const std::optional<platform::Error>& reason = {});

} // namespace clipheave::jobs
