// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/samples/sample_encoders.h"

#include "platform/engine/messages.h"
#include "platform/engine/samples/sample_scene.h"

#include <algorithm>
#include <cmath>

namespace clipheave::platform {

namespace {

constexpr int kSamplesAFrame = 1024; ///< where the encoder takes any number

class VideoSample final : public SampleStream {
public:
    VideoSample(FileOutput& output, const SampleMedia& sample) : SampleStream(output, sample) {}
    [[nodiscard]] Result<void> prepare();

private:
    [[nodiscard]] Result<bool> nextFrame() override;
    void setRotation();

    std::int64_t m_frames = 0;
    std::vector<std::uint8_t> m_rgb;
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
    setRotation();
    if (auto opened = open(); !opened)
        return opened;
    m_frames = std::max<std::int64_t>(1, std::llround(m_sample.seconds * m_sample.frameRate));
    m_frame->format = m_codec->pix_fmt;
    m_frame->width = width;
    m_frame->height = height;
    m_scaler.reset(sws_getContext(width, height, AV_PIX_FMT_RGB24, width, height, m_codec->pix_fmt,
                                  SWS_BILINEAR | SWS_BITEXACT | SWS_ACCURATE_RND, nullptr, nullptr,
                                  nullptr));
    m_rgb.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3);
    if (!m_scaler || av_frame_get_buffer(m_frame.get(), 0) < 0)
        return m_output.failed(kEncodeSample, AVERROR(ENOMEM));
    return {};
}

/// The display matrix of a clockwise turn, with the shift that keeps the frame at the origin.
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

Result<bool> VideoSample::nextFrame() {
    if (m_next >= m_frames)
        return false;
    const int stride = m_sample.size.width() * 3;
    drawScene({m_rgb, m_sample.size.width(), m_sample.size.height(), stride}, m_sample.pattern,
              static_cast<double>(m_next) / m_sample.frameRate);
    if (const int code = av_frame_make_writable(m_frame.get()); code < 0)
        return m_output.failed(kEncodeSample, code);
    const std::uint8_t* rows[] = {m_rgb.data()};
    sws_scale(m_scaler.get(), rows, &stride, 0, m_sample.size.height(), m_frame->data,
              m_frame->linesize);
    m_frame->pts = m_next++;
    return true;
}

class AudioSample final : public SampleStream {
public:
    AudioSample(FileOutput& output, const SampleMedia& sample) : SampleStream(output, sample) {}
    [[nodiscard]] Result<void> prepare();

private:
    [[nodiscard]] Result<bool> nextFrame() override;

    std::int64_t m_samples = 0;
    int m_frameSize = kSamplesAFrame;
    std::vector<float> m_tones; ///< interleaved
    Resampler m_resampler;
};

int nearestSampleRateOf(const AVCodec& encoder, int wanted) {
    const auto rates = sampleRatesOf(encoder);
    int best = rates.empty() ? wanted : rates.front();
    for (const int rate : rates)
        if (std::abs(rate - wanted) < std::abs(best - wanted))
            best = rate;
    return best;
}

Result<void> AudioSample::prepare() {
    if (auto begun = begin(m_sample.audioCodec, AVMEDIA_TYPE_AUDIO); !begun)
        return begun;
    m_codec->sample_rate = nearestSampleRateOf(*m_encoder, m_sample.sampleRate);
    const auto formats = sampleFormatsOf(*m_encoder);
    m_codec->sample_fmt = formats.empty() ? AV_SAMPLE_FMT_S16 : formats.front();
    av_channel_layout_default(&m_codec->ch_layout, m_sample.channels);
    m_codec->time_base = {1, m_codec->sample_rate};
    m_codec->bit_rate = 64'000LL * m_sample.channels;
    if (auto opened = open(); !opened)
        return opened;
    m_samples = std::max<std::int64_t>(1, std::llround(m_sample.seconds * m_codec->sample_rate));
    if (m_codec->frame_size > 0)
        m_frameSize = m_codec->frame_size;
    SwrContext* resampler = nullptr;
    swr_alloc_set_opts2(&resampler, &m_codec->ch_layout, m_codec->sample_fmt, m_codec->sample_rate,
                        &m_codec->ch_layout, AV_SAMPLE_FMT_FLT, m_codec->sample_rate, 0, nullptr);
    m_resampler.reset(resampler);
    if (!m_resampler || swr_init(m_resampler.get()) < 0)
        return m_output.failed(kEncodeSample, AVERROR(EINVAL));
    return {};
}

Result<bool> AudioSample::nextFrame() {
    const int count = static_cast<int>(std::min<std::int64_t>(m_frameSize, m_samples - m_next));
    if (count <= 0)
        return false;
    const int channels = m_sample.channels;
    m_tones.clear();
    for (int i = 0; i < count; ++i)
        for (int channel = 0; channel < channels; ++channel)
            m_tones.push_back(toneAt(m_sample.pattern, channel,
                                     static_cast<double>(m_next + i) / m_codec->sample_rate));
    av_frame_unref(m_frame.get());
    m_frame->format = m_codec->sample_fmt;
    m_frame->sample_rate = m_codec->sample_rate;
    m_frame->nb_samples = count;
    int code = av_channel_layout_copy(&m_frame->ch_layout, &m_codec->ch_layout);
    if (code >= 0)
        code = av_frame_get_buffer(m_frame.get(), 0);
    const auto* input = static_cast<const std::uint8_t*>(static_cast<const void*>(m_tones.data()));
    if (code >= 0)
        code = swr_convert(m_resampler.get(), m_frame->extended_data, count, &input, count);
    if (code < 0)
        return m_output.failed(kEncodeSample, code);
    m_frame->pts = m_next;
    m_next += count;
    return true;
}

template <class Kind>
Result<std::unique_ptr<SampleStream>> prepared(FileOutput& output, const SampleMedia& sample) {
    auto stream = std::make_unique<Kind>(output, sample);
    if (auto done = stream->prepare(); !done)
        return tl::unexpected(done.error());
    return std::unique_ptr<SampleStream>(std::move(stream));
}

} // namespace

Result<std::unique_ptr<SampleStream>> makeVideoSample(FileOutput& output,
                                                      const SampleMedia& sample) {
    return prepared<VideoSample>(output, sample);
}

Result<std::unique_ptr<SampleStream>> makeAudioSample(FileOutput& output,
                                                      const SampleMedia& sample) {
    return prepared<AudioSample>(output, sample);
}

} // namespace clipheave::platform
