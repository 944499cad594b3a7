// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/log.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <memory>
#include <mutex>
#include <vector>

namespace clipheave::platform {
namespace {

constexpr int kNobodyListens = std::numeric_limits<int>::max();

struct RegisteredListener {
    std::uint64_t id;
    LogLevel least;
    std::shared_ptr<const LogListener> call;
};

/// The list is replaced as a whole, so that a line is delivered without holding the lock: a
/// listener may log, subscribe or drop a subscription itself.
struct LogRegistry {
    std::mutex mutex;
    std::vector<RegisteredListener> listeners;
    std::uint64_t lastId = 0;
    std::atomic<int> least{kNobodyListens};

    void updateLeast() {
        int lowest = kNobodyListens;
        for (const RegisteredListener& listener : listeners)
            lowest = std::min(lowest, static_cast<int>(listener.least));
        least.store(lowest, std::memory_order_relaxed);
    }
};

// Never destroyed: detached workers may log until the very end of the process.
LogRegistry& logRegistry() {
    static LogRegistry* const registry = new LogRegistry;
    return *registry;
}

} // namespace

bool logs(LogLevel level) {
    return static_cast<int>(level) >= logRegistry().least.load(std::memory_order_relaxed);
}

void log(LogLevel level, const QString& text, const QString& path) {
    if (!logs(level))
        return;
    std::vector<std::shared_ptr<const LogListener>> calls;
    {
        const std::lock_guard lock(logRegistry().mutex);
        for (const RegisteredListener& listener : logRegistry().listeners) {
            if (level >= listener.least)
                calls.push_back(listener.call);
        }
    }
    const LogLine line{level, text, path};
    for (const auto& call : calls)
        (*call)(line);
}

LogSubscription::LogSubscription(LogLevel least, LogListener listener) {
    LogRegistry& registry = logRegistry();
    const std::lock_guard lock(registry.mutex);
    m_id = ++registry.lastId;
    registry.listeners.push_back(
        {m_id, least, std::make_shared<const LogListener>(std::move(listener))});
    registry.updateLeast();
}

LogSubscription::~LogSubscription() {
    LogRegistry& registry = logRegistry();
    const std::lock_guard lock(registry.mutex);
    std::erase_if(registry.listeners, [this](const auto& known) { return known.id == m_id; });
    registry.updateLeast();
}

} // namespace clipheave::platform
