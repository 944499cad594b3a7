// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/ffmpeg_versions.h"
#include "platform/foundation/handles.h"
#include "platform/foundation/message.h"

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/display.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

// Handles of the FFmpeg libraries; their types do not leave the module.
namespace clipheave::platform {

/// Closes what avformat_open_input() opened; the caller's own IO stays.
using InputFormat = std::unique_ptr<AVFormatContext, Releaser<avformat_close_input>>;
/// A context for writing; its file is closed by FileOutput.
using OutputFormat = std::unique_ptr<AVFormatContext, Releaser<avformat_free_context>>;
using Codec = std::unique_ptr<AVCodecContext, Releaser<avcodec_free_context>>;
using CodecParameters = std::unique_ptr<AVCodecParameters, Releaser<avcodec_parameters_free>>;
using Frame = std::unique_ptr<AVFrame, Releaser<av_frame_free>>;
using Packet = std::unique_ptr<AVPacket, Releaser<av_packet_free>>;
using Scaler = std::unique_ptr<SwsContext, Releaser<sws_freeContext>>;
using Resampler = std::unique_ptr<SwrContext, Releaser<swr_free>>;

struct Dictionary {
    AVDictionary* entries = nullptr;
    Dictionary() = default;
    Dictionary(const Dictionary&) = delete;
    Dictionary& operator=(const Dictionary&) = delete;
    ~Dictionary() { av_dict_free(&entries); }
    void set(const char* key, const char* value) { av_dict_set(&entries, key, value, 0); }
};

inline constexpr std::int64_t kNoTimestamp = INT64_MIN; // AV_NOPTS_VALUE

/// What an error code of the libraries means: a reason in plain words, or the text of the system.
[[nodiscard]] Message ffmpegReason(int code);

/// Returns where the presentation of an opened file starts, in microseconds. Deliberate: a start
/// just below zero is audio priming; 0 stays 0 then, so that frames, audio and chapters stay where
/// they are. A broadcast whose clock wraps around starts up to a day below zero.
inline std::int64_t startMicroseconds(const AVFormatContext& context) {
    constexpr std::int64_t kLongestPriming = 1'000'000;
    const bool isPriming = context.start_time < 0 && context.start_time > -kLongestPriming;
    return isPriming || context.start_time == kNoTimestamp ? 0 : context.start_time;
}

/// Returns the value of a rational number in seconds or per second; 0 for one that is not positive.
inline double seconds(AVRational rational) {
    return rational.num > 0 && rational.den > 0 ? av_q2d(rational) : 0;
}

} // namespace clipheave::platform
