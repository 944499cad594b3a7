// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>

namespace clipheave::platform {

/// Hands things from one thread to another, few at a time. Both sides return at once when `stopped`
/// returns true: it is called at every wake() and every 50 ms.
template <class T> class BoundedQueue {
public:
    BoundedQueue(std::size_t most, std::function<bool()> stopped)
        : m_most(most), m_stopped(std::move(stopped)) {}

    /// Waits for room; false when it was stopped.
    bool push(T thing) {
        std::unique_lock lock(m_mutex);
        while (m_things.size() >= m_most && !m_stopped())
            m_changed.wait_for(lock, kPatience);
        if (m_stopped())
            return false;
        m_things.push_back(std::move(thing));
        m_changed.notify_all();
        return true;
    }
    [[nodiscard]] bool hasRoom() const {
        const std::lock_guard lock(m_mutex);
        return m_things.size() < m_most;
    }
    /// Announces that nothing more comes.
    void close() {
        const std::lock_guard lock(m_mutex);
        m_closed = true;
        m_changed.notify_all();
    }
    /// Waits for the next thing; none at the end and when it was stopped.
    std::optional<T> pop() {
        std::unique_lock lock(m_mutex);
        while (m_things.empty() && !m_closed && !m_stopped())
            m_changed.wait_for(lock, kPatience);
        if (m_things.empty() || m_stopped())
            return std::nullopt;
        std::optional<T> thing(std::move(m_things.front()));
        m_things.pop_front();
        m_changed.notify_all();
        return thing;
    }
    void wake() {
        const std::lock_guard lock(m_mutex);
        m_changed.notify_all();
    }

private:
    static constexpr std::chrono::milliseconds kPatience{50};
    const std::size_t m_most;
    const std::function<bool()> m_stopped;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<T> m_things;
    bool m_closed = false;
};

} // namespace clipheave::platform
