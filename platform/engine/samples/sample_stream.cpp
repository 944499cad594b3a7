// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/samples/sample_stream.h"

#include "platform/engine/messages.h"

namespace clipheave::platform {

Result<void> SampleStream::begin(const QString& encoderName, AVMediaType type) {
    m_encoder = avcodec_find_encoder_by_name(encoderName.toLatin1().constData());
    if (m_encoder == nullptr || m_encoder->type != type)
        return failure(ErrorCode::NotSupported, kEncodeSample, {}, {kNoEncoder, {encoderName}});
    m_stream = avformat_new_stream(m_output.context(), nullptr);
    m_codec.reset(avcodec_alloc_context3(m_encoder));
    m_frame.reset(av_frame_alloc());
    if (m_stream == nullptr || !m_codec || !m_frame)
        return m_output.failed(kEncodeSample, AVERROR(ENOMEM));
    m_codec->flags |= AV_CODEC_FLAG_BITEXACT;
    if ((m_output.context()->oformat->flags & AVFMT_GLOBALHEADER) != 0)
        m_codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    m_codec->strict_std_compliance = FF_COMPLIANCE_EXPERIMENTAL;
    m_codec->thread_count = 1; // with more the bytes would depend on the machine
    return {};
}

Result<void> SampleStream::open() {
    Dictionary options;
    options.set("preset", "veryfast");
    // The x264 library's fast arithmetic for its lookahead reads memory that it never wrote: the
    // same frames came out as other bytes after other work in the process.
    options.set("x264-params", "cpu-independent=1");
    options.set("x265-params", "log-level=none:pools=none:frame-threads=1");
    int code = avcodec_open2(m_codec.get(), m_encoder, &options.entries);
    if (code >= 0)
        code = avcodec_parameters_from_context(m_stream->codecpar, m_codec.get());
    if (code < 0)
        return m_output.failed(kEncodeSample, code);
    m_stream->time_base = m_codec->time_base;
    return {};
}

double SampleStream::position() const {
    return static_cast<double>(m_next) * av_q2d(m_codec->time_base);
}

Result<bool> SampleStream::step() {
    Result<bool> drawn = nextFrame();
    if (!drawn)
        return drawn;
    m_done = !*drawn;
    const int code = avcodec_send_frame(m_codec.get(), m_done ? nullptr : m_frame.get());
    if (code < 0)
        return m_output.failed(kEncodeSample, code);
    if (const auto written = writePackets(); !written)
        return tl::unexpected(written.error());
    return !m_done;
}

Result<void> SampleStream::writePackets() {
    const Packet packet(av_packet_alloc());
    if (!packet)
        return m_output.failed(kEncodeSample, AVERROR(ENOMEM));
    for (;;) {
        int code = avcodec_receive_packet(m_codec.get(), packet.get());
        if (code == AVERROR(EAGAIN) || code == AVERROR_EOF)
            return {};
        if (code >= 0) {
            av_packet_rescale_ts(packet.get(), m_codec->time_base, m_stream->time_base);
            if (packet->duration == 0 && m_codec->codec_type == AVMEDIA_TYPE_VIDEO)
                packet->duration = av_rescale_q(1, m_codec->time_base, m_stream->time_base);
            packet->stream_index = m_stream->index;
            code = av_interleaved_write_frame(m_output.context(), packet.get());
        }
        if (code < 0)
            return m_output.failed(kWriteSample, code);
    }
}

} // namespace clipheave::platform
