// SPDX-License-Identifier: GPL-3.0-or-later
#include "jobs/messages.h"
#include "jobs/run.h"
#include "platform/foundation/log.h"
#include "platform/foundation/messages.h"
#include "platform/media/export/av_asset_export_session.h"
#include "tests/testkit/open_run.h"
#include "tests/testkit/testkit.h"

#include <atomic>
#include <new>
#include <stdexcept>
#include <thread>

namespace {

using namespace clipheave;
using namespace clipheave::jobs;
using testing::ElementsAre;

constexpr std::chrono::seconds kLongEnough(20);

RunOrder orderOf(const QStringList& sources, RunOrder::Work work) {
    return {sources, std::move(work), false};
}
std::shared_ptr<Run> performed(const RunOrder& order, Run::Handlers handlers = {}) {
    auto run = jobs::Run::create(order, order.allItems(), std::move(handlers));
    run->perform();
    return run;
}
WriteOutcome done(const char* output = "out") {
    WriteOutcome outcome;
    outcome.outputs = {QLatin1String(output)};
    return outcome;
}
std::vector<WriteStatus> statusesOf(const Run& run) {
    std::vector<WriteStatus> statuses;
    for (const WriteOutcome& outcome : run.outcomes())
        statuses.push_back(outcome.status);
    return statuses;
}

TEST(Run, HasOneOutcomeAnItemWhateverTheWorkReports) {
    std::atomic<int> outcomes = 0, ends = 0, dropped = 0;
    const platform::LogSubscription log(platform::LogLevel::Warning,
                                        [&](const platform::LogLine&) { ++dropped; });
    Ticket late;
    const auto run = performed(orderOf({u"a"_s, u"b"_s, u"c"_s, u"a"_s},
                                       [&](jobs::Run& run, const auto&) {
                                           const Ticket first = run.ticket(u"a"_s);
                                           first.report(done("first"));
                                           first.report(done("second"));          // one too many
                                           static_cast<void>(run.ticket(u"b"_s)); // given up
                                           run.ticket(u"z"_s).report(done());     // not expected
                                           late = run.ticket(u"a"_s);
                                           late.report(done("twin"));
                                       }), // "c" is forgotten
                               {[&](const WriteOutcome&) { ++outcomes; }, [&] { ++ends; }, {}});
    EXPECT_TRUE(run->waitForEnd(kLongEnough));
    late.report(done()); // after the end
    EXPECT_EQ(outcomes, 4);
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(dropped, 3);
    EXPECT_THAT(statusesOf(*run), ElementsAre(WriteStatus::Completed, WriteStatus::Failed,
                                              WriteStatus::Failed, WriteStatus::Completed));
    EXPECT_EQ(run->outcomes()[0].outputs, QStringList{u"first"_s});
    EXPECT_EQ(run->outcomes()[1].failure->detail.code(), kNoOutcome);
    EXPECT_EQ(run->outcomes()[3].outputs, QStringList{u"twin"_s});
    EXPECT_THAT(run->itemsToRetry(), ElementsAre(1u, 2u));
}

TEST(Run, EndsWithoutItsOwnerAndWaitsForEveryHandler) {
    std::atomic<int> outcomes = 0;
    std::atomic<bool> ended = false, endedEarly = false;
    QStringList sources;
    for (int i = 0; i < 64; ++i)
        sources.append(QString::number(i));
    std::vector<std::thread> threads;
    const auto work = [&](jobs::Run& run, const auto&) {
        for (const QString& source : sources)
            threads.emplace_back([ticket = run.ticket(source)] {
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
                ticket.report(done());
            });
    };
    jobs::Run::Handlers handlers;
    handlers.outcome = [&](const WriteOutcome&) {
        std::this_thread::yield();
        endedEarly = endedEarly || ended;
        ++outcomes;
    };
    handlers.ended = [&] { ended = true; };
    std::weak_ptr<jobs::Run> left = performed(orderOf(sources, work), handlers);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_TRUE(ended);
    EXPECT_FALSE(endedEarly);
    EXPECT_EQ(outcomes, 64);
    EXPECT_TRUE(left.expired());
}

TEST(Run, CancelBeforeDuringAndAfter) {
    const testkit::TempDir dir;
    const QString source = dir.write("a", "x");
    std::atomic<bool> runs = false;
    const auto work = [&](jobs::Run& run, const auto&) {
        const Ticket ticket = run.ticket(source);
        const auto session = platform::AVAssetExportSession::rewriting(
            source, dir.path("out"),
            [&](const auto& progress) -> platform::Result<platform::Notes> {
                runs = true;
                while (progress(0.25))
                    std::this_thread::sleep_for(std::chrono::milliseconds(1));
                return platform::failure(platform::ErrorCode::Cancelled, {});
            });
        run.start(session, source, [session, ticket] {
            WriteOutcome outcome;
            outcome.status = session->status() == platform::AVAssetExportSessionStatus::Cancelled
                                 ? WriteStatus::Cancelled
                                 : WriteStatus::Completed;
            ticket.report(outcome);
        });
    };
    const RunOrder order = orderOf({source, u"never begun"_s}, work);
    for (const bool before : {true, false}) {
        runs = false;
        const auto run = jobs::Run::create(order, order.allItems());
        if (before)
            run->cancel();
        std::thread worker([run] { run->perform(); });
        while (!before && !(runs && run->progress().mean() == 0.25))
            std::this_thread::yield();
        run->cancel();
        EXPECT_TRUE(run->waitForEnd(kLongEnough));
        worker.join();
        run->cancel();
        EXPECT_EQ(runs, !before);
        EXPECT_EQ(statusesOf(*run).front(), WriteStatus::Cancelled);
        EXPECT_EQ(run->done(), 2);
        EXPECT_EQ(run->progress().mean(), -1);
    }
    const auto stopped = jobs::Run::create(order, {1}, {{}, {}, [] { return true; }});
    EXPECT_TRUE(stopped->isCancelled());
}

TEST(Run, AnotherTryIsTheSameRequestForWhatFailed) {
    QString asked = u"first text"_s;
    QStringList written;
    RunOrder order =
        orderOf({u"a"_s, u"b"_s, u"c"_s}, [&written, asked](jobs::Run& run,
                                                            const std::vector<std::size_t>& items) {
            for (const std::size_t item : items) {
                const QString source = run.order().sources[int(item)];
                written.append(source + u':' + asked);
                run.ticket(source).report(item == 0 ? done() : refusal(source, kCopiedUnchanged));
            }
        });
    const auto run = performed(order);
    asked = u"another text"_s;
    written.clear();
    const auto again = jobs::Run::create(run->order(), run->itemsToRetry());
    again->perform();
    EXPECT_EQ(written, (QStringList{u"b:first text"_s, u"c:first text"_s}));
    EXPECT_EQ(again->outcomes().front().item, 1u);
    order.isWhole = true;
    EXPECT_THAT(performed(order)->itemsToRetry(), ElementsAre(0u, 1u, 2u));
}

TEST(Run, AFailureOfTheWholeIsThatOfWhatIsLeft) {
    const auto run = performed(orderOf({u"a"_s, u"b"_s}, [](jobs::Run& run, const auto&) {
        run.ticket(u"a"_s).report(done());
        run.fail({platform::ErrorCode::NoSpace, {}, {}, u"full"_s});
    }));
    EXPECT_THAT(statusesOf(*run), ElementsAre(WriteStatus::Completed, WriteStatus::Failed));
    EXPECT_EQ(run->outcomes()[1].failure->code, platform::ErrorCode::NoSpace);
}

TEST(Run, SaysOnceWhatHoldsForAllOutputs) {
    const auto run = performed(orderOf({u"a"_s}, [](jobs::Run&, const auto&) {}));
    EXPECT_TRUE(run->isFirst(kCreationDateNotStored));
    EXPECT_FALSE(run->isFirst(kCreationDateNotStored));
    EXPECT_TRUE(run->isFirst(kDateBeyondFileSystem));
}

TEST(Run, WhatThrowsCostsNoOtherOutcome) {
    int outcomes = 0, ends = 0;
    Run::Handlers handlers;
    handlers.outcome = [&](const WriteOutcome&) {
        if (++outcomes == 1)
            throw std::bad_alloc();
    };
    handlers.ended = [&] {
        ++ends;
        throw std::runtime_error("no thread");
    };
    const auto run = performed(orderOf({u"a"_s, u"b"_s, u"c"_s},
                                       [](jobs::Run& run, const auto&) {
                                           run.ticket(u"a"_s).report(done());
                                           const Ticket given = run.ticket(u"b"_s);
                                           throw std::bad_alloc();
                                       }),
                               handlers);
    EXPECT_TRUE(run->waitForEnd(kLongEnough));
    EXPECT_EQ(outcomes, 3);
    EXPECT_EQ(ends, 1);
    EXPECT_THAT(statusesOf(*run),
                ElementsAre(WriteStatus::Completed, WriteStatus::Failed, WriteStatus::Failed));
    EXPECT_EQ(run->outcomes()[2].failure->detail.code(), platform::kOutOfMemory);
}

TEST(OutputTurns, AreGivenInOrderAndEndOnceAtTheLatestWhenTheyGo) {
    const auto turns = std::make_shared<OutputTurns>();
    std::shared_ptr<OutputTurn> first;
    QStringList begun;
    turns->begin(u"out"_s, [&](const auto& turn) { first = turn; });
    for (const char* name : {"b", "c"})
        turns->begin(u"out"_s, [&begun, name](const auto&) { begun << QLatin1String(name); });
    turns->begin(u"other"_s, [&begun](const auto&) { begun << u"other"_s; });
    EXPECT_EQ(begun, QStringList{u"other"_s});
    first->end();
    first->end();
    EXPECT_EQ(begun, (QStringList{u"other"_s, u"b"_s, u"c"_s}));
}

TEST(OutputTurns, ThousandsThatEndAtOnceNeedNoStack) {
    const auto turns = std::make_shared<OutputTurns>();
    std::shared_ptr<OutputTurn> first;
    int begun = 0;
    turns->begin(u"out"_s, [&](const auto& turn) { first = turn; });
    for (int i = 0; i < 100'000; ++i)
        turns->begin(u"out"_s, [&begun](const auto&) {
            if (++begun == 1)
                throw std::bad_alloc();
        });
    first->end();
    EXPECT_EQ(begun, 100'000);
}

} // namespace
