// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/ffmpeg.h"

#include <QByteArray>

namespace clipheave::platform {

/// A channel layout that copies and frees itself.
class ChannelLayout {
public:
    ChannelLayout() = default;
    explicit ChannelLayout(const AVChannelLayout& layout) {
        av_channel_layout_copy(&m_layout, &layout);
    }
    ChannelLayout(const ChannelLayout& other) : ChannelLayout(other.m_layout) {}
    ChannelLayout& operator=(const ChannelLayout& other) {
        if (this != &other)
            av_channel_layout_copy(&m_layout, &other.m_layout);
        return *this;
    }
    ~ChannelLayout() { av_channel_layout_uninit(&m_layout); }

    [[nodiscard]] const AVChannelLayout& get() const { return m_layout; }

private:
    AVChannelLayout m_layout{};
};

/// What samples are like on their way to an encoder.
struct AudioFormat {
    AVSampleFormat sampleFormat = AV_SAMPLE_FMT_FLTP;
    int sampleRate = 0;
    ChannelLayout layout;
};

/// Returns a frame of `samples` in `format` with memory of its own; null without memory.
[[nodiscard]] Frame newAudioFrame(const AudioFormat& format, int samples);
/// Returns the name of a layout as libavfilter reads it, "stereo"; empty when it has none.
[[nodiscard]] QByteArray layoutName(const AVChannelLayout& layout);

} // namespace clipheave::platform
