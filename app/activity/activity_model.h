// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractTableModel>
#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <deque>
#include <functional>
#include <set>
#include <vector>

namespace clipheave::app {

enum class JobState { Running, Done, Failed, Cancelled };
enum class FileState { Waiting, Running, Done, Failed, Skipped, Cancelled };

/// One file of a job: what became of it and why.
struct ActivityFile {
    QString source;
    QStringList outputs;
    FileState state = FileState::Waiting;
    QString note; ///< size text of a success, reason of a failure
};

struct ActivityLogLine {
    QDateTime time;
    QString text;
    QString path;
    bool isError = false;
};

/// A file that is being written.
struct RunningFile {
    QString source;
    double done = 0; ///< 0 to 1
    int files = 1;   ///< how many of the job's files it stands for
};

/// Returns whole per cent of a share of 0 to 1, rounded down: 100 means done.
[[nodiscard]] inline int percentOf(double share) {
    return static_cast<int>(share * 100);
}

/// One row of the panel: an import, a save, a batch command.
struct ActivityJob {
    int id = 0;
    QString title;
    JobState state = JobState::Running;
    int total = 0; ///< files; 0 while unknown
    int finished = 0;
    int failed = 0, skipped = 0, cancelled = 0; ///< of the finished ones
    std::vector<RunningFile> running;           ///< in the order in which they were started
    double reached = 0;                         ///< the most that the job's bar has shown, 0 to 1
    QString result; ///< while running: the file being written; afterwards a summary
    QDateTime started, ended;
    std::vector<ActivityFile> files;
    std::deque<ActivityLogLine> log;
    qint64 linesLogged = 0; ///< ever; more than log holds once the oldest lines are gone
    bool canRetry = false;
    bool canCancel = false;
    bool exportsAlone = false; ///< its worker has ended; exports go on without it

    /// Returns the share of the job that is done, 0 to 1; below 0 when nothing is known yet. It
    /// shrinks only when the total changes.
    [[nodiscard]] double fraction() const;
    /// Returns "1:12 left"; empty while it is too early for an estimate, and once it has ended.
    [[nodiscard]] QString timeLeftText(const QDateTime& now) const;
    /// Returns the number of files that neither failed nor were skipped or cancelled.
    [[nodiscard]] int succeeded() const;
    /// Returns true when it has ended and every file was skipped.
    [[nodiscard]] bool skippedAll() const;
    /// Returns "3 of 6 files" while it runs, "4 of 5 files" when some did not succeed, else
    /// "6 files". Empty while nothing is known.
    [[nodiscard]] QString itemsText() const;
    /// Returns the outputs of its files; the sources when there are none.
    [[nodiscard]] QStringList pathsToReveal() const;
};

/// What runs, how far it is, what failed and why. Newest job first; the oldest finished ones go
/// when there are more than kMostJobs. Main thread only; workers come through performOnMainThread
/// or queued calls. jobChanged() is emitted at every change; dataChanged(), which repaints, at most
/// kRefreshesPerSecond times a second, and at once when a job ends.
class ActivityModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column {
        StateColumn,
        TaskColumn,
        ItemsColumn,
        ProgressColumn,
        ResultColumn,
        TimeColumn,
        ColumnCount
    };
    enum Role { JobRole = Qt::UserRole, FractionRole, StateRole };
    static constexpr std::size_t kMostJobs = 500;
    static constexpr std::size_t kMostLogLines = 10'000; ///< of all jobs and of each
    static constexpr int kRefreshesPerSecond = 20;

    /// `now` gives the time that jobs and log lines get.
    explicit ActivityModel(
        std::function<QDateTime()> now = [] { return QDateTime::currentDateTime(); },
        QObject* parent = nullptr);

    /// Returns the time of this model's clock.
    [[nodiscard]] QDateTime now() const { return m_now(); }
    /// Returns the job's id.
    int beginJob(const QString& title, int total = 0);
    void setTotal(int job, int total);
    void setCanCancel(int job, bool can);
    /// Sets whether the job can be retried: an ended one with failed files, until a retry begins.
    void setCanRetry(int id, bool can);
    /// Notes that the worker has ended and the job's exports go on without it.
    void setExportsAlone(int job);
    void fileFinished(int job, const ActivityFile& file);
    /// Replaces the list of files that are being written.
    void setRunning(int job, std::vector<RunningFile> files);
    /// Ends the job. A null `summary` is made from the counts, with `success` ("%1 written") for
    /// the files that succeeded; a null `success` stands for "%1 done".
    void endJob(int job, const QString& summary = {}, const QString& success = {});
    /// Adds a line to the log, and to that of the job; `job` 0: of no job.
    void addLog(const QString& text, const QString& path = {}, bool isError = false, int job = 0);
    /// Drops every job that has ended.
    void clearFinished();

    [[nodiscard]] const std::deque<ActivityJob>& jobs() const { return m_jobs; }
    [[nodiscard]] const ActivityJob* job(int id) const;
    [[nodiscard]] const std::deque<ActivityLogLine>& log() const { return m_log; }
    /// Returns how many lines there were ever; log() holds fewer once the oldest are dropped.
    [[nodiscard]] qint64 linesLogged() const { return m_linesLogged; }
    [[nodiscard]] const ActivityJob* newestRunning() const;
    [[nodiscard]] int runningCount() const;
    [[nodiscard]] bool hasWorker() const;  ///< the worker of some running job has not ended
    [[nodiscard]] int failedCount() const; ///< jobs with a failed file
    [[nodiscard]] int doneCount() const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;

    Q_SIGNAL void jobChanged(int job); ///< 0: some were dropped
    Q_SIGNAL void jobEnded(int job);
    Q_SIGNAL void firstFailure(int job); ///< a job's first failed file: the panel opens once
    Q_SIGNAL void logAdded();
    Q_SIGNAL void cancelRequested(int job);
    Q_SIGNAL void retryRequested(int job);

private:
    ActivityJob* find(int id);
    [[nodiscard]] int rowOf(int id) const;
    void changed(const ActivityJob& job);
    static void advance(ActivityJob& job);
    void refresh();
    void removeRowAt(std::size_t row);
    [[nodiscard]] QVariant cellText(const ActivityJob& job, int column, int role) const;
    void trim();

    std::function<QDateTime()> m_now;
    std::deque<ActivityJob> m_jobs; ///< newest first
    std::deque<ActivityLogLine> m_log;
    qint64 m_linesLogged = 0;
    std::set<int> m_stale; ///< jobs whose rows are to be repainted
    QTimer m_refreshTimer;
    int m_lastId = 0;
};

} // namespace clipheave::app
