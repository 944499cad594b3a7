// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/decode/keyframe_grabber.h"

#include "platform/engine/decode/video_stream.h"
#include "platform/engine/io/file_input.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <tuple>
#include <utility>

namespace clipheave::platform {

namespace {

constexpr int kLargestImageSide = 8192;
constexpr std::int64_t kMostPixels = 128 << 20;
/// Packets of the video that are looked at until a frame comes out.
constexpr int kMostPackets = 400;
/// A file that gives no keyframe is decoded from where it stands after this many packets.
constexpr int kPacketsBeforeAnyFrame = 200;
constexpr double kLatestSecond = 1e7;
constexpr InputLimits kGrabLimits{96u << 20, std::chrono::milliseconds(4000)};

Error grabError(ErrorCode code, const QString& path, const QString& detail) {
    return {code, QStringLiteral("take a picture from the film"), path, detail};
}

/// The video's stream, the only one that will give packets; null without one.
const AVStream* selectVideo(FileInput& input) {
    AVFormatContext& context = *input.context();
    AVStream* video = videoStream(context);
    // Containers without an index tell what they hold only in the packets.
    if (video == nullptr || video->codecpar->width <= 0 || video->codecpar->height <= 0) {
        if (!input.findStreamInfo())
            return nullptr;
        video = videoStream(context);
    }
    for (unsigned i = 0; i < context.nb_streams; ++i)
        context.streams[i]->discard =
            context.streams[i] == video ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    return video;
}

Result<Codec> openDecoder(const AVStream& stream, const QString& path) {
    const AVCodec* decoder = avcodec_find_decoder(stream.codecpar->codec_id);
    if (decoder == nullptr)
        return tl::unexpected(
            grabError(ErrorCode::NotSupported, path, QStringLiteral("no decoder")));
    Codec codec(avcodec_alloc_context3(decoder));
    if (codec == nullptr || avcodec_parameters_to_context(codec.get(), stream.codecpar) < 0)
        return tl::unexpected(grabError(ErrorCode::Io, path, QStringLiteral("no memory")));
    codec->pkt_timebase = stream.time_base;
    codec->thread_count = 1; // one frame, and several files at a time
    codec->max_pixels = kMostPixels;
    if (const int opened = avcodec_open2(codec.get(), decoder, nullptr); opened < 0)
        return tl::unexpected(grabError(ErrorCode::NotSupported, path, ffmpegText(opened)));
    return codec;
}

/// `position` (seconds from the start) in the stream's time units; kNoTimestamp when it has none.
std::int64_t streamTime(const AVStream& stream, double position) {
    const double units = std::clamp(position, 0.0, kLatestSecond) / seconds(stream.time_base);
    const std::int64_t start = stream.start_time == kNoTimestamp ? 0 : stream.start_time;
    if (!(units < 0x1p60) || std::abs(static_cast<double>(start)) >= 0x1p60)
        return kNoTimestamp;
    return start + static_cast<std::int64_t>(units);
}

/// The next frame that the decoder holds back, drained so that it need not see what follows.
bool drainOne(AVCodecContext& codec, AVFrame& frame) {
    avcodec_send_packet(&codec, nullptr);
    const bool got = avcodec_receive_frame(&codec, &frame) >= 0;
    avcodec_flush_buffers(&codec);
    return got;
}

/// Decodes the first keyframe from here on.
Frame decodeFrame(AVFormatContext& context, const AVStream& stream, AVCodecContext& codec) {
    Frame frame(av_frame_alloc());
    const Packet packet(av_packet_alloc());
    if (frame == nullptr || packet == nullptr)
        return nullptr;
    for (int seen = 0; seen < kMostPackets && av_read_frame(&context, packet.get()) >= 0;) {
        const bool isVideo = packet->stream_index == stream.index;
        const bool isKey = (packet->flags & AV_PKT_FLAG_KEY) != 0;
        seen += isVideo ? 1 : 0;
        const bool decode = isVideo && (isKey || seen > kPacketsBeforeAnyFrame);
        const bool sent = decode && avcodec_send_packet(&codec, packet.get()) >= 0;
        av_packet_unref(packet.get());
        if (sent && avcodec_receive_frame(&codec, frame.get()) >= 0)
            return frame;
        if (sent && isKey && drainOne(codec, *frame))
            return frame;
    }
    return drainOne(codec, *frame) ? std::move(frame) : nullptr;
}

/// The last keyframe at or before `position`. Containers without an index find a place only
/// roughly: when what comes from there is later, it is looked for further ahead.
Frame frameBefore(AVFormatContext& context, const AVStream& stream, AVCodecContext& codec,
                  double position) {
    // A search beyond the end finds nothing in some containers.
    if (context.duration > 0)
        position = std::min(position, static_cast<double>(context.duration) / AV_TIME_BASE);
    const std::int64_t wanted = streamTime(stream, position);
    Frame found;
    for (const double back : {0.0, 1.0, 4.0, 15.0, kLatestSecond}) {
        const std::int64_t target = streamTime(stream, position - back);
        // A file that cannot seek is read from where it stands.
        if (position > 0 && target != kNoTimestamp)
            av_seek_frame(&context, stream.index, target, AVSEEK_FLAG_BACKWARD);
        avcodec_flush_buffers(&codec);
        Frame frame = decodeFrame(context, stream, codec);
        const bool isLater = frame != nullptr && wanted != kNoTimestamp &&
                             frame->best_effort_timestamp != kNoTimestamp &&
                             frame->best_effort_timestamp > wanted;
        if (frame != nullptr)
            found = std::move(frame);
        if ((found != nullptr && !isLater) || back >= position)
            break;
    }
    return found;
}

/// Width and height of the frame as it is shown, before it is turned.
std::pair<int, int> scaledSize(const AVFrame& frame, const AVStream& stream, int largestSide) {
    AVRational aspect = frame.sample_aspect_ratio;
    if (aspect.num <= 0 || aspect.den <= 0)
        aspect = stream.sample_aspect_ratio;
    const double stretch =
        std::clamp(aspect.num > 0 && aspect.den > 0 ? av_q2d(aspect) : 1.0, 1.0 / 16, 16.0);
    const double width = frame.width * stretch;
    const double scale = std::min(1.0, largestSide / std::max(width, double(frame.height)));
    const auto side = [&](double length) {
        return std::clamp(static_cast<int>(std::lround(length * scale)), 1, largestSide);
    };
    return {side(width), side(frame.height)};
}

void setColours(SwsContext& scaler, const AVFrame& frame) {
    constexpr int kHighDefinitionHeight = 720;
    int space = frame.colorspace;
    if (space == AVCOL_SPC_UNSPECIFIED || space == AVCOL_SPC_RGB)
        space = frame.height >= kHighDefinitionHeight ? SWS_CS_ITU709 : SWS_CS_ITU601;
    const int fullRange = frame.color_range == AVCOL_RANGE_JPEG ? 1 : 0;
    sws_setColorspaceDetails(&scaler, sws_getCoefficients(space), fullRange,
                             sws_getCoefficients(SWS_CS_DEFAULT), 1, 0, 1 << 16, 1 << 16);
}

bool convertFrame(const AVFrame& frame, RawFrame& videoFrame) {
    const Scaler scaler(sws_getContext(
        frame.width, frame.height, static_cast<AVPixelFormat>(frame.format), videoFrame.width,
        videoFrame.height, AV_PIX_FMT_RGB32, SWS_AREA, nullptr, nullptr, nullptr));
    if (scaler == nullptr)
        return false;
    setColours(*scaler, frame);
    // The scaler writes whole vectors: rows and end get room for that.
    const int stride = (videoFrame.width * 4 + 63) / 64 * 64;
    QByteArray padded(static_cast<qsizetype>(stride) * videoFrame.height + 64, '\0');
    std::array<std::uint8_t*, 4> planes{reinterpret_cast<std::uint8_t*>(padded.data())};
    const std::array<int, 4> strides{stride};
    if (sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height, planes.data(),
                  strides.data()) <= 0)
        return false;
    const qsizetype row = static_cast<qsizetype>(videoFrame.width) * 4;
    videoFrame.rgb32.resize(row * videoFrame.height);
    for (int y = 0; y < videoFrame.height; ++y)
        std::memcpy(videoFrame.rgb32.data() + row * y, padded.constData() + stride * y,
                    static_cast<std::size_t>(row));
    return true;
}

void makeOpaque(RawFrame& videoFrame) {
    auto* pixel = reinterpret_cast<std::uint32_t*>(videoFrame.rgb32.data());
    for (qsizetype i = 0; i < videoFrame.rgb32.size() / 4; ++i)
        pixel[i] |= 0xFF000000u;
}

} // namespace

