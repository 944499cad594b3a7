// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/plan/frame_format.h"

#include <QByteArrayList>

#include <algorithm>
#include <cmath>
#include <cstdlib>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

namespace clipheave::platform {

namespace {

constexpr int kHighDefinitionHeight = 720; ///< from here BT.709 is meant where nothing is said
constexpr int kInvisibleBar = 2;           ///< bars of that many pixels are rounding
constexpr int kPlainDepth = 8;             ///< bits of a component
constexpr int kDeepDepth = 10;             ///< the most that the encoder takes

bool isRgb(int format) {
    const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(format));
    return descriptor != nullptr &&
           (descriptor->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0;
}

/// Bits of a component, the most that a source has.
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

int evenSide(int side) {
    return std::max(side & ~1, 2);
}

AVRational turned(AVRational aspect, int turn) {
    return turn % 180 != 0 ? AVRational{aspect.den, aspect.num} : aspect;
}

AVChromaLocation mirrored(AVChromaLocation chroma, bool isMirrored) {
    const bool same = chroma == AVCHROMA_LOC_CENTER || chroma == AVCHROMA_LOC_TOP ||
                      chroma == AVCHROMA_LOC_BOTTOM;
    return !isMirrored || same ? chroma : AVCHROMA_LOC_UNSPECIFIED;
}

/// Where the colour samples are after a turn; unspecified where no name is left for it.
AVChromaLocation turned(AVChromaLocation chroma, int turn) {
    if (turn == 0 || chroma == AVCHROMA_LOC_CENTER)
        return chroma;
    if (turn == 90 && chroma == AVCHROMA_LOC_LEFT)
        return AVCHROMA_LOC_TOP;
    if (turn == 90 && chroma == AVCHROMA_LOC_BOTTOMLEFT)
        return AVCHROMA_LOC_TOPLEFT;
    if (turn == 90 && chroma == AVCHROMA_LOC_BOTTOM)
        return AVCHROMA_LOC_LEFT;
    if (turn == 180 && (chroma == AVCHROMA_LOC_TOP || chroma == AVCHROMA_LOC_BOTTOM))
        return chroma == AVCHROMA_LOC_TOP ? AVCHROMA_LOC_BOTTOM : AVCHROMA_LOC_TOP;
    if (turn == 270 && chroma == AVCHROMA_LOC_LEFT)
        return AVCHROMA_LOC_BOTTOM;
    if (turn == 270 && chroma == AVCHROMA_LOC_TOPLEFT)
        return AVCHROMA_LOC_BOTTOMLEFT;
    if (turn == 270 && chroma == AVCHROMA_LOC_TOP)
        return AVCHROMA_LOC_LEFT;
    return AVCHROMA_LOC_UNSPECIFIED;
}

void takeStandardRange(FrameFormat& look) {
    look.matrix = AVCOL_SPC_BT709;
    look.primaries = AVCOL_PRI_BT709;
    look.transfer = AVCOL_TRC_BT709;
    look.chroma = AVCHROMA_LOC_LEFT;
}

/// More than eight bits stay where the quality is to stay. Deliberate: a small video of a bit rate
/// is for any player, and some cannot show H.264 of ten.
void chooseDepth(const ExportVideo& video, const std::vector<PlannedSegment>& segments,
                 FrameFormat& look, Notes& notes) {
    const int depth = depthOf(segments);
    if (depth <= kPlainDepth)
        return;
    const QString bits = QStringLiteral("%1 bits ").arg(depth);
    if (video.bitRate > 0) {
        notes << bits + QStringLiteral("became 8");
        return;
    }
    look.format = AV_PIX_FMT_YUV420P10LE;
    const QString what =
        depth > kDeepDepth ? QStringLiteral("became 10") : QStringLiteral("were kept");
    notes << bits + what + QStringLiteral(" (H.264 with 10 bits)");
}

/// Colours and bit depth.
void chooseColours(const ExportVideo& video, const std::vector<PlannedSegment>& segments,
                   FrameFormat& look, Notes& notes) {
    const AVCodecParameters& first = *segments.front().facts->parameters;
    bool any = false, same = true;
    for (const PlannedSegment& segment : segments) {
        const auto transfer = segment.facts->parameters->color_trc;
        any = any || isHighDynamicRange(transfer);
        same = same && transfer == first.color_trc;
    }
    look.primaries = first.color_primaries;
    look.transfer = first.color_trc;
    look.matrix = isRgb(first.format) ? AVCOL_SPC_BT709 : first.color_space;
    look.chroma =
        turned(mirrored(first.chroma_location, segments.front().mirrored), segments.front().turn);
    if (any && same) {
        // Deliberate: ten bits of H.264, which some players cannot show, rather than colours that
        // cannot be had back.
        look.format = AV_PIX_FMT_YUV420P10LE;
        notes << QStringLiteral("High dynamic range was kept (H.264 with 10 bits)");
        return;
    }
    if (any) {
        takeStandardRange(look);
        notes << QStringLiteral("Pieces of high dynamic range were changed to standard range");
        return;
    }
    if (!isRgb(first.format) && first.color_range == AVCOL_RANGE_JPEG) {
        look.format = AV_PIX_FMT_YUVJ420P;
        look.range = AVCOL_RANGE_JPEG;
    }
    chooseDepth(video, segments, look, notes);
}

struct FittedSize {
    int width, height; ///< of the turned frame in the look's samples
    bool crop;         ///< a line less is all the difference
};

FittedSize fit(const FrameShape& shape, const FrameFormat& look, int turn) {
    const bool quarter = turn % 180 != 0;
    const int width = quarter ? shape.height : shape.width;
    const int height = quarter ? shape.width : shape.height;
    const double sample = av_q2d(turned(shape.aspect, turn)), target = av_q2d(look.aspect);
    const double shownWidth = width * sample;
    const double factor = std::min(look.width * target / shownWidth, 1.0 * look.height / height);
    const auto fitted = [](double side, int whole) {
        const int even = std::clamp(static_cast<int>(std::lround(side / 2)) * 2, 2, whole);
        return whole - even <= kInvisibleBar ? whole : even;
    };
    const FittedSize size{fitted(shownWidth * factor / target, look.width),
                          fitted(height * factor, look.height), false};
    const int less = width - size.width, lower = height - size.height;
    const bool crop = less >= 0 && less <= 1 && lower >= 0 && lower <= 1;
    return {size.width, size.height, crop};
}

const char* rangeName(AVColorRange range) {
    return range == AVCOL_RANGE_JPEG ? "pc" : "tv";
}

/// Names of the scaler for the matrices it knows; what is not told goes by the size.
const char* matrixName(AVColorSpace matrix, int height) {
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
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M:
        return "bt601";
    default:
        return height >= kHighDefinitionHeight ? "bt709" : "bt601";
    }
}

/// The matrix of a frame has to be changed.
bool changesMatrix(const FrameShape& shape, const FrameFormat& look) {
    if (shape.matrix == look.matrix)
        return false;
    return qstrcmp(matrixName(shape.matrix, shape.height), matrixName(look.matrix, look.height)) !=
           0;
}

QByteArray scaleText(int width, int height, const FrameShape& shape, const FrameFormat& look,
                     AVPixelFormat format) {
    QByteArray text = "scale=" + QByteArray::number(width) + ':' + QByteArray::number(height) +
                      ":flags=bicubic:out_range=" + rangeName(look.range);
    if (!isRgb(shape.format))
        text += QByteArray(":in_range=") + rangeName(shape.range);
    if (isRgb(shape.format))
        text += QByteArray(":out_color_matrix=") + matrixName(look.matrix, look.height);
    else if (changesMatrix(shape, look))
        text += QByteArray(":in_color_matrix=") + matrixName(shape.matrix, shape.height) +
                ":out_color_matrix=" + matrixName(look.matrix, look.height);
    if (look.interlaced)
        text += ":interl=1";
    return text + ",format=" + av_get_pix_fmt_name(format);
}

/// From PQ or HLG to BT.709, scaled first: it is costly.
QByteArray toneMapText(int width, int height, const FrameShape& shape) {
    const char* transfer = shape.transfer == AVCOL_TRC_SMPTE2084 ? "smpte2084" : "arib-std-b67";
    return "scale=" + QByteArray::number(width) + ':' + QByteArray::number(height) +
           ":flags=bicubic,format=yuv420p10le,zscale=min=bt2020nc:pin=bt2020:tin=" + transfer +
           ":rin=" + rangeName(shape.range) +
           ":t=linear:npl=100,format=gbrpf32le,zscale=p=bt709,tonemap=hable:desat=0,"
           "zscale=t=bt709:m=bt709:r=tv:d=ordered,format=yuv420p";
}

} // namespace

