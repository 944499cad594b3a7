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

/// Runs jobs on its own threads in the order they came, as many at once as there are cores unless
/// setMaximum() says otherwise. The folders of the files that they commit are synced when nothing
/// is left to do. Thread-safe.
class ExportQueue {
public:
    enum class Work {
        Any,
        SmallFile, ///< waits for the disk most of the time: several a core run at once
    };
    /// The one of this process.
    [[nodiscard]] static ExportQueue& shared();
    ExportQueue();
    /// Waits for the running jobs; those that wait are dropped.
    ~ExportQueue();
    ExportQueue(const ExportQueue&) = delete;
    ExportQueue& operator=(const ExportQueue&) = delete;

    void add(std::function<void()> job, Work work = Work::Any);
    /// Runs jobs, with all threads that they start, at a lower priority than the rest of the
    /// program: a window stays responsive while they use all cores. On an idle machine they are as
    /// fast as before. Cannot be undone; to be called before the first job.
    void giveWayToOthers() { m_givesWay = true; }
    /// Sets the limit, 1 or more, for jobs of every kind. Jobs beyond a lowered limit run to their
    /// end.
    void setMaximum(int count);
    /// Returns when nothing waits or runs. Not to be called from a job.
    void waitForAll();
    /// Returns how many jobs run at once now, or will when those that wait have begun; at least 1.
    [[nodiscard]] int concurrency();

private:
    struct Job {
        std::function<void()> run;
        Work work = Work::Any;
    };

    void work();
    [[nodiscard]] std::size_t limitFor(Work work) const;
    [[nodiscard]] bool nextMayStart() const;
    void startThreadIfNeeded();
    void finishRound(std::unique_lock<std::mutex>& lock);

    std::mutex m_mutex;
    std::condition_variable m_wake, m_idle;
    std::deque<Job> m_jobs;
    std::vector<std::thread> m_threads;
    QSet<QString> m_changedFolders; ///< their new names are not durable yet
    std::size_t m_maximum = 1, m_running = 0;
    bool m_isLimited = false; ///< by setMaximum()
    bool m_stopping = false;
    std::atomic<bool> m_givesWay = false;
};

} // namespace clipheave::platform
