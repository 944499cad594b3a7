// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/decode/amr_frames.h"
#include "platform/engine/io/ffmpeg.h"
#include "platform/foundation/result.h"

#include <functional>

namespace clipheave::platform {

/// Decodes one stream: packets in, frames out. Leaves out packets that cannot be decoded, as a
/// player does, and counts them; whoever decodes reports the count or logs it.
class MediaDecoder {
public:
    /// Reads the next packet of the stream; AVERROR_EOF at the end, another code stops decoding.
    using PacketReader = std::function<int(AVPacket&)>;

    /// Opens a decoder with `threads`, 0 for all cores; frames over CVPixelBuffer's limit are
    /// damage. NotSupported without a decoder for the codec; the error has neither operation nor
    /// path.
    [[nodiscard]] static Result<std::unique_ptr<MediaDecoder>> open(const AVStream& stream,
                                                                    int threads);

    /// Gives the decoder a packet, null to drain it. Negative only without memory.
    [[nodiscard]] int send(const AVPacket* packet);
    /// Takes the next frame. AVERROR(EAGAIN) when a packet is needed first, AVERROR_EOF once it is
    /// drained.
    [[nodiscard]] int receive(AVFrame& frame);
    /// Takes the next frame, reading as many packets as it needs. AVERROR_EOF at the end, else the
    /// code of the reader.
    [[nodiscard]] int next(AVFrame& frame, const PacketReader& read);
    /// Discards what is inside and restarts at the next packet; the count stays.
    void flush();

    /// Returns the number of packets that could not be decoded so far.
    [[nodiscard]] int damaged() const { return m_damaged; }
    /// Starts counting again, when what was read before is read once more.
    void forgetDamage() { m_damaged = 0; }
    /// Returns what the decoder reported of the last damaged packet; empty without one.
    [[nodiscard]] Message complaint() const {
        return m_complaint < 0 ? ffmpegReason(m_complaint) : Message();
    }
    [[nodiscard]] const AVCodecContext& context() const { return *m_codec; }

private:
    MediaDecoder(const AVCodecParameters& stream, AVRational timeBase)
        : m_amrFrames(stream, timeBase) {}
    [[nodiscard]] int readInto(AVPacket& packet, const PacketReader& read);
    void countDamage(int code);
    [[nodiscard]] int sendWithoutTag(const AVPacket& packet);

    AmrFrames m_amrFrames;
    Codec m_codec;
    Packet m_packet{av_packet_alloc()}, m_rest{av_packet_alloc()};
    bool m_drained = false;
    int m_damaged = 0, m_complaint = 0;
};

/// Returns the reason when a decoder gave no frame at all, with its complaint where it has one.
[[nodiscard]] Message nothingDecoded(const MediaDecoder& decoder);
/// Logs that damaged packets of a file were left out, for those who show no notes.
void logDamage(const QString& path, int damaged);

} // namespace clipheave::platform
