// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/decode/video_stream.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace clipheave::platform {

AVStream* videoStream(AVFormatContext& context) {
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

FrameMaker::FrameMaker(const AVStream& video, QSize size)
    : m_turn(quarterTurnOf(video)), m_stored(m_turn.swapsSides() ? size.transposed() : size),
      m_painter(*video.codecpar, m_stored, 1) {
}

std::optional<RawFrame> FrameMaker::videoFrame(const AVFrame& frame) {
    constexpr int kAlignment = FramePainter::kRowAlignment;
    RawFrame videoFrame;
    videoFrame.width = m_stored.width();
    videoFrame.height = m_stored.height();
    const qsizetype row = qsizetype{videoFrame.width} * 4;
    const int stride = (videoFrame.width * 4 + kAlignment - 1) / kAlignment * kAlignment;
    QByteArray padded(qsizetype{stride} * videoFrame.height + kAlignment, Qt::Uninitialized);
    if (!m_painter.paint(frame, reinterpret_cast<std::uint8_t*>(padded.data()), stride))
        return std::nullopt;
    for (int y = 1; row != stride && y < videoFrame.height; ++y)
        std::memmove(padded.data() + row * y, padded.constData() + qsizetype{stride} * y,
                     static_cast<std::size_t>(row));
    padded.resize(row * videoFrame.height);
    videoFrame.rgb32 = std::move(padded);
    return turnedFrame(videoFrame, m_turn);
}

} // namespace clipheave::platform
