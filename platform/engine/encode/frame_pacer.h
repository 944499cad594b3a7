// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/convert/timed_frame.h"

#include <functional>

namespace clipheave::platform {

/// A frame with its timestamp in the encoder's time base.
struct StampedFrame {
    Frame frame;
    std::int64_t pts = 0, duration = 1;
};

/// Gives frames their timestamps: those of the source, or those of a constant rate, for which
/// frames are repeated and left out.
class FramePacer {
public:
    using Sink = std::function<bool(StampedFrame)>; ///< false stops
    FramePacer(AVRational timeBase, bool constant) : m_timeBase(timeBase), m_constant(constant) {}

    /// Returns false for a frame that a constant rate leaves out.
    [[nodiscard]] bool wants(Ticks start, Ticks end) const;
    /// Gives the frame its timestamp. AVERROR_EXIT when the sink stopped it, AVERROR(ERANGE) for a
    /// gap longer than kLongestFiller.
    [[nodiscard]] int place(TimedFrame timed, const Sink& sink);

private:
    [[nodiscard]] int repeat(const AVFrame& frame, std::int64_t until, const Sink& sink);

    AVRational m_timeBase;
    bool m_constant;
    std::int64_t m_next = 0; ///< the first timestamp that is free
    Frame m_last;
};

} // namespace clipheave::platform
