// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/export/lane_writer.h"

#include "platform/engine/io/chapters.h"
#include "platform/engine/io/container_codecs.h"
#include "platform/engine/messages.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace clipheave::platform {

namespace {

constexpr std::chrono::milliseconds kReportPatience{100};
constexpr std::array<double, 9> kIdentityMatrix{1, 0, 0, 0, 1, 0, 0, 0, 1};

const char* muxerName(ExportContainer container) {
    switch (container) {
    case ExportContainer::QuickTimeMovie:
        return "mov";
    case ExportContainer::M4A:
    case ExportContainer::M4V:
        return "ipod";
    case ExportContainer::Mp4:
        break;
    }
    return "mp4";
}

/// Returns fixed point as in the track header: the last column has 30 bits behind the point.
std::array<std::int32_t, 9> fixedMatrix(const std::array<double, 9>& matrix) {
    std::array<std::int32_t, 9> fixed{};
    for (std::size_t i = 0; i < matrix.size(); ++i) {
        const double unit = i % 3 == 2 ? 1 << 30 : 1 << 16;
        const double value = std::isfinite(matrix[i]) ? matrix[i] * unit : 0;
        fixed[i] = static_cast<std::int32_t>(std::clamp(value, -2147483648.0, 2147483647.0));
    }
    return fixed;
}

/// Returns the language's name among those that the muxer of QuickTime movies knows; it drops
/// others, such as the codes that MP4 files have for the same languages.
const char* movieLanguage(const QByteArray& language) {
    constexpr std::array<std::array<const char*, 2>, 10> kNames{{{"deu", "ger"},
                                                                 {"nld", "dut"},
                                                                 {"swe", "sve"},
                                                                 {"ell", "gre"},
                                                                 {"isl", "ice"},
                                                                 {"zho", "chi"},
                                                                 {"sqi", "alb"},
                                                                 {"hye", "arm"},
                                                                 {"kat", "geo"},
                                                                 {"msa", "may"}}};
    for (const auto& [code, name] : kNames)
        if (language == code)
            return name;
    return language.constData();
}

/// Writes packets of all lanes and reports.
class LaneWriter {
public:
    LaneWriter(PacketLanes& lanes, FileOutput& output, Ticks end,
               const std::function<bool(double)>& progress)
        : m_lanes(lanes), m_output(output), m_end(end), m_progress(progress),
          m_written(lanes.count()) {}

    Result<void> begin(const ExportPlan& plan, const PlannedExport& planned);
    Result<void> writeAll();

private:
    /// A track so far, in the time base of its lane. The newest packet waits for the next one.
    struct Written {
        AVStream* stream = nullptr;
        Packet newest;
        std::int64_t firstDts = 0, firstPts = 0, end = 0;
        int packets = 0, damaged = 0;
    };
    Result<void> waitForTracks();
    Result<void> addTracks();
    Result<void> addTrack(OutputTrack& track, AVStream*& stream);
    static bool addSideDataOf(const OutputTrack& track, AVStream& stream);
    Result<void> report(Ticks written);
    Result<void> write(Packet packet, std::size_t lane);
    Result<void> writeNewest(std::size_t lane);
    static void endVideo(const Written& written, AVPacket& packet);
    Result<void> writeRest();

