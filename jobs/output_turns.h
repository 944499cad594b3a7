// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <atomic>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>

namespace clipheave::jobs {

class OutputTurns;

/// The turn of one export at a path. Ends once: by end(), at the latest when it is destroyed.
class OutputTurn {
public:
    OutputTurn(std::shared_ptr<OutputTurns> turns, QString path)
        : m_turns(std::move(turns)), m_path(std::move(path)) {}
    OutputTurn(const OutputTurn&) = delete;
    OutputTurn& operator=(const OutputTurn&) = delete;
    ~OutputTurn() { end(); }
    /// Lets the next one begin, on this thread.
    void end();

private:
    std::shared_ptr<OutputTurns> m_turns;
    QString m_path;
    std::atomic<bool> m_hasEnded = false;
};

/// Exports of one run that write one name go one after the other, in the order of the list, so that
/// the last one wins whichever is faster. Thread-safe.
class OutputTurns : public std::enable_shared_from_this<OutputTurns> {
public:
    using Begin = std::function<void(const std::shared_ptr<OutputTurn>& turn)>;
    /// Runs `begin` now, or when the turns before it for this path have ended.
    void begin(const QString& path, Begin begin);

private:
    friend class OutputTurn;
    struct Line {
        std::deque<Begin> waiting;
        bool isBeginning = false; ///< the current turn has not returned from its begin
        bool hasEnded = false;    ///< the current turn
    };

    void ended(const QString& path);
    void beginNext(const QString& path);

    std::mutex m_mutex;
    std::map<QString, Line> m_lines; ///< by path in use
};

} // namespace clipheave::jobs
