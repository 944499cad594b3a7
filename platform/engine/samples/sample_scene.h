// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <span>

namespace clipheave::platform {

/// Where a frame of a demonstration file is drawn: rows of red, green, blue.
struct Canvas {
    std::span<std::uint8_t> bytes; ///< stride * height
    int width = 0, height = 0;
    int stride = 0; ///< bytes a row, at least 3 * width
};

/// A landscape at `seconds` into the video: the sun wanders, clouds and hills pass by. `pattern`
/// chooses colours and shapes; any number is good.
void drawScene(const Canvas& canvas, int pattern, double seconds);

/// A sample of a slowly repeated broken chord, -1 to 1. `pattern` chooses the key.
[[nodiscard]] float toneAt(int pattern, int channel, double seconds);

} // namespace clipheave::platform
