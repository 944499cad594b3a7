// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/activity/activity_model.h"
#include "jobs/run.h"

#include <QObject>
#include <QSet>
#include <QTimer>

#include <map>
#include <memory>

namespace clipheave::app {

/// An outcome on its way into the panel.
struct JobArrival {
    jobs::WriteOutcome outcome;
    ActivityFile file;                             ///< what the panel shows of it
    std::uint64_t bytesBefore = 0, bytesAfter = 0; ///< of source and first output; 0: not there
};

/// What one command runs and shows. The functions are called on the main thread; any may be empty.
struct BoardJob {
    QString title; ///< of its row
    jobs::RunOrder order;
    /// Gets the outcomes since the last call, and may change what the panel will show of them.
    std::function<void(int job, std::vector<JobArrival>& arrivals)> took;
    std::function<void(int job)> workReturned; ///< exports may still run
    /// Ends the row; without it the row ends with a summary of the counts.
    std::function<void(int job, jobs::Run& run)> ended;
};

/// The runs of the window: each has a row in the activity panel, can be cancelled there, and tried
/// again with the same request. Main thread only.
class JobBoard : public QObject {
    Q_OBJECT
public:
    explicit JobBoard(ActivityModel& activity, QObject* parent = nullptr);
    ~JobBoard() override;

    /// Starts the run on a thread of its own; returns the row's id. No output replaces one of the
    /// files that the list holds then.
    int start(const BoardJob& job);
    /// Sets what returns the files of the list; called at each start.
    void setListedFiles(std::function<QStringList()> listedFiles);
    /// Sets the retry of a row that the board did not start; it gets the failed files.
    void setRetry(int job, std::function<void(const QStringList& failed)> retry);

    void retry(int job);
    void cancel(int job);
    void cancelAll();
    [[nodiscard]] bool isIdle() const; ///< no run is under way
    [[nodiscard]] bool isRunning(int job) const;
    /// Returns the row whose running job works on this file; 0 for none.
    [[nodiscard]] int jobOfFile(const QString& path) const;
    /// Returns how many rows could be tried again or still run.
    [[nodiscard]] std::size_t keptJobs() const { return m_entries.size(); }

private:
    struct Inbox;
    struct Entry {
        BoardJob job;
        std::shared_ptr<jobs::Run> run; ///< until it has ended
        QSet<QString> sources;          ///< of the run
        std::vector<std::size_t> failedItems;
        std::function<void(const QStringList& failed)> retry;
    };

    int start(const BoardJob& job, const std::vector<std::size_t>& items);
    [[nodiscard]] jobs::Run::Handlers handlersOf(int job) const;
    void deliver();
    void take(int job, std::vector<JobArrival> arrivals);
    void end(int job);
    void dropGoneJobs();
    void showProgress();

    ActivityModel& m_activity;
    std::function<QStringList()> m_listedFiles;
    std::map<int, Entry> m_entries; ///< by row: what runs or can be tried again
    std::shared_ptr<Inbox> m_inbox;
    QTimer m_progressTimer;
};

} // namespace clipheave::app