    PacketLanes& m_lanes;
    FileOutput& m_output;
    Ticks m_end;
    const std::function<bool(double)>& m_progress;
    std::vector<Written> m_written; ///< by lane
    std::chrono::steady_clock::time_point m_lastReport{};
    double m_done = 0;
};

Result<void> LaneWriter::report(Ticks written) {
    const auto now = std::chrono::steady_clock::now();
    if (!m_progress || now - m_lastReport < kReportPatience / 2)
        return {};
    m_lastReport = now;
    const double part = static_cast<double>(written) / static_cast<double>(m_end);
    m_done = std::clamp(part, m_done, 1.0);
    if (!m_progress(m_done))
        return failure(ErrorCode::Cancelled, kWriteExport);
    return {};
}

Result<void> LaneWriter::waitForTracks() {
    for (;;) {
        const auto outcome = m_lanes.waitForTracks(kReportPatience);
        if (outcome == PacketLanes::Outcome::Failed)
            return tl::unexpected(m_lanes.error());
        if (outcome == PacketLanes::Outcome::Ready)
            return {};
        if (auto reported = report(0); !reported)
            return reported;
    }
}

bool LaneWriter::addSideDataOf(const OutputTrack& track, AVStream& stream) {
    const auto add = [&](AVPacketSideDataType type, const void* bytes, std::size_t size) {
        std::uint8_t* to = addSideData(stream, type, size);
        if (to != nullptr)
            std::copy_n(static_cast<const std::uint8_t*>(bytes), size, to);
        return to != nullptr;
    };
    for (const OutputTrack::SideData& data : track.sideData)
        if (!add(data.type, data.bytes.constData(), static_cast<std::size_t>(data.bytes.size())))
            return false;
    if (!track.displayMatrix || *track.displayMatrix == kIdentityMatrix)
        return true;
    const auto fixed = fixedMatrix(*track.displayMatrix);
    return add(AV_PKT_DATA_DISPLAYMATRIX, fixed.data(), sizeof fixed);
}

Result<void> LaneWriter::addTrack(OutputTrack& track, AVStream*& stream) {
    AVFormatContext& format = *m_output.context();
    AVCodecParameters& codec = *track.parameters;
    if (codec.codec_id == AV_CODEC_ID_NONE)
        return failure(ErrorCode::NotSupported, kWriteExport, {}, noDecoder(codec));
    if (!holdsCodec(*format.oformat, codec.codec_id, FF_COMPLIANCE_EXPERIMENTAL))
        return cannotHold(kWriteExport, format, {codecName(codec.codec_id)});
    codec.codec_tag = codecTag(*format.oformat, codec);
    stream = avformat_new_stream(&format, nullptr);
    if (stream == nullptr || copyParameters(stream->codecpar, &codec) < 0 ||
        !addSideDataOf(track, *stream))
        return m_output.failed(kWriteExport, AVERROR(ENOMEM));
    stream->time_base = track.timeBase;
    stream->avg_frame_rate = track.frameRate;
    if (track.aspect.num > 0) {
        stream->sample_aspect_ratio = track.aspect;
        stream->codecpar->sample_aspect_ratio = track.aspect;
    }
    stream->disposition = AV_DISPOSITION_DEFAULT;
    if (!track.language.isEmpty())
        av_dict_set(&stream->metadata, "language",
                    QByteArray(format.oformat->name) == "mov" ? movieLanguage(track.language)
                                                              : track.language.constData(),
                    0);
    return {};
}

Result<void> LaneWriter::addTracks() {
    for (std::size_t lane = 0; lane < m_lanes.count(); ++lane)
        if (OutputTrack* track = m_lanes.track(lane))
            if (auto added = addTrack(*track, m_written[lane].stream); !added)
                return added;
    return {};
}

Result<void> LaneWriter::begin(const ExportPlan& plan, const PlannedExport& planned) {
    if (auto ready = waitForTracks(); !ready)
        return ready;
    if (auto added = addTracks(); !added)
        return added;
    AVFormatContext& format = *m_output.context();
    const bool rawVideo = std::any_of(m_written.begin(), m_written.end(), [](const Written& track) {
        return track.stream != nullptr && track.stream->codecpar->codec_id == AV_CODEC_ID_RAWVIDEO;
    });
    // Only a strict muxer names raw video by the order of its components.
    format.strict_std_compliance = rawVideo ? FF_COMPLIANCE_NORMAL : FF_COMPLIANCE_EXPERIMENTAL;
    if (!plan.chaptersOf.isEmpty())
        copyChaptersOfFile(plan.chaptersOf, static_cast<double>(planned.end) / kTicksPerSecond,
                           format);
    if (!planned.creationTime.isEmpty())
        av_dict_set(&format.metadata, "creation_time", planned.creationTime.constData(), 0);
    Dictionary options;
    if (plan.moovFirst)
        options.set("movflags", "+faststart");
    // Edit lists are written in the movie's timescale: as fine as the first track's.
    const AVRational base =
        m_lanes.track(0) != nullptr ? m_lanes.track(0)->timeBase : AVRational{1, 1000};
    int units = std::max(base.den, 1);
    while (units < 10'000) // so does the muxer with a track's time base
        units *= 2;
    options.set("movie_timescale", QByteArray::number(units).constData());
    auto begun = m_output.writeHeader(options);
    if (begun)
        return {};
    const QStringList refused = refusedCodecs(format);
    return refused.isEmpty() ? begun : cannotHold(kWriteExport, format, refused);
}

Result<void> LaneWriter::write(Packet packet, std::size_t lane) {
    Written& written = m_written[lane];
    const std::int64_t end = packet->duration > 0 ? packet->pts + packet->duration : packet->pts;
    if (written.newest) {
        written.end = std::max(written.end, end);
        if (auto done = writeNewest(lane); !done)
            return done;
    } else {
        written.firstDts = packet->dts;
        written.firstPts = packet->pts;
        written.end = end;
    }
    written.newest = std::move(packet);
    return {};
}

Result<void> LaneWriter::writeNewest(std::size_t lane) {
    Written& written = m_written[lane];
    AVPacket& packet = *written.newest;
    const AVRational base = m_lanes.track(lane)->timeBase;
    const Ticks time = ticksOf(packet.dts, base).value_or(0);
    packet.stream_index = written.stream->index;
    av_packet_rescale_ts(&packet, base, written.stream->time_base);
    // A duration of 0 is meant; the library would derive one from the frame rate.
    AVRational& rate = written.stream->avg_frame_rate;
    const AVRational known = std::exchange(rate, packet.duration == 0 ? AVRational{0, 1} : rate);
    const int code = av_write_frame(m_output.context(), &packet);
    rate = known;
    // No data of its codec, and the description is not missing: other packets were accepted.
    const bool isDamaged = code == AVERROR_INVALIDDATA && written.packets > written.damaged;
    ++(isDamaged ? written.damaged : written.packets);
    if (isDamaged)
        return report(time);
    if (code == AVERROR(EPERM) || code == AVERROR(EINVAL) || code == AVERROR_INVALIDDATA ||
        code == AVERROR_PATCHWELCOME)
        return failure(ErrorCode::NotSupported, kWriteExport, {},
                       {kCannotHoldAsItIs, {codecName(written.stream->codecpar->codec_id)}});
    if (code < 0)
        return m_output.failed(kWriteExport, code);
    return report(time);
}

/// The muxer takes the duration of a video from its last packet in decoding order, and the end of
/// its edit list too; the last one that is shown may be another. Decoding runs ahead of showing by
/// some frames, which is another time at the end where the rate has changed: the packet lasts at
/// least its own duration, no longer than the video, and is decoded later where the track would
/// still be shorter than what it shows.
void LaneWriter::endVideo(const Written& written, AVPacket& packet) {
    const std::int64_t own = std::max<std::int64_t>(packet.duration, 1);
    const std::int64_t shown = written.end - written.firstPts;
    packet.duration = std::clamp(shown - (packet.dts - written.firstDts), own,
                                 std::max(written.end - packet.pts, own));
    const std::int64_t late = written.firstDts + shown - packet.duration;
    packet.dts = std::max(packet.dts, std::min(late, packet.pts));
}

Result<void> LaneWriter::writeRest() {
    bool any = false;
    for (std::size_t lane = 0; lane < m_written.size(); ++lane) {
        const Written& written = m_written[lane];
        if (!written.newest)
            continue;
        any = true;
        if (written.stream->codecpar->codec_type == AVMEDIA_TYPE_VIDEO)
            endVideo(written, *written.newest);
        if (auto done = writeNewest(lane); !done)
            return done;
        if (written.damaged > 0)
            m_lanes.note({kDamagedPackets, {QString::number(written.damaged)}});
    }
    if (!any)
        return failure(ErrorCode::InvalidData, kWriteExport, {}, kNothingInRange);
    return {};
}

Result<void> LaneWriter::writeAll() {
    for (;;) {
        Packet packet;
        std::size_t lane = 0;
        const auto outcome = m_lanes.take(kReportPatience, packet, lane);
        if (outcome == PacketLanes::Outcome::Failed)
            return tl::unexpected(m_lanes.error());
        if (outcome == PacketLanes::Outcome::End)
            return writeRest();
        auto done =
            outcome == PacketLanes::Outcome::Ready ? write(std::move(packet), lane) : report(0);
        if (!done)
            return done;
    }
}

} // namespace

Result<void> writeLanes(PacketLanes& lanes, const ExportPlan& plan, const PlannedExport& planned,
                        const QString& target, const std::function<bool(double)>& progress) {
    auto output = FileOutput::create(muxerName(plan.container), target);
    if (!output)
        return tl::unexpected(output.error());
    LaneWriter writer(lanes, **output, std::max<Ticks>(planned.end, 1), progress);
    if (auto begun = writer.begin(plan, planned); !begun)
        return begun;
    if (auto written = writer.writeAll(); !written)
        return written;
    return (*output)->finish();
}

} // namespace clipheave::platform
