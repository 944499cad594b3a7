// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

namespace clipheave::app {

class ActivityModel;
class Workspace;
struct BoardJob;

/// Shows the outcomes of jobs that write outputs, and reveals the outputs at the end of each. Main
/// thread; what it refers to outlives the jobs.
struct WriteReport {
    ActivityModel& activity;
    Workspace& workspace;
    std::function<void()> ended; ///< called when the row of a job has ended
    bool withSizes = false;      ///< summaries give the sizes before and after

    /// Fills in what the job calls when outcomes come and when it has ended.
    void attachTo(BoardJob& job) const;
};

} // namespace clipheave::app
