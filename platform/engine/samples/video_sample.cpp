// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/samples/video_sample.h"

#include "platform/engine/messages.h"
#include "platform/engine/samples/sample_scene.h"

#include <algorithm>
#include <cmath>

namespace clipheave::platform {

namespace {

class VideoSample final : public SampleStream {
public:
    VideoSample(FileOutput& output, const SampleMedia& sample) : SampleStream(output, sample) {}
    [[nodiscard]] Result<void> prepare();

private:
    [[nodiscard]] Result<bool> nextFrame() override;
    [[nodiscard]] Result<void> prepareFrames();
    [[nodiscard]] bool allocate(const Frame& frame, AVPixelFormat format) const;
    void setRotation();
    [[nodiscard]] Canvas canvas() const;

    std::int64_t m_frames = 0;
    Frame m_drawn; ///< rows of red, green, blue, with the padding that the scaler reads over
    Scaler m_scaler;
};

/// The first pixel format, but the usual one where the encoder takes it: players expect it.
AVPixelFormat pixelFormatFor(const AVCodec& encoder) {
    const auto formats = pixelFormatsOf(encoder);
    const bool takesUsual =
        std::find(formats.begin(), formats.end(), AV_PIX_FMT_YUV420P) != formats.end();
    return formats.empty() || takesUsual ? AV_PIX_FMT_YUV420P : formats.front();
}

Result<void> VideoSample::prepare() {
    if (auto begun = begin(m_sample.videoCodec, AVMEDIA_TYPE_VIDEO); !begun)
        return begun;
    const int width = m_sample.size.width(), height = m_sample.size.height();
    m_codec->width = width;
    m_codec->height = height;
    m_codec->pix_fmt = pixelFormatFor(*m_encoder);
    m_codec->time_base = {1, m_sample.frameRate};
    m_codec->framerate = {m_sample.frameRate, 1};
    m_codec->gop_size = m_sample.frameRate;
    m_codec->bit_rate = static_cast<std::int64_t>(width) * height * 6;
    m_stream->avg_frame_rate = m_codec->framerate;
    if (auto opened = open(); !opened)
        return opened;
    setRotation(); // not earlier: newer releases keep it among the parameters that opening replaces
    m_frames = std::max<std::int64_t>(1, std::llround(m_sample.seconds * m_sample.frameRate));
    return prepareFrames();
}

Result<void> VideoSample::prepareFrames() {
    const int width = m_sample.size.width(), height = m_sample.size.height();
    m_drawn.reset(av_frame_alloc());
    if (!allocate(m_frame, m_codec->pix_fmt) || !allocate(m_drawn, AV_PIX_FMT_RGB24))
        return m_output.failed(kEncodeSample, AVERROR(ENOMEM));
    m_scaler.reset(sws_getContext(width, height, AV_PIX_FMT_RGB24, width, height, m_codec->pix_fmt,
                                  SWS_BILINEAR | SWS_BITEXACT | SWS_ACCURATE_RND, nullptr, nullptr,
                                  nullptr));
    if (!m_scaler)
        return m_output.failed(kEncodeSample, AVERROR(ENOMEM));
    return {};
}

/// Returns whether there is memory for the frame in the sample's size.
bool VideoSample::allocate(const Frame& frame, AVPixelFormat format) const {
    if (!frame)
        return false;
    frame->format = format;
    frame->width = m_sample.size.width();
    frame->height = m_sample.size.height();
    return av_frame_get_buffer(frame.get(), 0) >= 0;
}

/// The display matrix of a clockwise rotation, with the shift that keeps the frame at the origin.
void VideoSample::setRotation() {
    const int quarter = static_cast<int>(std::lround(m_sample.rotation / 90)) & 3;
    if (quarter == 0)
        return;
    std::uint8_t* bytes =
        addSideData(*m_stream, AV_PKT_DATA_DISPLAYMATRIX, 9 * sizeof(std::int32_t));
    if (bytes == nullptr)
        return;
    auto* matrix = static_cast<std::int32_t*>(static_cast<void*>(bytes));
    av_display_rotation_set(matrix, quarter * 90.0);
    const int width = m_sample.size.width(), height = m_sample.size.height();
    matrix[6] = (quarter == 1 ? height : quarter == 2 ? width : 0) * 65536;
    matrix[7] = (quarter == 2 ? height : quarter == 3 ? width : 0) * 65536;
}

Canvas VideoSample::canvas() const {
    const int stride = m_drawn->linesize[0];
    const auto size = static_cast<std::size_t>(stride) * static_cast<std::size_t>(m_drawn->height);
    return {{m_drawn->data[0], size}, m_drawn->width, m_drawn->height, stride};
}

Result<bool> VideoSample::nextFrame() {
    if (m_next >= m_frames)
        return false;
    drawScene(canvas(), m_sample.pattern, static_cast<double>(m_next) / m_sample.frameRate);
    if (const int code = av_frame_make_writable(m_frame.get()); code < 0)
        return m_output.failed(kEncodeSample, code);
    sws_scale(m_scaler.get(), m_drawn->data, m_drawn->linesize, 0, m_drawn->height, m_frame->data,
              m_frame->linesize);
    m_frame->pts = m_next++;
    return true;
}

} // namespace

Result<std::unique_ptr<SampleStream>> makeVideoSample(FileOutput& output,
                                                      const SampleMedia& sample) {
    auto stream = std::make_unique<VideoSample>(output, sample);
    if (auto prepared = stream->prepare(); !prepared)
        return tl::unexpected(prepared.error());
    return stream;
}

} // namespace clipheave::platform
