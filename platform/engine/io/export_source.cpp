// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/io/export_source.h"

#include "platform/media/model/cv_pixel_buffer.h"

#include <QFileInfo>

#include <algorithm>

namespace clipheave::platform {

namespace {

/// Packets may look far ahead for their codec parameters: the file is read in full anyway.
constexpr std::int64_t kExportProbeBytes = 16 << 20;
constexpr int kMostUnreadable = 100; ///< failing reads in a row after which a file is at its end
/// Containers without an index are entered this much earlier, for a keyframe to come by.
constexpr Ticks kSeekMargin = kTicksPerSecond * 10;
/// Audio decoders need some packets before the first good sample.
constexpr Ticks kAudioPreroll = kTicksPerSecond / 4;
/// So much may be missing at the end of a file.
constexpr Ticks kToleratedCut = kTicksPerSecond / 2;
/// Packets from a place found by its time; more than lie between a keyframe and the end.
constexpr int kMostLookedAt = 2000;
constexpr const char* kSourceText = "read the source";

constexpr int kIndexedReadAhead = 4 << 10;
constexpr int kPlainReadAhead = 32 << 10;

/// ISO base media files are read by their index, one stream here and there.
InputLimits readingOf(FileReader& reader) {
    InputLimits limits = InputLimits::none();
    const ByteView head = reader.viewUpTo(0, 8);
    const QByteArray type =
        head.size() < 8
            ? QByteArray()
            : QByteArray(static_cast<const char*>(static_cast<const void*>(head.data())) + 4, 4);
    const bool indexed = type == "ftyp" || type == "moov" || type == "mdat" || type == "wide" ||
                         type == "free" || type == "skip";
    limits.readAhead = indexed ? kIndexedReadAhead : kPlainReadAhead;
    limits.direct = true;
    return limits;
}

bool hasSampleTable(const AVFormatContext& context) {
    return QByteArray(context.iformat->name).startsWith("mov,");
}

bool hasExactIndex(const AVFormatContext& context) {
    return hasSampleTable(context) || QByteArray(context.iformat->name).startsWith("matroska,");
}

} // namespace

tl::unexpected<Error> ExportSource::failed(ErrorCode code, const QString& detail) const {
    return failure(code, QString::fromLatin1(kSourceText), path(), detail);
}

bool ExportSource::chooseStream(AVMediaType type, int index) {
    AVFormatContext& from = context();
    int seen = 0;
    for (unsigned i = 0; i < from.nb_streams; ++i) {
        AVStream& stream = *from.streams[i];
        const bool wanted = stream.codecpar->codec_type == type &&
                            (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) == 0;
        const bool chosen = wanted && seen++ == index;
        stream.discard = chosen ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
        if (chosen)
            m_stream = &stream;
    }
    return m_stream != nullptr;
}

Result<std::unique_ptr<ExportSource>> ExportSource::open(const QString& path, AVMediaType type,
                                                         int index) {
    Result<FileReader> reader = FileReader::open(path);
    if (!reader)
        return tl::unexpected(reader.error());
    std::unique_ptr<ExportSource> source(new ExportSource(std::move(*reader)));
    auto input = FileInput::open(source->m_reader, readingOf(source->m_reader));
    if (!input)
        return tl::unexpected(input.error());
    source->m_input = std::move(*input);
    AVFormatContext& context = source->context();
    context.flags |= AVFMT_FLAG_GENPTS;
    context.probesize = kExportProbeBytes;
    // Deliberate: where the video tells its times only when it is decoded, it is, for the audio
    // too. Both count from the earliest, and would begin side by side otherwise.
    const bool audioAlone = type == AVMEDIA_TYPE_AUDIO && hasSampleTable(context);
    const auto use = audioAlone ? StreamsOfUse::Audio : StreamsOfUse::All;
    if (!source->m_input->findStreamInfo(use))
        return source->failed(ErrorCode::InvalidData, QStringLiteral("the streams cannot be read"));
    source->m_origin = ticksOf(startMicroseconds(context), AV_TIME_BASE_Q).value_or(0);
    if (!source->chooseStream(type, index))
        return source->failed(ErrorCode::NotSupported, type == AVMEDIA_TYPE_VIDEO
                                                           ? QStringLiteral("there is no film")
                                                           : QStringLiteral("there is no sound"));
    return source;
}

std::optional<Ticks> ExportSource::time(std::int64_t timestamp) const {
    const auto ticks = ticksOf(timestamp, m_stream->time_base);
    return ticks ? std::optional(*ticks - m_origin) : std::nullopt;
}

bool ExportSource::isPieceOfStream() const {
    const int count = hasSampleTable(context()) ? avformat_index_get_entries_count(m_stream) : 0;
    const AVIndexEntry* first = avformat_index_get_entry(m_stream, 0);
    const AVIndexEntry* last = avformat_index_get_entry(m_stream, count - 1);
    return count > 0 && first != nullptr && last != nullptr && first->timestamp > 0 &&
           m_stream->duration > last->timestamp;
}

std::optional<Ticks> ExportSource::announcedEnd() const {
    const bool estimated = context().duration_estimation_method == AVFMT_DURATION_FROM_BITRATE;
    if (estimated || isPieceOfStream() || m_stream->start_time == kNoTimestamp ||
        m_stream->duration <= 0)
        return std::nullopt;
    const auto start = time(m_stream->start_time);
    const auto length = ticksOf(m_stream->duration, m_stream->time_base);
    return start && length ? std::optional(*start + *length) : std::nullopt;
}

int ExportSource::read(AVPacket& packet) {
    for (int failures = 0; failures < kMostUnreadable; ++failures) {
        int code = av_read_frame(&context(), &packet);
        while (code >= 0 && packet.stream_index != m_stream->index) {
            av_packet_unref(&packet);
            code = av_read_frame(&context(), &packet);
        }
        if (code >= 0 || code == AVERROR_EOF || code == AVERROR(ENOMEM) || code == AVERROR_EXIT)
            return code;
        ++m_unreadable;
    }
    return AVERROR_EOF;
}

bool ExportSource::seekBefore(Ticks time) {
    const bool audio = codec().codec_type == AVMEDIA_TYPE_AUDIO;
    const Ticks margin = audio ? kAudioPreroll : hasExactIndex(context()) ? 0 : kSeekMargin;
    if (time <= margin)
        return false;
    const std::int64_t wanted = ticksTo(time - margin + m_origin, m_stream->time_base);
    return av_seek_frame(&context(), m_stream->index, wanted, AVSEEK_FLAG_BACKWARD) >= 0;
}

bool ExportSource::rewind() {
    return avformat_seek_file(&context(), m_stream->index, INT64_MIN, INT64_MIN, INT64_MAX, 0) >=
               0 ||
           av_seek_frame(&context(), -1, 0, AVSEEK_FLAG_BYTE) >= 0;
}

bool ExportSource::fileReaches(Ticks time) {
    AVFormatContext& from = context();
    for (unsigned i = 0; i < from.nb_streams; ++i)
        from.streams[i]->discard = AVDISCARD_DEFAULT;
    const std::int64_t wanted = ticksTo(time - kToleratedCut + m_origin, AV_TIME_BASE_Q);
    const Packet packet(av_packet_alloc());
    if (!packet || avformat_seek_file(&from, -1, INT64_MIN, wanted, INT64_MAX, 0) < 0)
        return false;
    for (int tried = 0; tried < kMostLookedAt && av_read_frame(&from, packet.get()) >= 0; ++tried) {
        const AVRational base = from.streams[packet->stream_index]->time_base;
        const auto end = ticksOf(std::max(packet->pts, packet->dts), base);
        av_packet_unref(packet.get());
        if (end && *end - m_origin >= time - kToleratedCut * 2)
            return true;
    }
    return false;
}

Result<void> ExportSource::checkComplete() const {
    if (!hasSampleTable(context()))
        return {};
    const auto size = static_cast<std::int64_t>(m_reader.size());
    const int count = avformat_index_get_entries_count(m_stream);
    for (int i = 0; i < count; ++i) {
        const AVIndexEntry* entry = avformat_index_get_entry(m_stream, i);
        if (entry == nullptr || (entry->pos >= 0 && entry->pos <= size - entry->size))
            continue;
        const Ticks at = entry != nullptr ? time(entry->timestamp).value_or(0) : 0;
        const Ticks end = announcedEnd().value_or(kFarthestTicks);
        if (end - at <= std::max(kToleratedCut, end / 50))
            return {};
        return failed(ErrorCode::InvalidData,
                      QStringLiteral("the file breaks off at %1 s")
                          .arg(std::max(ticksToSeconds(at), 0.0), 0, 'f', 1));
    }
    return {};
}

Result<std::unique_ptr<ExportDecoder>> ExportDecoder::open(ExportSource& source, int threads) {
    std::unique_ptr<ExportDecoder> decoder(new ExportDecoder(source));
    const AVCodecParameters& parameters = source.codec();
    const AVCodec* codec = avcodec_find_decoder(parameters.codec_id);
    if (codec == nullptr)
        return source.failed(ErrorCode::NotSupported,
                             QStringLiteral("no decoder for ") +
                                 QString::fromLatin1(avcodec_get_name(parameters.codec_id)));
    decoder->m_codec.reset(avcodec_alloc_context3(codec));
    AVCodecContext* context = decoder->m_codec.get();
    if (context == nullptr || !decoder->m_packet ||
        avcodec_parameters_to_context(context, &parameters) < 0)
        return source.failed(ErrorCode::Io, ffmpegText(AVERROR(ENOMEM)));
    context->pkt_timebase = source.stream().time_base;
    context->thread_count = threads;
    context->max_pixels = CVPixelBuffer::kMostPixels;
    if (const int code = avcodec_open2(context, codec, nullptr); code < 0)
        return source.failed(ErrorCode::NotSupported, ffmpegText(code));
    return decoder;
}

void ExportDecoder::countDamage(int code) {
    ++m_damaged;
    m_complaint = code;
}

int ExportDecoder::next(AVFrame& frame) {
    for (;;) {
        int code = avcodec_receive_frame(m_codec.get(), &frame);
        if (code >= 0 || code == AVERROR_EOF || code == AVERROR(ENOMEM))
            return code;
        if (code != AVERROR(EAGAIN)) {
            countDamage(code);
            if (m_drained)
                return AVERROR_EOF;
        }
        code = m_source.read(*m_packet);
        if (code < 0 && code != AVERROR_EOF)
            return code;
        m_drained = code == AVERROR_EOF;
        code = avcodec_send_packet(m_codec.get(), m_drained ? nullptr : m_packet.get());
        av_packet_unref(m_packet.get());
        if (code == AVERROR(ENOMEM))
            return code;
        if (code < 0 && code != AVERROR_EOF)
            countDamage(code);
    }
}

void ExportDecoder::restart() {
    avcodec_flush_buffers(m_codec.get());
    m_drained = false;
    m_damaged = 0;
}

QString damageNote(const ExportSource& source, int damaged) {
    const int count = damaged + source.unreadable();
    if (count == 0)
        return {};
    const bool audio = source.codec().codec_type == AVMEDIA_TYPE_AUDIO;
    return QStringLiteral("%1: damaged pieces of the %2 left out: %3")
        .arg(QFileInfo(source.path()).fileName(),
             audio ? QStringLiteral("sound") : QStringLiteral("film"))
        .arg(count);
}

} // namespace clipheave::platform
