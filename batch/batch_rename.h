// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "batch/rename_plan.h"
#include "jobs/run.h"

#include <memory>
#include <vector>

namespace clipheave::batch {

/// Carries out a plan, one move at a time, never over another file; reports one outcome per line to
/// the run, whose sources are those of the plan. Before the first move the whole plan is on disk in
/// the journal of the user's state folder, so that it can be undone also after a crash. A journal
/// that cannot be written stops the job before anything moves (the failure, and the run's). A
/// failed move has a failed outcome and the rest goes on. After a cancel the rest stays.
[[nodiscard]] platform::Result<void> runRename(const std::vector<RenameMove>& plan, jobs::Run& run);

/// Returns whether there is a job that can be undone.
[[nodiscard]] bool canUndoRename();
/// Puts the files of the last job back under their old names, last one first. A file whose old name
/// has been taken since, or that is not the same file any more, stays where it is and its outcome
/// says why. Files that the job had not moved have no outcome: the run is one without sources.
/// NotFound without a job, NotSupported while the last one is still running.
///
/// Afterwards the job before it can be undone. Deliberate: where some files were put back and
/// others could not be although they are there, or where their disk is away, the job stays the last
/// one, so that the rest can be tried again.
[[nodiscard]] platform::Result<void> undoLastRename(jobs::Run& run);

/// One rename as requested. Without a plan the first run of its order makes it, before
/// the first outcome; another try makes the same moves again: a number that a file was to get stays
/// its own.
struct RenameBatch {
    RenameRequest request;
    std::vector<media::ItemPointer> items;
    std::vector<RenameMove> plan; ///< one line an item; a front that shows it first gives it
    bool wasTried = false;        ///< by a run: lines that stayed are tried all the same
};
/// Return the orders of a rename and of the undoing of the last one. Of one process they run one
/// after the other.
[[nodiscard]] jobs::RunOrder renameOrder(const std::shared_ptr<RenameBatch>& batch);
[[nodiscard]] jobs::RunOrder undoOrder();

} // namespace clipheave::batch
