// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/commands/rename_jobs.h"

#include "app/activity/activity_model.h"
#include "app/commands/rename_state.h"
#include "app/commands/surroundings.h"
#include "app/jobs/job_board.h"
#include "batch/batch_rename.h"
#include "platform/foundation/paths.h"

#include <QHash>

#include <algorithm>
#include <utility>

namespace clipheave::app {

namespace {

QString nameOfPath(const QString& path) {
    return platform::displayPath(platform::lastPathComponent(path));
}

/// False for a file that was left alone: after a cancel, or because the whole job failed.
bool wasTried(const jobs::WriteOutcome& outcome) {
    const bool wholeJobFailed = outcome.failure && !outcome.failure->operation.isEmpty();
    return outcome.status != jobs::WriteStatus::Cancelled && !wholeJobFailed;
}

/// Notes the name that a file had before.
void noteOldName(JobArrival& arrival) {
    if (arrival.file.state == FileState::Done && arrival.file.note.isEmpty())
        arrival.file.note = RenameJobs::tr("was %1").arg(nameOfPath(arrival.outcome.source));
}

bool anyCompleted(const std::vector<jobs::WriteOutcome>& outcomes) {
    return std::any_of(outcomes.begin(), outcomes.end(), [](const auto& outcome) {
        return outcome.status == jobs::WriteStatus::Completed;
    });
}

} // namespace

RenameJobs::RenameJobs(RenameState& state, ActivityModel& activity, JobBoard& board,
                       Workspace& workspace, ChangeItems changeItems)
    : m_state(state), m_activity(activity), m_board(board), m_workspace(workspace),
      m_changeItems(std::move(changeItems)) {
}

void RenameJobs::rename(const std::shared_ptr<batch::RenameBatch>& batch, jobs::RunOrder order) {
    BoardJob job;
    job.title = tr("Rename");
    job.order = std::move(order);
    job.took = [this, batch](int id, std::vector<JobArrival>& arrivals) {
        takeRenamed(*batch, arrivals);
        showProgress(id, arrivals.size());
    };
    job.ended = [this](int id, jobs::Run& run) {
        end(id, run);
        Q_EMIT renamed();
        Q_EMIT ended();
    };
    start(job);
}

void RenameJobs::undo() {
    BoardJob job;
    job.title = tr("Undo rename");
    job.order = batch::undoOrder();
    job.took = [this](int id, std::vector<JobArrival>& arrivals) {
        takeRestored(arrivals);
        showProgress(id, arrivals.size());
    };
    job.ended = [this](int id, jobs::Run& run) {
        end(id, run);
        Q_EMIT ended();
    };
    start(job);
}

void RenameJobs::start(BoardJob& job) {
    ++m_state.running;
    m_board.start(job);
}

void RenameJobs::takeRenamed(const batch::RenameBatch& batch, std::vector<JobArrival>& arrivals) {
    QHash<QString, QString> shownNames; // by path
    for (JobArrival& arrival : arrivals) {
        const jobs::WriteOutcome& outcome = arrival.outcome;
        noteOldName(arrival);
        // Deliberate: with metadata tags the list shows the new name, moved or not; with a custom
        // text it keeps showing the old one. Either way the item goes on pointing to the old path.
        if (!wasTried(outcome))
            continue;
        if (batch.request.mode == batch::RenameMode::MetadataTags)
            shownNames.insert(outcome.source, batch.plan[outcome.item].newFileName);
        if (outcome.item == 0)
            m_workspace.selectFiles({outcome.outputs.value(0, outcome.source)});
    }
    m_changeItems(shownNames.keys(), [&shownNames](media::IKImageItem& item) {
        item.fileName = shownNames.value(item.filePath);
    });
}

/// The list shows the names that the files have again.
void RenameJobs::takeRestored(std::vector<JobArrival>& arrivals) {
    QStringList restored;
    for (JobArrival& arrival : arrivals) {
        // A file that was to get its old name back and stays is not a failure to try again:
        // another try would undo the rename before it.
        if (arrival.file.state == FileState::Failed)
            arrival.file.state = FileState::Skipped;
        noteOldName(arrival);
        restored += arrival.outcome.outputs;
    }
    m_changeItems(restored, [](media::IKImageItem& item) {
        item.fileName = platform::lastPathComponent(item.filePath);
    });
}

/// `taken`: the outcomes that the row does not count yet.
void RenameJobs::showProgress(int job, std::size_t taken) {
    const ActivityJob* row = m_activity.job(job);
    const int done = (row ? row->finished : 0) + static_cast<int>(taken);
    Q_EMIT progressed(QStringLiteral("%1/%2").arg(done).arg(row ? row->total : done));
}

void RenameJobs::end(int job, const jobs::Run& run) {
    --m_state.running;
    if (const auto failure = run.failure())
        m_activity.addLog(failure->text(), {}, true, job);
    else if (!anyCompleted(run.outcomes()))
        m_activity.addLog(tr("No file has got another name"), {}, false, job);
    m_activity.endJob(job);
}

} // namespace clipheave::app
