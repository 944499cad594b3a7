// SPDX-License-Identifier: GPL-3.0-or-later
#include "jobs/output_turns.h"

namespace clipheave::jobs {

void OutputTurn::end() {
    if (!m_hasEnded.exchange(true))
        m_turns->ended(m_path);
}

void OutputTurns::begin(const QString& path, Begin begin) {
    {
        const std::lock_guard lock(m_mutex);
        const auto [entry, isFirst] = m_waiting.try_emplace(path);
        if (!isFirst) {
            entry->second.push_back(std::move(begin));
            return;
        }
    }
    begin(std::make_shared<OutputTurn>(shared_from_this(), path));
}

void OutputTurns::ended(const QString& path) {
    Begin next;
    {
        const std::lock_guard lock(m_mutex);
        const auto entry = m_waiting.find(path);
        if (entry == m_waiting.end())
            return;
        if (entry->second.empty()) {
            m_waiting.erase(entry);
            return;
        }
        next = std::move(entry->second.front());
        entry->second.pop_front();
    }
    next(std::make_shared<OutputTurn>(shared_from_this(), path));
}

} // namespace clipheave::jobs
