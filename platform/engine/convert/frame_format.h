// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/convert/colours.h"

namespace clipheave::platform {

/// What every frame of an encoded video is like. Colours without a tag stay without one.
struct FrameFormat {
    int width = 0, height = 0;                 ///< even
    AVRational aspect{1, 1};                   ///< of a sample
    AVPixelFormat pixels = AV_PIX_FMT_YUV420P; ///< 4:2:0; yuvj420p for 8 bits of full range
    AVColorRange range = AVCOL_RANGE_MPEG;
    AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
    AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
    AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
    AVChromaLocation chroma = AVCHROMA_LOC_UNSPECIFIED;
    bool interlaced = false, topFieldFirst = false;

    /// Makes it SDR: BT.709, chroma sited at the left.
    void setSdr();
};

/// Returns the nearest even side, at least 2: an odd one loses a line.
[[nodiscard]] int evenSide(int side);

/// Returns the format of 8 bits and BT.709 for frames of a size.
[[nodiscard]] FrameFormat standardFormat(int width, int height);

/// Returns a black frame; null without memory.
[[nodiscard]] Frame blackFrame(const FrameFormat& output);

/// Returns a filtered frame that is smaller than the output with black around it; null without
/// memory. The library's own filter for it knows no black of full range in ten bits.
[[nodiscard]] Frame centredOnBlack(const AVFrame& frame, const FrameFormat& output);

/// Marks a frame of full range by its pixel format, as the filters need it.
void normalizeRange(AVFrame& frame);

} // namespace clipheave::platform
