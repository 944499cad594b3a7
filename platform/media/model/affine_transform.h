// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <optional>

namespace clipheave::platform {

/// Maps a point (x, y) to (a x + c y + tx, b x + d y + ty). In frames y points down, so a
/// positive rotation turns clockwise.
struct CGAffineTransform {
    double a = 1, b = 0, c = 0, d = 1, tx = 0, ty = 0;
};
[[nodiscard]] CGAffineTransform CGAffineTransformMakeRotation(double radians);
[[nodiscard]] CGAffineTransform CGAffineTransformMakeTranslation(double tx, double ty);
/// `first`, then `second`.
[[nodiscard]] CGAffineTransform CGAffineTransformConcat(const CGAffineTransform& first,
                                                        const CGAffineTransform& second);

/// From and to the display matrix of a track, {a b u c d v x y w}.
[[nodiscard]] CGAffineTransform transformOfMatrix(const std::array<double, 9>& matrix);
[[nodiscard]] std::array<double, 9> matrixOfTransform(const CGAffineTransform& transform);

/// A transform that keeps right angles, as what it does to a frame: mirrored left to right first,
/// then turned clockwise by 0, 90, 180 or 270 degrees. None for slanting and flattening ones; sizes
/// and places are not looked at.
struct FrameTurn {
    int degrees = 0;
    bool mirrored = false;
};
[[nodiscard]] std::optional<FrameTurn> frameTurn(const CGAffineTransform& transform);

} // namespace clipheave::platform
