// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/encode/video_encoder.h"

#include <algorithm>
#include <thread>

namespace clipheave::platform {

namespace {

constexpr const char* kEncodeVideoText = "encode the film";
/// Threads beyond those that the encoder would choose: its frames wait for each other, and with
/// these no core does. Worth 5 to 8 % of the time on two cores, for 5 % more memory each.
constexpr int kMoreEncoderThreads = 2;
/// Of an export beside others: one that outlasts them shall not be left on one core.
constexpr int kLeastEncoderThreads = 4;

tl::unexpected<Error> videoEncoderError(ErrorCode code, const QString& detail) {
    return failure(code, QString::fromLatin1(kEncodeVideoText), {}, detail);
}

/// Settings that both the encoder and the track have.
void describe(const FrameFormat& look, AVCodecContext& encoder) {
    encoder.width = look.width;
    encoder.height = look.height;
    encoder.sample_aspect_ratio = look.aspect;
    encoder.pix_fmt = look.format;
    encoder.color_range = look.range;
    encoder.colorspace = look.matrix;
    encoder.color_primaries = look.primaries;
    encoder.color_trc = look.transfer;
    encoder.chroma_sample_location = look.chroma;
    encoder.field_order = AV_FIELD_PROGRESSIVE;
    if (look.interlaced) {
        encoder.field_order = look.topFieldFirst ? AV_FIELD_TT : AV_FIELD_BB;
        encoder.flags |= AV_CODEC_FLAG_INTERLACED_DCT | AV_CODEC_FLAG_INTERLACED_ME;
    }
}

} // namespace

bool FramePacer::wants(Ticks start, Ticks end) const {
    // The first one always, be it shorter than a whole frame: a video has a frame.
    return !m_constant || !m_last ||
           ticksTo(end, m_timeBase) > std::max(ticksTo(start, m_timeBase), m_next);
}

int FramePacer::repeat(const AVFrame& frame, std::int64_t until, const Sink& sink) {
    const auto span = ticksOf(until - m_next, m_timeBase);
    if (!span || *span > kLongestFiller)
        return AVERROR(ERANGE);
    while (m_next < until) {
        StampedFrame stamped{Frame(av_frame_clone(&frame)), m_next++, 1};
        if (!stamped.frame)
            return AVERROR(ENOMEM);
        if (!sink(std::move(stamped)))
            return AVERROR_EXIT;
    }
    return 0;
}

int FramePacer::place(TimedFrame videoFrame, const Sink& sink) {
    std::int64_t first = ticksTo(videoFrame.start, m_timeBase);
    std::int64_t last = ticksTo(videoFrame.end, m_timeBase);
    if (!m_constant) {
        first = std::max(first, m_next);
        m_next = first + 1;
        const std::int64_t duration = std::max<std::int64_t>(last - first, 1);
        return sink({std::move(videoFrame.frame), first, duration}) ? 0 : AVERROR_EXIT;
    }
    if (m_last && first > m_next)
        if (const int code = repeat(*m_last, first, sink); code < 0)
            return code;
    if (!m_last) {
        m_next = std::max(m_next, first); // a video that begins late does so in the output
        last = std::max(last, m_next + 1);
    }
    if (last <= m_next)
        return 0;
    if (const int code = repeat(*videoFrame.frame, last, sink); code < 0)
        return code;
    m_last = std::move(videoFrame.frame);
    return 0;
}

Result<std::unique_ptr<VideoEncoder>> VideoEncoder::open(const FrameFormat& look,
                                                         const ExportVideo& video,
                                                         AVRational timeBase, AVRational frameRate,
                                                         int threads) {
    const AVCodec* codec = avcodec_find_encoder_by_name("libx264");
    if (codec == nullptr)
        return videoEncoderError(ErrorCode::NotSupported, QStringLiteral("libx264 is missing"));
    std::unique_ptr<VideoEncoder> encoder(new VideoEncoder);
    encoder->m_look = look;
    encoder->m_codec.reset(avcodec_alloc_context3(codec));
    if (!encoder->m_codec)
        return videoEncoderError(ErrorCode::Io, ffmpegText(AVERROR(ENOMEM)));
    AVCodecContext& context = *encoder->m_codec;
    describe(look, context);
    context.time_base = timeBase;
    context.framerate = frameRate;
    context.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    context.thread_count = threads;
    context.bit_rate = video.bitRate;
    Dictionary options;
    options.set("preset", "medium");
    if (video.bitRate == 0)
        options.set("crf", QByteArray::number(video.crf).constData());
    if (const int code = avcodec_open2(&context, codec, &options.entries); code < 0)
        return videoEncoderError(ErrorCode::NotSupported, ffmpegText(code));
    return encoder;
}

Result<OutputTrack> VideoEncoder::track() const {
    OutputTrack track;
    track.parameters.reset(avcodec_parameters_alloc());
    if (!track.parameters ||
        avcodec_parameters_from_context(track.parameters.get(), m_codec.get()) < 0)
        return videoEncoderError(ErrorCode::Io, ffmpegText(AVERROR(ENOMEM)));
    track.timeBase = m_codec->time_base;
    track.frameRate = m_codec->framerate;
    track.aspect = m_look.aspect;
    return track;
}

int VideoEncoder::encode(StampedFrame* videoFrame, const std::function<bool(Packet)>& sink) {
    if (videoFrame != nullptr) {
        videoFrame->frame->pts = videoFrame->pts;
        m_durations[videoFrame->pts] = videoFrame->duration;
    }
    int code = avcodec_send_frame(m_codec.get(),
                                  videoFrame != nullptr ? videoFrame->frame.get() : nullptr);
    while (code >= 0) {
        Packet packet(av_packet_alloc());
        if (!packet)
            return AVERROR(ENOMEM);
        code = avcodec_receive_packet(m_codec.get(), packet.get());
        if (code < 0)
            break;
        if (const auto known = m_durations.find(packet->pts); known != m_durations.end()) {
            packet->duration = known->second;
            m_durations.erase(known);
        }
        if (!sink(std::move(packet)))
            return AVERROR_EXIT;
    }
    return code == AVERROR(EAGAIN) || code == AVERROR_EOF ? 0 : code;
}

int encoderThreads(int threads) {
    const int cores = static_cast<int>(std::max(std::thread::hardware_concurrency(), 1U));
    return threads > 1 ? threads * 3 / 2 + kMoreEncoderThreads
                       : std::min(cores, kLeastEncoderThreads);
}

void encodeFrames(VideoEncoder& encoder, FrameQueue& queue, ExportLanes& lanes, std::size_t lane) {
    const auto sink = [&](Packet packet) { return lanes.push(lane, std::move(packet)); };
    int code = 0;
    while (code >= 0) {
        auto videoFrame = queue.pop();
        if (!videoFrame)
            break;
        code = encoder.encode(&*videoFrame, sink);
    }
    if (code >= 0 && !lanes.stopped())
        code = encoder.encode(nullptr, sink);
    if (code < 0 && code != AVERROR_EXIT)
        lanes.fail({ErrorCode::Io, QString::fromLatin1(kEncodeVideoText), {}, ffmpegText(code)});
}

} // namespace clipheave::platform
