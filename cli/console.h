// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/log.h"

#include <QString>

#include <chrono>
#include <memory>
#include <mutex>

namespace clipheave::cli {

/// Exit statuses of the command line.
enum ExitStatus : int {
    kAllDone = 0,
    kSomeFailed = 1,
    kWrongUsage = 2,
    kNothingToDo = 3,
    kInterrupted = 130, ///< SIGINT
    kTerminated = 143,  ///< SIGTERM
    kHungUp = 129,      ///< SIGHUP
};

/// The progress of the items that are being worked on.
struct RunningItems {
    double fraction = -1; ///< of those that run, 0 to 1; below 0 for none
    double items = 0;     ///< of all of them together: two that are half done are 1
};

/// Standard error of one run: log lines and, on a terminal, a progress bar below them. Thread-safe.
class Console {
public:
    enum class Detail { Quiet, Normal, Verbose };
    explicit Console(Detail detail);
    ~Console();

    /// Shows "item k of n, percent, rate, time left". A total of 0 is unknown. Redrawn at most ten
    /// times a second.
    void progress(const QString& what, int done, int total, const RunningItems& running = {});
    void clearProgress();

private:
    void print(const platform::LogLine& line);
    void eraseBar();

    std::mutex m_mutex;
    bool m_showsBar;
    bool m_barDrawn = false;
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point m_lastDrawn{};
    std::unique_ptr<platform::LogSubscription> m_subscription;
};

/// Writes to standard output; all output is written by this function, so that a closed pipe or full
/// disk is noticed. Returns false, with a message on standard error, when it cannot.
[[nodiscard]] bool printOut(const QByteArray& bytes);
/// Writes a message to the user on standard error, "clipheave-cli: TEXT".
void printError(const QString& text);

/// Prints the fixed text for an empty selection; returns kNothingToDo.
int reportNothingToDo();

/// Makes SIGINT, SIGTERM and SIGHUP cancel the running exports; interruption() then returns the
/// exit status. A second signal ends the program at once.
void watchSignals();
[[nodiscard]] int interruption(); ///< 0, or one of the last three statuses
[[nodiscard]] bool isInterrupted();

} // namespace clipheave::cli
