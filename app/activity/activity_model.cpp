// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/activity/activity_model.h"

#include <algorithm>

namespace clipheave::app {

namespace {

QString stateName(JobState state) {
    switch (state) {
    case JobState::Running:
        return ActivityModel::tr("Running");
    case JobState::Done:
        return ActivityModel::tr("Done");
    case JobState::Failed:
        return ActivityModel::tr("Failed");
    case JobState::Cancelled:
        break;
    }
    return ActivityModel::tr("Cancelled");
}

/// "3 of 6 files" while it runs, "6 files" afterwards.
QString itemsText(const ActivityJob& job) {
    const int total = std::max(job.total, job.finished);
    if (job.state == JobState::Running && job.total > 0)
        return ActivityModel::tr("%1 of %2 files").arg(job.finished).arg(total);
    return total == 1 ? ActivityModel::tr("1 file") : ActivityModel::tr("%1 files").arg(total);
}

/// Running time while it runs ("1:12"), the clock time of the end afterwards.
QString timeText(const ActivityJob& job) {
    if (job.state != JobState::Running)
        return job.ended.toString(QStringLiteral("HH:mm"));
    const qint64 seconds = job.started.secsTo(QDateTime::currentDateTime());
    return QStringLiteral("%1:%2").arg(seconds / 60).arg(seconds % 60, 2, 10, QLatin1Char('0'));
}

QString summaryOf(const ActivityJob& job) {
    const int good = job.finished - job.failed;
    if (job.failed > 0)
        return ActivityModel::tr("%1 done, %2 failed").arg(good).arg(job.failed);
    return ActivityModel::tr("%1 done").arg(good);
}

bool isFailure(FileState state) {
    return state == FileState::Failed;
}

} // namespace

double ActivityJob::fraction() const {
    if (state != JobState::Running)
        return 1;
    if (total <= 0)
        return progress;
    const double running = progress > 0 ? progress : 0;
    return std::min(1.0, (finished + running) / total);
}

ActivityModel::ActivityModel(QObject* parent) : QAbstractTableModel(parent) {
}

ActivityJob* ActivityModel::find(int id) {
    const auto it =
        std::find_if(m_jobs.begin(), m_jobs.end(), [id](const auto& job) { return job.id == id; });
    return it == m_jobs.end() ? nullptr : &*it;
}

const ActivityJob* ActivityModel::job(int id) const {
    const int row = rowOf(id);
    return row < 0 ? nullptr : &m_jobs[static_cast<std::size_t>(row)];
}

int ActivityModel::rowOf(int id) const {
    for (std::size_t row = 0; row < m_jobs.size(); ++row)
        if (m_jobs[row].id == id)
            return static_cast<int>(row);
    return -1;
}

void ActivityModel::changed(const ActivityJob& job) {
    const int row = rowOf(job.id);
    Q_EMIT dataChanged(index(row, 0), index(row, ColumnCount - 1));
    Q_EMIT jobChanged(job.id);
}

int ActivityModel::beginJob(const QString& title, int total) {
    beginInsertRows({}, 0, 0);
    ActivityJob job;
    job.id = ++m_lastId;
    job.title = title;
    job.total = total;
    job.started = QDateTime::currentDateTime();
    m_jobs.push_front(std::move(job));
    endInsertRows();
    trim();
    Q_EMIT jobChanged(m_lastId);
    return m_lastId;
}

void ActivityModel::trim() {
    while (m_jobs.size() > kMostJobs && m_jobs.back().state != JobState::Running) {
        const int last = static_cast<int>(m_jobs.size()) - 1;
        beginRemoveRows({}, last, last);
        m_jobs.pop_back();
        endRemoveRows();
    }
}

void ActivityModel::setTotal(int id, int total) {
    if (ActivityJob* job = find(id)) {
        job->total = total;
        changed(*job);
    }
}

void ActivityModel::setCanCancel(int id, bool can) {
    if (ActivityJob* job = find(id)) {
        job->canCancel = can;
        changed(*job);
    }
}

void ActivityModel::fileStarted(int id, const QString& source) {
    if (ActivityJob* job = find(id)) {
        job->result = source.section(QLatin1Char('/'), -1);
        changed(*job);
    }
}

void ActivityModel::fileFinished(int id, const ActivityFile& file) {
    ActivityJob* job = find(id);
    if (!job)
        return;
    job->files.push_back(file);
    ++job->finished;
    job->progress = -1;
    const bool first = isFailure(file.state) && job->failed == 0;
    if (isFailure(file.state))
        ++job->failed;
    changed(*job);
    if (first)
        Q_EMIT firstFailure(id);
}

void ActivityModel::setProgress(int id, double fraction) {
    if (ActivityJob* job = find(id)) {
        job->progress = fraction;
        changed(*job);
    }
}

void ActivityModel::endJob(int id, const QString& summary) {
    ActivityJob* job = find(id);
    if (!job)
        return;
    const bool cancelled =
        std::any_of(job->files.begin(), job->files.end(),
                    [](const ActivityFile& file) { return file.state == FileState::Cancelled; });
    job->state = job->failed > 0 ? JobState::Failed
                 : cancelled     ? JobState::Cancelled
                                 : JobState::Done;
    job->ended = QDateTime::currentDateTime();
    job->result = summary.isNull() ? summaryOf(*job) : summary;
    job->canCancel = false;
    job->canRetry = job->failed > 0;
    changed(*job);
    Q_EMIT jobEnded(id);
}

void ActivityModel::addLog(const QString& text, const QString& path, bool isError, int id) {
    const ActivityLogLine line{QDateTime::currentDateTime(), text, path, isError};
    m_log.push_back(line);
    while (m_log.size() > kMostLogLines)
        m_log.pop_front();
    if (ActivityJob* job = find(id)) {
        job->log.push_back(line);
        changed(*job);
    }
    Q_EMIT logAdded();
}

void ActivityModel::clearFinished() {
    beginResetModel();
    std::erase_if(m_jobs, [](const ActivityJob& job) { return job.state != JobState::Running; });
    endResetModel();
}

int ActivityModel::runningCount() const {
    return static_cast<int>(std::count_if(m_jobs.begin(), m_jobs.end(), [](const ActivityJob& job) {
        return job.state == JobState::Running;
    }));
}

int ActivityModel::failedCount() const {
    return static_cast<int>(std::count_if(m_jobs.begin(), m_jobs.end(),
                                          [](const ActivityJob& job) { return job.failed > 0; }));
}

int ActivityModel::doneCount() const {
    return static_cast<int>(std::count_if(m_jobs.begin(), m_jobs.end(), [](const ActivityJob& job) {
        return job.state == JobState::Done;
    }));
}

int ActivityModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_jobs.size());
}

int ActivityModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant ActivityModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const ActivityJob& job = m_jobs[static_cast<std::size_t>(index.row())];
    switch (role) {
    case JobRole:
        return job.id;
    case FractionRole:
        return job.fraction();
    case StateRole:
        return static_cast<int>(job.state);
    case Qt::AccessibleTextRole:
    case Qt::DisplayRole:
        break;
    default:
        return {};
    }
    switch (index.column()) {
    case StateColumn:
        return role == Qt::AccessibleTextRole ? stateName(job.state) : QString();
    case TaskColumn:
        return job.title;
    case ItemsColumn:
        return itemsText(job);
    case ProgressColumn: {
        const double fraction = job.fraction();
        return fraction < 0 || job.state != JobState::Running
                   ? QString()
                   : QStringLiteral("%1%").arg(static_cast<int>(fraction * 100));
    }
    case ResultColumn:
        return job.result;
    case TimeColumn:
        return timeText(job);
    default:
        return {};
    }
}

QVariant ActivityModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    static const QStringList headers{QString(),      tr("Task"),   tr("Items"),
                                     tr("Progress"), tr("Result"), tr("Time")};
    return headers.value(section);
}

} // namespace clipheave::app
