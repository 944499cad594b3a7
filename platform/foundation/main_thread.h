// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

namespace clipheave::platform {

/// Runs `operation` on the application's main thread and returns when it has run: directly when
/// already there (a queued call would wait for itself) or when there is no application object.
void performOnMainThread(const std::function<void()>& operation);

/// Long jobs: one new thread each, never joined by the caller.
class BackgroundJob {
public:
    /// Starts `worker` on a new detached thread.
    static void detach(std::function<void()> worker);
    /// Waits until no detached worker runs; for orderly ends of tests and of the command line.
    static void waitForAll();
};

} // namespace clipheave::platform
