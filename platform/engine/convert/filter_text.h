// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/convert/frame_format.h"
#include "platform/engine/plan/orientation.h"

#include <QByteArray>
#include <QSize>

namespace clipheave::platform {

/// A frame as it comes from a decoder.
struct DecodedFormat {
    int width = 0, height = 0;
    int pixels = -1;         ///< AVPixelFormat
    AVRational aspect{1, 1}; ///< of a sample
    Colours colours;
    bool deinterlace = false;

    [[nodiscard]] bool operator==(const DecodedFormat& other) const;
};

/// Returns the filters, as libavfilter reads them, that make frames of `output` of those of
/// `input`: drawn in `orientation` and fitted into the size. Frames that fill only a part of it
/// stay smaller. Of SDR only: HDR is tone-mapped before.
[[nodiscard]] QByteArray filtersFor(const DecodedFormat& input, const FrameFormat& output,
                                    Orientation orientation);

/// Returns the size of the stored frame once it is fitted into the output.
[[nodiscard]] QSize fittedSize(const DecodedFormat& input, const FrameFormat& output,
                               Orientation orientation);
/// Returns the aspect of a sample that a stored frame of that size has.
[[nodiscard]] AVRational storedAspect(const FrameFormat& output, Orientation orientation);
/// Returns the colours of frames that were painted for a common screen.
[[nodiscard]] Colours sdrColours();

} // namespace clipheave::platform
