// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/decode/media_decoder.h"

#include "platform/engine/decode/flac_tail.h"
#include "platform/engine/io/container_codecs.h"
#include "platform/engine/messages.h"
#include "platform/foundation/log.h"
#include "platform/media/model/cv_pixel_buffer.h"

namespace clipheave::platform {

Result<std::unique_ptr<MediaDecoder>> MediaDecoder::open(const AVStream& stream, int threads) {
    const AVCodecParameters& parameters = *stream.codecpar;
    const AVCodec* codec = avcodec_find_decoder(parameters.codec_id);
    if (codec == nullptr)
        return failure(ErrorCode::NotSupported, {}, {}, noDecoder(parameters));
    std::unique_ptr<MediaDecoder> decoder(new MediaDecoder(parameters, stream.time_base));
    decoder->m_codec.reset(avcodec_alloc_context3(codec));
    AVCodecContext* context = decoder->m_codec.get();
    if (context == nullptr || !decoder->m_packet || !decoder->m_rest ||
        avcodec_parameters_to_context(context, &parameters) < 0)
        return failure(ErrorCode::Io, {}, {}, ffmpegReason(AVERROR(ENOMEM)));
    context->pkt_timebase = stream.time_base;
    context->thread_count = threads;
    context->max_pixels = CVPixelBuffer::kMostPixels;
    if (const int code = avcodec_open2(context, codec, nullptr); code < 0)
        return failure(ErrorCode::NotSupported, {}, {}, ffmpegReason(code));
    return decoder;
}

void MediaDecoder::countDamage(int code) {
    ++m_damaged;
    m_complaint = code;
}

/// A tag behind the audio is no damage of the frame in front of it.
int MediaDecoder::sendWithoutTag(const AVPacket& packet) {
    const auto all = static_cast<std::uint64_t>(packet.size);
    const std::uint64_t size = flacAudioSize({packet.data, all});
    if (size == all)
        return avcodec_send_packet(m_codec.get(), &packet);
    const Packet audio(av_packet_clone(&packet));
    if (!audio)
        return AVERROR(ENOMEM);
    audio->size = static_cast<int>(size);
    return size == 0 ? 0 : avcodec_send_packet(m_codec.get(), audio.get());
}

int MediaDecoder::send(const AVPacket* packet) {
    m_drained = packet == nullptr;
    const bool isFlac = packet != nullptr && m_codec->codec_id == AV_CODEC_ID_FLAC;
    const int code = isFlac ? sendWithoutTag(*packet) : avcodec_send_packet(m_codec.get(), packet);
    if (code == AVERROR(ENOMEM))
        return code;
    if (code < 0 && code != AVERROR_EOF)
        countDamage(code);
    return 0;
}

int MediaDecoder::receive(AVFrame& frame) {
    const int code = avcodec_receive_frame(m_codec.get(), &frame);
    if (code >= 0 || code == AVERROR_EOF || code == AVERROR(EAGAIN) || code == AVERROR(ENOMEM))
        return code;
    countDamage(code);
    return m_drained ? AVERROR_EOF : AVERROR(EAGAIN);
}

int MediaDecoder::readInto(AVPacket& packet, const PacketReader& read) {
    if (!m_amrFrames.isNeeded())
        return read(packet);
    if (m_rest->size == 0)
        if (const int code = read(*m_rest); code < 0)
            return code;
    return m_amrFrames.cutFirst(*m_rest, packet);
}

int MediaDecoder::next(AVFrame& frame, const PacketReader& read) {
    for (;;) {
        int code = receive(frame);
        if (code != AVERROR(EAGAIN))
            return code;
        code = readInto(*m_packet, read);
        if (code < 0 && code != AVERROR_EOF)
            return code;
        code = send(code == AVERROR_EOF ? nullptr : m_packet.get());
        av_packet_unref(m_packet.get());
        if (code < 0)
            return code;
    }
}

void MediaDecoder::flush() {
    avcodec_flush_buffers(m_codec.get());
    av_packet_unref(m_rest.get());
    m_drained = false;
}

Message nothingDecoded(const MediaDecoder& decoder) {
    const bool video = decoder.context().codec_type == AVMEDIA_TYPE_VIDEO;
    const Message complaint = decoder.complaint();
    if (complaint.isEmpty())
        return video ? kNoVideoDecoded : kNoAudioDecoded;
    return {video ? kNoVideoDecodedBecause : kNoAudioDecodedBecause, {complaint.text()}};
}

void logDamage(const QString& path, int damaged) {
    if (damaged > 0)
        log(LogLevel::Info, Message(kDamagedPackets, {QString::number(damaged)}).text(), path);
}

} // namespace clipheave::platform
