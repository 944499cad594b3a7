// SPDX-License-Identifier: GPL-3.0-or-later
#include "fuzz/audio_file_input.h"
#include "platform/media/model/encoded_image.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    withAudioInput(data, size, [size](auto& reader) {
        const auto image = clipheave::platform::EncodedImage::fromSlice(
            reader, {reader.path(), 0, static_cast<std::uint64_t>(size)});
        // What was taken for an image reads back whole.
        if (!image.isNull() && image.bytes().size() != static_cast<qsizetype>(size))
            __builtin_trap();
    });
    return 0;
}
