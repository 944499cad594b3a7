// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/image/sample_photo.h"
#include "platform/isobmff/write/isobmff_writer.h"

#include <array>
#include <span>

// What the sample library holds. Texts are UTF-8; a null name ends a list.
namespace clipheave::cli {

struct DemoItem {
    const char* identifier;
    const char* value; ///< "cover": a drawn image
};

struct DemoVideo {
    const char* name; ///< relative path
    const char* date;
    const char* muxer;
    const char* videoCodec;
    const char* audioCodec; ///< "" for none
    int width, height;      ///< pixels
    double seconds;
    int frameRate, sampleRate, channels, pattern;
    double rotation;
    platform::OutputContainer container;
    std::array<DemoItem, 13> items;
};

struct DemoTag {
    const char* name; ///< libavformat's
    const char* value;
};

struct DemoAudio {
    const char* name;
    const char* date;
    const char* muxer;
    const char* codec;
    double seconds;
    int sampleRate, channels, pattern;
    std::array<DemoTag, 9> tags;
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
