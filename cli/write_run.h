// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/commands.h"
#include "metadata/video_metadata.h"

#include <functional>

namespace clipheave::cli {

/// The fixed alert about a date that cannot be read.
inline constexpr char16_t kDateAlert[] =
    u"Invalid date format: Input the valid date format: YYYY:MM:DD HH:MM:SS or YYYY-MM-DD HH:MM:SS";

/// Returns a command's order for the imported items and the folders of this run.
using MakeOrder = std::function<jobs::RunOrder(const media::MediaImport& import,
                                               const jobs::RunSettings& settings)>;
/// Whether a file that is given twice stands once among the items.
enum class Repeats { TakenOnce, Kept };
/// The import of a command: that of the media list, or that of the photo browser.
using ImportPaths = void (media::MediaImport::*)(const QStringList& paths);
/// Imports the paths, runs the order, waits for its end and reports, as every command over items
/// does. `what` stands in the progress bar ("saved"). Returns an ExitStatus.
[[nodiscard]] int
runOverItems(const GlobalOptions& global, const QStringList& paths, const QString& what,
             const MakeOrder& makeOrder, Console& console, Repeats repeats = Repeats::TakenOnce,
             ImportPaths importPaths = &media::MediaImport::importMediaItemsThreader);
/// Returns one request per item: the item, its pane as the item fills it, and the folders.
[[nodiscard]] std::vector<jobs::WriteRequest> requestsFor(const media::MediaImport& import,
                                                          const jobs::RunSettings& settings);
/// Prints the outputs or, with --json, the outcomes on standard output, messages on standard error.
/// Returns an ExitStatus; kAllDone only when the import had skipped nothing either.
[[nodiscard]] int reportOutcomes(const GlobalOptions& global,
                                 const std::vector<jobs::WriteOutcome>& outcomes, bool allImported);
[[nodiscard]] jobs::WriteOutcome outcomeOfSkipped(const media::SkippedPath& skipped);
/// Names the files of unknown kinds on standard error. They count neither as items nor as failures.
void reportUnknown(const media::MediaImport& import);
/// Names on standard error the paths that gave no item, with the reason.
void reportSkipped(const media::MediaImport& import);

} // namespace clipheave::cli
