// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/plan/export_plan_reader.h"

namespace clipheave::platform {

/// What every frame of an encoded video looks like.
struct FrameFormat {
    int width = 0, height = 0;                 ///< even
    AVRational aspect{1, 1};                   ///< of a sample
    AVPixelFormat format = AV_PIX_FMT_YUV420P; ///< 4:2:0; yuvj420p for 8 bits of full range
    AVColorRange range = AVCOL_RANGE_MPEG;
    AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
    AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
    AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
    AVChromaLocation chroma = AVCHROMA_LOC_UNSPECIFIED;
    bool interlaced = false, topFieldFirst = false;
};

/// A frame as it comes from a decoder.
struct FrameShape {
    int width = 0, height = 0;
    int format = -1;
    AVRational aspect{1, 1};
    AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
    AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
    AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
    bool deinterlace = false;

    [[nodiscard]] bool operator==(const FrameShape& other) const;
};

/// The look of a plan's video: that of its first source so far as the plan does not say otherwise.
/// A video of high dynamic range stays one (10 bits, its transfer and primaries) unless pieces of
/// both kinds meet, then all are shown in standard range. More than 8 bits of standard range become
/// 10 in a video of constant quality, 8 in one of a bit rate. `notes` tells any of these.
[[nodiscard]] FrameFormat lookOf(const ExportVideo& video,
                                 const std::vector<PlannedSegment>& segments, Notes& notes);

/// Eight bits and BT.709; sides that are odd lose a line.
[[nodiscard]] FrameFormat standardLook(int width, int height);

[[nodiscard]] bool isHighDynamicRange(AVColorTransferCharacteristic transfer);

/// The filters, as libavfilter reads them, that make `look` of frames of `shape`, turned
/// clockwise by `turn` degrees, `mirrored` left to right before, fitted into the size.
[[nodiscard]] QByteArray filtersFor(const FrameShape& shape, const FrameFormat& look, int turn,
                                    bool mirrored);

/// Null without memory.
[[nodiscard]] Frame blackFrame(const FrameFormat& look);

/// A filtered frame that is smaller than the look, with black around it; null without memory. The
/// library's own filter for it knows no black of full range in ten bits.
[[nodiscard]] Frame centredOnBlack(const AVFrame& videoFrame, const FrameFormat& look);

/// Marks a frame of full range by its format, as the filters want it.
void normalizeRange(AVFrame& frame);

} // namespace clipheave::platform
