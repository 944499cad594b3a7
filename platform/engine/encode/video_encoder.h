// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/convert/frame_filter.h"
#include "platform/engine/io/bounded_queue.h"

#include <map>

namespace clipheave::platform {

/// A picture with its time stamp in the encoder's time base.
struct StampedPicture {
    Frame frame;
    std::int64_t pts = 0, duration = 1;
};

/// Gives pictures their time stamps: those of the source, or a constant distance, for which
/// pictures are repeated and left out.
class PicturePacer {
public:
    using Sink = std::function<bool(StampedPicture)>; ///< false stops
    PicturePacer(AVRational timeBase, bool constant) : m_timeBase(timeBase), m_constant(constant) {}

    /// False for a picture that a constant rate leaves out.
    [[nodiscard]] bool wants(Ticks start, Ticks end) const;
    /// AVERROR_EXIT when the sink stopped it, AVERROR(ERANGE) for a gap longer than kLongestFiller.
    [[nodiscard]] int place(TimedPicture picture, const Sink& sink);

private:
    [[nodiscard]] int repeat(const AVFrame& frame, std::int64_t until, const Sink& sink);

    AVRational m_timeBase;
    bool m_constant;
    std::int64_t m_next = 0; ///< the first time stamp that is free
    Frame m_last;
};

/// H.264 by libx264.
class VideoEncoder {
public:
    [[nodiscard]] static Result<std::unique_ptr<VideoEncoder>>
    open(const PictureLook& look, const ExportVideo& video, AVRational timeBase,
         AVRational frameRate, int threads);
    [[nodiscard]] Result<OutputTrack> track() const;
    /// Null empties the encoder. `sink` answers false to stop it (AVERROR_EXIT).
    [[nodiscard]] int encode(StampedPicture* picture, const std::function<bool(Packet)>& sink);

private:
    Codec m_codec;
    PictureLook m_look;
    std::map<std::int64_t, std::int64_t> m_durations; ///< by time stamp, of pictures inside
};

/// Pictures on their way to the encoder.
using PictureQueue = BoundedQueue<StampedPicture>;
/// Pictures between the filters and the encoder: enough to keep both at work, few for their size.
inline constexpr std::size_t kMostWaitingPictures = 3;

/// Threads of an encoder in an export that has `threads`.
[[nodiscard]] int encoderThreads(int threads);

/// Encodes what the queue gives into a lane, until its end or the lanes' stop; a failure is told to
/// the lanes.
void encodePictures(VideoEncoder& encoder, PictureQueue& queue, ExportLanes& lanes,
                    std::size_t lane);

} // namespace clipheave::platform
