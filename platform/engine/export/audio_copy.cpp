// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/export/audio_copy.h"

#include "platform/engine/io/chapters.h"
#include "platform/engine/io/container_codecs.h"
#include "platform/engine/io/file_output.h"
#include "platform/engine/messages.h"
#include "platform/foundation/byte_view.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace clipheave::platform {

namespace {

/// Timestamps of containers are rounded, to a millisecond at worst.
constexpr int kRoundingsPerSecond = 500;
constexpr int kAudioPacketsBetweenReports = 64;

/// Returns the samples that an ALAC packet says it has: the last one alone is shorter than the
/// others. 0 without that number. Source: the ALAC reference decoder, ALACDecoder::Decode.
std::int64_t samplesOfAlac(const AVPacket& packet) {
    const ByteView start(packet.data, static_cast<std::size_t>(std::max(packet.size, 0)));
    const std::uint64_t bits = start.be64(0).value_or(0);
    // Element type 3, instance 4, unused 12, "has a size" 1, shift 2, escape 1, size 32.
    const bool hasSize = (bits >> (63 - 19) & 1) != 0;
    return hasSize ? static_cast<std::int64_t>(bits >> (64 - 23 - 32) & 0xFFFFFFFF) : 0;
}

/// Returns how many samples every ALAC packet has but the last; 0 when unknown. Source: the "magic
/// cookie" of ALAC, here behind the header of its box.
std::int64_t samplesOfAlacStream(const AVCodecParameters& codec) {
    constexpr std::size_t kBoxHeader = 12;
    if (codec.codec_id != AV_CODEC_ID_ALAC || codec.extradata_size < 36)
        return 0;
    const ByteView cookie(codec.extradata, static_cast<std::size_t>(codec.extradata_size));
    return cookie.be32(kBoxHeader).value_or(0);
}

/// Gives the packets of one audio stream times in samples.
class SampleTimes {
public:
    SampleTimes(const AVStream& stream, std::int64_t priming)
        : m_stream(stream), m_base{1, stream.codecpar->sample_rate}, m_next(-priming) {}

    [[nodiscard]] AVRational base() const { return m_base; }
    void settle(AVPacket& packet) {
        m_next += gapBefore(packet.pts != kNoTimestamp ? packet.pts : packet.dts);
        m_length = samplesOf(packet);
        packet.pts = packet.dts = m_next;
        packet.duration = m_length;
        m_next += m_length;
    }

private:
    [[nodiscard]] std::int64_t samplesOf(const AVPacket& packet) const {
        if (m_alacSamples > 0) {
            const std::int64_t own = samplesOfAlac(packet);
            return own > 0 ? std::min(own, m_alacSamples) : m_alacSamples;
        }
        const std::int64_t usual = av_get_audio_frame_duration2(m_stream.codecpar, packet.size);
        const std::int64_t announced = av_rescale_q(packet.duration, m_stream.time_base, m_base);
        return usual > 0 ? usual : std::max<std::int64_t>(announced, 1);
    }
    /// Deliberate: the distance of two packets is compared, not their times, which add up the
    /// roundings of all packets before where a file stores no times at all.
    [[nodiscard]] std::int64_t gapBefore(std::int64_t own) {
        const std::int64_t before = std::exchange(m_own, own);
        if (own == kNoTimestamp || before == kNoTimestamp)
            return 0;
        std::int64_t distance = 0;
        if (__builtin_sub_overflow(own, before, &distance))
            return 0;
        const std::int64_t gap = av_rescale_q(distance, m_stream.time_base, m_base) - m_length;
        return gap > m_base.den / kRoundingsPerSecond ? gap : 0;
    }

    const AVStream& m_stream;
    AVRational m_base;
    std::int64_t m_alacSamples = samplesOfAlacStream(*m_stream.codecpar);
    std::int64_t m_next;               ///< where the last packet ends
    std::int64_t m_length = 0;         ///< of the last packet
    std::int64_t m_own = kNoTimestamp; ///< its time in the source
};

class AudioCopy {
public:
    using Progress = std::function<bool(double)>;

    AudioCopy(FileInput& input, AVStream& stream, const AudioPadding& padding, FileOutput& output)
        : m_input(*input.context()), m_stream(stream), m_output(output), m_heard(padding.heard),
          m_times(stream, padding.priming) {}
    [[nodiscard]] Result<void> begin();
    [[nodiscard]] Result<Notes> run(const Progress& progress);

private:
    [[nodiscard]] int copyOne(AVPacket& packet, const Progress& progress);
    [[nodiscard]] int write(AVPacket& packet);

