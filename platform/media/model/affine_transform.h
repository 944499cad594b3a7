// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>

namespace clipheave::platform {

/// Maps a point (x, y) to (a x + c y + tx, b x + d y + ty). In frames y points down, so a
/// positive angle rotates clockwise.
struct CGAffineTransform {
    double a = 1, b = 0, c = 0, d = 1, tx = 0, ty = 0;
};
[[nodiscard]] CGAffineTransform CGAffineTransformMakeRotation(double radians);
[[nodiscard]] CGAffineTransform CGAffineTransformMakeTranslation(double tx, double ty);
/// `first`, then `second`.
[[nodiscard]] CGAffineTransform CGAffineTransformConcat(const CGAffineTransform& first,
                                                        const CGAffineTransform& second);

/// From the display matrix of a track, {a b u c d v x y w}.
[[nodiscard]] CGAffineTransform transformOfMatrix(const std::array<double, 9>& matrix);

} // namespace clipheave::platform
