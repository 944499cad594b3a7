// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <cstdint>
#include <functional>

namespace clipheave::platform {

enum class LogLevel {
    Trace,   ///< the fixed log texts of normal work ("urls==%@"); shown with --verbose
    Info,    ///< what a user following a job wants to know
    Warning, ///< something was skipped or read only in part
    Error,   ///< something that was asked for did not happen
};

struct LogLine {
    LogLevel level;
    QString text;
    QString path; ///< the file it is about, may be empty
};

/// Thread-safe. Lines go to every listener, in order; without one they are dropped.
void log(LogLevel level, const QString& text, const QString& path = {});
/// True when some listener takes `level`: guard texts that are costly to build.
[[nodiscard]] bool logs(LogLevel level);

using LogListener = std::function<void(const LogLine&)>;
/// Calls `listener` for lines of `least` and above, on the thread that logs, until the returned
/// handle is dropped.
class LogSubscription {
public:
    LogSubscription(LogLevel least, LogListener listener);
    ~LogSubscription();
    LogSubscription(const LogSubscription&) = delete;
    LogSubscription& operator=(const LogSubscription&) = delete;

private:
    std::uint64_t m_id;
};

} // namespace clipheave::platform
