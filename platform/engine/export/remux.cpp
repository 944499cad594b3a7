// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/export/remux.h"

#include "platform/engine/export/timestamp_repair.h"
#include "platform/engine/io/chapters.h"
#include "platform/engine/io/container_codecs.h"
#include "platform/engine/io/file_input.h"
#include "platform/engine/io/file_output.h"
#include "platform/engine/messages.h"
#include "platform/foundation/file_manager.h"
#include "platform/media/model/messages.h"

#include <algorithm>
#include <vector>

namespace clipheave::platform {

namespace {

constexpr AVRational kMicroseconds{1, 1'000'000};
constexpr int kPacketsBetweenReports = 32;
// By this much the last packets of healthy files end before the duration of their headers.
constexpr double kLeastMissing = 1, kLeastMissingShare = 0.02; // seconds; of the duration
/// Packets may look far ahead for their codec parameters: the file is read in full anyway.
constexpr std::int64_t kRemuxProbeBytes = 16 << 20;

/// VP8 has a code in this family, but no box that describes it: the muxer would refuse it late.
bool holds(const AVOutputFormat& format, AVCodecID codec) {
    return codec != AV_CODEC_ID_VP8 && holdsCodec(format, codec, FF_COMPLIANCE_NORMAL);
}

/// Cover art carried as a stream is not a video.
bool mayBeLeftOut(const AVStream& stream) {
    const AVMediaType type = stream.codecpar->codec_type;
    return (type != AVMEDIA_TYPE_VIDEO && type != AVMEDIA_TYPE_AUDIO) ||
           (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0;
}

/// Broadcasts announce audio of which they send nothing: no muxer takes it.
bool isAnnouncedAlone(const AVCodecParameters& codec) {
    return codec.codec_type == AVMEDIA_TYPE_AUDIO &&
           (codec.sample_rate <= 0 || codec.ch_layout.nb_channels <= 0);
}

/// Returns what is left out; its streams are then discarded.
Result<Notes> addStreams(AVFormatContext& source, FileOutput& output, UnheldStreams unheld,
                         const QString& path) {
    QStringList refused, leftOut;
    for (unsigned i = 0; i < source.nb_streams; ++i) {
        AVStream& from = *source.streams[i];
        if (from.discard == AVDISCARD_ALL)
            continue;
        if (isAnnouncedAlone(*from.codecpar)) {
            leftOut << streamText(*from.codecpar);
            from.discard = AVDISCARD_ALL;
            continue;
        }
        const AVOutputFormat& format = *output.context()->oformat;
        if (!holds(format, from.codecpar->codec_id)) {
            const AVCodecParameters& codec = *from.codecpar;
            if (unheld == UnheldStreams::LeaveOut && mayBeLeftOut(from))
                leftOut << streamText(codec);
            else if (codec.codec_id == AV_CODEC_ID_NONE)
                return failure(ErrorCode::NotSupported, kCopyStreams, path, noDecoder(codec));
            else
                refused << codecName(codec.codec_id);
            from.discard = AVDISCARD_ALL;
            continue;
        }
        AVStream* to = avformat_new_stream(output.context(), nullptr);
        if (to == nullptr || copyParameters(to->codecpar, from.codecpar) < 0)
            return output.failed(kCopyStreams, AVERROR(ENOMEM));
        to->codecpar->codec_tag = codecTag(format, *from.codecpar);
        to->time_base = from.time_base;
        to->avg_frame_rate = from.avg_frame_rate;
        // Where container and codec disagree about the aspect ratio the container's is shown; the
        // muxer takes only one.
        to->sample_aspect_ratio = av_guess_sample_aspect_ratio(&source, &from, nullptr);
        to->codecpar->sample_aspect_ratio = to->sample_aspect_ratio;
        to->disposition = from.disposition;
        av_dict_copy(&to->metadata, from.metadata, 0);
        for (const AVPacketSideData& data : sideDataOf(from))
            if (std::uint8_t* copy = addSideData(*to, data.type, data.size))
                std::copy_n(data.data, data.size, copy);
    }
    if (!refused.isEmpty())
        return cannotHold(kCopyStreams, *output.context(), refused);
    if (output.context()->nb_streams == 0)
        return failure(ErrorCode::NotSupported, kCopyStreams, path, kNoStream);
    if (leftOut.isEmpty())
        return Notes();
    return Notes{Message(kStreamsLeftOut, {leftOut.join(QStringLiteral(", "))})};
}

/// Counts what is written and what the muxer finds not to be data of its codec.
struct PacketCount {
    int written = 0, damaged = 0;

    /// Returns the code that the copying goes on with.
    int add(int code, bool holdsData) {
        if (code == AVERROR_INVALIDDATA) {
            ++damaged;
            return 0;
        }
        written += code >= 0 && holdsData ? 1 : 0;
        return code;
    }
};

/// What the copying of all packets came to.
struct CopiedPackets {
    int damaged = 0;    ///< left out
    double seconds = 0; ///< from the start of the source to the end of its last packet
};

/// Copies the packets of the wanted streams.
class PacketCopy {
public:
    PacketCopy(AVFormatContext& source, FileOutput& output,
               const std::function<bool(double)>& progress);
    Result<CopiedPackets> run();

private:
    struct Lane {
        TimestampRepair repair;
        int target = -1; ///< of the output; -1: not wanted
        std::int64_t written = kNoTimestamp;
    };
    int readOne();
    int write(Lane& lane, const AVStream& from, AVPacket& packet);
    int writeReady(std::size_t index);
    int writeRest();
    [[nodiscard]] bool goOn();

    AVFormatContext& m_source;
    FileOutput& m_output;
    const std::function<bool(double)>& m_progress;
    std::vector<Lane> m_lanes; ///< by source stream
    std::vector<Packet> m_ready;
    PacketCount m_packets;
    double m_done = 0, m_end = 0;
    int m_untilReport = kPacketsBetweenReports;
    bool m_cancelled = false;
};

PacketCopy::PacketCopy(AVFormatContext& source, FileOutput& output,
                       const std::function<bool(double)>& progress)
    : m_source(source), m_output(output), m_progress(progress) {
    int wanted = 0;
    for (unsigned i = 0; i < source.nb_streams; ++i) {
        const AVStream& stream = *source.streams[i];
        const std::int64_t start =
            av_rescale_q(startMicroseconds(source), kMicroseconds, stream.time_base);
        m_lanes.push_back({TimestampRepair(stream, start),
                           stream.discard == AVDISCARD_ALL ? -1 : wanted++, kNoTimestamp});
    }
}

bool PacketCopy::goOn() {
    if (!m_progress || --m_untilReport > 0)
        return true;
    m_untilReport = kPacketsBetweenReports;
    m_cancelled = !m_progress(m_done);
    return !m_cancelled;
}

/// Converts to the muxer's units, which may be coarser: rising there too.
int PacketCopy::write(Lane& lane, const AVStream& from, AVPacket& packet) {
    m_end =
        std::max(m_end, static_cast<double>(packet.pts + packet.duration) * av_q2d(from.time_base));
    if (m_source.duration > 0)
        m_done = std::clamp(static_cast<double>(packet.dts) * av_q2d(from.time_base) /
                                (static_cast<double>(m_source.duration) * 1e-6),
                            m_done, 1.0);
    packet.stream_index = lane.target;
    av_packet_rescale_ts(&packet, from.time_base,
                         m_output.context()->streams[lane.target]->time_base);
    if (lane.written != kNoTimestamp && packet.dts <= lane.written)
        packet.dts = lane.written + 1;
    packet.pts = std::max(packet.pts, packet.dts);
    lane.written = packet.dts;
    packet.pos = -1;
    const bool holdsData = packet.size > 0;
    const int code =
        m_packets.add(av_interleaved_write_frame(m_output.context(), &packet), holdsData);
    return code < 0 || goOn() ? code : AVERROR_EXIT;
}

int PacketCopy::writeReady(std::size_t index) {
    int code = 0;
    for (const Packet& packet : m_ready)
        if (code >= 0)
            code = write(m_lanes[index], *m_source.streams[index], *packet);
    m_ready.clear();
    return code;
}

int PacketCopy::readOne() {
    Packet packet(av_packet_alloc());
    if (!packet)
        return AVERROR(ENOMEM);
    if (const int code = av_read_frame(&m_source, packet.get()); code < 0)
        return code;
    const auto index = static_cast<std::size_t>(packet->stream_index);
    if (packet->stream_index < 0 || index >= m_lanes.size() || m_lanes[index].target < 0)
        return 0; // not wanted, or appeared after the header
    m_lanes[index].repair.push(std::move(packet), m_ready);
    return writeReady(index);
}

int PacketCopy::writeRest() {
    int code = 0;
    for (std::size_t i = 0; i < m_lanes.size() && code >= 0; ++i) {
        m_lanes[i].repair.finish(m_ready);
        code = writeReady(i);
    }
    return code;
}

Result<CopiedPackets> PacketCopy::run() {
    int code = 0;
    while (code >= 0)
        code = readOne();
    if (code == AVERROR_EOF)
        code = writeRest();
    if (m_cancelled)
        return failure(ErrorCode::Cancelled, kCopyStreams);
    if (code < 0)
        return m_output.failed(kCopyStreams, code);
    if (m_packets.damaged > m_packets.written)
        return m_output.failed(kCopyStreams, AVERROR_INVALIDDATA);
    if (m_packets.written == 0)
        return failure(ErrorCode::InvalidData, kCopyStreams, {}, kStreamsEmpty);
    return CopiedPackets{m_packets.damaged, m_end};
}

/// Returns a note when the packets end well before the duration of the file's header: the file was
/// cut. A duration that libavformat has guessed says nothing.
Notes noteOnEnd(const AVFormatContext& source, double seconds) {
    if (source.duration_estimation_method != AVFMT_DURATION_FROM_STREAM || source.duration <= 0)
        return {};
    const double announced = static_cast<double>(source.duration) * 1e-6;
    if (announced - seconds <= std::max(kLeastMissing, kLeastMissingShare * announced))
        return {};
    return {Message(kEndsBeforeDuration,
                    {QString::number(seconds, 'f', 1), QString::number(announced, 'f', 1)})};
}

} // namespace

Result<Notes> remuxFile(const QString& source, const QString& target, RemuxTarget kind,
                        UnheldStreams unheld, const std::function<bool(double)>& progress) {
    // Opening the target empties it.
    if (NSFileManager::defaultManager().isSameFile(source, target))
        return failure(ErrorCode::InvalidArgument, kCopyStreams, target, kTargetIsSource);
    Result<FileReader> reader = FileReader::open(source);
    if (!reader)
        return tl::unexpected(reader.error());
    auto input = FileInput::open(*reader, InputLimits::none());
    if (!input)
        return tl::unexpected(input.error());
    AVFormatContext& from = *(*input)->context();
    from.flags |= AVFMT_FLAG_GENPTS;
    from.probesize = kRemuxProbeBytes;
    if (!(*input)->findStreamInfo())
        return failure(ErrorCode::InvalidData, kReadStreams, source);

    auto output = FileOutput::create(kind == RemuxTarget::QuickTimeMovie ? "mov" : "mp4", target);
    if (!output)
        return tl::unexpected(output.error());
    auto notes = addStreams(from, **output, unheld, source);
    if (!notes)
        return notes;
    av_dict_copy(&(*output)->context()->metadata, from.metadata, 0);
    *notes += copyChapters(from, *(*output)->context());
    Dictionary options;
    if (auto begun = (*output)->writeHeader(options); !begun) {
        const QStringList refused = refusedCodecs(*(*output)->context());
        return refused.isEmpty() ? tl::unexpected(begun.error())
                                 : cannotHold(kCopyStreams, *(*output)->context(), refused);
    }
    const auto copied = PacketCopy(from, **output, progress).run();
    if (!copied)
        return tl::unexpected(copied.error());
    if (copied->damaged > 0)
        notes->append(Message(kDamagedPackets, {QString::number(copied->damaged)}));
    *notes += noteOnEnd(from, copied->seconds);
    if (progress)
        progress(1);
    if (auto finished = (*output)->finish(); !finished)
        return tl::unexpected(finished.error());
    return notes;
}

} // namespace clipheave::platform
