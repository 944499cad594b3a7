// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/image/sample_photo.h"
#include "platform/isobmff/write/isobmff_writer.h"

#include <array>
#include <span>

// What the sample library holds. Names are paths inside its folder; dates ("YYYY:MM:DD HH:MM:SS",
// local time) become the files' dates; muxers, codecs and tags have libavformat's names. Texts are
// UTF-8; a null identifier or name ends a list.
namespace clipheave::cli {

struct DemoItem {
    const char* identifier;
    const char* value; ///< "cover": a drawn image
};

struct DemoVideo {
    const char* name;
    const char* date;
    const char* muxer;
    const char* videoCodec;
    const char* audioCodec = ""; ///< "" for none
    int width, height;           ///< pixels, before the rotation
    double seconds;
    int frameRate, sampleRate = 48000, channels = 2;
    int pattern = 0;     ///< chooses among the drawn scenes
    double rotation = 0; ///< degrees clockwise
    /// What the metadata writer makes of it; unused without items.
    platform::OutputContainer container = platform::OutputContainer::Mp4;
    std::array<DemoItem, 13> items = {};
};

struct DemoTag {
    const char* name;
    const char* value;
};

struct DemoAudio {
    const char* name;
    const char* date;
    const char* muxer;
    const char* codec;
    double seconds;
    int sampleRate = 44100, channels = 2;
    int pattern = 0; ///< chooses among the tones
    std::array<DemoTag, 9> tags = {};
};

struct DemoPhoto {
    const char* name;
    const char* date;
    platform::SamplePhoto sample;
};

[[nodiscard]] std::span<const DemoVideo> demoVideos();
[[nodiscard]] std::span<const DemoAudio> demoAudio();
[[nodiscard]] std::span<const DemoPhoto> demoPhotos();

} // namespace clipheave::cli
