// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/image_item.h"
#include "platform/foundation/result.h"

#include <QString>

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace clipheave::media {

/// Reads files on helper threads and delivers the results in the order in which the files were
/// added, always on the thread that adds. That thread works too, so without helpers everything
/// still runs.
class ReadAhead {
public:
    using Reader = platform::Result<MutableItemPointer> (*)(const QString& path);
    /// The result is absent when the file had no reader.
    using Deliver = std::function<void(const QString& path,
                                       std::optional<platform::Result<MutableItemPointer>> result)>;

    ReadAhead(int helpers, Deliver deliver);
    ~ReadAhead();
    ReadAhead(const ReadAhead&) = delete;
    ReadAhead& operator=(const ReadAhead&) = delete;

    /// Takes a file; delivers older ones when more than `kMostPending` are under way. A null reader
    /// is delivered in its turn without a result.
    void add(const QString& path, Reader reader);
    /// Delivers everything that is left.
    void finish();

private:
    static constexpr std::size_t kMostPending = 64;

    struct Task;
    void work();
    /// Reads the first unread file; the lock is let go meanwhile. There must be one.
    void readNext(std::unique_lock<std::mutex>& lock);
    void deliverFirst();

    Deliver m_deliver;
    std::mutex m_mutex;
    std::condition_variable m_added, m_done;
    std::deque<std::shared_ptr<Task>> m_pending; ///< in order of delivery; the adding thread's
    std::deque<std::shared_ptr<Task>> m_unread;  ///< guarded by m_mutex
    bool m_ending = false;                       ///< guarded by m_mutex
    int m_wantedHelpers;
    std::vector<std::jthread> m_helpers; ///< started at the first file that needs reading
};

} // namespace clipheave::media