    AVFormatContext& m_input;
    AVStream& m_stream;
    FileOutput& m_output;
    std::optional<std::int64_t> m_heard; ///< samples
    SampleTimes m_times;
    AVStream* m_target = nullptr;
    Notes m_notes;
    int m_read = 0, m_written = 0, m_damaged = 0;
    bool m_cancelled = false;
};

Result<void> AudioCopy::begin() {
    AVFormatContext& context = *m_output.context();
    m_target = avformat_new_stream(&context, nullptr);
    if (m_target == nullptr || copyParameters(m_target->codecpar, m_stream.codecpar) < 0)
        return m_output.failed(kCopyStreams, AVERROR(ENOMEM));
    m_target->codecpar->codec_tag = codecTag(*context.oformat, *m_stream.codecpar);
    m_target->time_base = m_times.base();
    m_target->disposition = m_stream.disposition;
    av_dict_copy(&m_target->metadata, m_stream.metadata, 0);
    for (const AVPacketSideData& data : sideDataOf(m_stream))
        if (std::uint8_t* bytes = addSideData(*m_target, data.type, data.size))
            std::copy_n(data.data, data.size, bytes);
    m_notes = copyChapters(m_input, context);
    Dictionary options;
    // The edit list counts in units of the movie header: to the sample too.
    options.set("movie_timescale", QByteArray::number(m_times.base().den).constData());
    return m_output.writeHeader(options);
}

int AudioCopy::write(AVPacket& packet) {
    m_times.settle(packet);
    // The rest is padding.
    if (m_heard && packet.pts >= *m_heard)
        return 0;
    if (m_heard)
        packet.duration = std::min(packet.duration, *m_heard - packet.pts);
    av_packet_rescale_ts(&packet, m_times.base(), m_target->time_base);
    packet.stream_index = m_target->index;
    packet.pos = -1;
    const int code = av_interleaved_write_frame(m_output.context(), &packet);
    if (code == AVERROR_INVALIDDATA) {
        ++m_damaged;
        return 0;
    }
    m_written += code >= 0 ? 1 : 0;
    return code;
}

int AudioCopy::copyOne(AVPacket& packet, const Progress& progress) {
    if (const int code = av_read_frame(&m_input, &packet); code < 0)
        return code;
    const double seconds = static_cast<double>(packet.pts) * av_q2d(m_stream.time_base);
    if (packet.stream_index != m_stream.index || packet.size <= 0) {
        av_packet_unref(&packet);
        return 0;
    }
    if (progress && ++m_read % kAudioPacketsBetweenReports == 0) {
        const double total = static_cast<double>(m_input.duration) * 1e-6;
        m_cancelled = !progress(total > 0 ? std::clamp(seconds / total, 0.0, 1.0) : 0);
    }
    return m_cancelled ? AVERROR_EXIT : write(packet);
}

Result<Notes> AudioCopy::run(const Progress& progress) {
    const Packet packet(av_packet_alloc());
    int code = packet ? 0 : AVERROR(ENOMEM);
    while (code >= 0)
        code = copyOne(*packet, progress);
    if (m_cancelled)
        return failure(ErrorCode::Cancelled, kCopyStreams);
    if (code != AVERROR_EOF)
        return m_output.failed(kCopyStreams, code);
    if (m_damaged > m_written)
        return m_output.failed(kCopyStreams, AVERROR_INVALIDDATA);
    if (m_written == 0)
        return failure(ErrorCode::InvalidData, kCopyStreams, {}, kStreamsEmpty);
    if (m_damaged > 0)
        m_notes << Message(kDamagedPackets, {QString::number(m_damaged)});
    return m_notes;
}

} // namespace

Result<Notes> copyAudio(FileInput& input, AVStream& stream, const AudioPadding& padding,
                        const QString& target, const std::function<bool(double)>& progress) {
    auto output = FileOutput::create("mp4", target);
    if (!output)
        return tl::unexpected(output.error());
    AudioCopy copy(input, stream, padding, **output);
    if (auto begun = copy.begin(); !begun)
        return tl::unexpected(begun.error());
    auto notes = copy.run(progress);
    if (!notes)
        return notes;
    if (progress)
        progress(1);
    if (auto finished = (*output)->finish(); !finished)
        return tl::unexpected(finished.error());
    return notes;
}

} // namespace clipheave::platform
