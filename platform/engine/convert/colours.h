// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/ffmpeg.h"

namespace clipheave::platform {

/// What the values of a frame mean. Everything that shows, converts or encodes frames asks here, so
/// that one video has the same colours everywhere.
struct Colours {
    AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED; ///< never unspecified for a frame
    AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
    AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
    bool isFullRange = false;
    bool operator==(const Colours&) const = default;
};

/// Returns the colours of a decoded frame: its own tags, else those of its stream (null: none),
/// else what its size suggests. Primaries and transfer stay unspecified without a tag.
[[nodiscard]] Colours coloursOf(const AVFrame& frame, const AVCodecParameters* stream);

/// Returns `tagged`, or for an untagged YCbCr frame BT.2020 where transfer or primaries are those
/// of HDR, else BT.709 from 1280 pixels of width or 577 of height on, else BT.601. That is the rule
/// of mpv (mp_csp_guess_colorspace) and libplacebo (pl_color_system_guess_ycbcr), hence of the
/// player; the scaler of FFmpeg would take BT.601 for any size.
[[nodiscard]] AVColorSpace matrixFor(AVColorSpace tagged, AVColorPrimaries primaries,
                                     AVColorTransferCharacteristic transfer, int width, int height);

/// Returns whether the transfer is PQ or HLG (ITU-R BT.2100).
[[nodiscard]] bool isHdr(AVColorTransferCharacteristic transfer);
/// Returns whether the pixel format holds RGB; it has no matrix then.
[[nodiscard]] bool isRgb(int pixelFormat);

} // namespace clipheave::platform
