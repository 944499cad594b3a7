// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/convert/frame_maker.h"

#include <cstring>

namespace clipheave::platform {

FrameMaker::FrameMaker(const AVCodecParameters& video, FrameRotation rotation, QSize size,
                       Scaling scaling)
    : m_rotation(rotation), m_stored(m_rotation.swapsSides() ? size.transposed() : size),
      m_painter(&video, m_stored, 1, scaling) {
}

std::optional<RawFrame> FrameMaker::make(const AVFrame& frame) {
    constexpr int kAlignment = FramePainter::kRowAlignment;
    RawFrame raw;
    raw.width = m_stored.width();
    raw.height = m_stored.height();
    const qsizetype row = qsizetype{raw.width} * 4;
    const int stride = (raw.width * 4 + kAlignment - 1) / kAlignment * kAlignment;
    QByteArray padded(qsizetype{stride} * raw.height + kAlignment, Qt::Uninitialized);
    if (!m_painter.paint(frame, reinterpret_cast<std::uint8_t*>(padded.data()), stride))
        return std::nullopt;
    for (int y = 1; row != stride && y < raw.height; ++y)
        std::memmove(padded.data() + row * y, padded.constData() + qsizetype{stride} * y,
                     static_cast<std::size_t>(row));
    padded.resize(row * raw.height);
    raw.rgb32 = std::move(padded);
    return rotatedFrame(raw, m_rotation);
}

} // namespace clipheave::platform
