// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/encode/audio_encoder.h"

#include "platform/engine/messages.h"

#include <algorithm>

extern "C" {
#include <libavutil/samplefmt.h>
}

namespace clipheave::platform {

namespace {

constexpr int kSamplesAtOnce = 1024; ///< of an AAC frame, and where the encoder takes any number

tl::unexpected<Error> audioEncoderError(ErrorCode code, const Message& detail) {
    return failure(code, kEncodeAudio, {}, detail);
}

void** samplesOf(const AVFrame& frame) {
    return static_cast<void**>(static_cast<void*>(frame.extended_data));
}

} // namespace

Result<std::unique_ptr<AudioEncoder>> AudioEncoder::open(const AudioEncoding& encoding) {
    const AVCodec* codec = avcodec_find_encoder_by_name(encoding.encoder);
    std::unique_ptr<AudioEncoder> encoder(new AudioEncoder);
    encoder->m_codec.reset(avcodec_alloc_context3(codec));
    if (codec == nullptr || !encoder->m_codec)
        return audioEncoderError(ErrorCode::NotSupported,
                                 {kNoEncoder, {QString::fromLatin1(encoding.encoder)}});
    AVCodecContext& context = *encoder->m_codec;
    encoder->m_format = encoding.format;
    context.sample_fmt = encoding.format.sampleFormat;
    context.sample_rate = encoding.format.sampleRate;
    if (av_channel_layout_copy(&context.ch_layout, &encoding.format.layout.get()) < 0)
        return audioEncoderError(ErrorCode::Io, ffmpegReason(AVERROR(ENOMEM)));
    if (encoding.bitRate > 0)
        context.bit_rate = encoding.bitRate;
    context.bits_per_raw_sample = encoding.bitsPerRawSample;
    context.time_base = {1, context.sample_rate};
    context.flags |= AV_CODEC_FLAG_GLOBAL_HEADER | AV_CODEC_FLAG_BITEXACT;
    if (const int code = avcodec_open2(&context, codec, nullptr); code < 0)
        return audioEncoderError(ErrorCode::NotSupported, ffmpegReason(code));
    if (auto allocated = encoder->allocate(); !allocated)
        return tl::unexpected(allocated.error());
    return encoder;
}

Result<void> AudioEncoder::allocate() {
    const int channels = m_codec->ch_layout.nb_channels;
    m_fifo.reset(av_audio_fifo_alloc(m_codec->sample_fmt, channels, kSamplesAtOnce));
    m_silence = newAudioFrame(m_format, kSamplesAtOnce);
    if (!m_fifo || !m_silence)
        return audioEncoderError(ErrorCode::Io, ffmpegReason(AVERROR(ENOMEM)));
    av_samples_set_silence(m_silence->extended_data, 0, kSamplesAtOnce, channels,
                           m_codec->sample_fmt);
    return {};
}

Result<OutputTrack> AudioEncoder::track() const {
    OutputTrack track;
    track.parameters.reset(avcodec_parameters_alloc());
    if (!track.parameters ||
        avcodec_parameters_from_context(track.parameters.get(), m_codec.get()) < 0)
        return audioEncoderError(ErrorCode::Io, ffmpegReason(AVERROR(ENOMEM)));
    track.timeBase = m_codec->time_base;
    return track;
}

int AudioEncoder::write(const AVFrame& frame, int count, const Sink& sink) {
    if (av_audio_fifo_write(m_fifo.get(), samplesOf(frame), count) < count)
        return AVERROR(ENOMEM);
    m_taken += count;
    return encodeReady(false, sink);
}

int AudioEncoder::writeSilence(std::int64_t count, const Sink& sink) {
    int code = 0;
    for (; count > 0 && code >= 0; count -= kSamplesAtOnce)
        code = write(*m_silence, static_cast<int>(std::min<std::int64_t>(count, kSamplesAtOnce)),
                     sink);
    return code;
}

/// Gives the encoder whole frames; at the end also what is left.
int AudioEncoder::encodeReady(bool all, const Sink& sink) {
    const int size = m_codec->frame_size > 0 ? m_codec->frame_size : kSamplesAtOnce;
    int code = 0;
    while (code >= 0 && av_audio_fifo_size(m_fifo.get()) >= (all ? 1 : size))
        code = encodeFrame(std::min(size, av_audio_fifo_size(m_fifo.get())), sink);
    return code;
}

int AudioEncoder::encodeFrame(int count, const Sink& sink) {
    const Frame frame = newAudioFrame(m_format, count);
    if (!frame)
        return AVERROR(ENOMEM);
    frame->pts = m_encoded;
    if (av_audio_fifo_read(m_fifo.get(), samplesOf(*frame), count) < count)
        return AVERROR_BUG;
    m_encoded += count;
    const int code = avcodec_send_frame(m_codec.get(), frame.get());
    return code < 0 ? code : givePackets(sink);
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
