// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/convert/frame_format.h"

#include <algorithm>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

namespace clipheave::platform {

void FrameFormat::setSdr() {
    matrix = AVCOL_SPC_BT709;
    primaries = AVCOL_PRI_BT709;
    transfer = AVCOL_TRC_BT709;
    chroma = AVCHROMA_LOC_LEFT;
}

int evenSide(int side) {
    return std::max(side & ~1, 2);
}

FrameFormat standardFormat(int width, int height) {
    FrameFormat format;
    format.width = evenSide(width);
    format.height = evenSide(height);
    format.setSdr();
    return format;
}

Frame blackFrame(const FrameFormat& output) {
    Frame frame(av_frame_alloc());
    if (!frame)
        return frame;
    frame->width = output.width;
    frame->height = output.height;
    frame->format = output.pixels;
    if (av_frame_get_buffer(frame.get(), 0) < 0)
        return nullptr;
    std::ptrdiff_t strides[4] = {};
    for (int i = 0; i < 4; ++i)
        strides[i] = frame->linesize[i];
    if (av_image_fill_black(frame->data, strides, output.pixels, output.range, output.width,
                            output.height) < 0)
        return nullptr;
    frame->sample_aspect_ratio = output.aspect;
    return frame;
}

Frame centredOnBlack(const AVFrame& frame, const FrameFormat& output) {
    Frame whole = blackFrame(output);
    const AVPixFmtDescriptor* format = av_pix_fmt_desc_get(output.pixels);
    if (!whole || format == nullptr || frame.format != output.pixels ||
        frame.width > output.width || frame.height > output.height ||
        av_frame_copy_props(whole.get(), &frame) < 0)
        return nullptr;
    const int left = (output.width - frame.width) / 4 * 2; // even, as colours are halved
    const int top = (output.height - frame.height) / 4 * 2;
    std::uint8_t* to[4] = {};
    const std::uint8_t* from[4] = {};
    for (int i = 0; i < format->nb_components; ++i) {
        const auto& part = format->comp[i];
        const bool colour = i > 0;
        to[part.plane] = whole->data[part.plane] +
                         std::ptrdiff_t{top >> (colour ? format->log2_chroma_h : 0)} *
                             whole->linesize[part.plane] +
                         std::ptrdiff_t{left >> (colour ? format->log2_chroma_w : 0)} * part.step;
        from[part.plane] = frame.data[part.plane];
    }
    av_image_copy(to, whole->linesize, from, frame.linesize, output.pixels, frame.width,
                  frame.height);
    return whole;
}

void normalizeRange(AVFrame& frame) {
    const struct {
        AVPixelFormat full, plain;
    } pairs[] = {{AV_PIX_FMT_YUVJ420P, AV_PIX_FMT_YUV420P},
                 {AV_PIX_FMT_YUVJ422P, AV_PIX_FMT_YUV422P},
                 {AV_PIX_FMT_YUVJ444P, AV_PIX_FMT_YUV444P},
                 {AV_PIX_FMT_YUVJ440P, AV_PIX_FMT_YUV440P}};
    for (const auto& [full, plain] : pairs) {
        if (frame.format == plain && frame.color_range == AVCOL_RANGE_JPEG)
            frame.format = full;
        else if (frame.format == full)
            frame.color_range = AVCOL_RANGE_JPEG;
    }
}

} // namespace clipheave::platform
