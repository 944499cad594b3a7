// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/encode/audio_encoding.h"
#include "platform/engine/io/output_track.h"

#include <functional>

extern "C" {
#include <libavutil/audio_fifo.h>
}

namespace clipheave::platform {

using AudioFifo = std::unique_ptr<AVAudioFifo, Releaser<av_audio_fifo_free>>;

/// Encodes audio, gathering samples into the frames that the encoder takes.
class AudioEncoder {
public:
    using Sink = std::function<bool(Packet)>; ///< false stops

    /// NotSupported when there is no such encoder or it refuses the format.
    [[nodiscard]] static Result<std::unique_ptr<AudioEncoder>> open(const AudioEncoding& encoding);
    [[nodiscard]] Result<OutputTrack> track() const;
    [[nodiscard]] const AudioFormat& format() const { return m_format; }
    /// Returns how many samples of a channel were taken so far.
    [[nodiscard]] std::int64_t samples() const { return m_taken; }
    /// Takes the first `count` samples of a frame in the encoder's format. AVERROR_EXIT when the
    /// sink stopped it.
    [[nodiscard]] int write(const AVFrame& frame, int count, const Sink& sink);
    [[nodiscard]] int writeSilence(std::int64_t count, const Sink& sink);
    /// Encodes what is left and drains the encoder.
    [[nodiscard]] int finish(const Sink& sink);

private:
    AudioEncoder() = default;
    [[nodiscard]] Result<void> allocate();
    [[nodiscard]] int encodeReady(bool all, const Sink& sink);
    [[nodiscard]] int encodeFrame(int count, const Sink& sink);
    [[nodiscard]] int givePackets(const Sink& sink);

    AudioFormat m_format;
    Codec m_codec;
    AudioFifo m_fifo;
    Frame m_silence;
    std::int64_t m_taken = 0, m_encoded = 0;
};

} // namespace clipheave::platform
