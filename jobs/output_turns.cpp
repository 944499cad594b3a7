// SPDX-License-Identifier: GPL-3.0-or-later
#include "jobs/output_turns.h"

#include "platform/foundation/guarded.h"

#include <utility>

namespace clipheave::jobs {

void OutputTurn::end() {
    if (!m_hasEnded.exchange(true))
        m_turns->ended(m_path);
}

void OutputTurns::begin(const QString& path, Begin begin) {
    {
        const std::lock_guard lock(m_mutex);
        const auto [line, isFirst] = m_lines.try_emplace(path);
        line->second.waiting.push_back(std::move(begin));
        if (!isFirst)
            return;
    }
    beginNext(path);
}

void OutputTurns::ended(const QString& path) {
    {
        const std::lock_guard lock(m_mutex);
        Line& line = m_lines.at(path);
        // What has ended before its begin has returned is followed up there: a turn inside the
        // turn before it, for thousands of files that fail at once, would use up the stack.
        if (std::exchange(line.hasEnded, true) || line.isBeginning)
            return;
    }
    beginNext(path);
}

void OutputTurns::beginNext(const QString& path) {
    bool hasEnded = true;
    while (hasEnded) {
        Begin next;
        {
            const std::lock_guard lock(m_mutex);
            const auto found = m_lines.find(path);
            Line& line = found->second;
            if (line.waiting.empty()) {
                m_lines.erase(found);
                return;
            }
            next = std::move(line.waiting.front());
            line.waiting.pop_front();
            line.isBeginning = true;
            line.hasEnded = false;
        }
        platform::ignoreFailure(platform::guarded([&] {
                                    next(std::make_shared<OutputTurn>(shared_from_this(), path));
                                }),
                                "the next turn comes all the same");
        const std::lock_guard lock(m_mutex);
        Line& line = m_lines.at(path);
        line.isBeginning = false;
        hasEnded = line.hasEnded;
    }
}

} // namespace clipheave::jobs
