// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/read_ahead.h"

namespace clipheave::media {

struct ReadAhead::Task {
    enum class State { Unread, Reading, Read };
    QString path;
    Reader reader;
    State state = State::Unread; ///< guarded by m_mutex
    std::optional<platform::Result<MutableItemPointer>> result;
};

ReadAhead::ReadAhead(int helpers, Deliver deliver)
    : m_deliver(std::move(deliver)), m_wantedHelpers(helpers) {
}

ReadAhead::~ReadAhead() {
    {
        const std::scoped_lock lock(m_mutex);
        m_ending = true;
        m_unread.clear();
    }
    m_added.notify_all();
}

void ReadAhead::readNext(std::unique_lock<std::mutex>& lock) {
    const std::shared_ptr<Task> task = m_unread.front();
    m_unread.pop_front();
    task->state = Task::State::Reading;
    lock.unlock();
    auto result = task->reader(task->path);
    lock.lock();
    task->result = std::move(result);
    task->state = Task::State::Read;
}

void ReadAhead::work() {
    std::unique_lock lock(m_mutex);
    while (true) {
        m_added.wait(lock, [this] { return m_ending || !m_unread.empty(); });
        if (m_ending)
            return;
        readNext(lock);
        m_done.notify_all();
    }
}

void ReadAhead::add(const QString& path, Reader reader) {
    auto task = std::make_shared<Task>(Task{path, reader, Task::State::Read, std::nullopt});
    if (reader) {
        {
            const std::scoped_lock lock(m_mutex);
            task->state = Task::State::Unread;
            m_unread.push_back(task);
        }
        // A single file is read right here; helpers pay only when there is something to overlap.
        if (!m_pending.empty())
            while (static_cast<int>(m_helpers.size()) < m_wantedHelpers)
                m_helpers.emplace_back([this] { work(); });
        m_added.notify_one();
    }
    m_pending.push_back(std::move(task));
    while (m_pending.size() > kMostPending)
        deliverFirst();
}

void ReadAhead::deliverFirst() {
    const std::shared_ptr<Task> first = m_pending.front();
    std::unique_lock lock(m_mutex);
    while (first->state != Task::State::Read) {
        if (m_unread.empty()) {
            m_done.wait(lock);
            continue;
        }
        // Rather than wait, read the next file; when the first is still unread, it is that one.
        readNext(lock);
    }
    lock.unlock();
    m_pending.pop_front();
    m_deliver(first->path, std::move(first->result));
}

void ReadAhead::finish() {
    while (!m_pending.empty())
        deliverFirst();
}

} // namespace clipheave::media
