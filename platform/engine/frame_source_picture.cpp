// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/frame_source_picture.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <array>
#include <cstring>

namespace clipheave::platform {

namespace {

/// The scaler writes whole vectors.
constexpr int kRowAlignment = 64;

/// Matrix of the colour differences; films that do not tell follow the custom of their size.
int colourSpaceOf(const AVFrame& frame, const AVCodecParameters& film, bool isWide) {
    constexpr int kHighDefinitionWidth = 1280, kStandardHeight = 576;
    int space = frame.colorspace;
    if (space == AVCOL_SPC_UNSPECIFIED)
        space = film.color_space;
    if (space != AVCOL_SPC_UNSPECIFIED && space != AVCOL_SPC_RGB)
        return space;
    if (isWide)
        return SWS_CS_BT2020;
    return frame.width >= kHighDefinitionWidth || frame.height > kStandardHeight ? SWS_CS_ITU709
                                                                                 : SWS_CS_ITU601;
}

void makeOpaquePicture(RawPicture& picture) {
    auto* pixel = reinterpret_cast<std::uint32_t*>(picture.rgb32.data());
    for (qsizetype i = 0; i < picture.rgb32.size() / 4; ++i)
        pixel[i] |= 0xFF000000u;
}

} // namespace

AVStream* filmStream(AVFormatContext& context) {
    for (unsigned i = 0; i < context.nb_streams; ++i) {
        AVStream& stream = *context.streams[i];
        if (stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO &&
            (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) == 0)
            return &stream;
    }
    return nullptr;
}

QuarterTurn quarterTurnOf(const AVStream& stream) {
    std::size_t size = 0;
    const std::uint8_t* bytes = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size);
    std::array<std::int32_t, 9> fixed{};
    if (bytes == nullptr || size < sizeof fixed)
        return {};
    std::memcpy(fixed.data(), bytes, sizeof fixed);
    std::array<double, 9> matrix{};
    std::copy(fixed.begin(), fixed.end(), matrix.begin());
    return nearestQuarterTurn(matrix);
}

PictureMaker::PictureMaker(const AVStream& film, QSize size)
    : m_film(film), m_turn(quarterTurnOf(film)),
      m_stored(m_turn.swapsSides() ? size.transposed() : size) {
}

bool PictureMaker::prepare(const AVFrame& frame) {
    const ToneKind tones = toneKindOf(frame, *m_film.codecpar);
    const bool isWide = tones.needsMapping();
    if (isWide && (!m_tones || m_tones->kind() != tones))
        m_tones.emplace(tones);
    const int fullRange = frame.color_range == AVCOL_RANGE_JPEG ? 1 : 0;
    const Kind kind{frame.width,  frame.height,
                    frame.format, colourSpaceOf(frame, *m_film.codecpar, isWide),
                    fullRange,    isWide};
    if (m_scaler != nullptr && kind == m_kind)
        return true;
    m_kind = kind;
    m_scaler.reset(sws_getContext(frame.width, frame.height,
                                  static_cast<AVPixelFormat>(frame.format), m_stored.width(),
                                  m_stored.height(), isWide ? AV_PIX_FMT_RGB48 : AV_PIX_FMT_RGB32,
                                  SWS_BICUBIC | SWS_ACCURATE_RND, nullptr, nullptr, nullptr));
    if (m_scaler == nullptr)
        return false;
    sws_setColorspaceDetails(m_scaler.get(), sws_getCoefficients(kind.space), fullRange,
                             sws_getCoefficients(SWS_CS_DEFAULT), 1, 0, 1 << 16, 1 << 16);
    return true;
}

bool PictureMaker::convert(const AVFrame& frame, RawPicture& picture) {
    picture.width = m_stored.width();
    picture.height = m_stored.height();
    const qsizetype row = qsizetype{picture.width} * 4;
    const int pixelBytes = m_kind.isWide ? 6 : 4;
    const int stride =
        (picture.width * pixelBytes + kRowAlignment - 1) / kRowAlignment * kRowAlignment;
    QByteArray padded(qsizetype{stride} * picture.height + kRowAlignment, Qt::Uninitialized);
    std::array<std::uint8_t*, 4> planes{reinterpret_cast<std::uint8_t*>(padded.data())};
    const std::array<int, 4> strides{stride};
    if (sws_scale(m_scaler.get(), frame.data, frame.linesize, 0, frame.height, planes.data(),
                  strides.data()) <= 0)
        return false;
    if (!m_kind.isWide && row == stride) {
        padded.resize(row * picture.height);
        picture.rgb32 = std::move(padded);
        return true;
    }
    picture.rgb32 = QByteArray(row * picture.height, Qt::Uninitialized);
    for (int y = 0; y < picture.height; ++y) {
        char* to = picture.rgb32.data() + row * y;
        const char* from = padded.constData() + qsizetype{stride} * y;
        if (m_kind.isWide)
            m_tones->map(reinterpret_cast<const std::uint16_t*>(from),
                         reinterpret_cast<std::uint32_t*>(to), picture.width);
        else
            std::memcpy(to, from, static_cast<std::size_t>(row));
    }
    return true;
}

std::optional<RawPicture> PictureMaker::picture(const AVFrame& frame) {
    RawPicture picture;
    if (!prepare(frame) || !convert(frame, picture))
        return std::nullopt;
    const AVPixFmtDescriptor* format =
        av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    if (format == nullptr || (format->flags & (AV_PIX_FMT_FLAG_ALPHA | AV_PIX_FMT_FLAG_PAL)) != 0)
        makeOpaquePicture(picture);
    return turnedPicture(picture, m_turn);
}

} // namespace clipheave::platform
