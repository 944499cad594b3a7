// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/convert/frame_painter.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace clipheave::platform {

namespace {

constexpr int kWidePixelBytes = 6;

int scalerFlags(Scaling scaling) {
    switch (scaling) {
    case Scaling::Fine:
        return SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT;
    case Scaling::Reversible:
        return SWS_BICUBIC | SWS_ACCURATE_RND;
    case Scaling::Fast:
        break;
    }
    return SWS_AREA;
}

Scaler newScaler(const AVFrame& frame, QSize size, AVPixelFormat format, int threads,
                 Scaling scaling) {
    Scaler scaler(sws_alloc_context());
    if (scaler == nullptr)
        return scaler;
    const struct {
        const char* name;
        int value;
    } options[] = {{"srcw", frame.width},
                   {"srch", frame.height},
                   {"src_format", frame.format},
                   {"dstw", size.width()},
                   {"dsth", size.height()},
                   {"dst_format", format},
                   {"sws_flags", scalerFlags(scaling)},
                   {"threads", threads}};
    for (const auto& [name, value] : options)
        if (av_opt_set_int(scaler.get(), name, value, 0) < 0)
            return nullptr;
    if (sws_init_context(scaler.get(), nullptr, nullptr) < 0)
        return nullptr;
    return scaler;
}

} // namespace

FramePainter::FramePainter(const AVCodecParameters* stream, QSize size, int threads,
                           Scaling scaling)
    : m_stream(stream), m_size(size), m_threads(threads), m_scaling(scaling) {
}

bool FramePainter::prepare(const AVFrame& frame) {
    const Colours colours = coloursOf(frame, m_stream);
    const ToneKind tones = toneKindOf(frame, colours);
    const bool isWide = tones.needsMapping();
    if (isWide && (!m_tones || m_tones->kind() != tones))
        m_tones.emplace(tones);
    const Kind kind{frame.width, frame.height, frame.format, colours, isWide};
    if (m_scaler != nullptr && kind == m_kind)
        return true;
    m_kind = kind;
    m_scaler = newScaler(frame, m_size, isWide ? AV_PIX_FMT_RGB48 : AV_PIX_FMT_RGB32, m_threads,
                         m_scaling);
    if (m_scaler == nullptr)
        return false;
    sws_setColorspaceDetails(m_scaler.get(), sws_getCoefficients(colours.matrix),
                             colours.isFullRange ? 1 : 0, sws_getCoefficients(SWS_CS_DEFAULT), 1, 0,
                             1 << 16, 1 << 16);
    return true;
}

bool FramePainter::scale(const AVFrame& frame, std::uint8_t* to, int stride) {
    const auto keep = [](void*, std::uint8_t*) {};
    const std::size_t bytes =
        static_cast<std::size_t>(stride) * static_cast<std::size_t>(m_size.height());
    const Frame target(av_frame_alloc());
    if (target == nullptr)
        return false;
    // The scaler uses several threads only for frames with reference-counted memory.
    target->buf[0] = av_buffer_create(to, bytes, keep, nullptr, 0);
    target->data[0] = to;
    target->linesize[0] = stride;
    target->width = m_size.width();
    target->height = m_size.height();
    target->format = m_kind.isWide ? AV_PIX_FMT_RGB48 : AV_PIX_FMT_RGB32;
    return target->buf[0] != nullptr && sws_scale_frame(m_scaler.get(), target.get(), &frame) >= 0;
}

bool FramePainter::paintWide(const AVFrame& frame, std::uint8_t* to, int stride) {
    const int wideStride =
        (m_size.width() * kWidePixelBytes + kRowAlignment - 1) / kRowAlignment * kRowAlignment;
    m_wide.resize(static_cast<std::size_t>(wideStride) * static_cast<std::size_t>(m_size.height()) +
                  kRowAlignment);
    if (!scale(frame, m_wide.data(), wideStride))
        return false;
    for (int y = 0; y < m_size.height(); ++y)
        m_tones->map(
            reinterpret_cast<const std::uint16_t*>(m_wide.data() + std::ptrdiff_t{wideStride} * y),
            reinterpret_cast<std::uint32_t*>(to + std::ptrdiff_t{stride} * y), m_size.width());
    return true;
}

void FramePainter::makeOpaque(std::uint8_t* to, int stride) const {
    for (int y = 0; y < m_size.height(); ++y) {
        auto* pixel = reinterpret_cast<std::uint32_t*>(to + std::ptrdiff_t{stride} * y);
        for (int x = 0; x < m_size.width(); ++x)
            pixel[x] |= 0xFF000000u;
    }
}

bool FramePainter::paint(const AVFrame& frame, std::uint8_t* to, int stride) {
    if (!prepare(frame))
        return false;
    if (m_kind.isWide)
        return paintWide(frame, to, stride);
    if (!scale(frame, to, stride))
        return false;
    const AVPixFmtDescriptor* format =
        av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    if (format == nullptr || (format->flags & (AV_PIX_FMT_FLAG_ALPHA | AV_PIX_FMT_FLAG_PAL)) != 0)
        makeOpaque(to, stride);
    return true;
}

} // namespace clipheave::platform
