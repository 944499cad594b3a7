// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/plan/frame_format.h"

#include <deque>
#include <functional>

namespace clipheave::platform {

using FilterGraph = std::unique_ptr<AVFilterGraph, Releaser<avfilter_graph_free>>;

/// A graph with one input and one output.
struct LinearGraph {
    FilterGraph graph;
    AVFilterContext* source = nullptr;
    AVFilterContext* sink = nullptr;

    /// `kind`: "" for frames, "a" for audio, as libavfilter names its ends.
    [[nodiscard]] int build(const QByteArray& kind, const QByteArray& sourceOptions,
                            const QByteArray& filters, int threads);
};

/// A frame and when it is shown in the output.
struct TimedFrame {
    Frame frame;
    Ticks start = 0, end = 0;
};

/// Gives the frames of one segment the look of the video; filters anew when their form changes.
class FrameFilter {
public:
    using Sink = std::function<bool(TimedFrame)>; ///< false stops
    FrameFilter(const FrameFormat& look, int turn, bool mirrored, int threads)
        : m_look(look), m_turn(turn), m_threads(threads), m_mirrored(mirrored) {}

    /// AVERROR_EXIT when the sink stopped it.
    [[nodiscard]] int push(TimedFrame videoFrame, AVRational aspect, const Sink& sink);
    [[nodiscard]] int finish(const Sink& sink); ///< gives what is still inside

private:
    [[nodiscard]] FrameShape shapeOf(const AVFrame& frame, AVRational aspect) const;
    [[nodiscard]] int start(const FrameShape& shape);
    [[nodiscard]] int pull(const Sink& sink);
    void mark(AVFrame& frame) const;

    FrameFormat m_look;
    int m_turn, m_threads;
    bool m_mirrored;
    FrameShape m_shape;
    LinearGraph m_graph;
    /// One filtered frame comes for each that went in, in the same order.
    std::deque<std::pair<Ticks, Ticks>> m_times;
};

} // namespace clipheave::platform
