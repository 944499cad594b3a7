// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/ffmpeg.h"

#include <QByteArray>

#include <array>
#include <optional>
#include <vector>

namespace clipheave::platform {

/// What the writer must know of a track before its first packet.
struct OutputTrack {
    CodecParameters parameters;
    AVRational timeBase{1, 1};
    AVRational frameRate{0, 1};
    AVRational aspect{0, 1};
    QByteArray language;
    std::optional<std::array<double, 9>> displayMatrix;
    struct SideData {
        AVPacketSideDataType type;
        QByteArray bytes;
    };
    std::vector<SideData> sideData;
};

} // namespace clipheave::platform
