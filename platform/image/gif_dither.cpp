// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/gif_palette.h"

#include <algorithm>

namespace clipheave::platform {

namespace {

/// Nearest colours found so far, by 6 bits of each component, or by all where colours are close.
class NearestColours {
public:
    explicit NearestColours(const GifPalette& palette)
        : m_palette(palette), m_found(1 << 18, kNone) {}
    [[nodiscard]] std::uint8_t operator()(int red, int green, int blue) {
        return m_palette.isClose() ? exact(red, green, blue) : rough(red, green, blue);
    }

private:
    static constexpr std::uint32_t kNone = UINT32_MAX;
    static std::uint32_t key(int red, int green, int blue, int bits) {
        return static_cast<std::uint32_t>(red << 2 * bits | green << bits | blue);
    }
    std::uint8_t rough(int red, int green, int blue) {
        std::uint32_t& found = m_found[key(red >> 2, green >> 2, blue >> 2, 6)];
        if (found == kNone)
            found = m_palette.nearest((red & ~3) + 2, (green & ~3) + 2, (blue & ~3) + 2);
        return static_cast<std::uint8_t>(found);
    }
    /// Each place holds the colour asked for last, in the upper three bytes, and what is nearest.
    std::uint8_t exact(int red, int green, int blue) {
        constexpr std::uint32_t kScatter = 0x9E3779B1; // of Fibonacci hashing
        const std::uint32_t colour = key(red, green, blue, 8);
        std::uint32_t& found = m_found[colour * kScatter >> 14];
        if (found >> 8 != colour || found == kNone)
            found = colour << 8 | m_palette.nearest(red, green, blue);
        return static_cast<std::uint8_t>(found);
    }

    const GifPalette& m_palette;
    std::vector<std::uint32_t> m_found;
};

/// Error of three components in sixteenths.
struct Spread {
    int red = 0, green = 0, blue = 0;
    void add(const Spread& error, int parts) {
        red += error.red * parts;
        green += error.green * parts;
        blue += error.blue * parts;
    }
};

/// Deliberate: an eighth of the error stays behind. Passing on all of it makes the grain of the
/// image stronger by 3 dB, which shows more than the gradients gain.
int passedOn(int error) {
    return error * 7 / 8;
}

int withError(std::uint32_t component, int error) {
    return std::clamp(static_cast<int>(component & 255) + ((error + 8) >> 4), 0, 255);
}

} // namespace

QByteArray ditheredIndices(const RawFrame& image, const GifPalette& palette) {
    const int width = image.width, height = image.height;
    QByteArray indices(qsizetype{width} * height, Qt::Uninitialized);
    NearestColours nearest(palette);
    const std::vector<GifColour>& colours = palette.colours();
    // One column more on both sides takes what falls off the edge.
    std::vector<Spread> row(static_cast<std::size_t>(width) + 2), below(row.size());
    for (int y = 0; y < height; ++y) {
        const auto* pixels =
            reinterpret_cast<const std::uint32_t*>(image.rgb32.constData()) + qsizetype{y} * width;
        char* to = indices.data() + qsizetype{y} * width;
        const bool isForward = y % 2 == 0;
        const std::ptrdiff_t step = isForward ? 1 : -1;
        std::fill(below.begin(), below.end(), Spread{});
        Spread carried;
        std::ptrdiff_t x = isForward ? 0 : width - 1;
        for (int i = 0; i < width; ++i, x += step) {
            const std::uint32_t pixel = pixels[x];
            Spread& own = row[static_cast<std::size_t>(x + 1)];
            const int red = withError(pixel >> 16, own.red + carried.red);
            const int green = withError(pixel >> 8, own.green + carried.green);
            const int blue = withError(pixel, own.blue + carried.blue);
            const std::uint8_t index = nearest(red, green, blue);
            to[x] = static_cast<char>(index);
            const GifColour& colour = colours[index];
            const Spread error{passedOn(red - colour.red), passedOn(green - colour.green),
                               passedOn(blue - colour.blue)};
            carried = {error.red * 7, error.green * 7, error.blue * 7};
            below[static_cast<std::size_t>(x + 1 - step)].add(error, 3);
            below[static_cast<std::size_t>(x + 1)].add(error, 5);
            below[static_cast<std::size_t>(x + 1 + step)].add(error, 1);
        }
        row.swap(below);
    }
    return indices;
}

} // namespace clipheave::platform
