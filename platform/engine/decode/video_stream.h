// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/convert/frame_painter.h"
#include "platform/engine/io/ffmpeg.h"
#include "platform/media/model/picture_turn.h"

#include <optional>

namespace clipheave::platform {

/// The first video that is no attached picture; null when there is none.
[[nodiscard]] AVStream* videoStream(AVFormatContext& context);
/// The nearest quarter to the stream's display matrix.
[[nodiscard]] QuarterTurn quarterTurnOf(const AVStream& stream);

/// Makes upright frames of one size out of decoded frames, in the colours of a common screen.
class FrameMaker {
public:
    /// `size` of the upright frame; `video` is borrowed.
    FrameMaker(const AVStream& video, QSize size);
    /// Nothing when the frame has a pixel format that is not known.
    [[nodiscard]] std::optional<RawFrame> videoFrame(const AVFrame& frame);

private:
    QuarterTurn m_turn;
    QSize m_stored; ///< of the frame before it is turned
    FramePainter m_painter;
};

} // namespace clipheave::platform
