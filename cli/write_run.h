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

} // namespace clipheave::cli
