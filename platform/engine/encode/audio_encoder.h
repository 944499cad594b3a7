// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/plan/export_lanes.h"
#include "platform/engine/plan/export_plan_reader.h"

#include <functional>

extern "C" {
#include <libavutil/audio_fifo.h>
}

namespace clipheave::platform {

using AudioFifo = std::unique_ptr<AVAudioFifo, Releaser<av_audio_fifo_free>>;

/// AAC of planar float samples, gathered to the encoder's frames.
class AudioEncoder {
public:
    using Sink = std::function<bool(Packet)>; ///< false stops

    /// Rate and channels are those of the first source so far as the plan and AAC allow.
    [[nodiscard]] static Result<std::unique_ptr<AudioEncoder>> open(const ExportAudio& audio,
                                                                    const SourceFacts& first);
    [[nodiscard]] Result<OutputTrack> track() const;
    [[nodiscard]] int sampleRate() const { return m_codec->sample_rate; }
    [[nodiscard]] const AVChannelLayout& layout() const { return m_codec->ch_layout; }
    [[nodiscard]] std::int64_t samples() const { return m_taken; } ///< taken so far
    /// The first `count` samples of a frame. AVERROR_EXIT when the sink stopped it.
    [[nodiscard]] int write(const AVFrame& frame, int count, const Sink& sink);
    [[nodiscard]] int writeSilence(std::int64_t count, const Sink& sink);
    [[nodiscard]] int finish(const Sink& sink);

private:
    [[nodiscard]] int encodeReady(bool all, const Sink& sink);
    [[nodiscard]] int givePackets(const Sink& sink);

    Codec m_codec;
    AudioFifo m_fifo;
    Frame m_silence;
    std::int64_t m_taken = 0, m_encoded = 0;
};

} // namespace clipheave::platform