Result<RawFrame> grabFrame(const QString& path, double seconds, int largestSide) {
    if (largestSide < 1 || largestSide > kLargestImageSide || std::isnan(seconds))
        return tl::unexpected(grabError(ErrorCode::InvalidArgument, path, {}));
    auto reader = FileReader::open(path);
    if (!reader)
        return tl::unexpected(reader.error());
    auto input = FileInput::open(*reader, kGrabLimits);
    if (!input)
        return tl::unexpected(input.error());
    const AVStream* stream = selectVideo(**input);
    if (stream == nullptr)
        return tl::unexpected(
            grabError(ErrorCode::NotSupported, path, QStringLiteral("no picture track")));
    auto codec = openDecoder(*stream, path);
    if (!codec)
        return tl::unexpected(codec.error());
    AVFormatContext& context = *(*input)->context();
    const Frame frame = frameBefore(context, *stream, **codec, seconds);
    RawFrame videoFrame;
    if (frame != nullptr)
        std::tie(videoFrame.width, videoFrame.height) = scaledSize(*frame, *stream, largestSide);
    if (frame == nullptr || !convertFrame(*frame, videoFrame))
        return tl::unexpected(
            grabError(ErrorCode::InvalidData, path, QStringLiteral("no picture was decoded")));
    makeOpaque(videoFrame);
    return turnedFrame(videoFrame, quarterTurnOf(*stream));
}

} // namespace clipheave::platform
