// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/export/export_queue.h"

#include "platform/foundation/folder_syncs.h"
#include "platform/foundation/log.h"

#include <algorithm>
#include <utility>

#include <sched.h>
#include <unistd.h>

namespace clipheave::platform {

namespace {

/// Durable writes wait for the disk, and file systems join those that wait together into one
/// commit. Measured with 500 titles on ext4 and 2 cores: as fast with 8 at once as with 16 or 32.
constexpr std::size_t kSmallFilesPerCore = 4;
constexpr int kGivesWay = 10; // steps of niceness: a tenth of the weight

/// Lowers the priority of this thread and of those that it starts, which inherit it.
void lowerPriority() {
    const sched_param none{};
    // Neither is needed: where the system refuses, exports run at the usual priority.
    if (::sched_setscheduler(0, SCHED_BATCH, &none) != 0 || ::nice(kGivesWay) == -1)
        log(LogLevel::Trace, QStringLiteral("exports keep their priority"));
}

} // namespace

ExportQueue& ExportQueue::shared() {
    static ExportQueue queue;
    return queue;
}

ExportQueue::ExportQueue() : m_maximum(std::max(1U, std::thread::hardware_concurrency())) {
}

ExportQueue::~ExportQueue() {
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
        m_jobs.clear();
    }
    m_wake.notify_all();
    for (std::thread& thread : m_threads)
        thread.join();
}

void ExportQueue::add(std::function<void()> job, Work work) {
    {
        const std::lock_guard lock(m_mutex);
        m_jobs.push_back({std::move(job), work});
        startThreadIfNeeded();
    }
    m_wake.notify_one();
}

void ExportQueue::setMaximum(int count) {
    {
        const std::lock_guard lock(m_mutex);
        m_maximum = static_cast<std::size_t>(std::max(1, count));
        m_isLimited = true;
        startThreadIfNeeded();
    }
    m_wake.notify_all();
}

void ExportQueue::waitForAll() {
    std::unique_lock lock(m_mutex);
    m_idle.wait(lock, [this] { return m_jobs.empty() && m_running == 0; });
}

int ExportQueue::concurrency() {
    const std::lock_guard lock(m_mutex);
    const std::size_t wanted = std::min(m_maximum, m_running + m_jobs.size());
    return static_cast<int>(std::max<std::size_t>(wanted, 1));
}

std::size_t ExportQueue::limitFor(Work work) const {
    return work == Work::SmallFile && !m_isLimited ? kSmallFilesPerCore * m_maximum : m_maximum;
}

bool ExportQueue::nextMayStart() const {
    return !m_jobs.empty() && m_running < limitFor(m_jobs.front().work);
}

/// With the mutex held: starts as many threads as there is work for, up to the limit.
void ExportQueue::startThreadIfNeeded() {
    const std::size_t limit = m_jobs.empty() ? m_maximum : limitFor(m_jobs.back().work);
    while (m_threads.size() < std::min(limit, m_running + m_jobs.size()))
        m_threads.emplace_back([this] { work(); });
}

/// With nothing else running or waiting: makes the names of what was written durable.
void ExportQueue::finishRound(std::unique_lock<std::mutex>& lock) {
    while (m_jobs.empty() && m_running == 1 && !m_changedFolders.isEmpty()) {
        const QStringList folders = std::exchange(m_changedFolders, {}).values();
        lock.unlock();
        syncFolders(folders);
        lock.lock();
    }
}

void ExportQueue::work() {
    if (m_givesWay)
        lowerPriority();
    DeferredFolderSyncs deferred;
    std::unique_lock lock(m_mutex);
    while (true) {
        m_wake.wait(lock, [this] { return m_stopping || nextMayStart(); });
        if (m_stopping)
            return;
        std::function<void()> job = std::move(m_jobs.front().run);
        m_jobs.pop_front();
        ++m_running;
        if (nextMayStart()) // what stood before it may have kept others waiting
            m_wake.notify_one();
        lock.unlock();
        job();
        job = nullptr; // what it holds is released before it counts as done
        lock.lock();
        for (const QString& folder : deferred.take())
            m_changedFolders.insert(folder);
        finishRound(lock);
        --m_running;
        m_wake.notify_one();
        if (m_jobs.empty() && m_running == 0)
            m_idle.notify_all();
    }
}

} // namespace clipheave::platform
