// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "batch/rename_plan.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace clipheave::batch {

/// What became of one line of a plan.
struct RenameOutcome {
    QString source, target; ///< where the file was and is; equal when it stayed
    bool moved = false;
    QString message; ///< why it stayed, or what a user should know of a success; may be empty
};

/// The progress of a rename job; all calls come on the job's thread.
struct RenameProgress {
    /// After every file, moved or not: the outcome, files done, files in all.
    std::function<void(const RenameOutcome& outcome, std::size_t index, std::size_t total)> done;
    /// Stops before the next file by returning true. May be empty.
    std::function<bool()> stopRequested;
};

/// Carries out a plan, one move at a time, never over another file. Before the first move the whole
/// plan is on disk in the journal of the user's state folder, so that it can be taken back also
/// after a crash. A journal that cannot be written stops the job before anything moves (the
/// failure). Failed moves are told through `progress` and the rest goes on.
[[nodiscard]] platform::Result<std::vector<RenameOutcome>>
runRename(const std::vector<RenameMove>& plan, const RenameProgress& progress);

/// Is there a job that can be taken back?
[[nodiscard]] bool canUndoRename();
/// Puts the files of the last job back under their old names, last one first. A file whose old name
/// has been taken since, or that is not the same file any more, stays where it is and its outcome
/// says why. Files that the job had not moved have no outcome. NotFound without a job, NotSupported
/// while the last one is still running.
///
/// Afterwards the job before it can be taken back. Deliberate: where some files were put back and
/// others could not be although they are there, or where their disk is away, the job stays the last
/// one, so that the rest can be tried again.
[[nodiscard]] platform::Result<std::vector<RenameOutcome>>
undoLastRename(const RenameProgress& progress);

} // namespace clipheave::batch
