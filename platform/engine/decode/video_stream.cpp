// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/decode/video_stream.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace clipheave::platform {

AVStream* videoStream(AVFormatContext& context) {
    for (unsigned i = 0; i < context.nb_streams; ++i) {
        AVStream& stream = *context.streams[i];
        if (stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO &&
            (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) == 0)
            return &stream;
    }
    return nullptr;
}

FrameRotation rotationOfStream(const AVStream& stream) {
    const auto bytes = sideDataOf(stream, AV_PKT_DATA_DISPLAYMATRIX);
    std::array<std::int32_t, 9> fixed{};
    if (bytes.size() < sizeof fixed)
        return {};
    std::memcpy(fixed.data(), bytes.data(), sizeof fixed);
    std::array<double, 9> matrix{};
    std::copy(fixed.begin(), fixed.end(), matrix.begin());
    return nearestRotation(matrix);
}

} // namespace clipheave::platform
