// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/convert/frame_filter.h"

namespace clipheave::platform {

/// The decoded frames of one segment with their times in the output: those before its start are
/// left out, the ones at its borders cut in time.
class VideoSegmentReader {
public:
    [[nodiscard]] static Result<std::unique_ptr<VideoSegmentReader>> open(PlannedSegment& segment,
                                                                          int threads);
    /// The next frame; one without a frame at the end.
    [[nodiscard]] Result<TimedFrame> next();
    [[nodiscard]] AVRational aspectOf(AVFrame& frame) const;
    [[nodiscard]] Notes notes() const; ///< some may be empty
    [[nodiscard]] bool anyDecoded() const { return m_lastTime.has_value(); }
    [[nodiscard]] QString complaint() const { return m_decoder->complaint(); }

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
    std::unique_ptr<ExportSource> m_source;
    std::unique_ptr<ExportDecoder> m_decoder;
    Decoded m_current;
    QString m_endNote;
    std::optional<Ticks> m_lastTime; ///< of the frame decoded last
    bool m_begun = false, m_sought = false, m_shown = false;
};

} // namespace clipheave::platform
