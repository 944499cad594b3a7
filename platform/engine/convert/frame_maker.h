// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/convert/frame_painter.h"
#include "platform/media/model/frame_rotation.h"

#include <optional>

namespace clipheave::platform {

/// Makes upright frames of one size out of decoded frames, in the colours of a common screen.
class FrameMaker {
public:
    /// `size` of the upright frame; `video` is borrowed.
    FrameMaker(const AVCodecParameters& video, FrameRotation rotation, QSize size, Scaling scaling);
    /// Returns nothing for a pixel format that is not known.
    [[nodiscard]] std::optional<RawFrame> make(const AVFrame& frame);

private:
    FrameRotation m_rotation;
    QSize m_stored; ///< size of the frame before rotation
    FramePainter m_painter;
};

} // namespace clipheave::platform
