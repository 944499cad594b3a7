// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/convert/frame_format.h"
#include "platform/engine/encode/frame_pacer.h"
#include "platform/engine/io/bounded_queue.h"
#include "platform/engine/io/packet_lanes.h"
#include "platform/media/model/export_plan.h"

#include <map>

namespace clipheave::platform {

/// H.264 by libx264.
class VideoEncoder {
public:
    [[nodiscard]] static Result<std::unique_ptr<VideoEncoder>>
    open(const FrameFormat& format, const ExportVideo& video, AVRational timeBase,
         AVRational frameRate, int threads);
    [[nodiscard]] Result<OutputTrack> track() const;
    /// Encodes a frame; null drains the encoder. `sink` returns false to stop it (AVERROR_EXIT).
    [[nodiscard]] int encode(StampedFrame* frame, const std::function<bool(Packet)>& sink);

private:
    Codec m_codec;
    FrameFormat m_format;
    std::map<std::int64_t, std::int64_t> m_durations; ///< by timestamp, of frames inside
};

/// Frames on their way to the encoder.
using FrameQueue = BoundedQueue<StampedFrame>;
/// Frames between the filters and the encoder: enough to keep both at work, few for their size.
inline constexpr std::size_t kMostWaitingFrames = 3;

/// Returns the threads of an encoder in an export that has `threads`.
[[nodiscard]] int encoderThreads(int threads);

/// Encodes what the queue gives into a lane, until its end or until the lanes are stopped. A
/// failure goes to the lanes.
void encodeFrames(VideoEncoder& encoder, FrameQueue& queue, PacketLanes& lanes, std::size_t lane);

} // namespace clipheave::platform
