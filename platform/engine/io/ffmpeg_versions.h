// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

// What differs between releases 5.1 and 7.1 of FFmpeg, each under one name.
namespace clipheave::platform {

/// Returns how long a frame is shown in units of its stream's time base; 0: unknown.
[[nodiscard]] inline std::int64_t durationOf(const AVFrame& frame) {
#if LIBAVUTIL_VERSION_INT >= AV_VERSION_INT(57, 30, 100)
    return frame.duration;
#else
    return frame.pkt_duration;
#endif
}

#if LIBAVUTIL_VERSION_INT >= AV_VERSION_INT(58, 7, 100)
[[nodiscard]] inline bool isInterlaced(const AVFrame& frame) {
    return (frame.flags & AV_FRAME_FLAG_INTERLACED) != 0;
}
[[nodiscard]] inline bool isTopFieldFirst(const AVFrame& frame) {
    return (frame.flags & AV_FRAME_FLAG_TOP_FIELD_FIRST) != 0;
}
inline void setFields(AVFrame& frame, bool interlaced, bool topFieldFirst) {
    frame.flags &= ~(AV_FRAME_FLAG_INTERLACED | AV_FRAME_FLAG_TOP_FIELD_FIRST);
    frame.flags |= interlaced ? AV_FRAME_FLAG_INTERLACED : 0;
    frame.flags |= topFieldFirst ? AV_FRAME_FLAG_TOP_FIELD_FIRST : 0;
}
inline void setNoKeyframe(AVFrame& frame) {
    frame.flags &= ~AV_FRAME_FLAG_KEY;
}
#else
[[nodiscard]] inline bool isInterlaced(const AVFrame& frame) {
    return frame.interlaced_frame != 0;
}
[[nodiscard]] inline bool isTopFieldFirst(const AVFrame& frame) {
    return frame.top_field_first != 0;
}
inline void setFields(AVFrame& frame, bool interlaced, bool topFieldFirst) {
    frame.interlaced_frame = interlaced ? 1 : 0;
    frame.top_field_first = topFieldFirst ? 1 : 0;
}
inline void setNoKeyframe(AVFrame& frame) {
    frame.key_frame = 0;
}
#endif

// Side data of a whole stream: of the AVStream up to 6.0, of its parameters from 6.1 on.
#if LIBAVCODEC_VERSION_INT >= AV_VERSION_INT(60, 30, 100)

[[nodiscard]] inline std::span<const AVPacketSideData> sideDataOf(const AVStream& stream) {
    return {stream.codecpar->coded_side_data,
            static_cast<std::size_t>(stream.codecpar->nb_coded_side_data)};
}

/// Adds side data of `size` bytes in place of others of its type; null: no memory.
[[nodiscard]] inline std::uint8_t* addSideData(AVStream& stream, AVPacketSideDataType type,
                                               std::size_t size) {
    AVCodecParameters& codec = *stream.codecpar;
    AVPacketSideData* data =
        av_packet_side_data_new(&codec.coded_side_data, &codec.nb_coded_side_data, type, size, 0);
    return data != nullptr ? data->data : nullptr;
}

/// Copies the parameters without side data. Returns a code below 0 for no memory.
[[nodiscard]] inline int copyParameters(AVCodecParameters* to, const AVCodecParameters* from) {
    const int code = avcodec_parameters_copy(to, from);
    av_packet_side_data_free(&to->coded_side_data, &to->nb_coded_side_data);
    return code;
}

#else

[[nodiscard]] inline std::span<const AVPacketSideData> sideDataOf(const AVStream& stream) {
    return {stream.side_data, static_cast<std::size_t>(stream.nb_side_data)};
}
[[nodiscard]] inline std::uint8_t* addSideData(AVStream& stream, AVPacketSideDataType type,
                                               std::size_t size) {
    return av_stream_new_side_data(&stream, type, size);
}
[[nodiscard]] inline int copyParameters(AVCodecParameters* to, const AVCodecParameters* from) {
    return avcodec_parameters_copy(to, from);
}

#endif

/// Returns the bytes of a stream's side data of one type, empty if it has none.
[[nodiscard]] inline std::span<const std::uint8_t> sideDataOf(const AVStream& stream,
                                                              AVPacketSideDataType type) {
    for (const AVPacketSideData& data : sideDataOf(stream))
        if (data.type == type)
            return {data.data, data.size};
    return {};
}

// What an encoder takes, empty: anything.
#if LIBAVCODEC_VERSION_INT >= AV_VERSION_INT(61, 13, 100)

template <class Value>
[[nodiscard]] std::span<const Value> supportedBy(const AVCodec& codec, AVCodecConfig kind) {
    const void* values = nullptr;
    int count = 0;
    if (avcodec_get_supported_config(nullptr, &codec, kind, 0, &values, &count) < 0 ||
        values == nullptr)
        return {};
    return {static_cast<const Value*>(values), static_cast<std::size_t>(count)};
}
[[nodiscard]] inline std::span<const AVPixelFormat> pixelFormatsOf(const AVCodec& codec) {
    return supportedBy<AVPixelFormat>(codec, AV_CODEC_CONFIG_PIX_FORMAT);
}
[[nodiscard]] inline std::span<const AVSampleFormat> sampleFormatsOf(const AVCodec& codec) {
    return supportedBy<AVSampleFormat>(codec, AV_CODEC_CONFIG_SAMPLE_FORMAT);
}
[[nodiscard]] inline std::span<const int> sampleRatesOf(const AVCodec& codec) {
    return supportedBy<int>(codec, AV_CODEC_CONFIG_SAMPLE_RATE);
}
[[nodiscard]] inline std::span<const AVChannelLayout> channelLayoutsOf(const AVCodec& codec) {
    return supportedBy<AVChannelLayout>(codec, AV_CODEC_CONFIG_CHANNEL_LAYOUT);
}

#else

template <class Value, class IsEnd>
[[nodiscard]] std::span<const Value> upTo(const Value* values, IsEnd isEnd) {
    std::size_t count = 0;
    while (values != nullptr && !isEnd(values[count]))
        ++count;
    return {values, count};
}
[[nodiscard]] inline std::span<const AVPixelFormat> pixelFormatsOf(const AVCodec& codec) {
    return upTo(codec.pix_fmts, [](AVPixelFormat value) { return value == AV_PIX_FMT_NONE; });
}
[[nodiscard]] inline std::span<const AVSampleFormat> sampleFormatsOf(const AVCodec& codec) {
    return upTo(codec.sample_fmts,
                [](AVSampleFormat value) { return value == AV_SAMPLE_FMT_NONE; });
}
[[nodiscard]] inline std::span<const int> sampleRatesOf(const AVCodec& codec) {
    return upTo(codec.supported_samplerates, [](int value) { return value == 0; });
}
[[nodiscard]] inline std::span<const AVChannelLayout> channelLayoutsOf(const AVCodec& codec) {
    return upTo(codec.ch_layouts,
                [](const AVChannelLayout& value) { return value.nb_channels == 0; });
}

#endif

} // namespace clipheave::platform