FrameFormat standardLook(int width, int height) {
    FrameFormat look;
    look.width = evenSide(width);
    look.height = evenSide(height);
    takeStandardRange(look);
    return look;
}

bool isHighDynamicRange(AVColorTransferCharacteristic transfer) {
    return transfer == AVCOL_TRC_SMPTE2084 || transfer == AVCOL_TRC_ARIB_STD_B67;
}

bool FrameShape::operator==(const FrameShape& other) const {
    return width == other.width && height == other.height && format == other.format &&
           av_cmp_q(aspect, other.aspect) == 0 && range == other.range && matrix == other.matrix &&
           transfer == other.transfer && deinterlace == other.deinterlace;
}

FrameFormat lookOf(const ExportVideo& video, const std::vector<PlannedSegment>& segments,
                   Notes& notes) {
    const PlannedSegment& first = segments.front();
    const AVCodecParameters& source = *first.facts->parameters;
    const bool quarter = first.turn % 180 != 0;
    FrameFormat look;
    look.width = evenSide(quarter ? source.height : source.width);
    look.height = evenSide(quarter ? source.width : source.height);
    look.aspect = turned(first.facts->aspect, first.turn);
    if (!video.size.isEmpty()) {
        look.width = video.size.width();
        look.height = video.size.height();
        look.aspect = {1, 1};
    }
    chooseColours(video, segments, look, notes);
    // Fields survive only where nothing but their codec changes; else they are woven to frames.
    const bool untouched = segments.size() == 1 && first.turn == 0 && !first.mirrored &&
                           look.width == source.width && look.height == source.height &&
                           look.height % 4 == 0 && !video.frameDuration;
    const AVFieldOrder order = source.field_order;
    look.interlaced = untouched && order > AV_FIELD_PROGRESSIVE;
    look.topFieldFirst = order == AV_FIELD_TT || order == AV_FIELD_BT;
    return look;
}

