// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/AppDelegate.h"
#include "jobs/write_job.h"

#include <QSet>

namespace clipheave::app {

/// Bytes of a source and of its first output; of what is not there 0.
struct AppDelegate::FileSizes {
    std::uint64_t before = 0, after = 0;
};

/// One press of a command that writes outputs: what is still under way and what came out. Lives
/// until the last outcome, on the main thread; the functions keep their writer alive.
struct AppDelegate::WriteRun {
    int job = 0;
    int left = 0;
    QStringList outputs;
    bool tellsSizes = false; ///< the job is about sizes: its summary tells them
    FileSizes sizes;         ///< of what came out well
    bool oneEach = true;     ///< so far every file that came out well became one output
    QSet<QString> sources;
    std::function<jobs::RunProgress()> progress = [] { return jobs::RunProgress(); };
    std::function<void()> cancel = [] {};
};

} // namespace clipheave::app
