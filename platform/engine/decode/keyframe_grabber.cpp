// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/decode/keyframe_grabber.h"

#include "platform/engine/convert/frame_maker.h"
#include "platform/engine/decode/media_decoder.h"
#include "platform/engine/decode/video_stream.h"
#include "platform/engine/io/file_input.h"
#include "platform/engine/messages.h"

#include <algorithm>
#include <cmath>

namespace clipheave::platform {

namespace {

constexpr int kLargestImageSide = 8192;
/// Packets of the video that are decoded at most until a frame comes out.
constexpr int kMostPackets = 400;
/// A file without a keyframe in this many packets is decoded from wherever it stands.
constexpr int kPacketsBeforeAnyFrame = 200;
constexpr double kLatestSecond = 1e7;
constexpr InputLimits kGrabLimits{96u << 20, std::chrono::milliseconds(4000)};

tl::unexpected<Error> grabError(ErrorCode code, const Message& detail = {}) {
    return failure(code, kGrabKeyframe, {}, detail);
}

/// Returns the video's stream, the only one that will give packets; null without one.
const AVStream* selectVideo(FileInput& input) {
    AVFormatContext& context = *input.context();
    AVStream* video = videoStream(context);
    // Containers without an index show what they hold only in the packets.
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

/// Returns `position` (seconds from the start) in the stream's time units; kNoTimestamp when they
/// do not reach so far.
std::int64_t streamTime(const AVStream& stream, double position) {
    const double units = std::clamp(position, 0.0, kLatestSecond) / seconds(stream.time_base);
    const std::int64_t start = stream.start_time == kNoTimestamp ? 0 : stream.start_time;
    if (!(units < 0x1p60) || std::abs(static_cast<double>(start)) >= 0x1p60)
        return kNoTimestamp;
    return start + static_cast<std::int64_t>(units);
}

/// Takes the frame that the decoder holds back, drained so that it need not see what follows.
bool drainOne(MediaDecoder& decoder, AVFrame& frame) {
    const bool got = decoder.send(nullptr) >= 0 && decoder.receive(frame) >= 0;
    decoder.flush();
    return got;
}

/// Decodes one packet; a keyframe alone gives its frame.
bool decodePacket(MediaDecoder& decoder, const AVPacket& packet, AVFrame& frame) {
    const int damaged = decoder.damaged();
    if (decoder.send(&packet) < 0 || decoder.damaged() > damaged)
        return false;
    return decoder.receive(frame) >= 0 ||
           ((packet.flags & AV_PKT_FLAG_KEY) != 0 && drainOne(decoder, frame));
}

/// Decodes the first keyframe from here on.
Frame decodeFrame(AVFormatContext& context, const AVStream& stream, MediaDecoder& decoder) {
    Frame frame(av_frame_alloc());
    const Packet packet(av_packet_alloc());
    if (frame == nullptr || packet == nullptr)
        return nullptr;
    for (int seen = 0; seen < kMostPackets && av_read_frame(&context, packet.get()) >= 0;) {
        const bool isVideo = packet->stream_index == stream.index;
        const bool isKey = (packet->flags & AV_PKT_FLAG_KEY) != 0;
        seen += isVideo ? 1 : 0;
        const bool wanted = isVideo && (isKey || seen > kPacketsBeforeAnyFrame);
        const bool decoded = wanted && decodePacket(decoder, *packet, *frame);
        av_packet_unref(packet.get());
        if (decoded)
            return frame;
    }
    return drainOne(decoder, *frame) ? std::move(frame) : nullptr;
}

/// Decodes the last keyframe at or before `position`. Containers without an index find a place only
/// roughly: when what comes from there is later, the search starts earlier.
Frame frameBefore(AVFormatContext& context, const AVStream& stream, MediaDecoder& decoder,
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
        decoder.flush();
        Frame frame = decodeFrame(context, stream, decoder);
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

/// Returns the size of the upright frame in square pixels.
QSize uprightSize(const AVFrame& frame, const AVStream& stream, int largestSide) {
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
    const QSize size(side(width), side(frame.height));
    return rotationOfStream(stream).swapsSides() ? size.transposed() : size;
}

Result<RawFrame> keyframeOf(FileInput& input, const QString& path, double seconds,
                            int largestSide) {
    const AVStream* stream = selectVideo(input);
    if (stream == nullptr)
        return grabError(ErrorCode::NotSupported, kNoVideoTrack);
    // One thread: it is one frame, and several files are read at a time.
    auto decoder = MediaDecoder::open(*stream, 1);
    if (!decoder)
        return grabError(decoder.error().code, decoder.error().detail);
    const Frame frame = frameBefore(*input.context(), *stream, **decoder, seconds);
    logDamage(path, (*decoder)->damaged());
    if (frame == nullptr)
        return grabError(ErrorCode::InvalidData, kNoFrameDecoded);
    FrameMaker maker(*stream->codecpar, rotationOfStream(*stream),
                     uprightSize(*frame, *stream, largestSide), Scaling::Fast);
    auto upright = maker.make(*frame);
    if (!upright)
        return grabError(ErrorCode::InvalidData, kUnknownPixelFormat);
    return std::move(*upright);
}

} // namespace

Result<RawFrame> grabKeyframe(const QString& path, double seconds, int largestSide) {
    if (largestSide < 1 || largestSide > kLargestImageSide || std::isnan(seconds))
        return failure(ErrorCode::InvalidArgument, kGrabKeyframe, path);
    auto reader = FileReader::open(path);
    if (!reader)
        return tl::unexpected(reader.error());
    auto input = FileInput::open(*reader, kGrabLimits);
    if (!input)
        return tl::unexpected(input.error());
    auto frame = keyframeOf(**input, path, seconds, largestSide);
    if (!frame)
        frame.error().path = path;
    return frame;
}

} // namespace clipheave::platform
