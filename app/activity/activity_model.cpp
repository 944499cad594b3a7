// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/activity/activity_model.h"

#include "platform/foundation/paths.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace clipheave::app {

namespace {

QString stateName(const ActivityJob& job) {
    if (job.skippedAll())
        return ActivityModel::tr("Skipped");
    switch (job.state) {
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

/// A clock that was set back meanwhile must not show a negative time.
qint64 secondsRunning(const ActivityJob& job, const QDateTime& now) {
    return std::max<qint64>(0, job.started.secsTo(now));
}

/// "1:12", "1:02:03".
QString clockText(qint64 seconds) {
    const QLatin1Char zero('0');
    const qint64 hours = seconds / 3600, minutes = seconds / 60 % 60;
    if (hours == 0)
        return QStringLiteral("%1:%2").arg(minutes).arg(seconds % 60, 2, 10, zero);
    return QStringLiteral("%1:%2:%3")
        .arg(hours)
        .arg(minutes, 2, 10, zero)
        .arg(seconds % 60, 2, 10, zero);
}

/// Running time while it runs, the clock time of the end afterwards.
QString timeText(const ActivityJob& job, const QDateTime& now) {
    return job.state == JobState::Running ? clockText(secondsRunning(job, now))
                                          : job.ended.toString(QStringLiteral("HH:mm"));
}

/// "4 written, 1 failed"; what did not happen is left out.
QString summaryOf(const ActivityJob& job, const QString& success) {
    if (job.finished == 1 && job.failed == 0 && !job.files.empty() &&
        job.files.front().state == FileState::Skipped && !job.files.front().note.isEmpty())
        return ActivityModel::tr("Skipped, %1").arg(job.files.front().note);
    QStringList parts;
    const auto add = [&parts](int count, const QString& text) {
        if (count > 0)
            parts += text.arg(count);
    };
    add(job.succeeded(), success.isNull() ? ActivityModel::tr("%1 done") : success);
    add(job.failed, ActivityModel::tr("%1 failed"));
    add(job.skipped, ActivityModel::tr("%1 skipped"));
    add(job.cancelled, ActivityModel::tr("%1 cancelled"));
    return parts.isEmpty() ? ActivityModel::tr("Nothing to do") : parts.join(QLatin1String(", "));
}

/// The two are shown alike.
bool looksLike(const RunningFile& a, const RunningFile& b) {
    return a.source == b.source && percentOf(a.done) == percentOf(b.done);
}

template <typename Lines> void keepNewest(Lines& lines) {
    while (lines.size() > ActivityModel::kMostLogLines)
        lines.pop_front();
}

} // namespace

double ActivityJob::fraction() const {
    if (state == JobState::Done || state == JobState::Failed)
        return 1;
    if (total <= 0)
        return state == JobState::Running ? -1 : 1;
    return reached;
}

QString ActivityJob::timeLeftText(const QDateTime& now) const {
    constexpr double kTooEarly = 0.02;
    constexpr qint64 kTooFew = 3; // seconds
    constexpr double kLongest = 100 * 3600.0;
    const double done = fraction();
    const qint64 seconds = secondsRunning(*this, now);
    if (state != JobState::Running || done < kTooEarly || seconds < kTooFew)
        return {};
    const double left = static_cast<double>(seconds) * (1 - done) / done;
    return left < kLongest
               ? ActivityModel::tr("%1 left").arg(clockText(static_cast<qint64>(std::ceil(left))))
               : QString();
}

int ActivityJob::succeeded() const {
    return std::max(0, std::max(total, finished) - failed - skipped - cancelled);
}

bool ActivityJob::skippedAll() const {
    return state == JobState::Done && skipped > 0 && succeeded() == 0;
}

QString ActivityJob::itemsText() const {
    const int all = std::max(total, finished);
    const bool running = state == JobState::Running;
    if (running && all == 0)
        return {};
    const QString text = all == 1 ? ActivityModel::tr("%1 file") : ActivityModel::tr("%1 files");
    const int shown = running ? finished : succeeded();
    if ((running && total == 0) || (!running && (shown == all || skippedAll())))
        return text.arg(all);
    return text.arg(ActivityModel::tr("%1 of %2").arg(shown).arg(all));
}

QStringList ActivityJob::pathsToReveal() const {
    QStringList outputs, sources;
    for (const ActivityFile& file : files) {
        outputs += file.outputs;
        if (!file.source.isEmpty())
            sources += file.source;
    }
    return outputs.isEmpty() ? sources : outputs;
}

ActivityModel::ActivityModel(std::function<QDateTime()> now, QObject* parent)
    : QAbstractTableModel(parent), m_now(std::move(now)) {
    m_refreshTimer.setSingleShot(true);
    m_refreshTimer.setInterval(1000 / kRefreshesPerSecond);
    connect(&m_refreshTimer, &QTimer::timeout, this, &ActivityModel::refresh);
}

ActivityJob* ActivityModel::find(int id) {
    const int row = rowOf(id);
    return row < 0 ? nullptr : &m_jobs[static_cast<std::size_t>(row)];
}

const ActivityJob* ActivityModel::job(int id) const {
    const int row = rowOf(id);
    return row < 0 ? nullptr : &m_jobs[static_cast<std::size_t>(row)];
}

const ActivityJob* ActivityModel::newestRunning() const {
    const auto it = std::find_if(m_jobs.begin(), m_jobs.end(), [](const ActivityJob& job) {
        return job.state == JobState::Running;
    });
    return it == m_jobs.end() ? nullptr : &*it;
}

int ActivityModel::rowOf(int id) const {
    for (std::size_t row = 0; row < m_jobs.size(); ++row)
        if (m_jobs[row].id == id)
            return static_cast<int>(row);
    return -1;
}

void ActivityModel::changed(const ActivityJob& job) {
    m_stale.insert(job.id);
    if (!m_refreshTimer.isActive())
        m_refreshTimer.start();
    Q_EMIT jobChanged(job.id);
}

void ActivityModel::refresh() {
    m_refreshTimer.stop();
    for (const int id : std::exchange(m_stale, {}))
        if (const int row = rowOf(id); row >= 0)
            Q_EMIT dataChanged(index(row, 0), index(row, ColumnCount - 1));
}

int ActivityModel::beginJob(const QString& title, int total) {
    beginInsertRows({}, 0, 0);
    ActivityJob job;
    job.id = ++m_lastId;
    job.title = title;
    job.total = std::max(0, total);
    job.started = now();
    const int id = job.id;
    m_jobs.push_front(std::move(job));
    endInsertRows();
    trim();
    Q_EMIT jobChanged(id);
    return id;
}

void ActivityModel::removeRowAt(std::size_t row) {
    const int number = static_cast<int>(row);
    beginRemoveRows({}, number, number);
    m_jobs.erase(m_jobs.begin() + number);
    endRemoveRows();
}

void ActivityModel::trim() {
    // A job that still runs stays however old it is; the next older one that has ended goes
    // instead.
    for (std::size_t row = m_jobs.size(); row-- > 0 && m_jobs.size() > kMostJobs;)
        if (m_jobs[row].state != JobState::Running)
            removeRowAt(row);
}

/// What was cancelled is not done: the bar of a cancelled job stays where it was stopped. The bar
/// never goes back when a file no longer runs but its outcome is not there yet.
void ActivityModel::advance(ActivityJob& job) {
    if (job.total <= 0)
        return;
    double done = job.finished - job.cancelled;
    for (const RunningFile& file : job.running)
        done += file.done * file.files;
    job.reached = std::max(job.reached, std::min(1.0, done / job.total));
}

void ActivityModel::setTotal(int id, int total) {
    if (ActivityJob* job = find(id)) {
        job->total = std::max(0, total);
        job->reached = 0;
        advance(*job);
        changed(*job);
    }
}

void ActivityModel::setCanCancel(int id, bool can) {
    if (ActivityJob* job = find(id)) {
        job->canCancel = can;
        changed(*job);
    }
}

void ActivityModel::setExportsAlone(int id) {
    if (ActivityJob* job = find(id)) {
        job->exportsAlone = true;
        changed(*job);
    }
}

void ActivityModel::fileFinished(int id, const ActivityFile& file) {
    ActivityJob* job = find(id);
    if (!job)
        return;
    job->files.push_back(file);
    ++job->finished;
    std::erase_if(job->running,
                  [&file](const RunningFile& other) { return other.source == file.source; });
    const bool first = file.state == FileState::Failed && job->failed == 0;
    job->failed += file.state == FileState::Failed ? 1 : 0;
    job->skipped += file.state == FileState::Skipped ? 1 : 0;
    job->cancelled += file.state == FileState::Cancelled ? 1 : 0;
    advance(*job);
    changed(*job);
    if (first)
        Q_EMIT firstFailure(id);
}

void ActivityModel::setRunning(int id, std::vector<RunningFile> files) {
    ActivityJob* job = find(id);
    if (!job || job->state != JobState::Running)
        return;
    const int before = percentOf(job->fraction());
    const bool same =
        std::equal(files.begin(), files.end(), job->running.begin(), job->running.end(), looksLike);
    job->running = std::move(files);
    advance(*job);
    if (same && percentOf(job->fraction()) == before)
        return; // too small a change to be seen
    if (!job->running.empty())
        job->result =
            platform::displayPath(platform::lastPathComponent(job->running.front().source));
    changed(*job);
}

void ActivityModel::setCanRetry(int id, bool can) {
    if (ActivityJob* job = find(id); job && std::exchange(job->canRetry, can) != can)
        changed(*job);
}

void ActivityModel::endJob(int id, const QString& summary, const QString& success) {
    ActivityJob* job = find(id);
    if (!job || job->state != JobState::Running)
        return;
    job->state = job->failed > 0      ? JobState::Failed
                 : job->cancelled > 0 ? JobState::Cancelled
                                      : JobState::Done;
    job->ended = now();
    job->result = summary.isNull() ? summaryOf(*job, success) : summary;
    job->running.clear();
    job->canCancel = false;
    job->canRetry = job->failed > 0;
    changed(*job);
    refresh();
    Q_EMIT jobEnded(id);
}

void ActivityModel::addLog(const QString& text, const QString& path, bool isError, int id) {
    const ActivityLogLine line{now(), text, path, isError};
    m_log.push_back(line);
    keepNewest(m_log);
    ++m_linesLogged;
    if (ActivityJob* job = find(id)) {
        job->log.push_back(line);
        keepNewest(job->log);
        ++job->linesLogged;
        changed(*job);
    }
    Q_EMIT logAdded();
}

void ActivityModel::clearFinished() {
    for (std::size_t row = m_jobs.size(); row-- > 0;)
        if (m_jobs[row].state != JobState::Running)
            removeRowAt(row);
    Q_EMIT jobChanged(0);
}

int ActivityModel::runningCount() const {
    return static_cast<int>(std::count_if(m_jobs.begin(), m_jobs.end(), [](const ActivityJob& job) {
        return job.state == JobState::Running;
    }));
}

bool ActivityModel::hasWorker() const {
    return std::any_of(m_jobs.begin(), m_jobs.end(), [](const ActivityJob& job) {
        return job.state == JobState::Running && !job.exportsAlone;
    });
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
    case Qt::ToolTipRole:
        return cellText(job, index.column(), role);
    default:
        return {};
    }
}

QVariant ActivityModel::cellText(const ActivityJob& job, int column, int role) const {
    switch (column) {
    case StateColumn: // drawn as an image: its word goes to the tool tip and to screen readers
        return role == Qt::DisplayRole ? QString() : stateName(job);
    case TaskColumn:
        return job.title;
    case ItemsColumn:
        return job.itemsText();
    case ProgressColumn: {
        const double fraction = job.fraction();
        if (fraction < 0 || (fraction >= 1 && role == Qt::DisplayRole))
            return QString();
        const QString percent = QStringLiteral("%1%").arg(percentOf(fraction));
        const QString left = role == Qt::DisplayRole ? QString() : job.timeLeftText(now());
        return left.isEmpty() ? percent : percent + QLatin1String(", ") + left;
    }
    case ResultColumn:
        return job.result;
    case TimeColumn:
        return timeText(job, now());
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
