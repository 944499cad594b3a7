// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/commands.h"
#include "metadata/video_metadata.h"

#include <functional>

namespace clipheave::cli {

/// Starts the writer of one item; the request holds the item, its pane as the item fills it, and
/// the folders.
using StartWriting =
    std::function<void(metadata::VideoMetadata& writer, jobs::WriteRequest request)>;

/// What every writing command does: imports the paths, starts the writer of each item, waits for
/// all exports and reports. `what` stands in the progress bar ("saved"). Returns an ExitStatus.
[[nodiscard]] int runWriting(const GlobalOptions& global, const QStringList& paths,
                             const QString& what, const StartWriting& start, Console& console);

/// What a run over the imported items works with. The outcomes go to `handler`, one an item.
struct ItemRun {
    jobs::OutcomeHandler handler;
    const media::MediaImport& import;
    QString storage; ///< output folder; it exists
};
using RunProgressTeller = std::function<jobs::RunProgress()>;
/// Starts the work on all items and returns; returns what tells the progress of what runs. The
/// answer owns what must live until all outcomes are there.
using StartRun = std::function<RunProgressTeller(const ItemRun& run)>;
/// The paths of all imported items.
[[nodiscard]] QStringList sourcesOf(const media::MediaImport& import);
/// Imports the paths, starts the run, waits for one outcome an item, and reports.
[[nodiscard]] int runOverItems(const GlobalOptions& global, const QStringList& paths,
                               const QString& what, const StartRun& start, Console& console);

/// Outputs or, with --json, the outcomes on standard output, messages on standard error. Returns an
/// ExitStatus: that all is done only when the import had left out nothing either.
[[nodiscard]] int reportOutcomes(const GlobalOptions& global,
                                 const std::vector<jobs::WriteOutcome>& outcomes, bool allImported);
[[nodiscard]] jobs::WriteOutcome outcomeOfSkipped(const media::SkippedPath& skipped);
/// Names the files of unknown kinds on standard error. They are no items: nothing of them failed.
void reportUnknown(const media::MediaImport& import);

} // namespace clipheave::cli
