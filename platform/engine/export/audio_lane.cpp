// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/export/audio_lane.h"

#include "platform/engine/decode/audio_segment_reader.h"
#include "platform/engine/encode/audio_encoder.h"
#include "platform/engine/messages.h"

#include <algorithm>

namespace clipheave::platform {

namespace {

/// A change of speed may end up to 1/10 s early; the rest is filled with silence.
constexpr int kTempoLoss = 10;

/// Puts the segments one after the other, silence between them.
class AudioFeeder {
public:
    AudioFeeder(AudioEncoder& encoder, double volume, PacketLanes& lanes, std::size_t lane)
        : m_encoder(encoder), m_volume(volume), m_lanes(lanes),
          m_sink([&lanes, lane](Packet packet) { return lanes.push(lane, std::move(packet)); }),
          m_stopped([&lanes] { return lanes.stopped(); }) {}

    Result<void> run(std::vector<PlannedSegment>& segments) {
        for (PlannedSegment& segment : segments) {
            const std::int64_t start = position(segment.stretch.targetStart);
            if (const int code = fillTo(start); code < 0)
                return checked(code, segment.path);
            auto fed = m_volume > 0 ? feed(segment) : feedSilent(segment);
            if (!fed || m_lanes.stopped())
                return fed;
        }
        return checked(m_encoder.finish(m_sink), {});
    }

private:
    [[nodiscard]] std::int64_t position(Ticks time) const {
        return ticksToUnits(time, m_encoder.format().sampleRate);
    }
    int fillTo(std::int64_t position);
    Result<void> feed(PlannedSegment& segment);
    Result<void> feedSilent(PlannedSegment& segment);
    static Result<void> checked(int code, const QString& path);

    AudioEncoder& m_encoder;
    double m_volume;
    PacketLanes& m_lanes;
    AudioEncoder::Sink m_sink;
    std::function<bool()> m_stopped;
};

Result<void> AudioFeeder::checked(int code, const QString& path) {
    if (code >= 0 || code == AVERROR_EXIT)
        return {};
    if (code == AVERROR(ERANGE))
        return failure(ErrorCode::LimitExceeded, kEncodeAudio, path, kGapTooLong);
    return failure(ErrorCode::Io, kEncodeAudio, path, ffmpegReason(code));
}

int AudioFeeder::fillTo(std::int64_t position) {
    const std::int64_t count = position - m_encoder.samples();
    if (count > ticksToUnits(kLongestFiller, m_encoder.format().sampleRate))
        return AVERROR(ERANGE);
    return count > 0 ? m_encoder.writeSilence(count, m_sink) : 0;
}

/// Nothing needs to be decoded for silence. It ends with the audio that it replaces.
Result<void> AudioFeeder::feedSilent(PlannedSegment& segment) {
    Ticks end = segment.stretch.targetEnd;
    if (const auto audioEnd = audioEndOf(segment, m_stopped); audioEnd)
        end = std::min(end, segment.stretch.toTarget(*audioEnd));
    return checked(fillTo(position(end)), segment.path);
}

Result<void> AudioFeeder::feed(PlannedSegment& segment) {
    auto reader = AudioSegmentReader::open(segment, m_volume, m_encoder.format());
    if (!reader)
        return tl::unexpected(reader.error());
    const std::int64_t end = position(segment.stretch.targetEnd);
    const auto sink = [&](const AVFrame& frame) {
        const std::int64_t room = end - m_encoder.samples();
        const int count = static_cast<int>(std::clamp<std::int64_t>(room, 0, frame.nb_samples));
        return count > 0 ? m_encoder.write(frame, count, m_sink) : 0;
    };
    int code = (*reader)->run(sink, m_stopped);
    m_lanes.note((*reader)->note());
    if (code < 0 || m_lanes.stopped())
        return checked(code, segment.path);
    if (auto complete = (*reader)->check(); !complete)
        return complete;
    const std::int64_t missing = end - m_encoder.samples();
    if (segment.stretch.speed() != 1 && missing < m_encoder.format().sampleRate / kTempoLoss)
        code = fillTo(end);
    return checked(code, segment.path);
}

} // namespace

void encodeAudio(const ExportAudio& audio, std::vector<PlannedSegment>& segments,
                 PacketLanes& lanes, std::size_t lane) {
    auto encoder = aacEncoding(*segments.front().facts->parameters, audio.channels, audio.bitRate)
                       .and_then(&AudioEncoder::open);
    if (!encoder)
        return lanes.fail(encoder.error());
    auto track = (*encoder)->track();
    if (!track)
        return lanes.fail(track.error());
    track->language = segments.front().facts->language;
    if (!lanes.announce(lane, std::move(*track)))
        return;
    AudioFeeder feeder(**encoder, audio.volume, lanes, lane);
    if (auto fed = feeder.run(segments); !fed)
        return lanes.fail(fed.error());
    lanes.finish(lane);
}

} // namespace clipheave::platform
