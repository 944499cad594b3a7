// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/activity/activity_model.h"
#include "tests/testkit/testkit.h"

#include <QSignalSpy>

namespace clipheave::app {
namespace {

ActivityFile fileIn(FileState state, const QString& note = {}) {
    return {QStringLiteral("/in/a.mov"), {}, state, note};
}

QString cell(const ActivityModel& model, int row, int column, int role = Qt::DisplayRole) {
    return model.index(row, column).data(role).toString();
}

TEST(ActivityModel, CountsJobsAndNamesTheirItems) {
    ActivityModel model;
    const int good = model.beginJob(QStringLiteral("Save changes"), 2);
    const int bad = model.beginJob(QStringLiteral("Extract audio"), 3);
    model.beginJob(QStringLiteral("Import"));
    EXPECT_EQ(cell(model, 0, ActivityModel::ItemsColumn), QString()) << "nothing is known yet";
    EXPECT_EQ(cell(model, 2, ActivityModel::TaskColumn), QStringLiteral("Save changes"));

    model.fileFinished(good, fileIn(FileState::Done));
    EXPECT_EQ(cell(model, 2, ActivityModel::ItemsColumn), QStringLiteral("1 of 2 files"));
    EXPECT_EQ(cell(model, 2, ActivityModel::ProgressColumn), QStringLiteral("50%"));
    model.fileFinished(good, fileIn(FileState::Done));
    model.endJob(good);
    model.fileFinished(bad, fileIn(FileState::Done));
    model.fileFinished(bad, fileIn(FileState::Failed));
    model.fileFinished(bad, fileIn(FileState::Skipped));
    model.endJob(bad, {}, QStringLiteral("%1 written"));

    EXPECT_EQ(model.runningCount(), 1);
    EXPECT_EQ(model.failedCount(), 1);
    EXPECT_EQ(model.doneCount(), 1);
    EXPECT_EQ(cell(model, 2, ActivityModel::ItemsColumn), QStringLiteral("2 files"));
    EXPECT_EQ(cell(model, 2, ActivityModel::ResultColumn), QStringLiteral("2 done"));
    EXPECT_EQ(cell(model, 1, ActivityModel::ItemsColumn), QStringLiteral("1 of 3 files"));
    EXPECT_EQ(cell(model, 1, ActivityModel::ResultColumn),
              QStringLiteral("1 written, 1 failed, 1 skipped"));
    EXPECT_EQ(cell(model, 1, ActivityModel::StateColumn, Qt::AccessibleTextRole),
              QStringLiteral("Failed"));
    EXPECT_EQ(model.newestRunning()->title, QStringLiteral("Import"));
}

TEST(ActivityModel, EndsAJobOnceAndSaysWhatBecameOfIt) {
    ActivityModel model;
    QSignalSpy ended(&model, &ActivityModel::jobEnded);
    const int skipped = model.beginJob(QStringLiteral("Compress"), 1);
    model.fileFinished(skipped, fileIn(FileState::Skipped, QStringLiteral("not a video")));
    model.endJob(skipped);
    model.endJob(skipped, QStringLiteral("again"));
    EXPECT_EQ(ended.count(), 1);
    EXPECT_EQ(model.job(skipped)->result, QStringLiteral("Skipped, not a video"));
    EXPECT_TRUE(model.job(skipped)->skippedAll());
    EXPECT_FALSE(model.job(skipped)->canRetry);

    const int cancelled = model.beginJob(QStringLiteral("Save changes"), 4);
    model.setCanCancel(cancelled, true);
    model.fileFinished(cancelled, fileIn(FileState::Done));
    model.fileFinished(cancelled, fileIn(FileState::Cancelled));
    model.endJob(cancelled);
    const ActivityJob* job = model.job(cancelled);
    EXPECT_EQ(job->state, JobState::Cancelled);
    EXPECT_DOUBLE_EQ(job->fraction(), 0.25) << "the bar stays where it was stopped";
    EXPECT_FALSE(job->canCancel);

    const int own = model.beginJob(QStringLiteral("Import"));
    EXPECT_LT(model.job(own)->fraction(), 0) << "unknown";
    model.endJob(own, QStringLiteral("3 files added"));
    EXPECT_EQ(model.job(own)->result, QStringLiteral("3 files added"));
    EXPECT_EQ(model.job(own)->fraction(), 1);
}

TEST(ActivityModel, TimesComeFromItsClock) {
    QDateTime now(QDate(2025, 6, 14), QTime(21, 36, 20));
    ActivityModel model([&now] { return now; });
    const int id = model.beginJob(QStringLiteral("Convert to MP4"), 4);
    model.fileFinished(id, fileIn(FileState::Done));
    now = now.addSecs(72);
    EXPECT_EQ(cell(model, 0, ActivityModel::TimeColumn), QStringLiteral("1:12"));
    EXPECT_EQ(model.job(id)->timeLeftText(model.now()), QStringLiteral("3:36 left"));
    now = now.addSecs(-100); // a clock that was set back
    EXPECT_EQ(cell(model, 0, ActivityModel::TimeColumn), QStringLiteral("0:00"));
    model.endJob(id);
    EXPECT_EQ(cell(model, 0, ActivityModel::TimeColumn), QStringLiteral("21:35"));
    model.addLog(QStringLiteral("odd"));
    EXPECT_EQ(model.log().back().time, now);
}

TEST(ActivityModel, EveryFileThatRunsCountsByItself) {
    ActivityModel model;
    const int id = model.beginJob(QStringLiteral("Convert to MP4"), 8);
    const ActivityJob* job = model.job(id);
    model.fileFinished(id, fileIn(FileState::Done));
    const std::vector<RunningFile> four{{QStringLiteral("/in/b.mov"), 0.5},
                                        {QStringLiteral("/in/c.mov"), 0.75},
                                        {QStringLiteral("/in/d.mov"), 0.5},
                                        {QStringLiteral("/in/e.mov"), 0.25}};
    model.setRunning(id, four);
    EXPECT_DOUBLE_EQ(job->fraction(), 3.0 / 8);
    EXPECT_EQ(cell(model, 0, ActivityModel::ProgressColumn), QStringLiteral("37%"));
    EXPECT_EQ(cell(model, 0, ActivityModel::ResultColumn), QStringLiteral("b.mov"))
        << "what is at hand, and nothing else";
    // An export has ended and nobody has told it yet; then its file is there.
    model.setRunning(id, {four[0], four[2], four[3]});
    EXPECT_DOUBLE_EQ(job->fraction(), 3.0 / 8) << "never backwards";
    model.fileFinished(id, {QStringLiteral("/in/c.mov"), {}, FileState::Done, {}});
    EXPECT_DOUBLE_EQ(job->fraction(), 3.25 / 8);
    // A merge is one export of all files.
    const int merge = model.beginJob(QStringLiteral("Merge"), 3);
    model.setRunning(merge, {{QStringLiteral("/in/a.mov"), 0.5, 3}});
    EXPECT_DOUBLE_EQ(model.job(merge)->fraction(), 0.5);

    QSignalSpy changes(&model, &ActivityModel::jobChanged);
    model.setRunning(merge, {{QStringLiteral("/in/a.mov"), 0.501, 3}});
    EXPECT_EQ(changes.count(), 0) << "nobody could see the difference";
}

TEST(ActivityModel, KeepsTheNewestJobsAndEveryRunningOne) {
    ActivityModel model;
    const int oldest = model.beginJob(QStringLiteral("Runs for long"));
    int second = 0, last = 0;
    for (std::size_t i = 0; i < ActivityModel::kMostJobs + 20; ++i) {
        last = model.beginJob(QStringLiteral("Short"));
        second = second == 0 ? last : second;
        model.endJob(last);
    }
    EXPECT_EQ(model.jobs().size(), ActivityModel::kMostJobs);
    EXPECT_NE(model.job(oldest), nullptr);
    EXPECT_EQ(model.job(second), nullptr);
    EXPECT_EQ(model.jobs().front().id, last);
    model.clearFinished();
    EXPECT_EQ(model.rowCount(), 1);
    EXPECT_EQ(model.jobs().front().id, oldest);
}

TEST(ActivityModel, ReportsTheFirstFailureOfEachRunOnce) {
    ActivityModel model;
    QSignalSpy failures(&model, &ActivityModel::firstFailure);
    const int first = model.beginJob(QStringLiteral("Save changes"), 3);
    model.fileFinished(first, fileIn(FileState::Done));
    EXPECT_EQ(failures.count(), 0);
    model.fileFinished(first, fileIn(FileState::Failed));
    model.fileFinished(first, fileIn(FileState::Failed));
    EXPECT_EQ(failures.count(), 1);
    const int second = model.beginJob(QStringLiteral("Save changes"), 1);
    model.fileFinished(second, fileIn(FileState::Failed));
    ASSERT_EQ(failures.count(), 2);
    EXPECT_EQ(failures.last().first().toInt(), second);
}

TEST(ActivityModel, GathersRepaintsAndSendsTheLastAtOnce) {
    ActivityModel model;
    const int job = model.beginJob(QStringLiteral("Import"), 5000);
    QSignalSpy repaints(&model, &ActivityModel::dataChanged);
    QSignalSpy changes(&model, &ActivityModel::jobChanged);
    for (int i = 0; i < 5000; ++i)
        model.fileFinished(job, fileIn(FileState::Done));
    EXPECT_EQ(changes.count(), 5000);
    EXPECT_EQ(repaints.count(), 0);
    EXPECT_TRUE(repaints.wait(500));
    EXPECT_EQ(repaints.count(), 1);
    model.setRunning(job, {{QStringLiteral("/in/b.mov"), 0.5}});
    model.endJob(job);
    EXPECT_EQ(repaints.count(), 2) << "an end is seen at once";
    EXPECT_FALSE(repaints.wait(120)) << "and nothing is left over";
}

TEST(ActivityModel, KeepsTheNewestLogLines) {
    ActivityModel model;
    const int job = model.beginJob(QStringLiteral("Save changes"), 1);
    model.addLog(QStringLiteral("of no job"));
    const auto most = static_cast<int>(ActivityModel::kMostLogLines);
    for (int i = 0; i <= most; ++i)
        model.addLog(QString::number(i), {}, false, job);
    EXPECT_EQ(model.log().size(), ActivityModel::kMostLogLines);
    EXPECT_EQ(model.linesLogged(), most + 2);
    EXPECT_EQ(model.job(job)->log.size(), ActivityModel::kMostLogLines);
    EXPECT_EQ(model.job(job)->log.front().text, QStringLiteral("1"));
    EXPECT_EQ(model.job(job)->linesLogged, most + 1);
}

} // namespace
} // namespace clipheave::app
