// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/samples/audio_sample.h"

#include "platform/engine/messages.h"
#include "platform/engine/samples/sample_scene.h"

#include <algorithm>
#include <cmath>

namespace clipheave::platform {

namespace {

constexpr int kSamplesAFrame = 1024; ///< where the encoder takes any number

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

} // namespace

Result<std::unique_ptr<SampleStream>> makeAudioSample(FileOutput& output,
                                                      const SampleMedia& sample) {
    auto stream = std::make_unique<AudioSample>(output, sample);
    if (auto prepared = stream->prepare(); !prepared)
        return tl::unexpected(prepared.error());
    return stream;
}

} // namespace clipheave::platform
