// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/ticks.h"

namespace clipheave::platform {

/// A stretch of a source and its place in the output.
struct Stretch {
    Ticks sourceStart = 0, sourceEnd = 0, targetStart = 0, targetEnd = 0;

    /// None when a time is invalid or a duration is not positive.
    [[nodiscard]] static std::optional<Stretch> of(CMTimeRange source, CMTimeRange target);
    [[nodiscard]] Ticks toTarget(Ticks source) const;
    /// Source time that passes in a second of the output: 2 is twice as fast. Exactly 1 unless the
    /// durations differ by more than rounding.
    [[nodiscard]] double speed() const;
};

} // namespace clipheave::platform
