// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/activity/activity_model.h"
#include "tests/testkit/testkit.h"

#include <QSignalSpy>

namespace clipheave::app {
namespace {

ActivityFile fileIn(FileState state, const QString& note = {}) {
    return {u"/in/a.mov"_s, {}, state, note};
}

QString cell(const ActivityModel& model, int row, int column, int role = Qt::DisplayRole) {
    return model.index(row, column).data(role).toString();
}

TEST(ActivityModel, CountsJobsAndNamesTheirItems) {
    ActivityModel model;
    const int good = model.beginJob(u"Save changes"_s, 2);
    const int bad = model.beginJob(u"Extract audio"_s, 3);
    model.beginJob(u"Import"_s);
    EXPECT_EQ(cell(model, 0, ActivityModel::ItemsColumn), QString()) << "nothing is known yet";
    EXPECT_EQ(cell(model, 2, ActivityModel::TaskColumn), u"Save changes");

    model.fileFinished(good, fileIn(FileState::Done));
    EXPECT_EQ(cell(model, 2, ActivityModel::ItemsColumn), u"1 of 2 files");
    EXPECT_EQ(cell(model, 2, ActivityModel::ProgressColumn), u"50%");
    model.fileFinished(good, fileIn(FileState::Done));
    model.endJob(good);
    model.fileFinished(bad, fileIn(FileState::Done));
    model.fileFinished(bad, fileIn(FileState::Failed));
    model.fileFinished(bad, fileIn(FileState::Skipped));
    model.endJob(bad, {}, u"%1 written"_s);

    EXPECT_EQ(model.runningCount(), 1);
    EXPECT_EQ(model.failedCount(), 1);
    EXPECT_EQ(model.doneCount(), 1);
    EXPECT_EQ(cell(model, 2, ActivityModel::ItemsColumn), u"2 files");
    EXPECT_EQ(cell(model, 2, ActivityModel::ResultColumn), u"2 done");
    EXPECT_EQ(cell(model, 1, ActivityModel::ItemsColumn), u"1 of 3 files");
    EXPECT_EQ(cell(model, 1, ActivityModel::ResultColumn), u"1 written, 1 failed, 1 skipped");
    EXPECT_EQ(cell(model, 1, ActivityModel::StateColumn, Qt::AccessibleTextRole), u"Failed");
    EXPECT_EQ(model.newestRunning()->title, u"Import");
}

TEST(ActivityModel, EndsAJobOnceAndSaysWhatBecameOfIt) {
    ActivityModel model;
    QSignalSpy ended(&model, &ActivityModel::jobEnded);
    const int skipped = model.beginJob(u"Compress"_s, 1);
    model.fileFinished(skipped, fileIn(FileState::Skipped, u"not a video"_s));
    model.endJob(skipped);
    model.endJob(skipped, u"again"_s);
    EXPECT_EQ(ended.count(), 1);
    EXPECT_EQ(model.job(skipped)->result, u"Skipped, not a video");
    EXPECT_TRUE(model.job(skipped)->skippedAll());
    EXPECT_FALSE(model.job(skipped)->canRetry);

    const int cancelled = model.beginJob(u"Save changes"_s, 4);
    model.setCanCancel(cancelled, true);
    model.fileFinished(cancelled, fileIn(FileState::Done));
    model.fileFinished(cancelled, fileIn(FileState::Cancelled));
    model.endJob(cancelled);
    const ActivityJob* job = model.job(cancelled);
    EXPECT_EQ(job->state, JobState::Cancelled);
    EXPECT_DOUBLE_EQ(job->fraction(), 0.25) << "the bar stays where it was stopped";
    EXPECT_FALSE(job->canCancel);

    const int own = model.beginJob(u"Import"_s);
    EXPECT_LT(model.job(own)->fraction(), 0) << "unknown";
    model.endJob(own, u"3 files added"_s);
    EXPECT_EQ(model.job(own)->result, u"3 files added");
    EXPECT_EQ(model.job(own)->fraction(), 1);
}

TEST(ActivityModel, TimesComeFromItsClock) {
    QDateTime now(QDate(2025, 6, 14), QTime(21, 36, 20));
    ActivityModel model([&now] { return now; });
    const int id = model.beginJob(u"Convert to MP4"_s, 4);
    model.fileFinished(id, fileIn(FileState::Done));
    now = now.addSecs(72);
    EXPECT_EQ(cell(model, 0, ActivityModel::TimeColumn), u"1:12");
    EXPECT_EQ(model.job(id)->timeLeftText(model.now()), u"3:36 left");
    now = now.addSecs(-100); // a clock that was set back
    EXPECT_EQ(cell(model, 0, ActivityModel::TimeColumn), u"0:00");
    model.endJob(id);
    EXPECT_EQ(cell(model, 0, ActivityModel::TimeColumn), u"21:35");
    model.addLog(u"odd"_s);
    EXPECT_EQ(model.log().back().time, now);
}

TEST(ActivityModel, EveryFileThatRunsCountsByItself) {
    ActivityModel model;
    const int id = model.beginJob(u"Convert to MP4"_s, 8);
    const ActivityJob* job = model.job(id);
    model.fileFinished(id, fileIn(FileState::Done));
    const std::vector<RunningFile> four{{u"/in/b.mov"_s, 0.5},
                                        {u"/in/c.mov"_s, 0.75},
                                        {u"/in/d.mov"_s, 0.5},
                                        {u"/in/e.mov"_s, 0.25}};
    model.setRunning(id, four);
    EXPECT_DOUBLE_EQ(job->fraction(), 3.0 / 8);
    EXPECT_EQ(cell(model, 0, ActivityModel::ProgressColumn), u"37%");
    EXPECT_EQ(cell(model, 0, ActivityModel::ResultColumn), u"b.mov")
        << "the file being written, and nothing else";
    // An export has ended but its outcome is not there yet; then it is.
    model.setRunning(id, {four[0], four[2], four[3]});
    EXPECT_DOUBLE_EQ(job->fraction(), 3.0 / 8) << "never backwards";
    model.fileFinished(id, {u"/in/c.mov"_s, {}, FileState::Done, {}});
    EXPECT_DOUBLE_EQ(job->fraction(), 3.25 / 8);
    // A merge is one export of all files.
    const int merge = model.beginJob(u"Merge"_s, 3);
    model.setRunning(merge, {{u"/in/a.mov"_s, 0.5, 3}});
    EXPECT_DOUBLE_EQ(model.job(merge)->fraction(), 0.5);

    QSignalSpy changes(&model, &ActivityModel::jobChanged);
    model.setRunning(merge, {{u"/in/a.mov"_s, 0.501, 3}});
    EXPECT_EQ(changes.count(), 0) << "too small to be seen";
}

TEST(ActivityModel, KeepsTheNewestJobsAndEveryRunningOne) {
    ActivityModel model;
    const int oldest = model.beginJob(u"Runs for long"_s);
    int second = 0, last = 0;
    for (std::size_t i = 0; i < ActivityModel::kMostJobs + 20; ++i) {
        last = model.beginJob(u"Short"_s);
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
    const int first = model.beginJob(u"Save changes"_s, 3);
    model.fileFinished(first, fileIn(FileState::Done));
    EXPECT_EQ(failures.count(), 0);
    model.fileFinished(first, fileIn(FileState::Failed));
    model.fileFinished(first, fileIn(FileState::Failed));
    EXPECT_EQ(failures.count(), 1);
    const int second = model.beginJob(u"Save changes"_s, 1);
    model.fileFinished(second, fileIn(FileState::Failed));
    ASSERT_EQ(failures.count(), 2);
    EXPECT_EQ(failures.last().first().toInt(), second);
}

TEST(ActivityModel, GathersRepaintsAndSendsTheLastAtOnce) {
    ActivityModel model;
    const int job = model.beginJob(u"Import"_s, 5000);
    QSignalSpy repaints(&model, &ActivityModel::dataChanged);
    QSignalSpy changes(&model, &ActivityModel::jobChanged);
    for (int i = 0; i < 5000; ++i)
        model.fileFinished(job, fileIn(FileState::Done));
    EXPECT_EQ(changes.count(), 5000);
    EXPECT_EQ(repaints.count(), 0);
    EXPECT_TRUE(repaints.wait(500));
    EXPECT_EQ(repaints.count(), 1);
    model.setRunning(job, {{u"/in/b.mov"_s, 0.5}});
    model.endJob(job);
    EXPECT_EQ(repaints.count(), 2) << "an end is seen at once";
    EXPECT_FALSE(repaints.wait(120)) << "and nothing is left over";
}

TEST(ActivityModel, KeepsTheNewestLogLines) {
    ActivityModel model;
    const int job = model.beginJob(u"Save changes"_s, 1);
    model.addLog(u"of no job"_s);
    const auto most = static_cast<int>(ActivityModel::kMostLogLines);
    for (int i = 0; i <= most; ++i)
        model.addLog(QString::number(i), {}, false, job);
    EXPECT_EQ(model.log().size(), ActivityModel::kMostLogLines);
    EXPECT_EQ(model.linesLogged(), most + 2);
    EXPECT_EQ(model.job(job)->log.size(), ActivityModel::kMostLogLines);
    EXPECT_EQ(model.job(job)->log.front().text, u"1");
    EXPECT_EQ(model.job(job)->linesLogged, most + 1);
}

} // namespace
} // namespace clipheave::app
