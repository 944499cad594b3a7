// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/jobs/job_board.h"

#include "platform/foundation/file_manager.h"
#include "platform/foundation/main_thread.h"

#include <QScopeGuard>

#include <algorithm>
#include <utility>

namespace clipheave::app {

namespace {

constexpr int kProgressInterval = 100; // ms

FileState stateOf(jobs::WriteStatus status) {
    switch (status) {
    case jobs::WriteStatus::Completed:
        return FileState::Done;
    case jobs::WriteStatus::Failed:
        return FileState::Failed;
    case jobs::WriteStatus::Cancelled:
        return FileState::Cancelled;
    case jobs::WriteStatus::Skipped:
        break;
    }
    return FileState::Skipped;
}

std::uint64_t bytesOf(const QString& path) {
    const auto found = platform::NSFileManager::defaultManager().attributesOfItemAtPath(path);
    return found ? found->NSFileSize : 0;
}

/// Runs on the thread of the outcome, which may wait for the disk.
JobArrival arrivalOf(const jobs::WriteOutcome& outcome) {
    JobArrival arrival{outcome, {}, 0, 0};
    arrival.file = {outcome.source, outcome.outputs, stateOf(outcome.status), outcome.text()};
    if (outcome.outputs.isEmpty())
        return arrival;
    arrival.bytesBefore = bytesOf(outcome.source);
    arrival.bytesAfter = bytesOf(outcome.outputs.first());
    return arrival;
}

std::vector<RunningFile> runningFiles(const jobs::RunProgress& progress) {
    std::vector<RunningFile> files;
    for (const auto& [source, done, count] : progress.exports)
        files.push_back({source, done, count});
    return files;
}

} // namespace

/// What comes from other threads. Outcomes that come faster than the main thread takes them share
/// one call. Outlives the board in the handlers of its runs.
struct JobBoard::Inbox {
    enum class Event { Outcome, WorkReturned, Ended };
    struct Message {
        int job;
        Event event;
        JobArrival arrival;
    };

    void post(Message message) {
        const std::lock_guard lock(mutex);
        messages.push_back(std::move(message));
        if (board && !std::exchange(isCalled, true))
            QMetaObject::invokeMethod(board, &JobBoard::deliver, Qt::QueuedConnection);
    }
    std::vector<Message> takeAll() {
        const std::lock_guard lock(mutex);
        isCalled = false;
        return std::exchange(messages, {});
    }

