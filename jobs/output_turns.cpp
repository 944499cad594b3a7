// SPDX-License-Identifier: GPL-3.0-or-later
#include "jobs/output_turns.h"

namespace clipheave::jobs {

void OutputTurns::begin(const QString& path, std::function<void()> begin) {
    {
        const std::lock_guard lock(m_mutex);
        const auto [entry, isFirst] = m_waiting.try_emplace(path);
        if (!isFirst) {
            entry->second.push_back(std::move(begin));
            return;
        }
    }
    begin();
}

void OutputTurns::ended(const QString& path) {
    std::function<void()> next;
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
    next();
}

} // namespace clipheave::jobs
