// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/export/audio_to_m4a.h"

#include "platform/engine/decode/media_decoder.h"
#include "platform/engine/encode/audio_encoder.h"
#include "platform/engine/export/audio_copy.h"
#include "platform/engine/io/caf_padding.h"
#include "platform/engine/io/chapters.h"
#include "platform/engine/io/container_codecs.h"
#include "platform/engine/io/file_input.h"
#include "platform/engine/io/file_output.h"
#include "platform/engine/messages.h"

#include <algorithm>

namespace clipheave::platform {

namespace {

constexpr std::int64_t kLossyBitRate = 256'000;
/// Packets may look far ahead for their codec parameters: the file is read in full anyway.
constexpr std::int64_t kAudioProbeBytes = 16 << 20;

tl::unexpected<Error> audioError(ErrorCode code, const QString& path, const Message& detail) {
    return failure(code, kConvertAudio, path, detail);
}

/// Returns whether M4A holds the codec as it is.
bool isHeldByM4a(AVCodecID codec) {
    return codec == AV_CODEC_ID_AAC || codec == AV_CODEC_ID_ALAC || codec == AV_CODEC_ID_AC3;
}

bool isLossless(const AVCodecParameters& codec) {
    const AVCodecDescriptor* descriptor = avcodec_descriptor_get(codec.codec_id);
    return descriptor != nullptr && (descriptor->props & AV_CODEC_PROP_LOSSLESS) != 0 &&
           (descriptor->props & AV_CODEC_PROP_LOSSY) == 0;
}

template <class Sample> std::int64_t aboveFullScale(const std::uint8_t* bytes, int count) {
    const auto* samples = static_cast<const Sample*>(static_cast<const void*>(bytes));
    return std::count_if(samples, samples + count,
                         [](Sample sample) { return sample > 1 || sample < -1; });
}

/// Returns how many values of the frame, of all channels, integers cannot express.
std::int64_t samplesAboveFullScale(const AVFrame& frame) {
    const auto format = static_cast<AVSampleFormat>(frame.format);
    const AVSampleFormat packed = av_get_packed_sample_fmt(format);
    if (packed != AV_SAMPLE_FMT_FLT && packed != AV_SAMPLE_FMT_DBL)
        return 0;
    const int channels = frame.ch_layout.nb_channels;
    const bool planar = av_sample_fmt_is_planar(format) != 0;
    const int planes = planar ? channels : 1;
    const int values = planar ? frame.nb_samples : frame.nb_samples * channels;
    std::int64_t count = 0;
    for (int i = 0; i < planes; ++i)
        count += packed == AV_SAMPLE_FMT_FLT
                     ? aboveFullScale<float>(frame.extended_data[i], values)
                     : aboveFullScale<double>(frame.extended_data[i], values);
    return count;
}

/// Returns the streams that M4A does not get: all but the audio and the cover.
Notes noteOnOthers(const AVFormatContext& input, int chosen) {
    QStringList others;
    for (unsigned i = 0; i < input.nb_streams; ++i) {
        const AVStream& stream = *input.streams[i];
        const bool isCover = (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
        if (static_cast<int>(i) != chosen && !isCover)
            others << streamText(*stream.codecpar);
    }
    if (others.isEmpty())
        return {};
    return {Message(kStreamsLeftOut, {others.join(QStringLiteral(", "))})};
}

/// Cuts what is not heard off decoded frames.
class HeardSamples {
public:
    HeardSamples(const AudioPadding& padding, AVRational timeBase)
        : m_padding(padding), m_base(timeBase) {}

    /// Leaves what is heard of the next frame, which may be nothing.
    void cut(AVFrame& frame) {
        const AVRational samples{1, frame.sample_rate};
        const std::int64_t first = av_rescale_q(m_padding.priming, m_base, samples);
        const std::int64_t end =
            m_padding.heard ? first + av_rescale_q(*m_padding.heard, m_base, samples) : INT64_MAX;
        const std::int64_t count = frame.nb_samples;
        const std::int64_t skipped = std::clamp<std::int64_t>(first - m_seen, 0, count);
        const std::int64_t kept = std::clamp<std::int64_t>(end - m_seen, skipped, count) - skipped;
        m_seen += count;
        if (skipped > 0 && kept > 0)
            av_samples_copy(frame.extended_data, frame.extended_data, 0, static_cast<int>(skipped),
                            static_cast<int>(kept), frame.ch_layout.nb_channels,
                            static_cast<AVSampleFormat>(frame.format));
        frame.nb_samples = static_cast<int>(kept);
    }

private:
    AudioPadding m_padding;
    AVRational m_base;       ///< of the padding
    std::int64_t m_seen = 0; ///< samples of all frames before
};

/// Decodes one stream and encodes it for M4A. Deliberate: it resamples by itself, not through the
/// filters of an export, whose edit lists, tempo and mixing it does not want: channels stay as they
/// are.
class AudioConverter {
public:
    using Progress = std::function<bool(double)>;

    AudioConverter(AVFormatContext& input, const AVStream& stream, const AudioPadding& padding,
                   FileOutput& output, QString path)
        : m_input(input), m_stream(stream), m_heard(padding, stream.time_base), m_output(output),
          m_path(std::move(path)) {}
    [[nodiscard]] Result<void> open();
    [[nodiscard]] Result<void> convert(const Progress& progress);
    [[nodiscard]] Notes notes() const;
    [[nodiscard]] int sampleRate() const { return m_encoder->format().sampleRate; }

private:
    [[nodiscard]] Result<void> openDecoder();
    [[nodiscard]] Result<void> openEncoder();
    [[nodiscard]] Result<void> addStream();
    [[nodiscard]] int readPacket(AVPacket& packet, const Progress& progress);
    [[nodiscard]] int decodeAll(const Progress& progress);
    [[nodiscard]] int resample(const AVFrame& frame);
    void countClipped(const AVFrame& frame);
    [[nodiscard]] int startResampler(const AVFrame& frame);
    [[nodiscard]] bool writePacket(const Packet& packet);
    [[nodiscard]] int finish();

    AVFormatContext& m_input;
    const AVStream& m_stream;
    HeardSamples m_heard;
    FileOutput& m_output;
    QString m_path;
    std::unique_ptr<MediaDecoder> m_decoder;
    std::unique_ptr<AudioEncoder> m_encoder;
    const AudioEncoder::Sink m_sink = [this](const Packet& packet) { return writePacket(packet); };
    AVStream* m_target = nullptr;
    Resampler m_resampler;
    int m_inputFormat = AV_SAMPLE_FMT_NONE, m_inputRate = 0, m_inputChannels = 0;
    int m_writeCode = 0;        ///< of the last packet
    std::int64_t m_clipped = 0; ///< samples, of all channels
    bool m_cancelled = false;
};

Result<void> AudioConverter::open() {
    if (auto opened = openDecoder(); !opened)
        return opened;
    if (auto opened = openEncoder(); !opened)
        return opened;
    return addStream();
}

Result<void> AudioConverter::openDecoder() {
    auto decoder = MediaDecoder::open(m_stream, 1);
    if (!decoder)
        return audioError(decoder.error().code, m_path, decoder.error().detail);
    m_decoder = std::move(*decoder);
    const AVCodecContext& context = m_decoder->context();
    if (context.sample_rate <= 0 || context.ch_layout.nb_channels <= 0)
        return audioError(ErrorCode::InvalidData, m_path, kNoSampleRate);
    return {};
}

Result<void> AudioConverter::openEncoder() {
    const AVCodecContext& decoder = m_decoder->context();
    auto encoder = (isLossless(*m_stream.codecpar) ? alacEncoding(decoder)
                                                   : unmixedAacEncoding(decoder, kLossyBitRate))
                       .and_then(&AudioEncoder::open);
    if (!encoder)
        return audioError(encoder.error().code, m_path, encoder.error().detail);
    m_encoder = std::move(*encoder);
    return {};
}

Result<void> AudioConverter::addStream() {
    auto track = m_encoder->track();
    if (!track)
        return tl::unexpected(track.error());
    m_target = avformat_new_stream(m_output.context(), nullptr);
    if (m_target == nullptr || copyParameters(m_target->codecpar, track->parameters.get()) < 0)
        return m_output.failed(kConvertAudio, AVERROR(ENOMEM));
    m_target->time_base = track->timeBase;
    return {};
}

/// Restarts the resampler when the stream changes its format.
int AudioConverter::startResampler(const AVFrame& frame) {
    const AudioFormat& format = m_encoder->format();
    auto* layout = const_cast<AVChannelLayout*>(&format.layout.get()); // only read
    m_inputFormat = frame.format;
    m_inputRate = frame.sample_rate;
    m_inputChannels = frame.ch_layout.nb_channels;
    if (m_inputChannels != layout->nb_channels)
        return AVERROR_INPUT_CHANGED;
    SwrContext* context = nullptr;
    // The same layout on both sides: formats and rates change, channels are not mixed.
    const int code = swr_alloc_set_opts2(&context, layout, format.sampleFormat, format.sampleRate,
                                         layout, static_cast<AVSampleFormat>(frame.format),
                                         frame.sample_rate, 0, nullptr);
    m_resampler.reset(context);
    return code < 0 ? code : swr_init(m_resampler.get());
}

/// Integers have no values above full scale, as AAC has.
void AudioConverter::countClipped(const AVFrame& frame) {
    if (av_get_packed_sample_fmt(m_encoder->format().sampleFormat) != AV_SAMPLE_FMT_FLT)
        m_clipped += samplesAboveFullScale(frame);
}

int AudioConverter::resample(const AVFrame& frame) {
    const bool changed = frame.format != m_inputFormat || frame.sample_rate != m_inputRate ||
                         frame.ch_layout.nb_channels != m_inputChannels;
    if (changed)
        if (const int code = startResampler(frame); code < 0)
            return code;
    const Frame out = newAudioFrame(
        m_encoder->format(), std::max(1, swr_get_out_samples(m_resampler.get(), frame.nb_samples)));
    if (!out)
        return AVERROR(ENOMEM);
    auto** data = const_cast<const std::uint8_t**>(frame.extended_data); // the C interface
    const int got = swr_convert(m_resampler.get(), out->extended_data, out->nb_samples,
                                frame.nb_samples > 0 ? data : nullptr, frame.nb_samples);
    return got <= 0 ? got : m_encoder->write(*out, got, m_sink);
}

bool AudioConverter::writePacket(const Packet& packet) {
    packet->stream_index = m_target->index;
    av_packet_rescale_ts(packet.get(), {1, m_encoder->format().sampleRate}, m_target->time_base);
    m_writeCode = av_interleaved_write_frame(m_output.context(), packet.get());
    return m_writeCode >= 0;
}

int AudioConverter::readPacket(AVPacket& packet, const Progress& progress) {
    const double total = m_input.duration > 0 ? static_cast<double>(m_input.duration) * 1e-6 : 0;
    int code = 0;
    while ((code = av_read_frame(&m_input, &packet)) >= 0) {
        const double done =
            static_cast<double>(m_encoder->samples()) / m_encoder->format().sampleRate;
        m_cancelled = progress && !progress(total > 0 ? std::min(done / total, 1.0) : 0);
        if (m_cancelled)
            return AVERROR_EXIT;
        if (packet.stream_index == m_stream.index)
            return 0;
        av_packet_unref(&packet);
    }
    return code;
}

int AudioConverter::decodeAll(const Progress& progress) {
    const Frame frame(av_frame_alloc());
    const auto read = [&](AVPacket& packet) { return readPacket(packet, progress); };
    int code = frame ? 0 : AVERROR(ENOMEM);
    while (code >= 0 && (code = m_decoder->next(*frame, read)) >= 0) {
        m_heard.cut(*frame);
        if (frame->nb_samples > 0) {
            countClipped(*frame);
            code = resample(*frame);
        }
        av_frame_unref(frame.get());
    }
    return code == AVERROR_EOF ? finish() : code;
}

/// Empties resampler and encoder.
int AudioConverter::finish() {
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
    return m_encoder->finish(m_sink);
}

Result<void> AudioConverter::convert(const Progress& progress) {
    const int code = decodeAll(progress);
    if (m_cancelled)
        return failure(ErrorCode::Cancelled, kConvertAudio);
    if (code < 0)
        return m_output.failed(kConvertAudio, m_writeCode < 0 ? m_writeCode : code);
    if (m_encoder->samples() == 0)
        return audioError(ErrorCode::InvalidData, m_path, nothingDecoded(*m_decoder));
    return {};
}

Notes AudioConverter::notes() const {
    Notes notes;
    const bool lossless = isLossless(*m_stream.codecpar);
    if (!lossless)
        notes << Message(kAudioBecameAac, {codecName(m_stream.codecpar->codec_id)});
    if (lossless && isFinerThanAlac(m_decoder->context()))
        notes << kSamplesBecame24Bits;
    if (m_clipped > 0)
        notes << Message(kSamplesClipped, {QString::number(m_clipped)});
    if (m_decoder->damaged() > 0)
        notes << Message(kDamagedPackets, {QString::number(m_decoder->damaged())});
    return notes;
}

Result<Notes> convertAudio(FileInput& input, const AVStream& stream, const AudioPadding& padding,
                           const QString& source, const QString& target,
                           const std::function<bool(double)>& progress) {
    auto output = FileOutput::create("mp4", target);
    if (!output)
        return tl::unexpected(output.error());
    AudioConverter converter(*input.context(), stream, padding, **output, source);
    if (auto opened = converter.open(); !opened)
        return tl::unexpected(opened.error());
    const Notes notes = copyChapters(*input.context(), *(*output)->context());
    Dictionary options;
    // The edit list counts in units of the movie header: to the sample.
    options.set("movie_timescale", QByteArray::number(converter.sampleRate()).constData());
    if (auto begun = (*output)->writeHeader(options); !begun)
        return tl::unexpected(begun.error());
    if (auto converted = converter.convert(progress); !converted)
        return tl::unexpected(converted.error());
    if (auto finished = (*output)->finish(); !finished)
        return tl::unexpected(finished.error());
    return notes + converter.notes();
}

} // namespace

Result<Notes> convertToM4a(const QString& source, const QString& target,
                           const std::function<bool(double)>& progress) {
    Result<FileReader> reader = FileReader::open(source);
    if (!reader)
        return tl::unexpected(reader.error());
    auto input = FileInput::open(*reader, InputLimits::none());
    if (!input)
        return tl::unexpected(input.error());
    (*input)->context()->probesize = kAudioProbeBytes;
    if (!(*input)->findStreamInfo(StreamsOfUse::Audio))
        return audioError(ErrorCode::InvalidData, source, kStreamsUnreadable);
    AVFormatContext& context = *(*input)->context();
    const int best = av_find_best_stream(&context, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (best < 0)
        return audioError(ErrorCode::NotSupported, source, kNoAudioTrack);
    for (unsigned i = 0; i < context.nb_streams; ++i)
        context.streams[i]->discard =
            static_cast<int>(i) == best ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    AVStream& stream = *context.streams[best];
    const AVCodecParameters& codec = *stream.codecpar;
    const bool copies = isHeldByM4a(codec.codec_id) && codec.sample_rate > 0;
    const AudioPadding padding = cafPadding(*reader);
    auto notes = copies ? copyAudio(**input, stream, padding, target, progress)
                        : convertAudio(**input, stream, padding, source, target, progress);
    if (notes)
        *notes += noteOnOthers(context, best);
    return notes;
}

} // namespace clipheave::platform
