// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/convert/audio_format.h"

namespace clipheave::platform {

Frame newAudioFrame(const AudioFormat& format, int samples) {
    Frame frame(av_frame_alloc());
    if (!frame)
        return frame;
    frame->format = format.sampleFormat;
    frame->sample_rate = format.sampleRate;
    frame->nb_samples = samples;
    if (av_channel_layout_copy(&frame->ch_layout, &format.layout.get()) < 0 ||
        av_frame_get_buffer(frame.get(), 0) < 0)
        return nullptr;
    return frame;
}

QByteArray layoutName(const AVChannelLayout& layout) {
    char text[256] = {};
    return av_channel_layout_describe(&layout, text, sizeof text) > 0 ? QByteArray(text)
                                                                      : QByteArray();
}

} // namespace clipheave::platform
