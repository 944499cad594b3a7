// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/ffmpeg.h"
#include "platform/engine/io/file_output.h"
#include "platform/media/model/media_engine.h"

namespace clipheave::platform {

/// One stream of a demonstration file: draws a frame or generates audio, encodes it, writes the
/// packets.
class SampleStream {
public:
    virtual ~SampleStream() = default;
    /// Encodes the next frame; returns false when all are done.
    [[nodiscard]] Result<bool> step();
    /// Returns the time of the next frame in seconds.
    [[nodiscard]] double position() const;
    [[nodiscard]] bool isDone() const { return m_done; }

protected:
    SampleStream(FileOutput& output, const SampleMedia& sample)
        : m_sample(sample), m_output(output) {}
    /// Finds the encoder and makes the stream; the settings of the medium come after it.
    [[nodiscard]] Result<void> begin(const QString& encoderName, AVMediaType type);
    /// Opens the encoder as it has been set up.
    [[nodiscard]] Result<void> open();
    /// Fills m_frame and moves m_next on; false when all frames are done.
    [[nodiscard]] virtual Result<bool> nextFrame() = 0;
    [[nodiscard]] Result<void> writePackets();

    const SampleMedia& m_sample;
    FileOutput& m_output;
    const AVCodec* m_encoder = nullptr;
    AVStream* m_stream = nullptr;
    Codec m_codec;
    Frame m_frame;
    std::int64_t m_next = 0; ///< in the encoder's time base
    bool m_done = false;
};

} // namespace clipheave::platform