    std::mutex mutex;
    std::vector<Message> messages;
    bool isCalled = false;
    JobBoard* board = nullptr;
};

JobBoard::JobBoard(ActivityModel& activity, QObject* parent)
    : QObject(parent), m_activity(activity), m_inbox(std::make_shared<Inbox>()) {
    m_inbox->board = this;
    m_progressTimer.setInterval(kProgressInterval);
    connect(&m_progressTimer, &QTimer::timeout, this, &JobBoard::showProgress);
    connect(&activity, &ActivityModel::cancelRequested, this, &JobBoard::cancel);
    connect(&activity, &ActivityModel::retryRequested, this, &JobBoard::retry);
    connect(&activity, &ActivityModel::jobEnded, this, &JobBoard::dropGoneJobs);
    connect(&activity, &ActivityModel::rowsRemoved, this, &JobBoard::dropGoneJobs);
}

JobBoard::~JobBoard() {
    cancelAll();
    const std::lock_guard lock(m_inbox->mutex);
    m_inbox->board = nullptr;
}

void JobBoard::setListedFiles(std::function<QStringList()> listedFiles) {
    m_listedFiles = std::move(listedFiles);
}

void JobBoard::setRetry(int job, std::function<void(const QStringList& failed)> retry) {
    m_entries[job].retry = std::move(retry);
}

int JobBoard::start(const BoardJob& job) {
    return start(job, job.order.allItems());
}

int JobBoard::start(const BoardJob& job, const std::vector<std::size_t>& items) {
    const int id = m_activity.beginJob(job.title, static_cast<int>(items.size()));
    jobs::RunOrder order = job.order;
    const QStringList listed = m_listedFiles ? m_listedFiles() : QStringList();
    order.work = [id, listed, inbox = m_inbox, work = order.work](jobs::Run& run,
                                                                  const auto& places) {
        const auto post = qScopeGuard([&] { inbox->post({id, Inbox::Event::WorkReturned, {}}); });
        run.paths().protect(listed);
        work(run, places);
    };
    Entry& entry = m_entries[id];
    entry.job = job;
    entry.run = jobs::Run::create(std::move(order), items, handlersOf(id));
    for (const std::size_t item : items)
        entry.sources.insert(job.order.sources[static_cast<qsizetype>(item)]);
    m_activity.setCanCancel(id, true);
    m_progressTimer.start();
    // Looking at files, reading headers and copying take time: not on this thread.
    platform::BackgroundJob::detach([run = entry.run] { run->perform(); });
    return id;
}

jobs::Run::Handlers JobBoard::handlersOf(int job) const {
    jobs::Run::Handlers handlers;
    handlers.outcome = [job, inbox = m_inbox](const jobs::WriteOutcome& outcome) {
        inbox->post({job, Inbox::Event::Outcome, arrivalOf(outcome)});
    };
    handlers.ended = [job, inbox = m_inbox] { inbox->post({job, Inbox::Event::Ended, {}}); };
    return handlers;
}

void JobBoard::deliver() {
    std::map<int, std::vector<JobArrival>> arrivals;
    for (Inbox::Message& message : m_inbox->takeAll()) {
        if (message.event == Inbox::Event::Outcome) {
            arrivals[message.job].push_back(std::move(message.arrival));
            continue;
        }
        take(message.job, std::exchange(arrivals[message.job], {}));
        if (message.event == Inbox::Event::Ended)
            end(message.job);
        else if (const auto& returned = m_entries[message.job].job.workReturned)
            returned(message.job);
    }
    for (auto& [job, taken] : arrivals)
        take(job, std::move(taken));
}

void JobBoard::take(int job, std::vector<JobArrival> arrivals) {
    if (arrivals.empty())
        return;
    const Entry& entry = m_entries[job];
    if (const ActivityJob* row = m_activity.job(job); row && row->total < entry.run->total())
        m_activity.setTotal(job, entry.run->total());
    if (entry.job.took)
        entry.job.took(job, arrivals);
    for (const JobArrival& arrival : arrivals)
        m_activity.fileFinished(job, arrival.file);
}

void JobBoard::end(int job) {
    Entry& entry = m_entries[job];
    const auto run = std::exchange(entry.run, nullptr);
    entry.failedItems = run->itemsToRetry();
    if (isIdle())
        m_progressTimer.stop();
    const auto ended = entry.job.ended;
    if (ended)
        ended(job, *run);
    else
        m_activity.endJob(job);
}

void JobBoard::retry(int job) {
    const auto found = m_entries.find(job);
    const ActivityJob* row = m_activity.job(job);
    if (found == m_entries.end() || found->second.run || !row)
        return;
    // Asked twice, two runs would write the same outputs; another try belongs to the new row.
    m_activity.setCanRetry(job, false);
    if (!found->second.retry) {
        const Entry entry = std::move(found->second);
        m_entries.erase(found);
        start(entry.job, entry.failedItems);
        return;
    }
    QStringList failed;
    for (const ActivityFile& file : row->files)
        if (file.state == FileState::Failed)
            failed.append(file.source);
    const auto again = found->second.retry;
    again(failed);
}

void JobBoard::cancel(int job) {
    if (isRunning(job))
        m_entries[job].run->cancel();
}

void JobBoard::cancelAll() {
    for (const auto& [job, entry] : m_entries)
        if (entry.run)
            entry.run->cancel();
}

bool JobBoard::isRunning(int job) const {
    const auto found = m_entries.find(job);
    return found != m_entries.end() && found->second.run;
}

bool JobBoard::isIdle() const {
    return std::none_of(m_entries.begin(), m_entries.end(),
                        [](const auto& entry) { return entry.second.run != nullptr; });
}

int JobBoard::jobOfFile(const QString& path) const {
    for (const auto& [job, entry] : m_entries)
        if (entry.run && entry.sources.contains(path))
            return job;
    return 0;
}

/// Requests are kept as long as they can be asked for again.
void JobBoard::dropGoneJobs() {
    std::erase_if(m_entries, [this](const auto& entry) {
        const ActivityJob* row = m_activity.job(entry.first);
        const bool runs = entry.second.run || (row && row->state == JobState::Running);
        return !runs && (!row || !row->canRetry);
    });
}

void JobBoard::showProgress() {
    for (const auto& [job, entry] : m_entries)
        if (entry.run)
            m_activity.setRunning(job, runningFiles(entry.run->progress()));
}

} // namespace clipheave::app
