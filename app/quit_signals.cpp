// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/quit_signals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>

namespace clipheave::app {

namespace {

volatile std::sig_atomic_t s_toEventLoop = -1; ///< a pipe: a handler may only write
volatile std::sig_atomic_t s_signal = 0;
std::atomic<std::int64_t> s_first{0}; ///< when it came, in ms
static_assert(std::atomic<std::int64_t>::is_always_lock_free);

/// Programs that run others send one signal to the program and to its group.
constexpr std::int64_t kOneSignal = 500; // ms

std::int64_t milliseconds() {
    struct timespec now {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
}

void takeSignal(int signal) {
    std::int64_t none = 0;
    const std::int64_t now = milliseconds();
    if (!s_first.compare_exchange_strong(none, now)) {
        if (now - none > kOneSignal)
            ::_exit(128 + signal);
        return;
    }
    s_signal = signal;
    const int savedErrno = errno;
    const char byte = 0;
    // Where even this fails the next signal ends the program.
    [[maybe_unused]] const auto written = ::write(s_toEventLoop, &byte, 1);
    errno = savedErrno;
}

void handle(int signal) {
    struct sigaction action {};
    if (::sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN)
        return;
    action = {};
    action.sa_handler = &takeSignal;
    ::sigaction(signal, &action, nullptr);
}

} // namespace

void quitOnSignals() {
    std::array<int, 2> pipe{};
    if (::pipe2(pipe.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    s_toEventLoop = pipe[1];
    auto* const notifier = new QSocketNotifier(pipe[0], QSocketNotifier::Read, qApp);
    QObject::connect(notifier, &QSocketNotifier::activated, qApp, [notifier] {
        notifier->setEnabled(false);
        QCoreApplication::exit(128 + s_signal);
    });
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        handle(signal);
}

} // namespace clipheave::app
