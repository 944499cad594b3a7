// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/ffmpeg.h"
#include "platform/foundation/result.h"

#include <QStringList>

// Which codecs the containers that we write hold, and under which four-character codes.
namespace clipheave::platform {

/// Returns the codec's name for users, "VP8"; not for AV_CODEC_ID_NONE, which has none.
[[nodiscard]] QString codecName(AVCodecID codec);
/// Returns a stream as a text for users: "subtitle (subrip)".
[[nodiscard]] QString streamText(const AVCodecParameters& stream);
/// Returns why a stream cannot be decoded: there is no decoder for its codec, or nothing says
/// which codec it is.
[[nodiscard]] Message noDecoder(const AVCodecParameters& stream);
/// Returns whether the container has a place for the codec; what the stream holds may yet be
/// refused.
[[nodiscard]] bool holdsCodec(const AVOutputFormat& format, AVCodecID codec, int compliance);
/// Returns the four-character code under which `format` stores the stream: that of the source where
/// `format` knows it for this codec, else 0, which is the muxer's own choice.
[[nodiscard]] std::uint32_t codecTag(const AVOutputFormat& format, const AVCodecParameters& stream);
/// NotSupported: "QuickTime movies cannot hold VP8".
[[nodiscard]] tl::unexpected<Error> cannotHold(MessageCode operation, const AVFormatContext& output,
                                               const QStringList& codecs);
/// Returns the codecs of the streams that the container refuses, found by trying them one by one.
[[nodiscard]] QStringList refusedCodecs(const AVFormatContext& output);

} // namespace clipheave::platform
