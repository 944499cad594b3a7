// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/decode/audio_peaks.h"

#include "platform/engine/decode/media_decoder.h"
#include "platform/engine/io/file_input.h"
#include "platform/engine/messages.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

namespace clipheave::platform {

namespace {

constexpr int kMostColumns = 4096;
/// Half a day of audio would keep a core busy for minutes.
constexpr double kLongestAudio = 3 * 3600.0; // s
constexpr std::int64_t kMostSampleTimes = std::int64_t{3 * 3600} * 192'000;
constexpr InputLimits kPeakLimits{std::uint64_t{8} << 30, std::chrono::milliseconds(30'000)};

tl::unexpected<Error> peakError(ErrorCode code, const Message& detail = {}) {
    return failure(code, kMeasureAudio, {}, detail);
}

/// Returns the stream that a player would play; all others give no packets. Null without one.
AVStream* selectAudio(FileInput& input) {
    if (!input.findStreamInfo(StreamsOfUse::Audio))
        return nullptr;
    AVFormatContext& context = *input.context();
    const int best = av_find_best_stream(&context, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    for (unsigned i = 0; i < context.nb_streams; ++i)
        context.streams[i]->discard =
            static_cast<int>(i) == best ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    return best >= 0 ? context.streams[best] : nullptr;
}

double audioSeconds(const AVFormatContext& context, const AVStream& stream) {
    if (stream.duration > 0)
        return static_cast<double>(stream.duration) * seconds(stream.time_base);
    return context.duration > 0 ? static_cast<double>(context.duration) / AV_TIME_BASE : 0;
}

/// Returns the largest magnitude of `count` samples, 1 for full scale.
template <class Sample> float largestOf(const std::uint8_t* bytes, std::int64_t count) {
    const auto* samples = reinterpret_cast<const Sample*>(bytes);
    if constexpr (std::is_floating_point_v<Sample>) {
        Sample largest = 0;
        for (std::int64_t i = 0; i < count; ++i) // NaN compares as smaller
            largest = std::abs(samples[i]) > largest ? std::abs(samples[i]) : largest;
        return static_cast<float>(largest);
    } else {
        constexpr bool kUnsigned = std::is_unsigned_v<Sample>;
        constexpr double kMiddle = kUnsigned ? 128 : 0;
        constexpr double kFull = kUnsigned ? 128 : -double{std::numeric_limits<Sample>::min()};
        const auto [low, high] = std::minmax_element(samples, samples + count);
        return static_cast<float>(std::max(kMiddle - *low, *high - kMiddle) / kFull);
    }
}

/// Returns the same for `count` samples in the middle of one plane; 0 for an unknown format.
float largestIn(const AVFrame& frame, int plane, std::int64_t first, std::int64_t count) {
    const auto format = static_cast<AVSampleFormat>(frame.format);
    const std::uint8_t* bytes =
        frame.extended_data[plane] + first * av_get_bytes_per_sample(format);
    switch (av_get_packed_sample_fmt(format)) {
    case AV_SAMPLE_FMT_U8:
        return largestOf<std::uint8_t>(bytes, count);
    case AV_SAMPLE_FMT_S16:
        return largestOf<std::int16_t>(bytes, count);
    case AV_SAMPLE_FMT_S32:
        return largestOf<std::int32_t>(bytes, count);
    case AV_SAMPLE_FMT_FLT:
        return largestOf<float>(bytes, count);
    case AV_SAMPLE_FMT_DBL:
        return largestOf<double>(bytes, count);
    default:
        return 0;
    }
}

/// Collects the peaks of frames that follow one another.
class PeakColumns {
public:
    PeakColumns(int columns, double seconds)
        : m_peaks(static_cast<std::size_t>(columns)), m_seconds(seconds) {}

    void add(const AVFrame& frame) {
        const int rate = std::max(frame.sample_rate, 1);
        const std::int64_t total = std::max<std::int64_t>(std::llround(m_seconds * rate), 1);
        const auto columns = static_cast<std::int64_t>(m_peaks.size());
        for (std::int64_t done = 0; done < frame.nb_samples;) {
            const std::int64_t column = (m_time + done) * columns / total;
            if (column >= columns)
                break; // longer than the file says
            const std::int64_t end = ((column + 1) * total + columns - 1) / columns - m_time;
            const std::int64_t count =
                std::clamp<std::int64_t>(end - done, 1, frame.nb_samples - done);
            float& peak = m_peaks[static_cast<std::size_t>(column)];
            peak = std::max(peak, largestOfAll(frame, done, count));
            done += count;
        }
        m_time += frame.nb_samples;
    }
    [[nodiscard]] std::int64_t sampleTimes() const { return m_time; }
    [[nodiscard]] QByteArray bytes() const {
        QByteArray bytes;
        for (const float peak : m_peaks)
            bytes.append(static_cast<char>(std::lround(std::clamp(peak, 0.f, 1.f) * 255)));
        return bytes;
    }

private:
    static float largestOfAll(const AVFrame& frame, std::int64_t first, std::int64_t count) {
        const int channels = frame.ch_layout.nb_channels;
        if (av_sample_fmt_is_planar(static_cast<AVSampleFormat>(frame.format)) == 0)
            return largestIn(frame, 0, first * channels, count * channels);
        float largest = 0;
        for (int plane = 0; plane < channels; ++plane)
            largest = std::max(largest, largestIn(frame, plane, first, count));
        return largest;
    }

    std::vector<float> m_peaks;
    double m_seconds;
    std::int64_t m_time = 0; ///< samples of one channel so far
};

/// Reads packets for the decoder until `goOn` says stop.
class PeakReader {
public:
    PeakReader(FileInput& input, const AVStream& stream, const std::function<bool()>& goOn)
        : m_input(input), m_stream(stream), m_goOn(goOn) {}

    /// Measures all frames. The decoder's threads stay at one: this runs in the background, beside
    /// a player.
    Result<QByteArray> read(MediaDecoder& decoder, PeakColumns& peaks);

private:
    [[nodiscard]] int readPacket(AVPacket& packet);

    FileInput& m_input;
    const AVStream& m_stream;
    const std::function<bool()>& m_goOn;
    bool m_cancelled = false;
};

/// A failing read is the end: what was decoded counts.
int PeakReader::readPacket(AVPacket& packet) {
    while (av_read_frame(m_input.context(), &packet) >= 0) {
        m_cancelled = !m_goOn();
        if (m_cancelled)
            return AVERROR_EXIT;
        if (packet.stream_index == m_stream.index)
            return 0;
        av_packet_unref(&packet);
    }
    return AVERROR_EOF;
}

Result<QByteArray> PeakReader::read(MediaDecoder& decoder, PeakColumns& peaks) {
    const Frame frame(av_frame_alloc());
    const auto reader = [this](AVPacket& packet) { return readPacket(packet); };
    int code = frame ? 0 : AVERROR(ENOMEM);
    while (code >= 0 && (code = decoder.next(*frame, reader)) >= 0) {
        peaks.add(*frame);
        av_frame_unref(frame.get());
        if (peaks.sampleTimes() > kMostSampleTimes)
            return peakError(ErrorCode::LimitExceeded, kAudioLength);
    }
    if (m_cancelled)
        return peakError(ErrorCode::Cancelled);
    if (code != AVERROR_EOF)
        return peakError(ErrorCode::Io, ffmpegReason(code));
    if (m_input.exhausted())
        return peakError(ErrorCode::LimitExceeded, kAudioLength);
    if (peaks.sampleTimes() == 0)
        return peakError(ErrorCode::InvalidData, kNoAudioDecoded);
    return peaks.bytes();
}

Result<QByteArray> peaksOf(FileInput& input, const QString& path, int columns,
                           const std::function<bool()>& goOn) {
    const AVStream* stream = selectAudio(input);
    if (stream == nullptr)
        return peakError(ErrorCode::NotSupported, kNoAudioTrack);
    const double length = audioSeconds(*input.context(), *stream);
    if (!(length > 0 && length <= kLongestAudio))
        return peakError(ErrorCode::LimitExceeded, kAudioLength);
    auto decoder = MediaDecoder::open(*stream, 1);
    if (!decoder)
        return peakError(decoder.error().code, decoder.error().detail);
    PeakColumns peaks(columns, length);
    auto bytes = PeakReader(input, *stream, goOn).read(**decoder, peaks);
    logDamage(path, (*decoder)->damaged());
    return bytes;
}

} // namespace

Result<QByteArray> readAudioPeaks(const QString& path, int columns,
                                  const std::function<bool()>& goOn) {
    if (columns < 1 || columns > kMostColumns)
        return failure(ErrorCode::InvalidArgument, kMeasureAudio, path);
    auto reader = FileReader::open(path);
    if (!reader)
        return tl::unexpected(reader.error());
    auto input = FileInput::open(*reader, kPeakLimits);
    if (!input)
        return tl::unexpected(input.error());
    auto bytes = peaksOf(**input, path, columns, goOn);
    if (!bytes)
        bytes.error().path = path;
    return bytes;
}

} // namespace clipheave::platform
