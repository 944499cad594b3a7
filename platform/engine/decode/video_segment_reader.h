// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/convert/timed_frame.h"
#include "platform/engine/decode/media_decoder.h"
#include "platform/engine/plan/planned_export.h"

namespace clipheave::platform {

/// Decodes the frames of one segment and gives them their times in the output: leaves out those
/// before its start and cuts the ones at its borders in time.
class VideoSegmentReader {
public:
    /// `threads` of the decoder, 0 for all cores.
    [[nodiscard]] static Result<std::unique_ptr<VideoSegmentReader>> open(PlannedSegment& segment,
                                                                          int threads);
    /// Returns the next frame; one without a frame at the end.
    [[nodiscard]] Result<TimedFrame> next();
    /// Returns the sample aspect ratio of a frame; 0/1 when it is not known.
    [[nodiscard]] AVRational aspectOf(AVFrame& frame) const;
    [[nodiscard]] Notes notes() const; ///< damage so far
    [[nodiscard]] bool anyDecoded() const { return m_lastTime.has_value(); }
    /// Returns why nothing was decoded.
    [[nodiscard]] Message nothingDecodedReason() const { return nothingDecoded(*m_decoder); }

private:
    struct Decoded {
        Frame frame;
        Ticks time = 0, duration = 0;
    };
    [[nodiscard]] Result<Decoded> decode();
    [[nodiscard]] Result<Decoded> decodeFirst();
    [[nodiscard]] Ticks lastEnd(const Decoded& last) const;
    [[nodiscard]] Result<void> checkBreak(Ticks end);

    Stretch m_stretch;
    Ticks m_usualDuration = 0;
    std::unique_ptr<StreamSource> m_source;
    std::unique_ptr<MediaDecoder> m_decoder;
    Decoded m_current;
    Message m_endNote;
    std::optional<Ticks> m_lastTime; ///< of the frame decoded last
    bool m_begun = false, m_sought = false, m_shown = false;
};

} // namespace clipheave::platform
