// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/quit_signals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <array>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace clipheave::app {

namespace {

volatile std::sig_atomic_t s_toEventLoop = -1; ///< a pipe: a handler may do no more than write
volatile std::sig_atomic_t s_signal = 0;

void takeSignal(int signal) {
    if (s_signal != 0)
        ::_exit(128 + signal);
    s_signal = signal;
    const char byte = 0;
    // Where even this fails the next signal ends the program.
    [[maybe_unused]] const auto written = ::write(s_toEventLoop, &byte, 1);
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
