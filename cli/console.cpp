// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/console.h"

#include "platform/foundation/paths.h"
#include "platform/media/export/av_asset_export_session.h"

#include <QByteArray>

#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <thread>

#include <unistd.h>

namespace clipheave::cli {

namespace {

using platform::LogLevel;

constexpr auto kRedrawInterval = std::chrono::milliseconds(100);
/// Signals this close together are one: some programs send it to a process and then to its group.
constexpr auto kOneSignal = std::chrono::milliseconds(500);
std::atomic<int> s_interruption{0};

const char* prefixOf(LogLevel level) {
    switch (level) {
    case LogLevel::Warning:
        return "warning: ";
    case LogLevel::Error:
        return "error: ";
    case LogLevel::Trace:
    case LogLevel::Info:
        break;
    }
    return "";
}

/// Returns a line with the bytes of its paths; control characters of a name must not reach the
/// terminal, nor begin a line of their own.
QByteArray terminalLine(QString text) {
    for (QChar& c : text)
        if (c.category() == QChar::Other_Control)
            c = u' ';
    return platform::nativePath(text) + '\n';
}

void writeStandardError(const QByteArray& bytes) {
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stderr);
}

/// Returns true for a signal that "nohup" or a shell has set to be ignored: sigwait() would take it
/// all the same.
bool isIgnored(int signal) {
    struct sigaction action {};
    return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

QString durationLeft(double seconds) {
    const int whole = static_cast<int>(std::lround(seconds));
    return whole >= 60 ? QStringLiteral("%1m %2s").arg(whole / 60).arg(whole % 60)
                       : QStringLiteral("%1s").arg(whole);
}

} // namespace

Console::Console(Detail detail)
    : m_showsBar(detail != Detail::Quiet && ::isatty(STDERR_FILENO) != 0) {
    if (detail == Detail::Quiet)
        return;
    const LogLevel least = detail == Detail::Verbose ? LogLevel::Trace : LogLevel::Warning;
    m_subscription = std::make_unique<platform::LogSubscription>(
        least, [this](const platform::LogLine& line) { print(line); });
}

Console::~Console() {
    clearProgress();
}

void Console::print(const platform::LogLine& line) {
    QByteArray text = prefixOf(line.level);
    // Some texts name their file already.
    if (!line.path.isEmpty() && !line.text.contains(line.path))
        text += terminalLine(line.path + QStringLiteral(": ") + line.text);
    else
        text += terminalLine(line.text);
    const std::scoped_lock lock(m_mutex);
    eraseBar();
    writeStandardError(text);
}

void Console::eraseBar() {
    if (m_barDrawn)
        writeStandardError("\r\033[K");
    m_barDrawn = false;
}

void Console::progress(const QString& what, int done, int total, const RunningItems& running) {
    const auto now = std::chrono::steady_clock::now();
    const std::scoped_lock lock(m_mutex);
    if (!m_showsBar || now - m_lastDrawn < kRedrawInterval)
        return;
    m_lastDrawn = now;
    const double elapsed = std::chrono::duration<double>(now - m_start).count();
    QString text = total > 0 ? QStringLiteral("%1 %2 of %3").arg(what).arg(done).arg(total)
                             : QStringLiteral("%1 %2").arg(what).arg(done);
    if (running.fraction >= 0)
        text += QStringLiteral(", %1 %").arg(static_cast<int>(running.fraction * 100));
    const double finished = done + running.items;
    if (elapsed > 0 && finished > 0)
        text += QStringLiteral(", %1/s").arg(finished / elapsed, 0, 'f', 1);
    if (total > 0 && finished > 0 && finished < total)
        text +=
            QStringLiteral(", %1 left").arg(durationLeft(elapsed / finished * (total - finished)));
    eraseBar();
    writeStandardError(text.toUtf8());
    std::fflush(stderr);
    m_barDrawn = true;
}

void Console::clearProgress() {
    const std::scoped_lock lock(m_mutex);
    eraseBar();
}

bool printOut(const QByteArray& bytes) {
    const auto size = static_cast<std::size_t>(bytes.size());
    const bool written =
        std::fwrite(bytes.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0;
    if (!written)
        printError(QStringLiteral("standard output could not be written"));
    return written;
}

void printError(const QString& text) {
    writeStandardError("clipheave-cli: " + terminalLine(text));
}

int reportNothingToDo() {
    printError(
        QStringLiteral("No Item has been selected: Please select at least one item to process."));
    return kNothingToDo;
}

void watchSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        if (!isIgnored(signal))
            sigaddset(&signals, signal);
    // Blocked in every thread started from here on; one thread waits for them and may do real work.
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::thread([signals] {
        std::chrono::steady_clock::time_point first;
        int signal = 0;
        while (sigwait(&signals, &signal) == 0) {
            const auto now = std::chrono::steady_clock::now();
            const int status = 128 + signal;
            if (s_interruption.exchange(status) == 0) {
                first = now;
                platform::AVAssetExportSession::cancelAllExports();
            } else if (now - first > kOneSignal) {
                // Asked again: leave at once, temporaries are removed at the next run.
                ::_exit(status);
            }
        }
    }).detach();
}

int interruption() {
    return s_interruption.load();
}

bool isInterrupted() {
    return interruption() != 0;
}

} // namespace clipheave::cli
