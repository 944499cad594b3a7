// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/convert/filter_text.h"

#include <QByteArrayList>

#include <algorithm>
#include <cmath>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace clipheave::platform {

namespace {

constexpr int kInvisibleBar = 2; ///< bars of up to this many pixels are rounding

struct FittedFrame {
    int width, height; ///< of the rotated frame in the output's samples
    bool crop;         ///< only a line of pixels is cut off
};

AVRational rotatedAspect(AVRational aspect, Orientation orientation) {
    return orientation.swapsSides() ? av_inv_q(aspect) : aspect;
}

FittedFrame fit(const DecodedFormat& input, const FrameFormat& output, Orientation orientation) {
    const bool swaps = orientation.swapsSides();
    const int width = swaps ? input.height : input.width;
    const int height = swaps ? input.width : input.height;
    const double sample = av_q2d(rotatedAspect(input.aspect, orientation));
    const double target = av_q2d(output.aspect);
    const double shownWidth = width * sample;
    const double factor =
        std::min(output.width * target / shownWidth, 1.0 * output.height / height);
    const auto fitted = [](double side, int whole) {
        const int even = std::clamp(static_cast<int>(std::lround(side / 2)) * 2, 2, whole);
        return whole - even <= kInvisibleBar ? whole : even;
    };
    const FittedFrame size{fitted(shownWidth * factor / target, output.width),
                           fitted(height * factor, output.height), false};
    const int less = width - size.width, lower = height - size.height;
    const bool crop = less >= 0 && less <= 1 && lower >= 0 && lower <= 1;
    return {size.width, size.height, crop};
}

const char* rangeName(bool isFull) {
    return isFull ? "pc" : "tv";
}

/// Returns the scaler's name of a matrix; those that it does not know read as BT.601.
const char* matrixName(AVColorSpace matrix) {
    switch (matrix) {
    case AVCOL_SPC_BT709:
        return "bt709";
    case AVCOL_SPC_FCC:
        return "fcc";
    case AVCOL_SPC_SMPTE240M:
        return "smpte240m";
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL:
        return "bt2020";
    default:
        return "bt601";
    }
}

const char* matrixName(const FrameFormat& output) {
    return matrixName(
        matrixFor(output.matrix, output.primaries, output.transfer, output.width, output.height));
}

bool changesMatrix(const DecodedFormat& input, const FrameFormat& output) {
    return qstrcmp(matrixName(input.colours.matrix), matrixName(output)) != 0;
}

bool isFullRange(const FrameFormat& output) {
    return output.range == AVCOL_RANGE_JPEG;
}

QByteArray scaleText(QSize size, const DecodedFormat& input, const FrameFormat& output) {
    QByteArray text = "scale=" + QByteArray::number(size.width()) + ':' +
                      QByteArray::number(size.height()) +
                      ":flags=bicubic:out_range=" + rangeName(isFullRange(output));
    if (isRgb(input.pixels))
        text += QByteArray(":out_color_matrix=") + matrixName(output);
    else
        text += QByteArray(":in_range=") + rangeName(input.colours.isFullRange);
    if (!isRgb(input.pixels) && changesMatrix(input, output))
        text += QByteArray(":in_color_matrix=") + matrixName(input.colours.matrix) +
                ":out_color_matrix=" + matrixName(output);
    if (output.interlaced)
        text += ":interl=1";
    return text + ",format=" + av_get_pix_fmt_name(output.pixels);
}

void addOrientation(Orientation orientation, QByteArrayList& filters) {
    if (orientation.mirrored)
        filters << "hflip";
    if (orientation.degrees == 90)
        filters << "transpose=clock";
    if (orientation.degrees == 180)
        filters << "hflip,vflip";
    if (orientation.degrees == 270)
        filters << "transpose=cclock";
}

} // namespace

bool DecodedFormat::operator==(const DecodedFormat& other) const {
    return width == other.width && height == other.height && pixels == other.pixels &&
           av_cmp_q(aspect, other.aspect) == 0 && colours == other.colours &&
           deinterlace == other.deinterlace;
}

Colours sdrColours() {
    return {AVCOL_SPC_BT709, AVCOL_PRI_BT709, AVCOL_TRC_BT709, true};
}

AVRational storedAspect(const FrameFormat& output, Orientation orientation) {
    return rotatedAspect(output.aspect, orientation);
}

QSize fittedSize(const DecodedFormat& input, const FrameFormat& output, Orientation orientation) {
    const FittedFrame fitted = fit(input, output, orientation);
    if (fitted.crop)
        return {input.width, input.height};
    const QSize size(fitted.width, fitted.height);
    return orientation.swapsSides() ? size.transposed() : size;
}

QByteArray filtersFor(const DecodedFormat& input, const FrameFormat& output,
                      Orientation orientation) {
    QByteArrayList filters;
    if (input.deinterlace)
        filters << "bwdif=mode=send_frame:deint=interlaced";
    const FittedFrame fitted = fit(input, output, orientation);
    const QSize stored(input.width, input.height);
    const QSize kept = fittedSize(input, output, orientation);
    const bool recoloured = input.pixels != output.pixels || changesMatrix(input, output) ||
                            input.colours.isFullRange != isFullRange(output);
    if (kept != stored || recoloured)
        filters << scaleText(kept, input, output);
    const QSize upright(fitted.width, fitted.height);
    const QSize cropped = orientation.swapsSides() ? upright.transposed() : upright;
    if (fitted.crop && cropped != stored)
        filters << "crop=" + QByteArray::number(cropped.width()) + ':' +
                       QByteArray::number(cropped.height()) + ":0:0";
    addOrientation(orientation, filters);
    filters << QByteArray("format=") + av_get_pix_fmt_name(output.pixels);
    return filters.join(',');
}

} // namespace clipheave::platform
