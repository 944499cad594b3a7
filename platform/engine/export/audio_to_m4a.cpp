// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/export/audio_to_m4a.h"

#include "platform/engine/export/remux.h"
#include "platform/engine/io/chapters.h"
#include "platform/engine/io/file_input.h"
#include "platform/engine/io/file_output.h"

#include <algorithm>

extern "C" {
#include <libavutil/audio_fifo.h>
}

namespace clipheave::platform {

namespace {

using SampleFifo = std::unique_ptr<AVAudioFifo, Releaser<av_audio_fifo_free>>;

constexpr std::int64_t kLossyBitRate = 256'000;
constexpr int kLosslessBits = 24; ///< the most that the ALAC encoder takes
constexpr int kSamplesAtOnce = 1024;
constexpr const char* kConvertText = "convert the sound";

Error audioError(ErrorCode code, const QString& path, const QString& detail) {
    return {code, QString::fromLatin1(kConvertText), path, detail};
}

/// What M4A holds as it is.
bool isHeldByM4a(AVCodecID codec) {
    return codec == AV_CODEC_ID_AAC || codec == AV_CODEC_ID_ALAC || codec == AV_CODEC_ID_AC3;
}

bool isLossless(const AVCodecParameters& codec) {
    const AVCodecDescriptor* descriptor = avcodec_descriptor_get(codec.codec_id);
    return descriptor != nullptr && (descriptor->props & AV_CODEC_PROP_LOSSLESS) != 0 &&
           (descriptor->props & AV_CODEC_PROP_LOSSY) == 0;
}

/// Decodes one stream and encodes it for M4A.
class AudioConverter {
public:
    AudioConverter(AVFormatContext& input, const AVStream& stream, FileOutput& output, QString path)
        : m_input(input), m_stream(stream), m_output(output), m_path(std::move(path)) {}
    [[nodiscard]] Result<void> open();
    [[nodiscard]] Result<void> convert(const std::function<bool(double)>& progress);
    [[nodiscard]] Notes notes() const;

private:
    [[nodiscard]] Result<void> openDecoder();
    [[nodiscard]] Result<void> openEncoder();
    void chooseFormat();
    [[nodiscard]] bool chooseLayout();
    [[nodiscard]] int decode(const AVPacket* packet);
    [[nodiscard]] int resample(const AVFrame& frame);
    [[nodiscard]] int startResampler(const AVFrame& frame);
    [[nodiscard]] int encodeReady(bool all);
    [[nodiscard]] int writePackets();
    [[nodiscard]] int finish();

