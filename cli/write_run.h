// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/commands.h"
#include "metadata/video_metadata.h"

#include <functional>

namespace clipheave::cli {

/// Starts the writer of one item; the request holds the item, its pane as the item fills it, and
/// the folders.
using StartWriting =
    std::function<void(metadata::VideoMetadata& writer, metadata::WriteRequest request)>;

/// What every writing command does: imports the paths, starts the writer of each item, waits for
/// all exports and reports. `what` stands in the progress bar ("saved"). Answers an ExitStatus.
[[nodiscard]] int runWriting(const GlobalOptions& global, const QStringList& paths,
                             const QString& what, const StartWriting& start, Console& console);

/// Outputs or, with --json, the outcomes on standard output, messages on standard error. Answers an
/// ExitStatus: that all is done only when the import had left out nothing either.
[[nodiscard]] int reportOutcomes(const GlobalOptions& global,
                                 const std::vector<metadata::WriteOutcome>& outcomes,
                                 bool allImported);
[[nodiscard]] metadata::WriteOutcome outcomeOfSkipped(const media::SkippedPath& skipped);

} // namespace clipheave::cli
