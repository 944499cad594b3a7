// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/samples/sample_scene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace clipheave::platform {

namespace {

struct Colour {
    float red, green, blue; ///< 0 to 255
};

struct Landscape {
    Colour skyTop, skyBottom, sun;
    std::array<Colour, 3> hills; ///< far to near
    float roughness;             ///< how hilly, part of the height
};

constexpr std::array<Landscape, 6> kLandscapes{{
    // evening
    {{38, 52, 110},
     {250, 150, 90},
     {255, 226, 150},
     {{{120, 80, 120}, {84, 56, 96}, {46, 36, 66}}},
     0.10f},
    // sea
    {{70, 150, 220},
     {200, 232, 245},
     {255, 250, 220},
     {{{60, 140, 180}, {36, 112, 160}, {20, 84, 132}}},
     0.02f},
    // meadow
    {{98, 170, 235},
     {222, 240, 250},
     {255, 246, 190},
     {{{130, 180, 120}, {92, 156, 82}, {58, 120, 56}}},
     0.07f},
    // desert
    {{230, 150, 96},
     {252, 220, 160},
     {255, 255, 235},
     {{{214, 160, 106}, {190, 128, 78}, {150, 94, 56}}},
     0.05f},
    // snow
    {{120, 150, 190},
     {228, 234, 244},
     {255, 255, 255},
     {{{176, 196, 220}, {208, 220, 236}, {242, 246, 252}}},
     0.14f},
    // night
    {{14, 18, 48},
     {58, 62, 120},
     {240, 240, 224},
     {{{34, 40, 82}, {24, 30, 62}, {16, 20, 44}}},
     0.09f},
}};

Colour mix(const Colour& a, const Colour& b, float part) {
    return {a.red + (b.red - a.red) * part, a.green + (b.green - a.green) * part,
            a.blue + (b.blue - a.blue) * part};
}

void put(std::uint8_t* pixel, const Colour& colour) {
    pixel[0] = static_cast<std::uint8_t>(colour.red);
    pixel[1] = static_cast<std::uint8_t>(colour.green);
    pixel[2] = static_cast<std::uint8_t>(colour.blue);
}

std::uint8_t* rowOf(const Canvas& canvas, int y) {
    return canvas.bytes.data() + static_cast<std::ptrdiff_t>(y) * canvas.stride;
}

void drawSky(const Canvas& canvas, const Landscape& land) {
    for (int y = 0; y < canvas.height; ++y) {
        const float part = static_cast<float>(y) / static_cast<float>(canvas.height);
        const Colour colour = mix(land.skyTop, land.skyBottom, part);
        std::uint8_t* row = rowOf(canvas, y);
        for (int x = 0; x < canvas.width; ++x)
            put(row + 3 * x, colour);
    }
}

/// A soft-edged ellipse, mixed over what is there; `strength` 0 to 1 at the middle.
void drawDisc(const Canvas& canvas, float cx, float cy, float rx, float ry, const Colour& colour,
              float strength) {
    const int top = std::clamp(static_cast<int>(cy - ry), 0, canvas.height);
    const int bottom = std::clamp(static_cast<int>(cy + ry) + 1, 0, canvas.height);
    const int left = std::clamp(static_cast<int>(cx - rx), 0, canvas.width);
    const int right = std::clamp(static_cast<int>(cx + rx) + 1, 0, canvas.width);
    for (int y = top; y < bottom; ++y) {
        const float dy = (static_cast<float>(y) - cy) / ry;
        std::uint8_t* row = rowOf(canvas, y);
        for (int x = left; x < right; ++x) {
            const float dx = (static_cast<float>(x) - cx) / rx;
            const float inside = 1 - dx * dx - dy * dy;
            if (inside <= 0)
                continue;
            std::uint8_t* pixel = row + 3 * x;
            const Colour old{static_cast<float>(pixel[0]), static_cast<float>(pixel[1]),
                             static_cast<float>(pixel[2])};
            put(pixel, mix(old, colour, strength * std::min(1.0f, 4 * inside)));
        }
    }
}

void drawHills(const Canvas& canvas, const Landscape& land, int pattern, float seconds) {
    const auto height = static_cast<float>(canvas.height);
    for (std::size_t layer = 0; layer < land.hills.size(); ++layer) {
        const auto near = static_cast<float>(layer);
        const float travelled = seconds * (0.04f + 0.05f * near) + static_cast<float>(pattern);
        for (int x = 0; x < canvas.width; ++x) {
            const float at = static_cast<float>(x) / height + travelled;
            const float wave = std::sin(at * (2.1f + near)) + 0.5f * std::sin(at * 5.3f + near) +
                               0.2f * std::sin(at * 13.7f + 2 * near);
            const float edge = height * (0.58f + 0.13f * near - land.roughness * wave);
            const int top = std::clamp(static_cast<int>(edge), 0, canvas.height);
            for (int y = top; y < canvas.height; ++y)
                put(rowOf(canvas, y) + 3 * x, land.hills[layer]);
        }
    }
}

} // namespace

void drawScene(const Canvas& canvas, int pattern, double seconds) {
    const unsigned choice = static_cast<unsigned>(pattern);
    const Landscape& land = kLandscapes[choice % kLandscapes.size()];
    const auto width = static_cast<float>(canvas.width);
    const auto height = static_cast<float>(canvas.height);
    const auto time = static_cast<float>(seconds);
    const float start = static_cast<float>(choice % 97);

    drawSky(canvas, land);
    const float sunX = width * (0.25f + std::fmod(0.06f * time + 0.13f * start, 0.6f));
    const float sunY = height * (0.26f + 0.05f * std::sin(0.8f * time + start));
    drawDisc(canvas, sunX, sunY, height * 0.24f, height * 0.24f, land.sun, 0.25f);
    drawDisc(canvas, sunX, sunY, height * 0.10f, height * 0.10f, land.sun, 1.0f);
    for (int cloud = 0; cloud < 4; ++cloud) {
        const auto number = static_cast<float>(cloud);
        const float x =
            std::fmod(0.31f * number + 0.11f * start + 0.05f * time * (1 + 0.3f * number), 1.4f) -
            0.2f;
        drawDisc(canvas, width * x, height * (0.12f + 0.09f * number), height * 0.30f,
                 height * 0.045f, mix(land.skyBottom, {255, 255, 255}, 0.6f), 0.7f);
    }
    drawHills(canvas, land, pattern % 97, time);
}

float toneAt(int pattern, int channel, double seconds) {
    // A major chord and its octave, one note each quarter of a second, each dying away.
    static constexpr std::array<double, 4> kChord{1.0, 1.25, 1.5, 2.0};
    constexpr double kNoteSeconds = 0.25;
    const double root = 220.0 * std::exp2((static_cast<unsigned>(pattern) % 12) / 12.0);
    double sum = 0;
    for (int back = 0; back < 3; ++back) { // the newest note and the rests of two before it
        const double note = std::floor(seconds / kNoteSeconds) - back;
        if (note < 0)
            break;
        const double age = seconds - note * kNoteSeconds;
        const auto step =
            static_cast<std::size_t>(note) + static_cast<std::size_t>(channel % 2) * 2;
        const double attack = std::min(1.0, age * 100);
        sum += attack * std::exp(-5 * age) *
               std::sin(2 * std::numbers::pi * root * kChord[step % kChord.size()] * age);
    }
    return static_cast<float>(0.3 * sum);
}

} // namespace clipheave::platform
