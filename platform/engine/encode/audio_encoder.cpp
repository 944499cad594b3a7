// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/encode/audio_encoder.h"

#include <algorithm>
#include <cstdlib>

extern "C" {
#include <libavutil/samplefmt.h>
}

namespace clipheave::platform {

namespace {

constexpr int kAudioPiece = 1024; ///< samples of an AAC frame
constexpr const char* kEncodeAudioText = "encode the sound";

tl::unexpected<Error> audioEncoderError(ErrorCode code, const QString& detail) {
    return failure(code, QString::fromLatin1(kEncodeAudioText), {}, detail);
}

int nearestRate(const AVCodec& codec, int wanted) {
    const int* rates = codec.supported_samplerates;
    int best = rates != nullptr ? rates[0] : wanted;
    for (; rates != nullptr && *rates != 0; ++rates)
        if (std::abs(*rates - wanted) < std::abs(best - wanted))
            best = *rates;
    return best;
}

/// Deliberate: only the layouts that AAC has numbers for; players do not know the others.
int setAacLayout(AVChannelLayout& layout, int channels) {
    constexpr std::uint64_t kMasks[] = {AV_CH_LAYOUT_MONO,         AV_CH_LAYOUT_STEREO,
                                        AV_CH_LAYOUT_SURROUND,     AV_CH_LAYOUT_4POINT0,
                                        AV_CH_LAYOUT_5POINT0_BACK, AV_CH_LAYOUT_5POINT1_BACK,
                                        AV_CH_LAYOUT_5POINT1_BACK, AV_CH_LAYOUT_7POINT1};
    return av_channel_layout_from_mask(&layout, kMasks[std::clamp(channels, 1, 8) - 1]);
}

Frame audioFrame(const AVCodecContext& codec, int samples) {
    Frame frame(av_frame_alloc());
    if (!frame)
        return frame;
    frame->format = codec.sample_fmt;
    frame->sample_rate = codec.sample_rate;
    frame->nb_samples = samples;
    if (av_channel_layout_copy(&frame->ch_layout, &codec.ch_layout) < 0 ||
        av_frame_get_buffer(frame.get(), 0) < 0)
        return nullptr;
    return frame;
}

} // namespace

Result<std::unique_ptr<AudioEncoder>> AudioEncoder::open(const ExportAudio& audio,
                                                         const SourceFacts& first) {
    const AVCodec* codec = avcodec_find_encoder_by_name("aac");
    std::unique_ptr<AudioEncoder> encoder(new AudioEncoder);
    encoder->m_codec.reset(avcodec_alloc_context3(codec));
    if (codec == nullptr || !encoder->m_codec)
        return audioEncoderError(ErrorCode::NotSupported, QStringLiteral("no AAC encoder"));
    AVCodecContext& context = *encoder->m_codec;
    const int channels = first.parameters->ch_layout.nb_channels;
    const int wanted = audio.channels > 0 ? std::min(audio.channels, channels) : channels;
    if (const int code = setAacLayout(context.ch_layout, wanted); code < 0)
        return audioEncoderError(ErrorCode::Io, ffmpegText(code));
    context.sample_rate = nearestRate(*codec, first.parameters->sample_rate);
    context.sample_fmt = AV_SAMPLE_FMT_FLTP;
    context.bit_rate = std::min<std::int64_t>(audio.bitRate, 2'000'000);
    context.time_base = {1, context.sample_rate};
    context.flags |= AV_CODEC_FLAG_GLOBAL_HEADER | AV_CODEC_FLAG_BITEXACT;
    if (const int code = avcodec_open2(&context, codec, nullptr); code < 0)
        return audioEncoderError(ErrorCode::NotSupported, ffmpegText(code));
    encoder->m_fifo.reset(
        av_audio_fifo_alloc(context.sample_fmt, context.ch_layout.nb_channels, kAudioPiece));
    encoder->m_silence = audioFrame(context, kAudioPiece);
    if (!encoder->m_fifo || !encoder->m_silence)
        return audioEncoderError(ErrorCode::Io, ffmpegText(AVERROR(ENOMEM)));
    av_samples_set_silence(encoder->m_silence->extended_data, 0, kAudioPiece,
                           context.ch_layout.nb_channels, context.sample_fmt);
    return encoder;
}

Result<OutputTrack> AudioEncoder::track() const {
    OutputTrack track;
    track.parameters.reset(avcodec_parameters_alloc());
    if (!track.parameters ||
        avcodec_parameters_from_context(track.parameters.get(), m_codec.get()) < 0)
        return audioEncoderError(ErrorCode::Io, ffmpegText(AVERROR(ENOMEM)));
    track.timeBase = m_codec->time_base;
    return track;
}

int AudioEncoder::write(const AVFrame& frame, int count, const Sink& sink) {
    void** samples = static_cast<void**>(static_cast<void*>(frame.extended_data));
    if (av_audio_fifo_write(m_fifo.get(), samples, count) < count)
        return AVERROR(ENOMEM);
    m_taken += count;
    return encodeReady(false, sink);
}

int AudioEncoder::writeSilence(std::int64_t count, const Sink& sink) {
    int code = 0;
    for (; count > 0 && code >= 0; count -= kAudioPiece)
        code =
            write(*m_silence, static_cast<int>(std::min<std::int64_t>(count, kAudioPiece)), sink);
    return code;
}

/// Gives the encoder whole frames; at the end also what is left.
int AudioEncoder::encodeReady(bool all, const Sink& sink) {
    const int size = m_codec->frame_size > 0 ? m_codec->frame_size : kAudioPiece;
    while (av_audio_fifo_size(m_fifo.get()) >= (all ? 1 : size)) {
        const int count = std::min(size, av_audio_fifo_size(m_fifo.get()));
        const Frame frame = audioFrame(*m_codec, count);
        if (!frame)
            return AVERROR(ENOMEM);
        frame->pts = m_encoded;
        void** samples = static_cast<void**>(static_cast<void*>(frame->extended_data));
        if (av_audio_fifo_read(m_fifo.get(), samples, count) < count)
            return AVERROR_BUG;
        m_encoded += count;
        int code = avcodec_send_frame(m_codec.get(), frame.get());
        if (code >= 0)
            code = givePackets(sink);
        if (code < 0)
            return code;
    }
    return 0;
}

int AudioEncoder::givePackets(const Sink& sink) {
    for (;;) {
        Packet packet(av_packet_alloc());
        if (!packet)
            return AVERROR(ENOMEM);
        const int code = avcodec_receive_packet(m_codec.get(), packet.get());
        if (code < 0)
            return code == AVERROR(EAGAIN) || code == AVERROR_EOF ? 0 : code;
        if (!sink(std::move(packet)))
            return AVERROR_EXIT;
    }
}

int AudioEncoder::finish(const Sink& sink) {
    int code = encodeReady(true, sink);
    if (code >= 0)
        code = avcodec_send_frame(m_codec.get(), nullptr);
    return code < 0 ? code : givePackets(sink);
}

} // namespace clipheave::platform
