// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/convert/filter_text.h"
#include "platform/engine/convert/frame_painter.h"
#include "platform/engine/convert/linear_graph.h"
#include "platform/engine/convert/timed_frame.h"

#include <deque>
#include <functional>
#include <optional>

namespace clipheave::platform {

/// Converts the frames of one segment to the output's format; rebuilds its filters when theirs
/// changes. HDR becomes SDR by the same tone mapping as in every other frame that is shown.
class FrameFilter {
public:
    using Sink = std::function<bool(TimedFrame)>; ///< false stops
    /// `stream` is borrowed and gives the colour tags that frames lack; null: none.
    FrameFilter(const AVCodecParameters* stream, const FrameFormat& output, Orientation orientation,
                int threads)
        : m_stream(stream), m_output(output), m_orientation(orientation), m_threads(threads) {}

    /// Filters one frame, whose sample aspect ratio is `aspect`. AVERROR_EXIT when the sink stopped
    /// it.
    [[nodiscard]] int push(TimedFrame timed, AVRational aspect, const Sink& sink);
    [[nodiscard]] int finish(const Sink& sink); ///< delivers the frames still inside

private:
    [[nodiscard]] DecodedFormat formatOf(const AVFrame& frame, AVRational aspect) const;
    [[nodiscard]] int toneMap(Frame& frame, DecodedFormat& format);
    [[nodiscard]] int start(const DecodedFormat& input);
    [[nodiscard]] int pull(const Sink& sink);
    void mark(AVFrame& frame) const;

    const AVCodecParameters* m_stream;
    FrameFormat m_output;
    Orientation m_orientation;
    int m_threads;
    bool m_anyFields = false; ///< once seen they are expected again
    std::optional<DecodedFormat> m_input;
    std::optional<FramePainter> m_painter; ///< of HDR frames
    LinearGraph m_graph;
    /// Times of the frames inside: one comes out for each that went in, in the same order.
    std::deque<std::pair<Ticks, Ticks>> m_times;
};

} // namespace clipheave::platform
