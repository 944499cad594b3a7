// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/gif_palette.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

namespace clipheave::platform {

namespace {

constexpr std::size_t kMostColours = 256;
/// Pixels that are sampled; of larger images every second, third, … one.
constexpr qsizetype kMostSamples = 4 << 20;
constexpr int kRefinements = 3;
/// An image of fewer coarse colours (a dark scene, a drawing) is counted by exact colours.
constexpr std::size_t kFewCoarseBins = 1500;
constexpr std::size_t kMostExactBins = 1 << 16;
/// Weight of each component for the eye.
constexpr std::array<int, 3> kComponentWeights{2, 3, 2};

/// Colours that are counted as one, with their mean.
struct ColourBin {
    std::uint32_t count = 0;
    std::array<float, 3> mean{};
};

/// Calls `visit` with the samples of the image.
template <class Visit> void eachSample(const RawFrame& image, Visit visit) {
    const qsizetype pixels = image.rgb32.size() / 4;
    const qsizetype step = (pixels + kMostSamples - 1) / kMostSamples;
    const auto* pixel = reinterpret_cast<const std::uint32_t*>(image.rgb32.constData());
    for (qsizetype i = 0; i < pixels; i += step)
        visit(pixel[i]);
}

/// The upper 5, 6 and 5 bits of the components; the other eight bits in lowBits().
std::size_t highBits(std::uint32_t pixel) {
    return (pixel >> 8 & 0xF800) | (pixel >> 5 & 0x07E0) | (pixel >> 3 & 0x001F);
}
std::size_t lowBits(std::uint32_t pixel) {
    return (pixel >> 11 & 0xE0) | (pixel >> 5 & 0x18) | (pixel & 0x07);
}

std::vector<ColourBin> coarseBins(const RawFrame& image) {
    struct Sums {
        std::uint32_t count = 0, red = 0, green = 0, blue = 0;
    };
    std::vector<Sums> sums(1 << 16);
    eachSample(image, [&](std::uint32_t pixel) {
        Sums& sum = sums[highBits(pixel)];
        ++sum.count;
        sum.red += pixel >> 16 & 255;
        sum.green += pixel >> 8 & 255;
        sum.blue += pixel & 255;
    });
    std::vector<ColourBin> bins;
    for (const Sums& sum : sums)
        if (const auto count = static_cast<float>(sum.count); sum.count > 0)
            bins.push_back(
                {sum.count,
                 {static_cast<float>(sum.red) / count, static_cast<float>(sum.green) / count,
                  static_cast<float>(sum.blue) / count}});
    return bins;
}

/// Each colour of an image that has few; nothing when they are more than kMostExactBins.
std::vector<ColourBin> exactBins(const RawFrame& image, std::size_t coarseCount) {
    std::vector<std::uint32_t> blocks(1 << 16), counts, colours;
    counts.reserve((coarseCount + 1) << 8);
    counts.resize(256); // block 0 stands for none
    bool isTooMany = false;
    eachSample(image, [&](std::uint32_t pixel) {
        std::uint32_t& block = blocks[highBits(pixel)];
        if (block == 0) {
            block = static_cast<std::uint32_t>(counts.size());
            counts.resize(counts.size() + 256);
        }
        if (counts[block + lowBits(pixel)]++ > 0 || isTooMany)
            return;
        colours.push_back(pixel);
        isTooMany = colours.size() > kMostExactBins;
    });
    std::vector<ColourBin> bins;
    for (const std::uint32_t pixel : isTooMany ? std::vector<std::uint32_t>{} : colours)
        bins.push_back({counts[blocks[highBits(pixel)] + lowBits(pixel)],
                        {static_cast<float>(pixel >> 16 & 255),
                         static_cast<float>(pixel >> 8 & 255), static_cast<float>(pixel & 255)}});
    return bins;
}

struct ColourBox {
    std::span<ColourBin> bins;
    std::array<double, 3> mean{};
    double error = 0; ///< what one colour for all of them costs
    std::size_t axis = 0;
};

ColourBox boxOf(std::span<ColourBin> bins) {
    ColourBox box{bins, {}, 0, 0};
    double count = 0;
    std::array<double, 3> sum{}, squares{};
    for (const ColourBin& bin : bins) {
        count += bin.count;
        for (std::size_t i = 0; i < 3; ++i) {
            const double part = static_cast<double>(bin.mean[i]) * bin.count;
            sum[i] += part;
            squares[i] += part * static_cast<double>(bin.mean[i]);
        }
    }
    double widest = -1;
    for (std::size_t i = 0; i < 3; ++i) {
        box.mean[i] = sum[i] / count;
        const double spread = (squares[i] - sum[i] * box.mean[i]) * kComponentWeights[i];
        box.error += bins.size() > 1 ? spread : 0;
        if (spread > widest) {
            widest = spread;
            box.axis = i;
        }
    }
    return box;
}

std::vector<ColourBox> cutIntoBoxes(std::span<ColourBin> bins) {
    std::vector<ColourBox> boxes{boxOf(bins)};
    const auto lessError = [](const ColourBox& a, const ColourBox& b) { return a.error < b.error; };
    while (boxes.size() < kMostColours) {
        const auto worst = std::max_element(boxes.begin(), boxes.end(), lessError);
        if (!(worst->error > 0))
            break;
        const std::span<ColourBin> all = worst->bins;
        const std::size_t axis = worst->axis;
        const double middle = worst->mean[axis];
        const auto cut = std::partition(all.begin(), all.end(), [&](const ColourBin& bin) {
            return static_cast<double>(bin.mean[axis]) < middle;
        });
        const auto low = static_cast<std::size_t>(cut - all.begin());
        if (low == 0 || low == all.size()) {
            worst->error = 0; // equal but for rounding
            continue;
        }
        *worst = boxOf(all.first(low));
        boxes.push_back(boxOf(all.subspan(low)));
    }
    return boxes;
}

GifColour roundedColour(const std::array<double, 3>& mean) {
    const auto part = [](double value) { return static_cast<std::uint8_t>(std::lround(value)); };
    return {part(mean[0]), part(mean[1]), part(mean[2])};
}

/// Where the colours lie best for the bins that are nearest to each of them.
std::vector<GifColour> refined(const GifPalette& palette, std::span<const ColourBin> bins) {
    struct Sum {
        double count = 0;
        std::array<double, 3> mean{};
    };
    std::vector<Sum> sums(palette.colours().size());
    for (const ColourBin& bin : bins) {
        const GifColour own = roundedColour({bin.mean[0], bin.mean[1], bin.mean[2]});
        Sum& sum = sums[palette.nearest(own.red, own.green, own.blue)];
        sum.count += bin.count;
        for (std::size_t i = 0; i < 3; ++i)
            sum.mean[i] += static_cast<double>(bin.mean[i]) * bin.count;
    }
    std::vector<GifColour> colours = palette.colours();
    for (std::size_t i = 0; i < sums.size(); ++i)
        if (const double count = sums[i].count; count > 0)
            colours[i] = roundedColour(
                {sums[i].mean[0] / count, sums[i].mean[1] / count, sums[i].mean[2] / count});
    return colours;
}

} // namespace

void GifPalette::setColours(std::vector<GifColour> colours) {
    // Farther from everything than any colour, and its distance still fits into nearest().
    constexpr std::int32_t kFar = 1000;
    m_colours = std::move(colours);
    m_red.fill(kFar);
    m_green.fill(kFar);
    m_blue.fill(kFar);
    for (std::size_t i = 0; i < m_colours.size(); ++i) {
        m_red[i] = m_colours[i].red;
        m_green[i] = m_colours[i].green;
        m_blue[i] = m_colours[i].blue;
    }
}

std::uint8_t GifPalette::nearest(int red, int green, int blue) const {
    // Distance and index in one number, so that the smallest is found without a branch.
    std::int32_t best = std::numeric_limits<std::int32_t>::max();
    for (std::int32_t i = 0; i < static_cast<std::int32_t>(kMostColours); ++i) {
        const auto at = static_cast<std::size_t>(i);
        const std::int32_t r = m_red[at] - red, g = m_green[at] - green, b = m_blue[at] - blue;
        const std::int32_t distance = kComponentWeights[0] * r * r + kComponentWeights[1] * g * g +
                                      kComponentWeights[2] * b * b;
        best = std::min(best, distance << 8 | i);
    }
    return static_cast<std::uint8_t>(best & 255);
}

GifPalette GifPalette::of(const RawFrame& image) {
    GifPalette palette;
    std::vector<ColourBin> bins = coarseBins(image);
    if (bins.size() < kFewCoarseBins)
        if (auto exact = exactBins(image, bins.size()); !exact.empty()) {
            bins = std::move(exact);
            palette.m_isClose = true;
        }
    if (bins.empty())
        bins.push_back({1, {}});
    std::vector<GifColour> colours;
    for (const ColourBox& box : cutIntoBoxes(bins))
        colours.push_back(roundedColour(box.mean));
    palette.setColours(std::move(colours));
    for (int i = 0; i < kRefinements && palette.m_colours.size() == kMostColours; ++i)
        palette.setColours(refined(palette, bins));
    return palette;
}

} // namespace clipheave::platform