QByteArray filtersFor(const FrameShape& shape, const FrameFormat& look, int turn, bool mirrored) {
    QByteArrayList filters;
    if (shape.deinterlace)
        filters << "bwdif=mode=send_frame:deint=interlaced";
    const FittedSize size = fit(shape, look, turn);
    const bool quarter = turn % 180 != 0;
    const QByteArray width = QByteArray::number(quarter ? size.height : size.width);
    const QByteArray height = QByteArray::number(quarter ? size.width : size.height);
    const int keptWidth = size.crop ? shape.width : width.toInt();
    const int keptHeight = size.crop ? shape.height : height.toInt();
    const bool toStandard =
        isHighDynamicRange(shape.transfer) && !isHighDynamicRange(look.transfer);
    const bool resized = keptWidth != shape.width || keptHeight != shape.height;
    const bool recoloured = shape.format != look.format || changesMatrix(shape, look) ||
                            (shape.range == AVCOL_RANGE_JPEG) != (look.range == AVCOL_RANGE_JPEG);
    if (toStandard)
        filters << toneMapText(keptWidth, keptHeight, shape);
    if ((resized && !toStandard) || (recoloured && !toStandard) ||
        (toStandard && look.format != AV_PIX_FMT_YUV420P))
        filters << scaleText(keptWidth, keptHeight, shape, look, look.format);
    if (size.crop && (width.toInt() != shape.width || height.toInt() != shape.height))
        filters << "crop=" + width + ':' + height + ":0:0";
    if (mirrored)
        filters << "hflip";
    if (turn == 90 || turn == 270)
        filters << (turn == 90 ? "transpose=clock" : "transpose=cclock");
    if (turn == 180)
        filters << "hflip,vflip";
    filters << QByteArray("format=") + av_get_pix_fmt_name(look.format);
    return filters.join(',');
}

Frame blackFrame(const FrameFormat& look) {
    Frame frame(av_frame_alloc());
    if (!frame)
        return frame;
    frame->width = look.width;
    frame->height = look.height;
    frame->format = look.format;
    if (av_frame_get_buffer(frame.get(), 0) < 0)
        return nullptr;
    std::ptrdiff_t strides[4] = {};
    for (int i = 0; i < 4; ++i)
        strides[i] = frame->linesize[i];
    if (av_image_fill_black(frame->data, strides, look.format, look.range, look.width,
                            look.height) < 0)
        return nullptr;
    frame->sample_aspect_ratio = look.aspect;
    return frame;
}

Frame centredOnBlack(const AVFrame& videoFrame, const FrameFormat& look) {
    Frame whole = blackFrame(look);
    const AVPixFmtDescriptor* format = av_pix_fmt_desc_get(look.format);
    if (!whole || format == nullptr || videoFrame.format != look.format ||
        videoFrame.width > look.width || videoFrame.height > look.height ||
        av_frame_copy_props(whole.get(), &videoFrame) < 0)
        return nullptr;
    const int left = (look.width - videoFrame.width) / 4 * 2; // even, as colours are halved
    const int top = (look.height - videoFrame.height) / 4 * 2;
    std::uint8_t* to[4] = {};
    const std::uint8_t* from[4] = {};
    for (int i = 0; i < format->nb_components; ++i) {
        const auto& part = format->comp[i];
        const bool colour = i > 0;
        to[part.plane] = whole->data[part.plane] +
                         std::ptrdiff_t{top >> (colour ? format->log2_chroma_h : 0)} *
                             whole->linesize[part.plane] +
                         std::ptrdiff_t{left >> (colour ? format->log2_chroma_w : 0)} * part.step;
        from[part.plane] = videoFrame.data[part.plane];
    }
    av_image_copy(to, whole->linesize, from, videoFrame.linesize, look.format, videoFrame.width,
                  videoFrame.height);
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
