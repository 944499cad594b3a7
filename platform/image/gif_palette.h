// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/model/media_engine.h"

#include <array>
#include <cstdint>
#include <vector>

namespace clipheave::platform {

struct GifColour {
    std::uint8_t red = 0, green = 0, blue = 0;
};

/// Up to 256 colours and the search for the nearest.
class GifPalette {
public:
    /// Returns the colours that represent the image with the least error: boxes of colours are
    /// split where they vary most, then each colour moves to the mean of those it represents.
    [[nodiscard]] static GifPalette of(const RawFrame& image);

    [[nodiscard]] const std::vector<GifColour>& colours() const { return m_colours; }
    /// True when the colours lie so close that values differ only in the last bit.
    [[nodiscard]] bool isClose() const { return m_isClose; }
    /// Index of the nearest colour; components 0 to 255.
    [[nodiscard]] std::uint8_t nearest(int red, int green, int blue) const;

private:
    void setColours(std::vector<GifColour> colours);

    std::vector<GifColour> m_colours;
    bool m_isClose = false;
    /// Components of their own, filled up with a far colour, so that the search runs in vectors.
    std::array<std::int32_t, 256> m_red{}, m_green{}, m_blue{};
};

/// One index a pixel, most of the error of each spread over its neighbours (Floyd and Steinberg,
/// 1976, in alternating directions).
[[nodiscard]] QByteArray ditheredIndices(const RawFrame& image, const GifPalette& palette);

} // namespace clipheave::platform