    AVFormatContext& m_input;
    const AVStream& m_stream;
    FileOutput& m_output;
    QString m_path;
    bool m_lossless = false;
    Codec m_decoder, m_encoder;
    AVStream* m_target = nullptr;
    Resampler m_resampler;
    int m_inputFormat = AV_SAMPLE_FMT_NONE, m_inputRate = 0, m_inputChannels = 0;
    SampleFifo m_fifo;
    std::int64_t m_written = 0; ///< samples given to the encoder
    int m_damaged = 0;          ///< packets that could not be decoded
    bool m_rounded = false;     ///< samples finer than the target holds
};

Result<void> AudioConverter::open() {
    if (auto opened = openDecoder(); !opened)
        return opened;
    if (auto opened = openEncoder(); !opened)
        return opened;
    m_fifo.reset(av_audio_fifo_alloc(m_encoder->sample_fmt, m_encoder->ch_layout.nb_channels,
                                     kSamplesAtOnce));
    if (!m_fifo)
        return m_output.failed(kConvertText, AVERROR(ENOMEM));
    return {};
}

Result<void> AudioConverter::openDecoder() {
    const AVCodec* decoder = avcodec_find_decoder(m_stream.codecpar->codec_id);
    if (decoder == nullptr)
        return tl::unexpected(
            audioError(ErrorCode::NotSupported, m_path, QStringLiteral("no decoder")));
    m_decoder.reset(avcodec_alloc_context3(decoder));
    if (!m_decoder || avcodec_parameters_to_context(m_decoder.get(), m_stream.codecpar) < 0)
        return m_output.failed(kConvertText, AVERROR(ENOMEM));
    m_decoder->pkt_timebase = m_stream.time_base;
    if (const int code = avcodec_open2(m_decoder.get(), decoder, nullptr); code < 0)
        return tl::unexpected(audioError(ErrorCode::NotSupported, m_path, ffmpegText(code)));
    if (m_decoder->sample_rate <= 0 || m_decoder->ch_layout.nb_channels <= 0)
        return tl::unexpected(
            audioError(ErrorCode::InvalidData, m_path, QStringLiteral("no sample rate")));
    return {};
}

/// Sample format, precision and rate of the target.
void AudioConverter::chooseFormat() {
    AVCodecContext& encoder = *m_encoder;
    encoder.sample_rate = m_decoder->sample_rate;
    if (!m_lossless) {
        encoder.sample_fmt = AV_SAMPLE_FMT_FLTP;
        encoder.bit_rate = kLossyBitRate;
        const int* rates = encoder.codec->supported_samplerates;
        int best = rates != nullptr ? rates[0] : encoder.sample_rate;
        for (; rates != nullptr && *rates != 0; ++rates)
            if (std::abs(*rates - encoder.sample_rate) < std::abs(best - encoder.sample_rate))
                best = *rates;
        encoder.sample_rate = best;
        return;
    }
    const AVSampleFormat packed = av_get_packed_sample_fmt(m_decoder->sample_fmt);
    const bool isFloat = packed == AV_SAMPLE_FMT_FLT || packed == AV_SAMPLE_FMT_DBL;
    const int raw = m_decoder->bits_per_raw_sample;
    const int bits = raw > 0 && !isFloat ? raw : av_get_bytes_per_sample(packed) * 8;
    m_rounded = isFloat || bits > kLosslessBits;
    encoder.sample_fmt = bits <= 16 ? AV_SAMPLE_FMT_S16P : AV_SAMPLE_FMT_S32P;
    encoder.bits_per_raw_sample = bits <= 16 ? 16 : kLosslessBits;
}

/// The source's layout, or one that the encoder knows with as many channels: they keep their order.
bool AudioConverter::chooseLayout() {
    const AVChannelLayout& wanted = m_decoder->ch_layout;
    const AVChannelLayout* known = m_encoder->codec->ch_layouts;
    const AVChannelLayout* found = nullptr;
    for (const AVChannelLayout* layout = known; layout != nullptr && layout->nb_channels != 0;
         ++layout) {
        if (av_channel_layout_compare(layout, &wanted) == 0)
            return av_channel_layout_copy(&m_encoder->ch_layout, layout) >= 0;
        if (layout->nb_channels == wanted.nb_channels && found == nullptr)
            found = layout;
    }
    if (found != nullptr)
        return av_channel_layout_copy(&m_encoder->ch_layout, found) >= 0;
    if (known != nullptr)
        return false;
    if (wanted.order != AV_CHANNEL_ORDER_UNSPEC)
        return av_channel_layout_copy(&m_encoder->ch_layout, &wanted) >= 0;
    av_channel_layout_default(&m_encoder->ch_layout, wanted.nb_channels);
    return true;
}

Result<void> AudioConverter::openEncoder() {
    m_lossless = isLossless(*m_stream.codecpar);
    const AVCodec* codec = avcodec_find_encoder(m_lossless ? AV_CODEC_ID_ALAC : AV_CODEC_ID_AAC);
    m_target = avformat_new_stream(m_output.context(), nullptr);
    m_encoder.reset(avcodec_alloc_context3(codec));
    if (codec == nullptr || !m_encoder || m_target == nullptr)
        return m_output.failed(kConvertText, AVERROR_ENCODER_NOT_FOUND);
    chooseFormat();
    if (!chooseLayout())
        return tl::unexpected(
            audioError(ErrorCode::NotSupported, m_path,
                       QStringLiteral("M4A has no place for this many channels")));
    m_encoder->time_base = {1, m_encoder->sample_rate};
    m_encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER | AV_CODEC_FLAG_BITEXACT;
    if (const int code = avcodec_open2(m_encoder.get(), codec, nullptr); code < 0)
        return tl::unexpected(audioError(ErrorCode::NotSupported, m_path, ffmpegText(code)));
    m_target->time_base = m_encoder->time_base;
    if (avcodec_parameters_from_context(m_target->codecpar, m_encoder.get()) < 0)
        return m_output.failed(kConvertText, AVERROR(ENOMEM));
    return {};
}

/// Anew when a stream changes its form on the way.
int AudioConverter::startResampler(const AVFrame& frame) {
    m_inputFormat = frame.format;
    m_inputRate = frame.sample_rate;
    m_inputChannels = frame.ch_layout.nb_channels;
    if (m_inputChannels != m_encoder->ch_layout.nb_channels)
        return AVERROR_INPUT_CHANGED;
    SwrContext* context = nullptr;
    // The same layout on both sides: formats and rates change, channels are not mixed.
    const int code = swr_alloc_set_opts2(&context, &m_encoder->ch_layout, m_encoder->sample_fmt,
                                         m_encoder->sample_rate, &m_encoder->ch_layout,
                                         static_cast<AVSampleFormat>(frame.format),
                                         frame.sample_rate, 0, nullptr);
    m_resampler.reset(context);
    return code < 0 ? code : swr_init(m_resampler.get());
}

int AudioConverter::resample(const AVFrame& frame) {
    const bool changed = frame.format != m_inputFormat || frame.sample_rate != m_inputRate ||
                         frame.ch_layout.nb_channels != m_inputChannels;
    if (changed)
        if (const int code = startResampler(frame); code < 0)
            return code;
    const Frame out(av_frame_alloc());
    if (!out)
        return AVERROR(ENOMEM);
    out->format = m_encoder->sample_fmt;
    out->nb_samples = std::max(1, swr_get_out_samples(m_resampler.get(), frame.nb_samples));
    if (av_channel_layout_copy(&out->ch_layout, &m_encoder->ch_layout) < 0 ||
        av_frame_get_buffer(out.get(), 0) < 0)
        return AVERROR(ENOMEM);
    auto** data = const_cast<const std::uint8_t**>(frame.extended_data); // the C interface
    const int got = swr_convert(m_resampler.get(), out->extended_data, out->nb_samples,
                                frame.nb_samples > 0 ? data : nullptr, frame.nb_samples);
    if (got <= 0)
        return got;
    void** samples = static_cast<void**>(static_cast<void*>(out->extended_data));
    return av_audio_fifo_write(m_fifo.get(), samples, got) < got ? AVERROR(ENOMEM) : 0;
}

int AudioConverter::decode(const AVPacket* packet) {
    int code = avcodec_send_packet(m_decoder.get(), packet);
    if (code == AVERROR_INVALIDDATA) {
        ++m_damaged;
        return 0;
    }
    const Frame frame(av_frame_alloc());
    if (!frame)
        return AVERROR(ENOMEM);
    while (code >= 0 && (code = avcodec_receive_frame(m_decoder.get(), frame.get())) >= 0) {
        if ((code = resample(*frame)) >= 0)
            code = encodeReady(false);
    }
    if (code == AVERROR_INVALIDDATA) {
        ++m_damaged;
        return 0;
    }
    return code == AVERROR(EAGAIN) || code == AVERROR_EOF ? 0 : code;
}

/// Gives the encoder whole frames; at the end also what is left.
int AudioConverter::encodeReady(bool all) {
    const int size = m_encoder->frame_size > 0 ? m_encoder->frame_size : kSamplesAtOnce;
    while (av_audio_fifo_size(m_fifo.get()) >= (all ? 1 : size)) {
        const Frame frame(av_frame_alloc());
        if (!frame)
            return AVERROR(ENOMEM);
        frame->format = m_encoder->sample_fmt;
        frame->sample_rate = m_encoder->sample_rate;
        frame->nb_samples = std::min(size, av_audio_fifo_size(m_fifo.get()));
        frame->pts = m_written;
        if (av_channel_layout_copy(&frame->ch_layout, &m_encoder->ch_layout) < 0 ||
            av_frame_get_buffer(frame.get(), 0) < 0)
            return AVERROR(ENOMEM);
        void** samples = static_cast<void**>(static_cast<void*>(frame->extended_data));
        const int got = av_audio_fifo_read(m_fifo.get(), samples, frame->nb_samples);
        if (got < frame->nb_samples)
            return AVERROR_BUG;
        m_written += got;
        if (const int code = avcodec_send_frame(m_encoder.get(), frame.get()); code < 0)
            return code;
        if (const int code = writePackets(); code < 0)
            return code;
    }
    return 0;
}

int AudioConverter::writePackets() {
    const Packet packet(av_packet_alloc());
    int code = packet ? 0 : AVERROR(ENOMEM);
    while (code >= 0 && (code = avcodec_receive_packet(m_encoder.get(), packet.get())) >= 0) {
        packet->stream_index = m_target->index;
        av_packet_rescale_ts(packet.get(), m_encoder->time_base, m_target->time_base);
        code = av_interleaved_write_frame(m_output.context(), packet.get());
    }
    return code == AVERROR(EAGAIN) || code == AVERROR_EOF ? 0 : code;
}

/// Empties decoder, resampler and encoder, in this order.
int AudioConverter::finish() {
    if (const int code = decode(nullptr); code < 0)
        return code;
    if (m_resampler) {
        const Frame nothing(av_frame_alloc());
        if (!nothing)
            return AVERROR(ENOMEM);
        nothing->format = m_inputFormat;
        nothing->sample_rate = m_inputRate;
        av_channel_layout_default(&nothing->ch_layout, m_inputChannels);
        if (const int code = resample(*nothing); code < 0)
            return code;
    }
    if (const int code = encodeReady(true); code < 0)
        return code;
    if (const int code = avcodec_send_frame(m_encoder.get(), nullptr); code < 0)
        return code;
    return writePackets();
}

Result<void> AudioConverter::convert(const std::function<bool(double)>& progress) {
    const Packet packet(av_packet_alloc());
    int code = packet ? 0 : AVERROR(ENOMEM);
    const double total = m_input.duration > 0 ? static_cast<double>(m_input.duration) * 1e-6 : 0;
    while (code >= 0 && (code = av_read_frame(&m_input, packet.get())) >= 0) {
        if (packet->stream_index == m_stream.index)
            code = decode(packet.get());
        av_packet_unref(packet.get());
        const double done = static_cast<double>(m_written) / m_encoder->sample_rate;
        if (progress && !progress(total > 0 ? std::min(done / total, 1.0) : 0))
            return failure(ErrorCode::Cancelled, QString::fromLatin1(kConvertText));
    }
    if (code == AVERROR_EOF)
        code = finish();
    if (code < 0)
        return m_output.failed(kConvertText, code);
    if (m_written == 0)
        return tl::unexpected(
            audioError(ErrorCode::InvalidData, m_path, QStringLiteral("nothing could be decoded")));
    return {};
}

Notes AudioConverter::notes() const {
    Notes notes;
    if (!m_lossless)
        notes << QStringLiteral("The sound was encoded again as AAC: M4A does not hold %1")
                     .arg(QString::fromLatin1(avcodec_get_name(m_stream.codecpar->codec_id)));
    if (m_rounded)
        notes << QStringLiteral("Samples stored with 24 bits: M4A holds no more without loss");
    if (m_damaged > 0)
        notes << QStringLiteral("Damaged pieces of the sound left out: %1").arg(m_damaged);
    return notes;
}

Result<Notes> convertAudio(FileInput& input, const AVStream& stream, const QString& source,
                           const QString& target, const std::function<bool(double)>& progress) {
    auto output = FileOutput::create("mp4", target);
    if (!output)
        return tl::unexpected(output.error());
    AudioConverter converter(*input.context(), stream, **output, source);
    if (auto opened = converter.open(); !opened)
        return tl::unexpected(opened.error());
    copyChapters(*input.context(), *(*output)->context());
    Dictionary options;
    if (auto begun = (*output)->writeHeader(options); !begun)
        return tl::unexpected(begun.error());
    if (auto converted = converter.convert(progress); !converted)
        return tl::unexpected(converted.error());
    if (auto finished = (*output)->finish(); !finished)
        return tl::unexpected(finished.error());
    return converter.notes();
}

} // namespace

Result<Notes> exportAudio(const QString& source, const QString& target,
                          const std::function<bool(double)>& progress) {
    Result<FileReader> reader = FileReader::open(source);
    if (!reader)
        return tl::unexpected(reader.error());
    auto input = FileInput::open(*reader, InputLimits::none());
    if (!input)
        return tl::unexpected(input.error());
    if (!(*input)->findStreamInfo(StreamsOfUse::Audio))
        return tl::unexpected(audioError(ErrorCode::InvalidData, source,
                                         QStringLiteral("the streams cannot be read")));
    AVFormatContext& context = *(*input)->context();
    const int best = av_find_best_stream(&context, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (best < 0)
        return tl::unexpected(
            audioError(ErrorCode::NotSupported, source, QStringLiteral("there is no sound")));
    if (isHeldByM4a(context.streams[best]->codecpar->codec_id)) {
        if (auto copied = remuxAudio(source, target, progress); !copied)
            return tl::unexpected(copied.error());
        return Notes();
    }
    for (unsigned i = 0; i < context.nb_streams; ++i)
        context.streams[i]->discard =
            static_cast<int>(i) == best ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    return convertAudio(**input, *context.streams[best], source, target, progress);
}

} // namespace clipheave::platform
