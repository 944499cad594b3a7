// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/convert/audio_format.h"
#include "platform/foundation/result.h"

namespace clipheave::platform {

/// The codec of an audio track and what its encoder gets.
struct AudioEncoding {
    const char* encoder = "aac"; ///< as libavcodec names it; "alac" without loss
    AudioFormat format;
    std::int64_t bitRate = 0; ///< bit/s; 0 without loss
    int bitsPerRawSample = 0; ///< 0: as the sample format has
};

/// Returns AAC with the rate and channels of a source as far as AAC has them, mixed down to
/// `channels` at most (0: all) and to the layouts that AAC has numbers for. NotSupported without an
/// encoder.
[[nodiscard]] Result<AudioEncoding> aacEncoding(const AVCodecParameters& source, int channels,
                                                std::int64_t bitRate);

/// Returns AAC of the same channels in the same order, not mixed. NotSupported where AAC has no
/// layout of that many.
[[nodiscard]] Result<AudioEncoding> unmixedAacEncoding(const AVCodecContext& decoder,
                                                       std::int64_t bitRate);
/// Returns ALAC of the same channels in the same order, with 16 or 24 bits. NotSupported where ALAC
/// has no layout of that many.
[[nodiscard]] Result<AudioEncoding> alacEncoding(const AVCodecContext& decoder);
/// Returns whether samples of a decoder are finer than ALAC holds, which is 24 bits.
[[nodiscard]] bool isFinerThanAlac(const AVCodecContext& decoder);

} // namespace clipheave::platform
