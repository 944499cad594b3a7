// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/convert/colours.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace clipheave::platform {

namespace {

constexpr int kHighDefinitionWidth = 1280; ///< from here on
constexpr int kStandardHeight = 576;       ///< up to here, of PAL

} // namespace

AVColorSpace matrixFor(AVColorSpace tagged, AVColorPrimaries primaries,
                       AVColorTransferCharacteristic transfer, int width, int height) {
    if (tagged != AVCOL_SPC_UNSPECIFIED && tagged != AVCOL_SPC_RGB)
        return tagged;
    if (isHdr(transfer) || primaries == AVCOL_PRI_BT2020)
        return AVCOL_SPC_BT2020_NCL;
    const bool isHd = width >= kHighDefinitionWidth || height > kStandardHeight;
    return isHd ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
}

Colours coloursOf(const AVFrame& frame, const AVCodecParameters* stream) {
    AVColorSpace matrix = frame.colorspace;
    Colours colours;
    colours.primaries = frame.color_primaries;
    colours.transfer = frame.color_trc;
    colours.isFullRange = frame.color_range == AVCOL_RANGE_JPEG;
    if (stream != nullptr) {
        if (matrix == AVCOL_SPC_UNSPECIFIED)
            matrix = stream->color_space;
        if (colours.primaries == AVCOL_PRI_UNSPECIFIED)
            colours.primaries = stream->color_primaries;
        if (colours.transfer == AVCOL_TRC_UNSPECIFIED)
            colours.transfer = stream->color_trc;
    }
    colours.matrix =
        matrixFor(matrix, colours.primaries, colours.transfer, frame.width, frame.height);
    return colours;
}

bool isHdr(AVColorTransferCharacteristic transfer) {
    return transfer == AVCOL_TRC_SMPTE2084 || transfer == AVCOL_TRC_ARIB_STD_B67;
}

bool isRgb(int pixelFormat) {
    const AVPixFmtDescriptor* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(pixelFormat));
    return format != nullptr && (format->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0;
}

} // namespace clipheave::platform
