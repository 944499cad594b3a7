// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/convert/output_format.h"

#include "platform/engine/messages.h"

#include <algorithm>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace clipheave::platform {

namespace {

constexpr int kPlainDepth = 8; ///< bits of a component
constexpr int kDeepDepth = 10; ///< the most that the encoder takes

/// Returns the bits of a component, the most that a source has.
int depthOf(const std::vector<PlannedSegment>& segments) {
    int depth = kPlainDepth;
    for (const PlannedSegment& segment : segments) {
        const auto format = static_cast<AVPixelFormat>(segment.facts->parameters->format);
        const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
        for (int i = 0; descriptor != nullptr && i < descriptor->nb_components; ++i)
            depth = std::max(depth, descriptor->comp[i].depth);
    }
    return depth;
}

AVChromaLocation mirrored(AVChromaLocation chroma, bool isMirrored) {
    const bool same = chroma == AVCHROMA_LOC_CENTER || chroma == AVCHROMA_LOC_TOP ||
                      chroma == AVCHROMA_LOC_BOTTOM;
    return !isMirrored || same ? chroma : AVCHROMA_LOC_UNSPECIFIED;
}

/// Returns the chroma location after a rotation by `degrees`; unspecified where none has a name.
AVChromaLocation rotated(AVChromaLocation chroma, int degrees) {
    if (degrees == 0 || chroma == AVCHROMA_LOC_CENTER)
        return chroma;
    if (degrees == 90 && chroma == AVCHROMA_LOC_LEFT)
        return AVCHROMA_LOC_TOP;
    if (degrees == 90 && chroma == AVCHROMA_LOC_BOTTOMLEFT)
        return AVCHROMA_LOC_TOPLEFT;
    if (degrees == 90 && chroma == AVCHROMA_LOC_BOTTOM)
        return AVCHROMA_LOC_LEFT;
    if (degrees == 180 && (chroma == AVCHROMA_LOC_TOP || chroma == AVCHROMA_LOC_BOTTOM))
        return chroma == AVCHROMA_LOC_TOP ? AVCHROMA_LOC_BOTTOM : AVCHROMA_LOC_TOP;
    if (degrees == 270 && chroma == AVCHROMA_LOC_LEFT)
        return AVCHROMA_LOC_BOTTOM;
    if (degrees == 270 && chroma == AVCHROMA_LOC_TOPLEFT)
        return AVCHROMA_LOC_BOTTOMLEFT;
    if (degrees == 270 && chroma == AVCHROMA_LOC_TOP)
        return AVCHROMA_LOC_LEFT;
    return AVCHROMA_LOC_UNSPECIFIED;
}

/// More than eight bits are kept at constant quality. Deliberate: a video of a given bit rate is to
/// play everywhere, and some players cannot show 10-bit H.264.
void chooseDepth(const ExportVideo& video, const std::vector<PlannedSegment>& segments,
                 FrameFormat& output, Notes& notes) {
    const int depth = depthOf(segments);
    if (depth <= kPlainDepth)
        return;
    const QStringList bits{QString::number(depth)};
    if (video.bitRate > 0) {
        notes << Message(kBitDepthBecame8, bits);
        return;
    }
    output.pixels = AV_PIX_FMT_YUV420P10LE;
    notes << Message(depth > kDeepDepth ? kBitDepthBecame10 : kBitDepthKept, bits);
}

AVColorSpace matrixAt(const AVCodecParameters& source, int width, int height) {
    return matrixFor(source.color_space, source.color_primaries, source.color_trc, width, height);
}

/// Tags an untagged source with its matrix, where players would assume another at the size of the
/// output.
void keepMatrix(const AVCodecParameters& source, FrameFormat& output) {
    const AVColorSpace meant = matrixAt(source, source.width, source.height);
    output.matrix = source.color_space;
    if (meant != matrixAt(source, output.width, output.height))
        output.matrix = meant;
}

void takeTags(const PlannedSegment& segment, FrameFormat& output) {
    const AVCodecParameters& source = *segment.facts->parameters;
    output.primaries = source.color_primaries;
    output.transfer = source.color_trc;
    output.chroma = rotated(mirrored(source.chroma_location, segment.orientation.mirrored),
                            segment.orientation.degrees);
    if (isRgb(source.format))
        output.matrix = AVCOL_SPC_BT709;
    else
        keepMatrix(source, output);
}

/// Chooses colours and bit depth.
void chooseColours(const ExportVideo& video, const std::vector<PlannedSegment>& segments,
                   FrameFormat& output, Notes& notes) {
    const AVCodecParameters& first = *segments.front().facts->parameters;
    bool any = false, same = true;
    for (const PlannedSegment& segment : segments) {
        const auto transfer = segment.facts->parameters->color_trc;
        any = any || isHdr(transfer);
        same = same && transfer == first.color_trc;
    }
    takeTags(segments.front(), output);
    if (any && same) {
        // Deliberate: H.264 with ten bits, which some players cannot show, rather than colours that
        // cannot be restored.
        output.pixels = AV_PIX_FMT_YUV420P10LE;
        notes << kHdrKept;
        return;
    }
    if (any) {
        output.setSdr();
        notes << kHdrBecameSdr;
        return;
    }
    if (!isRgb(first.format) && first.color_range == AVCOL_RANGE_JPEG) {
        output.pixels = AV_PIX_FMT_YUVJ420P;
        output.range = AVCOL_RANGE_JPEG;
    }
    chooseDepth(video, segments, output, notes);
}

void chooseSize(const ExportVideo& video, const PlannedSegment& first, FrameFormat& output) {
    const AVCodecParameters& source = *first.facts->parameters;
    const bool swaps = first.orientation.swapsSides();
    output.width = evenSide(swaps ? source.height : source.width);
    output.height = evenSide(swaps ? source.width : source.height);
    output.aspect = swaps ? av_inv_q(first.facts->aspect) : first.facts->aspect;
    if (!video.size.isEmpty()) {
        output.width = video.size.width();
        output.height = video.size.height();
        output.aspect = {1, 1};
    }
}

} // namespace

FrameFormat outputFormat(const ExportVideo& video, const std::vector<PlannedSegment>& segments,
                         Notes& notes) {
    const PlannedSegment& first = segments.front();
    const AVCodecParameters& source = *first.facts->parameters;
    FrameFormat output;
    chooseSize(video, first, output);
    chooseColours(video, segments, output, notes);
    // Fields survive only where nothing but their codec changes; else they are woven into frames.
    const bool untouched = segments.size() == 1 && first.orientation.isIdentity() &&
                           output.width == source.width && output.height == source.height &&
                           output.height % 4 == 0 && !video.frameDuration;
    const AVFieldOrder order = source.field_order;
    output.interlaced = untouched && order > AV_FIELD_PROGRESSIVE;
    output.topFieldFirst = order == AV_FIELD_TT || order == AV_FIELD_BT;
    return output;
}

} // namespace clipheave::platform
