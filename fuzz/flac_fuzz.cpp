// SPDX-License-Identifier: GPL-3.0-or-later
#include "fuzz/audio_file_input.h"
#include "platform/formats/format_readers.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    withAudioInput(data, size,
                   [](auto& reader) { static_cast<void>(clipheave::platform::readFlac(reader)); });
    return 0;
}
