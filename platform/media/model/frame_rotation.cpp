// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/model/frame_rotation.h"

#include <algorithm>
#include <cmath>

namespace clipheave::platform {

namespace {

/// Share of the larger side of an axis that may lie off it: files store 16.16 fractions, and the
/// rotations of the jobs come from a sine that is not quite 0.
constexpr double kSlant = 1e-3;

/// -1, 0 or 1 for the cosine and sine of a right angle.
struct Axis {
    int x = 0, y = 0;
};

std::optional<Axis> axisOf(double x, double y) {
    const double length = std::hypot(x, y);
    if (!(length > 0))
        return std::nullopt;
    if (std::abs(y) <= kSlant * length)
        return Axis{x > 0 ? 1 : -1, 0};
    if (std::abs(x) <= kSlant * length)
        return Axis{0, y > 0 ? 1 : -1};
    return std::nullopt;
}

int signOf(double value) {
    return value > 0 ? 1 : value < 0 ? -1 : 0;
}

/// `right` and `down`: where the axes of the frame go; at a right angle to each other.
FrameRotation rotationOfAxes(Axis right, Axis down) {
    // Mirroring does not move the y axis: it alone gives the angle.
    const int degrees = down.y == 1 ? 0 : down.x == -1 ? 90 : down.y == -1 ? 180 : 270;
    return {degrees, right.x * down.y - right.y * down.x < 0};
}

/// How far a step in the stored frame goes in the shown one: x' = a x + c y, y' = b x + d y.
struct PixelSteps {
    int a = 1, b = 0, c = 0, d = 1;
};

PixelSteps stepsOf(const FrameRotation& rotation) {
    const int cosine = rotation.degrees == 0 ? 1 : rotation.degrees == 180 ? -1 : 0;
    const int sine = rotation.degrees == 90 ? 1 : rotation.degrees == 270 ? -1 : 0;
    const int side = rotation.mirrored ? -1 : 1;
    return {side * cosine, side * sine, -sine, cosine};
}

} // namespace

std::optional<FrameRotation> rotationOfTransform(const CGAffineTransform& transform) {
    const auto right = axisOf(transform.a, transform.b);
    const auto down = axisOf(transform.c, transform.d);
    if (!right || !down || right->x * down->x + right->y * down->y != 0)
        return std::nullopt;
    return rotationOfAxes(*right, *down);
}

FrameRotation nearestRotation(const std::array<double, 9>& matrix) {
    const bool upright = std::abs(matrix[0]) >= std::abs(matrix[1]);
    const Axis right{upright ? signOf(matrix[0]) : 0, upright ? 0 : signOf(matrix[1])};
    const Axis down{upright ? 0 : signOf(matrix[3]), upright ? signOf(matrix[4]) : 0};
    const bool flat = right.x * down.y - right.y * down.x == 0;
    return flat ? FrameRotation{} : rotationOfAxes(right, down);
}

RawFrame rotatedFrame(const RawFrame& source, const FrameRotation& rotation) {
    constexpr int kBlock = 32; // both sides of a block stay in the cache
    if (rotation.isIdentity())
        return source;
    RawFrame target;
    target.width = rotation.swapsSides() ? source.height : source.width;
    target.height = rotation.swapsSides() ? source.width : source.height;
    target.rgb32 = QByteArray(source.rgb32.size(), Qt::Uninitialized);
    const auto* from = reinterpret_cast<const std::uint32_t*>(source.rgb32.constData());
    auto* to = reinterpret_cast<std::uint32_t*>(target.rgb32.data());
    const PixelSteps steps = stepsOf(rotation);
    const std::int64_t left = steps.a + steps.c < 0 ? target.width - 1 : 0;
    const std::int64_t top = steps.b + steps.d < 0 ? target.height - 1 : 0;
    const std::int64_t perColumn = steps.a + std::int64_t{steps.b} * target.width;
    const std::int64_t perRow = steps.c + std::int64_t{steps.d} * target.width;
    for (int blockY = 0; blockY < source.height; blockY += kBlock)
        for (int blockX = 0; blockX < source.width; blockX += kBlock)
            for (int y = blockY; y < std::min(blockY + kBlock, source.height); ++y) {
                std::int64_t at = top * target.width + left + perRow * y + perColumn * blockX;
                const std::uint32_t* pixel = from + std::int64_t{y} * source.width + blockX;
                for (int x = blockX; x < std::min(blockX + kBlock, source.width); ++x) {
                    to[at] = *pixel++;
                    at += perColumn;
                }
            }
    return target;
}

} // namespace clipheave::platform
