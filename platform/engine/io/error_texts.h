// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/ffmpeg.h"
#include "platform/foundation/result.h"

#include <QStringList>

// What the libraries refuse, in words for people who do not know them.
namespace clipheave::platform {

/// "VP8".
[[nodiscard]] QString codecText(AVCodecID codec);
/// Whether the container has a place for the codec; what the stream holds may yet be refused.
[[nodiscard]] bool holdsCodec(const AVOutputFormat& format, AVCodecID codec, int compliance);
/// NotSupported: "QuickTime movies cannot hold VP8".
[[nodiscard]] tl::unexpected<Error> cannotHold(const char* operation, const AVFormatContext& output,
                                               const QStringList& codecs);
/// The codecs of the streams that the container refuses, found by trying them one by one.
[[nodiscard]] QStringList refusedCodecs(const AVFormatContext& output);

} // namespace clipheave::platform
