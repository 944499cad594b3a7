// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"

#include <chrono>
#include <cstdint>

namespace clipheave::platform {

/// Where an export writes: checked before the work begins and while it goes on, so that nobody
/// waits for an encoding that cannot be stored. One thread at a time.
class OutputPlace {
public:
    explicit OutputPlace(QString output) : m_output(std::move(output)) {}

    /// Fails with NotFound or AccessDenied when no file can be created in the folder, NoSpace when
    /// its file system has less space than `bytes`, or too little for even a short video.
    [[nodiscard]] Result<void> check(std::uint64_t bytes = 0) const;
    /// Removes a link that has the output's name. Deliberate: written through it, the output would
    /// replace a file that nobody has selected.
    void removeLink() const;
    /// Names a file in the folder that has to stay there while the work goes on.
    void watch(const QString& path) { m_watched = path; }
    /// Returns true when the watched file, or the folder without one, is gone. Checks at most every
    /// 300 ms and returns the last result in between.
    [[nodiscard]] bool isGone();
    /// Fails with NotFound when the folder or the watched file is gone; success when the place is
    /// not to blame for a failed export.
    [[nodiscard]] Result<void> blame() const;

private:
    QString m_output, m_watched;
    std::chrono::steady_clock::time_point m_nextLook{};
    bool m_gone = false;
};

} // namespace clipheave::platform
