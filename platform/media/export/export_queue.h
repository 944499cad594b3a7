// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSet>
#include <QString>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace clipheave::platform {

/// Runs jobs on its own threads in the order they came, no more than setMaximum() at once. The
/// folders of the files that they commit are synced when nothing is left to do. Thread-safe.
class ExportQueue {
public:
    /// The one of this process.
    [[nodiscard]] static ExportQueue& shared();
    ExportQueue();
    /// Waits for the running jobs; those that wait are dropped.
    ~ExportQueue();
    ExportQueue(const ExportQueue&) = delete;
    ExportQueue& operator=(const ExportQueue&) = delete;

    void add(std::function<void()> job);
    /// Runs jobs, with all threads that they start, at a lower priority than the rest of the
    /// program: a window stays responsive while they use all cores. On an idle machine they are as
    /// fast as before. Cannot be undone; to be called before the first job.
    void giveWayToOthers() { m_givesWay = true; }
    /// Sets the limit, 1 or more. Jobs beyond a lowered limit run to their end.
    void setMaximum(int count);
    /// Returns when nothing waits or runs. Not to be called from a job.
    void waitForAll();
    /// Returns how many jobs run at once now, or will when those that wait have begun; at least 1.
    [[nodiscard]] int concurrency();

private:
    void work();
    void startThreadIfNeeded();
    void finishRound(std::unique_lock<std::mutex>& lock);

    std::mutex m_mutex;
    std::condition_variable m_wake, m_idle;
    std::deque<std::function<void()>> m_jobs;
    std::vector<std::thread> m_threads;
    QSet<QString> m_changedFolders; ///< their new names are not durable yet
    std::size_t m_maximum = 1, m_running = 0;
    bool m_stopping = false;
    std::atomic<bool> m_givesWay = false;
};

} // namespace clipheave::platform
