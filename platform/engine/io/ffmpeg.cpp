// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/io/ffmpeg.h"

#include "platform/engine/messages.h"

namespace clipheave::platform {

Message ffmpegReason(int code) {
    switch (code) {
    case AVERROR_INVALIDDATA:
        return kDamagedOrUnknownData;
    case AVERROR_PATCHWELCOME:
    case AVERROR_DECODER_NOT_FOUND:
    case AVERROR_ENCODER_NOT_FOUND:
    case AVERROR_DEMUXER_NOT_FOUND:
    case AVERROR_BSF_NOT_FOUND:
        return kUnsupportedData;
    case AVERROR_EOF:
        return kEndsTooEarly;
    case AVERROR_EXIT:
        return kWasStopped;
    case AVERROR_BUG:
    case AVERROR_BUG2:
    case AVERROR_EXTERNAL:
    case AVERROR_UNKNOWN:
        return kCannotBeProcessed;
    case AVERROR(EINVAL):
        return kWrongProperties;
    default:
        break;
    }
    char text[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(code, text, sizeof text); // those of the system
    return QString::fromUtf8(text);
}

} // namespace clipheave::platform
