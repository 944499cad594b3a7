// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/main_thread.h"

#include "platform/foundation/guarded.h"

#include <QCoreApplication>
#include <QThread>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace clipheave::platform {
namespace {

using namespace std::chrono_literals;

struct RunningWorkers {
    std::mutex mutex;
    std::condition_variable changed;
    int count = 0;
};

// Never destroyed: a worker may outlive main().
RunningWorkers& runningWorkers() {
    static RunningWorkers* const workers = new RunningWorkers;
    return *workers;
}

bool isMainThread() {
    return QThread::currentThread() == qApp->thread();
}

} // namespace

void performOnMainThread(const std::function<void()>& operation) {
    if (!qApp || isMainThread())
        operation();
    else
        QMetaObject::invokeMethod(qApp, operation, Qt::BlockingQueuedConnection);
}

void BackgroundJob::detach(std::function<void()> worker) {
    RunningWorkers& workers = runningWorkers();
    {
        const std::lock_guard lock(workers.mutex);
        ++workers.count;
    }
    std::thread([worker = std::move(worker)]() mutable {
        ignoreFailure(guarded(worker), "the program goes on without this worker");
        worker = nullptr; // what it holds ends before it counts as ended
        RunningWorkers& all = runningWorkers();
        const std::lock_guard lock(all.mutex);
        --all.count;
        all.changed.notify_all();
    }).detach();
}

void BackgroundJob::waitForAll() {
    RunningWorkers& workers = runningWorkers();
    std::unique_lock lock(workers.mutex);
    const auto ended = [&] { return workers.count == 0; };
    if (!qApp || !isMainThread()) {
        workers.changed.wait(lock, ended);
        return;
    }
    // A worker may be waiting for its turn on this very thread.
    while (!workers.changed.wait_for(lock, 5ms, ended)) {
        lock.unlock();
        QCoreApplication::processEvents();
        lock.lock();
    }
}

} // namespace clipheave::platform
