// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"

#include <chrono>
#include <cstdint>

namespace clipheave::platform {

/// Where an export writes: looked at before the work begins and while it goes on, so that nobody
/// waits for an encoding that cannot be put anywhere. One thread at a time.
class OutputPlace {
public:
    explicit OutputPlace(QString output) : m_output(std::move(output)) {}

    /// NotFound or AccessDenied when no file can be made in the folder, NoSpace when its file
    /// system has less room than `bytes`, or none for even a short video.
    [[nodiscard]] Result<void> check(std::uint64_t bytes = 0) const;
    /// Deliberate: a link of the output's name goes away, so that the output takes its place;
    /// written through it, a file that nobody has selected would be lost.
    void removeLink() const;
    /// A file in the folder that has to stay there while the work goes on.
    void watch(const QString& path) { m_watched = path; }
    /// True when it, or the folder, is not there any more. Looks now and then, else returns as
    /// before.
    [[nodiscard]] bool isGone();
    /// The reason why the work was in vain; success when the place is not to blame.
    [[nodiscard]] Result<void> blame() const;

private:
    QString m_output, m_watched;
    std::chrono::steady_clock::time_point m_nextLook{};
    bool m_gone = false;
};

} // namespace clipheave::platform
