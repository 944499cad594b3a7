// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/convert/frame_painter.h"
#include "platform/engine/io/ffmpeg.h"
#include "platform/media/model/picture_turn.h"

#include <optional>

namespace clipheave::platform {

/// The first film that is no attached picture; null when there is none.
[[nodiscard]] AVStream* filmStream(AVFormatContext& context);
/// The nearest quarter to the stream's display matrix.
[[nodiscard]] QuarterTurn quarterTurnOf(const AVStream& stream);

/// Makes upright pictures of one size out of decoded frames, in the colours of a common screen.
class PictureMaker {
public:
    /// `size` of the upright picture; `film` is borrowed.
    PictureMaker(const AVStream& film, QSize size);
    /// Nothing when the frame has a pixel format that is not known.
    [[nodiscard]] std::optional<RawPicture> picture(const AVFrame& frame);

private:
    QuarterTurn m_turn;
    QSize m_stored; ///< of the picture before it is turned
    PicturePainter m_painter;
};

} // namespace clipheave::platform
