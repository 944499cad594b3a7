// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/commands/write_report.h"

#include "app/AppDelegate.h"
#include "app/commands/surroundings.h"
#include "app/jobs/job_board.h"

#include <map>
#include <memory>

namespace clipheave::app {

namespace {

/// What came out of a job that writes outputs.
struct WriteTally {
    QStringList outputs;
    std::uint64_t bytesBefore = 0, bytesAfter = 0; ///< of the files that were written
    bool oneEach = true;                           ///< each of these became one output

    void add(const JobArrival& arrival) {
        const jobs::WriteOutcome& outcome = arrival.outcome;
        outputs += outcome.outputs;
        if (outcome.status != jobs::WriteStatus::Completed)
            return;
        oneEach &= outcome.outputs.size() == 1;
        if (arrival.bytesBefore == 0)
            return;
        bytesBefore += arrival.bytesBefore;
        bytesAfter += arrival.bytesAfter;
    }
};

/// Puts the size of a single output before the notes of its file.
void noteSize(JobArrival& arrival) {
    if (arrival.outcome.outputs.size() != 1 || arrival.bytesAfter == 0)
        return;
    const QString size = media::MediaKind::sizeText(arrival.bytesAfter);
    QString& note = arrival.file.note;
    note = note.isEmpty() ? size : size + QStringLiteral("; ") + note;
}

QString sizesOf(const WriteTally& tally) {
    return AppDelegate::tr("%1 to %2")
        .arg(media::MediaKind::sizeText(tally.bytesBefore),
             media::MediaKind::sizeText(tally.bytesAfter));
}

} // namespace

void WriteReport::attachTo(BoardJob& job) const {
    // By row: another try of the job has a tally of its own.
    const auto tallies = std::make_shared<std::map<int, WriteTally>>();
    job.took = [&model = activity, tallies](int id, std::vector<JobArrival>& arrivals) {
        for (JobArrival& arrival : arrivals) {
            if (arrival.outcome.status == jobs::WriteStatus::Failed)
                model.addLog(arrival.file.note, arrival.outcome.source, true, id);
            noteSize(arrival);
            (*tallies)[id].add(arrival);
        }
    };
    job.ended = [report = *this, tallies](int id, jobs::Run&) {
        const WriteTally tally = std::exchange((*tallies)[id], {});
        tallies->erase(id);
        const bool givesSizes =
            report.withSizes && tally.bytesAfter > 0 && report.activity.job(id)->failed == 0;
        report.activity.endJob(id, givesSizes ? sizesOf(tally) : QString(),
                               tally.oneEach ? AppDelegate::tr("%1 written") : QString());
        if (!tally.outputs.isEmpty())
            report.workspace.selectFiles(tally.outputs);
        report.ended();
    };
}

} // namespace clipheave::app
