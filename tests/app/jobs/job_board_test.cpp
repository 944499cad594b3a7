// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/jobs/job_board.h"
#include "tests/testkit/testkit.h"

#include <QTest>

#include <atomic>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace {

using namespace clipheave;
using namespace clipheave::app;
using jobs::WriteStatus;
using testing::ElementsAre;

class JobBoardTest : public testing::Test {
protected:
    /// A job over "/0", "/1", … that ends each file as `ends` says then.
    BoardJob jobOf(qsizetype files) {
        BoardJob job;
        job.title = u"Save"_s;
        for (qsizetype i = 0; i < files; ++i)
            job.order.sources.append(u"/%1"_s.arg(i));
        job.order.work = [this](jobs::Run& run, const std::vector<std::size_t>& items) {
            {
                const std::lock_guard lock(mutex); // two rows may run at once
                asked.push_back(items);
            }
            while (waits && !run.isCancelled())
                std::this_thread::yield();
            if (run.isCancelled())
                return;
            for (const std::size_t item : items) {
                jobs::WriteOutcome outcome;
                outcome.status = ends.at(item);
                run.ticket(run.order().sources[static_cast<qsizetype>(item)]).report(outcome);
            }
            if (throws)
                throw std::runtime_error("broken");
        };
        job.workReturned = [this](int) { ++returned; };
        return job;
    }
    std::vector<FileState> statesOf(int job) {
        EXPECT_TRUE(QTest::qWaitFor([this] { return board.isIdle(); }));
        std::vector<FileState> states;
        for (const ActivityFile& file : model.job(job)->files)
            states.push_back(file.state);
        return states;
    }

    ActivityModel model;
    JobBoard board{model};
    std::vector<WriteStatus> ends;
    std::mutex mutex;
    std::vector<std::vector<std::size_t>> asked;
    std::atomic<bool> waits = false, throws = false;
    int returned = 0;
};

TEST_F(JobBoardTest, ShowsEachOutcomeOnceAndKeepsOnlyWhatCanBeTriedAgain) {
    struct {
        std::vector<WriteStatus> ends;
        JobState state;
        std::size_t kept;
    } const kRows[] = {
        {{}, JobState::Done, 0},
        {{WriteStatus::Completed, WriteStatus::Skipped}, JobState::Done, 0},
        {{WriteStatus::Failed, WriteStatus::Completed, WriteStatus::Failed}, JobState::Failed, 1},
    };
    for (const auto& row : kRows) {
        ends = row.ends;
        throws = ends.empty();
        BoardJob job = jobOf(static_cast<qsizetype>(ends.size()));
        std::size_t taken = 0;
        job.took = [&taken](int, std::vector<JobArrival>& arrivals) {
            taken += arrivals.size();
            for (JobArrival& arrival : arrivals)
                arrival.file.note = u"noted"_s;
        };
        returned = 0;
        const int id = board.start(job);
        EXPECT_EQ(statesOf(id).size(), ends.size());
        EXPECT_EQ(taken, ends.size());
        EXPECT_EQ(returned, 1) << "also of work that throws";
        EXPECT_EQ(model.job(id)->state, row.state);
        for (const ActivityFile& file : model.job(id)->files)
            EXPECT_EQ(file.note, u"noted");
        EXPECT_EQ(board.keptJobs(), row.kept);
    }
    model.clearFinished();
    EXPECT_EQ(board.keptJobs(), 0u);
}

TEST_F(JobBoardTest, AnotherTryIsARowOfItsOwnAboutWhatFailed) {
    ends = {WriteStatus::Failed, WriteStatus::Completed, WriteStatus::Failed};
    const int first = board.start(jobOf(3));
    (void)statesOf(first);
    ends[0] = WriteStatus::Completed;
    Q_EMIT model.retryRequested(first);
    Q_EMIT model.retryRequested(first); // a double click
    Q_EMIT model.retryRequested(4711);  // no such row
    const int second = model.jobs().front().id;
    ASSERT_EQ(model.jobs().size(), 2u);
    EXPECT_FALSE(model.job(first)->canRetry);
    EXPECT_THAT(statesOf(second), ElementsAre(FileState::Done, FileState::Failed));
    Q_EMIT model.retryRequested(second);
    EXPECT_THAT(statesOf(model.jobs().front().id), ElementsAre(FileState::Failed));
    EXPECT_THAT(asked, ElementsAre(ElementsAre(0, 1, 2), ElementsAre(0, 2), ElementsAre(2)));

    QStringList again; // a row that is not the board's
    const int import = model.beginJob(u"Import"_s);
    board.setRetry(import, [&again](const QStringList& failed) { again = failed; });
    model.fileFinished(import, {u"/x"_s, {}, FileState::Failed, {}});
    model.fileFinished(import, {u"/y"_s, {}, FileState::Done, {}});
    model.endJob(import);
    Q_EMIT model.retryRequested(import);
    EXPECT_EQ(again, QStringList{u"/x"_s});
}

TEST_F(JobBoardTest, ACancelIsOfOneRowAndTheEndOfTheBoardOfAll) {
    ends = {WriteStatus::Completed};
    waits = true;
    const int first = board.start(jobOf(1));
    const int second = board.start(jobOf(1));
    EXPECT_EQ(board.jobOfFile(u"/0"_s), first);
    EXPECT_EQ(board.jobOfFile(u"/1"_s), 0);
    Q_EMIT model.retryRequested(first); // it still runs
    EXPECT_EQ(model.jobs().size(), 2u);
    Q_EMIT model.cancelRequested(second);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !board.isRunning(second); }));
    EXPECT_TRUE(board.isRunning(first));
    EXPECT_EQ(model.job(second)->cancelled, 1);
    waits = false;
    EXPECT_THAT(statesOf(first), ElementsAre(FileState::Done));
    EXPECT_EQ(board.jobOfFile(u"/0"_s), 0);

    waits = true;
    auto gone = std::make_unique<JobBoard>(model);
    std::atomic<bool> left = false;
    BoardJob job = jobOf(1);
    job.order.work = [work = job.order.work, &left](jobs::Run& run, const auto& items) {
        work(run, items);
        left = true;
    };
    (void)gone->start(job);
    gone = nullptr; // without it the run still ends
    EXPECT_TRUE(QTest::qWaitFor([&left] { return left.load(); }));
}

} // namespace
