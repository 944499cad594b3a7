// SPDX-License-Identifier: GPL-3.0-or-later
// Measures the rename of 10,000 files: the plan, and the job against a loop of bare rename calls
// run alternately. Prints a table and fails when a target is missed. Needs no display.
// usage: rename_bench [FOLDER]
#include "batch/batch_rename.h"
#include "bench/report.h"
#include "platform/foundation/main_thread.h"
#include "platform/foundation/paths.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

using namespace clipheave;
using bench::Stopwatch;

constexpr int kFiles = 10'000;
constexpr int kRuns = 7;

std::vector<media::ItemPointer> makeFiles(const QString& folder) {
    std::vector<media::ItemPointer> items;
    for (int i = 0; i < kFiles; ++i) {
        auto item = std::make_shared<media::IKImageItem>();
        item->fileName = QStringLiteral("IMG_%1.mov").arg(i, 5, 10, QLatin1Char('0'));
        item->filePath = folder + u'/' + item->fileName;
        item->fileTitle = QStringLiteral("Harbour at dusk");
        item->fileArist = QStringLiteral("Artist %1").arg(i % 500);
        item->shootDateStr = QStringLiteral("2015:06:01 12:30:45");
        QFile file(item->filePath);
        if (!file.open(QIODevice::WriteOnly))
            std::exit(2);
        items.push_back(item);
    }
    return items;
}

std::vector<batch::RenameMove> planWithTags(const std::vector<media::ItemPointer>& items) {
    batch::RenameRequest request;
    request.mode = batch::RenameMode::MetadataTags;
    request.filenameFormatstrlab = QStringLiteral("{Camera Date} {Title}, {Artist} ");
    request.renameDateFormatBtn = QStringLiteral("YYYYMMDD HHMMss");
    request.seqNumBtn = true;
    request.storagelocation = QStringLiteral("/nowhere");
    return batch::planRename(request, items, batch::surroundingsOnDisk());
}

/// Milliseconds of bare renames; renaming back is not measured.
double bareRenames(const std::vector<batch::RenameMove>& plan) {
    std::vector<std::array<QByteArray, 2>> names;
    names.reserve(plan.size());
    for (const batch::RenameMove& move : plan)
        names.push_back({platform::nativePath(move.source), platform::nativePath(move.target)});
    const Stopwatch watch;
    for (const auto& [from, to] : names)
        if (::rename(from.constData(), to.constData()) != 0)
            std::exit(2);
    const double taken = watch.milliseconds();
    for (const auto& [from, to] : names)
        if (::rename(to.constData(), from.constData()) != 0)
            std::exit(2);
    return taken;
}

/// Milliseconds of `work` on a thread of its own while this one serves it, as in the window.
double onAThread(const std::function<void()>& work) {
    const Stopwatch watch;
    platform::BackgroundJob::detach([&] {
        work();
        platform::performOnMainThread([] { QCoreApplication::quit(); });
    });
    QCoreApplication::exec();
    const double taken = watch.milliseconds();
    platform::BackgroundJob::waitForAll();
    return taken;
}

/// A run that posts to the main thread after every file.
std::shared_ptr<jobs::Run> runOf(const std::function<void(jobs::Run&)>& work, int& refreshed) {
    jobs::RunOrder order;
    order.work = [work](jobs::Run& run, const auto&) { work(run); };
    jobs::Run::Handlers handlers;
    handlers.outcome = [&](const jobs::WriteOutcome& outcome) {
        if (outcome.status != jobs::WriteStatus::Completed)
            std::exit(2);
        platform::performOnMainThread([&] { ++refreshed; });
    };
    return jobs::Run::create(order, {}, handlers);
}

double job(const std::vector<batch::RenameMove>& plan) {
    int refreshed = 0;
    const auto run = runOf([&](jobs::Run& run) { (void)batch::runRename(plan, run); }, refreshed);
    return onAThread([&] { run->perform(); });
}

/// The posts of that job alone, each waited for.
double posts() {
    int refreshed = 0;
    return onAThread([&] {
        for (int i = 0; i < kFiles; ++i)
            platform::performOnMainThread([&] { ++refreshed; });
    });
}

double undo() {
    int refreshed = 0;
    const auto run = runOf([](jobs::Run& run) { (void)batch::undoLastRename(run); }, refreshed);
    const double taken = onAThread([&] { run->perform(); });
    if (refreshed != kFiles)
        std::exit(2);
    return taken;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QString place = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QDir::tempPath();
    const QTemporaryDir dir(place + QStringLiteral("/rename-bench-XXXXXX"));
    qputenv("XDG_STATE_HOME", dir.filePath(QStringLiteral("state")).toUtf8());
    const auto items = makeFiles(dir.path());
    ::sync();

    std::vector<double> plans, bare, jobs, undos, waits;
    std::vector<batch::RenameMove> plan;
    for (int run = 0; run < kRuns; ++run) {
        const Stopwatch watch;
        plan = planWithTags(items);
        plans.push_back(watch.milliseconds());
        bare.push_back(bareRenames(plan));
        jobs.push_back(job(plan));
        undos.push_back(undo());
        waits.push_back(posts());
    }
    bench::report("plan of 10,000 renames", median(plans), 50, "ms");
    bench::tell("10,000 bare renames", median(bare), "ms");
    bench::tell("the same by the job, journal and a post a file included", median(jobs), "ms");
    bench::tell("the posts of that alone", median(waits), "ms");
    bench::report("job against bare renames", median(jobs) / median(bare), 3, "times");
    bench::tell("10,000 names put back", median(undos), "ms");
    return bench::allMet ? 0 : 1;
}
