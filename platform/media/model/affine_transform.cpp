// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/model/affine_transform.h"

#include <cmath>

namespace clipheave::platform {

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

} // namespace clipheave::platform
