// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/io/stream_source.h"

#include "platform/engine/messages.h"

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
/// How much may be missing at the end of a file.
constexpr Ticks kToleratedCut = kTicksPerSecond / 2;
/// Packets from a place found by its time; more than lie between a keyframe and the end.
constexpr int kMostLookedAt = 2000;

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

tl::unexpected<Error> StreamSource::failed(ErrorCode code, const Message& detail) const {
    return failure(code, kReadSource, path(), detail);
}

bool StreamSource::chooseStream(AVMediaType type, int index) {
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

Result<std::unique_ptr<StreamSource>> StreamSource::open(const QString& path, AVMediaType type,
                                                         int index) {
    Result<FileReader> reader = FileReader::open(path);
    if (!reader)
        return tl::unexpected(reader.error());
    std::unique_ptr<StreamSource> source(new StreamSource(std::move(*reader)));
    auto input = FileInput::open(source->m_reader, readingOf(source->m_reader));
    if (!input)
        return tl::unexpected(input.error());
    source->m_input = std::move(*input);
    AVFormatContext& context = source->context();
    context.flags |= AVFMT_FLAG_GENPTS;
    context.probesize = kExportProbeBytes;
    // Deliberate: where the times of the video are known only once it is decoded, it is decoded for
    // the audio too. Both count from the earliest, and would start side by side otherwise.
    const bool audioAlone = type == AVMEDIA_TYPE_AUDIO && hasSampleTable(context);
    const auto use = audioAlone ? StreamsOfUse::Audio : StreamsOfUse::All;
    if (!source->m_input->findStreamInfo(use))
        return source->failed(ErrorCode::InvalidData, kStreamsUnreadable);
    source->m_origin = ticksOf(startMicroseconds(context), AV_TIME_BASE_Q).value_or(0);
    if (!source->chooseStream(type, index))
        return source->failed(ErrorCode::NotSupported,
                              type == AVMEDIA_TYPE_VIDEO ? kNoVideoTrack : kNoAudioTrack);
    return source;
}

std::optional<Ticks> StreamSource::time(std::int64_t timestamp) const {
    const auto ticks = ticksOf(timestamp, m_stream->time_base);
    return ticks ? std::optional(*ticks - m_origin) : std::nullopt;
}

bool StreamSource::isCutOut() const {
    const int count = hasSampleTable(context()) ? avformat_index_get_entries_count(m_stream) : 0;
    const AVIndexEntry* first = avformat_index_get_entry(m_stream, 0);
    const AVIndexEntry* last = avformat_index_get_entry(m_stream, count - 1);
    return count > 0 && first != nullptr && last != nullptr && first->timestamp > 0 &&
           m_stream->duration > last->timestamp;
}

std::optional<Ticks> StreamSource::announcedEnd() const {
    const bool estimated = context().duration_estimation_method == AVFMT_DURATION_FROM_BITRATE;
    if (estimated || isCutOut() || m_stream->start_time == kNoTimestamp || m_stream->duration <= 0)
        return std::nullopt;
    const auto start = time(m_stream->start_time);
    const auto length = ticksOf(m_stream->duration, m_stream->time_base);
    return start && length ? std::optional(*start + *length) : std::nullopt;
}

int StreamSource::read(AVPacket& packet) {
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

bool StreamSource::seekBefore(Ticks time) {
    const bool audio = codec().codec_type == AVMEDIA_TYPE_AUDIO;
    const Ticks margin = audio ? kAudioPreroll : hasExactIndex(context()) ? 0 : kSeekMargin;
    if (time <= margin)
        return false;
    const std::int64_t wanted = ticksTo(time - margin + m_origin, m_stream->time_base);
    return av_seek_frame(&context(), m_stream->index, wanted, AVSEEK_FLAG_BACKWARD) >= 0;
}

bool StreamSource::rewind() {
    return avformat_seek_file(&context(), m_stream->index, INT64_MIN, INT64_MIN, INT64_MAX, 0) >=
               0 ||
           av_seek_frame(&context(), -1, 0, AVSEEK_FLAG_BYTE) >= 0;
}

bool StreamSource::fileReaches(Ticks time) {
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

Result<void> StreamSource::checkComplete() const {
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
                      {kFileBreaksOff, {secondsText(std::max<Ticks>(at, 0))}});
    }
    return {};
}

Message damageNote(const StreamSource& source, int damaged) {
    const int count = damaged + source.unreadable();
    if (count == 0)
        return {};
    const bool audio = source.codec().codec_type == AVMEDIA_TYPE_AUDIO;
    return {audio ? kDamagedAudioPackets : kDamagedVideoPackets,
            {QFileInfo(source.path()).fileName(), QString::number(count)}};
}

} // namespace clipheave::platform
