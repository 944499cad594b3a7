// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/decode/audio_segment_reader.h"

#include "platform/engine/messages.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

extern "C" {
#include <libavutil/samplefmt.h>
}

namespace clipheave::platform {

namespace {

/// Segments that begin earlier are read from the start of the file.
constexpr Ticks kAudioShortestSeek = kTicksPerSecond;
/// Timestamps that are off by less than a 25th of a second are rounding; silence would be heard.
constexpr int kToleratedPart = 25;
constexpr int kSilenceChunk = 4096;
constexpr int kHighestRate = 768'000;
constexpr Ticks kToleratedAudioLoss = kTicksPerSecond * 2;
constexpr double kFastest = 1000; ///< beyond, and below its inverse, nothing can be heard

/// Returns filters for a change of speed that keeps the pitch, in steps that leave no audio out.
QByteArray tempoFilters(double speed) {
    const int steps = std::max(1, static_cast<int>(std::ceil(std::abs(std::log2(speed)) - 1e-6)));
    // Rounded times can make a half slightly less, which the filter refuses.
    const double tempo = std::clamp(std::pow(speed, 1.0 / steps), 0.5, 2.0);
    return QByteArray("atempo=" + QByteArray::number(tempo, 'f', 12) + ',').repeated(steps);
}

/// ISO base media files list every packet, and edit lists may cut the last one.
bool knowsItsEnd(const AVFormatContext& context) {
    return QByteArray(context.iformat->name).startsWith("mov,");
}

/// Returns where the audio of a file that lists its packets ends; nothing for other files, and for
/// one whose list goes on behind the announced end, which is wrong then.
std::optional<Ticks> trustedEnd(const StreamSource& source) {
    const auto end = source.announcedEnd();
    if (!end || !knowsItsEnd(source.context()))
        return std::nullopt;
    AVStream& stream = source.stream();
    const int count = avformat_index_get_entries_count(&stream);
    const AVIndexEntry* last = avformat_index_get_entry(&stream, count - 1); // null: none
    const auto begin = last != nullptr ? source.time(last->timestamp) : std::nullopt;
    return begin && *begin >= *end ? std::nullopt : end;
}

AudioFormat formatOf(const AVFrame& frame) {
    return {static_cast<AVSampleFormat>(frame.format), frame.sample_rate,
            ChannelLayout(frame.ch_layout)};
}

} // namespace

Result<std::unique_ptr<AudioSegmentReader>>
AudioSegmentReader::open(PlannedSegment& segment, double volume, const AudioFormat& format) {
    const double speed = segment.stretch.speed();
    if (!(speed <= kFastest && speed >= 1 / kFastest))
        return failure(ErrorCode::InvalidArgument, kEncodeAudio, segment.path, kPlannedAudio);
    auto source = openSegment(segment, AVMEDIA_TYPE_AUDIO);
    if (!source)
        return tl::unexpected(source.error());
    std::unique_ptr<AudioSegmentReader> reader(new AudioSegmentReader);
    reader->m_stretch = segment.stretch;
    reader->m_source = std::move(*source);
    reader->m_end = trustedEnd(*reader->m_source);
    if (segment.stretch.sourceStart > kAudioShortestSeek)
        reader->m_sought = reader->m_source->seekBefore(segment.stretch.sourceStart);
    auto decoder = MediaDecoder::open(reader->m_source->stream(), 1);
    if (!decoder)
        return reader->m_source->failed(decoder.error().code, decoder.error().detail);
    reader->m_decoder = std::move(*decoder);
    const QByteArray rate = QByteArray::number(format.sampleRate);
    if (volume != 1)
        reader->m_filters += "volume=" + QByteArray::number(volume, 'f', 9) + ":precision=float,";
    reader->m_filters += "aresample=" + rate + ',';
    if (speed != 1)
        reader->m_filters += tempoFilters(speed);
    reader->m_filters += QByteArray("aformat=sample_fmts=") +
                         av_get_sample_fmt_name(format.sampleFormat) + ":sample_rates=" + rate +
                         ":channel_layouts=" + layoutName(format.layout.get());
    return reader;
}

/// Rebuilds the filters when the stream changes its format.
int AudioSegmentReader::useFormatOf(AVFrame& frame, const Sink& sink) {
    if (frame.ch_layout.order == AV_CHANNEL_ORDER_UNSPEC)
        av_channel_layout_default(&frame.ch_layout, frame.ch_layout.nb_channels);
    const QByteArray layout = layoutName(frame.ch_layout);
    if (frame.sample_rate <= 0 || frame.sample_rate > kHighestRate || frame.nb_samples <= 0)
        return AVERROR_INVALIDDATA;
    if (frame.format == m_format && frame.sample_rate == m_rate && layout == m_layout)
        return 0;
    if (m_graph.graph)
        if (const int code = send(nullptr, sink); code < 0)
            return code;
    if (m_rate > 0)
        m_position = av_rescale(m_position, frame.sample_rate, m_rate);
    m_format = frame.format;
    m_rate = frame.sample_rate;
    m_layout = layout;
    const char* format = av_get_sample_fmt_name(static_cast<AVSampleFormat>(m_format));
    const QByteArray rate = QByteArray::number(m_rate);
    return m_graph.build("a",
                         "time_base=1/" + rate + ":sample_rate=" + rate + ":sample_fmt=" +
                             (format != nullptr ? format : "") + ":channel_layout=" + m_layout,
                         m_filters, 1);
}

int AudioSegmentReader::send(AVFrame* frame, const Sink& sink) {
    int code = av_buffersrc_add_frame(m_graph.source, frame);
    const Frame out(av_frame_alloc());
    if (!out)
        return AVERROR(ENOMEM);
    while (code >= 0 && (code = av_buffersink_get_frame(m_graph.sink, out.get())) >= 0) {
        code = sink(*out);
        av_frame_unref(out.get());
    }
    return code == AVERROR(EAGAIN) || code == AVERROR_EOF ? 0 : code;
}

int AudioSegmentReader::feedSilence(const AVFrame& like, std::int64_t count, const Sink& sink) {
    if (count > ticksToUnits(kLongestFiller, m_rate))
        return AVERROR(ERANGE);
    int code = 0;
    while (count > 0 && code >= 0) {
        const int chunk = static_cast<int>(std::min<std::int64_t>(count, kSilenceChunk));
        const Frame frame = newAudioFrame(formatOf(like), chunk);
        if (!frame)
            return AVERROR(ENOMEM);
        av_samples_set_silence(frame->extended_data, 0, chunk, like.ch_layout.nb_channels,
                               static_cast<AVSampleFormat>(like.format));
        frame->pts = m_position;
        m_position += chunk;
        count -= chunk;
        code = send(frame.get(), sink);
    }
    return code;
}

int AudioSegmentReader::feed(AVFrame& frame, std::int64_t skip, std::int64_t count,
                             const Sink& sink) {
    const auto start = m_position;
    m_position += count;
    frame.pts = start;
    if (skip == 0) {
        frame.nb_samples = static_cast<int>(count);
        return send(&frame, sink);
    }
    const Frame rest = newAudioFrame(formatOf(frame), static_cast<int>(count));
    if (!rest)
        return AVERROR(ENOMEM);
    av_samples_copy(rest->extended_data, frame.extended_data, 0, static_cast<int>(skip),
                    static_cast<int>(count), frame.ch_layout.nb_channels,
                    static_cast<AVSampleFormat>(frame.format));
    rest->pts = start;
    return send(rest.get(), sink);
}

std::int64_t AudioSegmentReader::heardOf(const AVFrame& frame) const {
    const auto time = m_source->time(frame.best_effort_timestamp);
    // What begins behind the end is there although the announcement, for fragments say, is wrong.
    if (!m_end || !time || *time >= *m_end)
        return frame.nb_samples;
    return std::min<std::int64_t>(frame.nb_samples, ticksToUnits(*m_end - *time, m_rate));
}

int AudioSegmentReader::takeFrame(AVFrame& frame, const Sink& sink) {
    if (const int code = useFormatOf(frame, sink); code < 0)
        return code;
    const std::int64_t total = ticksToUnits(m_stretch.sourceEnd - m_stretch.sourceStart, m_rate);
    const auto time = m_source->time(frame.best_effort_timestamp);
    std::int64_t offset = time ? ticksToUnits(*time - m_stretch.sourceStart, m_rate) : m_position;
    if (m_begun && std::abs(offset - m_position) <= m_rate / kToleratedPart)
        offset = m_position;
    const std::int64_t skip = std::max<std::int64_t>(m_position - offset, 0);
    const std::int64_t heard = heardOf(frame);
    if (skip >= heard)
        return 0;
    m_begun = true;
    const std::int64_t gap =
        std::min(std::max<std::int64_t>(offset - m_position, 0), total - m_position);
    if (const int code = gap > 0 ? feedSilence(frame, gap, sink) : 0; code < 0)
        return code;
    const std::int64_t count = std::min(heard - skip, total - m_position);
    if (count > 0)
        if (const int code = feed(frame, skip, count, sink); code < 0)
            return code;
    return m_position >= total ? 1 : 0;
}

/// Starts again at the beginning of the file after a seek that went too far.
bool AudioSegmentReader::rewindIfLate(const AVFrame* frame) {
    const auto time =
        frame != nullptr ? m_source->time(frame->best_effort_timestamp) : std::optional<Ticks>();
    const bool late = !time || *time > m_stretch.sourceStart;
    const bool again = m_sought && late && m_source->rewind();
    m_sought = false;
    if (again) {
        m_decoder->flush();
        m_decoder->forgetDamage();
    }
    return again;
}

int AudioSegmentReader::run(const Sink& sink, const std::function<bool()>& stopped) {
    const auto read = [this](AVPacket& packet) { return m_source->read(packet); };
    const Frame frame(av_frame_alloc());
    int code = frame ? 0 : AVERROR(ENOMEM);
    while (code == 0) {
        if (stopped())
            return AVERROR_EXIT;
        code = m_decoder->next(*frame, read);
        if (m_sought && rewindIfLate(code >= 0 ? frame.get() : nullptr)) {
            code = 0;
            continue;
        }
        if (code < 0)
            break;
        m_decodedAny = true;
        code = takeFrame(*frame, sink);
        if (code == AVERROR_INVALIDDATA)
            code = 0;
        av_frame_unref(frame.get());
    }
    if (code != 1 && code != AVERROR_EOF)
        return code;
    return m_graph.graph ? send(nullptr, sink) : 0;
}

Result<void> AudioSegmentReader::check() const {
    if (!m_decodedAny)
        return m_source->failed(ErrorCode::InvalidData, nothingDecoded(*m_decoder));
    const auto announced = m_source->announcedEnd();
    if (!announced || m_rate <= 0)
        return {};
    const Ticks wanted = std::min(*announced, m_stretch.sourceEnd) - m_stretch.sourceStart;
    const Ticks got = ticksOf(m_position, {1, m_rate}).value_or(wanted);
    if (wanted - got <= std::max(kToleratedAudioLoss, wanted / 20))
        return {};
    return m_source->failed(ErrorCode::InvalidData,
                            {kAudioBreaksOff, {secondsText(m_stretch.sourceStart + got)}});
}

std::optional<Ticks> audioEndOf(PlannedSegment& segment, const std::function<bool()>& stopped) {
    const std::optional<Ticks> announced = segment.facts->end;
    if (!announced || *announced >= segment.stretch.sourceEnd)
        return announced;
    const auto source = openSegment(segment, AVMEDIA_TYPE_AUDIO);
    const Packet packet(av_packet_alloc());
    if (!source || !packet || knowsItsEnd((*source)->context()))
        return announced;
    // Read from the start where no seek leads near the end.
    (void)(*source)->seekBefore(*announced);
    std::optional<Ticks> end;
    while (!stopped() && (*source)->read(*packet) >= 0) {
        const auto time = (*source)->time(packet->pts);
        const auto length =
            ticksOf(std::max<std::int64_t>(packet->duration, 0), (*source)->stream().time_base);
        if (time && length)
            end = std::max(end.value_or(0), *time + *length);
        av_packet_unref(packet.get());
    }
    return end ? end : announced;
}

} // namespace clipheave::platform
