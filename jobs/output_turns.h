// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <deque>
#include <functional>
#include <map>
#include <mutex>

namespace clipheave::jobs {

/// Exports of one job that write one name go one after the other, in the order of the list, so that
/// the last one wins whichever is faster. Thread-safe.
class OutputTurns {
public:
    /// Runs `begin` now, or when those before it for this path have ended.
    void begin(const QString& path, std::function<void()> begin);
    /// The one that has the turn is done.
    void ended(const QString& path);

private:
    std::mutex m_mutex;
    std::map<QString, std::deque<std::function<void()>>> m_waiting; ///< by path in use
};

} // namespace clipheave::jobs
