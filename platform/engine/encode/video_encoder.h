// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/convert/frame_filter.h"
#include "platform/engine/io/bounded_queue.h"

#include <map>

namespace clipheave::platform {

/// A frame with its timestamp in the encoder's time base.
struct StampedFrame {
    Frame frame;
    std::int64_t pts = 0, duration = 1;
};

/// Gives frames their timestamps: those of the source, or a constant distance, for which
/// frames are repeated and left out.
class FramePacer {
public:
    using Sink = std::function<bool(StampedFrame)>; ///< false stops
    FramePacer(AVRational timeBase, bool constant) : m_timeBase(timeBase), m_constant(constant) {}

    /// False for a frame that a constant rate leaves out.
    [[nodiscard]] bool wants(Ticks start, Ticks end) const;
    /// AVERROR_EXIT when the sink stopped it, AVERROR(ERANGE) for a gap longer than kLongestFiller.
    [[nodiscard]] int place(TimedFrame videoFrame, const Sink& sink);

private:
    [[nodiscard]] int repeat(const AVFrame& frame, std::int64_t until, const Sink& sink);

    AVRational m_timeBase;
    bool m_constant;
    std::int64_t m_next = 0; ///< the first timestamp that is free
    Frame m_last;
};

/// H.264 by libx264.
class VideoEncoder {
public:
    [[nodiscard]] static Result<std::unique_ptr<VideoEncoder>>
    open(const FrameFormat& look, const ExportVideo& video, AVRational timeBase,
         AVRational frameRate, int threads);
    [[nodiscard]] Result<OutputTrack> track() const;
    /// Null empties the encoder. `sink` returns false to stop it (AVERROR_EXIT).
    [[nodiscard]] int encode(StampedFrame* videoFrame, const std::function<bool(Packet)>& sink);

private:
    Codec m_codec;
    FrameFormat m_look;
    std::map<std::int64_t, std::int64_t> m_durations; ///< by timestamp, of frames inside
};

/// Frames on their way to the encoder.
using FrameQueue = BoundedQueue<StampedFrame>;
/// Frames between the filters and the encoder: enough to keep both at work, few for their size.
inline constexpr std::size_t kMostWaitingFrames = 3;

/// Threads of an encoder in an export that has `threads`.
[[nodiscard]] int encoderThreads(int threads);

/// Encodes what the queue gives into a lane, until its end or the lanes' stop; a failure is told to
/// the lanes.
void encodeFrames(VideoEncoder& encoder, FrameQueue& queue, ExportLanes& lanes, std::size_t lane);

} // namespace clipheave::platform
