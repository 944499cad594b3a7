// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/model/affine_transform.h"

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

} // namespace

CGAffineTransform CGAffineTransformMakeRotation(double radians) {
    const double cosine = std::cos(radians), sine = std::sin(radians);
    return {cosine, sine, -sine, cosine, 0, 0};
}

CGAffineTransform CGAffineTransformMakeTranslation(double tx, double ty) {
    return {1, 0, 0, 1, tx, ty};
}

CGAffineTransform CGAffineTransformConcat(const CGAffineTransform& first,
                                          const CGAffineTransform& second) {
    return {first.a * second.a + first.b * second.c,
            first.a * second.b + first.b * second.d,
            first.c * second.a + first.d * second.c,
            first.c * second.b + first.d * second.d,
            first.tx * second.a + first.ty * second.c + second.tx,
            first.tx * second.b + first.ty * second.d + second.ty};
}

CGAffineTransform transformOfMatrix(const std::array<double, 9>& matrix) {
    return {matrix[0], matrix[1], matrix[3], matrix[4], matrix[6], matrix[7]};
}

std::array<double, 9> matrixOfTransform(const CGAffineTransform& transform) {
    return {transform.a,  transform.b,  0, transform.c, transform.d, 0,
            transform.tx, transform.ty, 1};
}

std::optional<FrameTurn> frameTurn(const CGAffineTransform& transform) {
    const auto right = axisOf(transform.a, transform.b); // where the frame's x axis goes
    const auto down = axisOf(transform.c, transform.d);
    if (!right || !down || right->x * down->x + right->y * down->y != 0)
        return std::nullopt;
    FrameTurn turn;
    turn.mirrored = right->x * down->y - right->y * down->x < 0;
    // The y axis is not moved by the mirroring, so it tells the turn.
    turn.degrees = down->y == 1 ? 0 : down->x == -1 ? 90 : down->y == -1 ? 180 : 270;
    return turn;
}

} // namespace clipheave::platform
