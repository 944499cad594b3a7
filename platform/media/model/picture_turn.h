// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/model/media_engine.h"

#include <array>

namespace clipheave::platform {

/// A turn by quarters, mirrored or not: x' = a x + c y, y' = b x + d y, each -1, 0 or 1.
struct QuarterTurn {
    int a = 1, b = 0, c = 0, d = 1;
    [[nodiscard]] bool isIdentity() const { return a == 1 && d == 1; }
    [[nodiscard]] bool swapsSides() const { return a == 0; }
    [[nodiscard]] QuarterTurn inverted() const { return {a, c, b, d}; }
};

/// The nearest quarter to a matrix {a b u c d v x y w}; identity for one that collapses.
[[nodiscard]] QuarterTurn nearestQuarterTurn(const std::array<double, 9>& matrix);
[[nodiscard]] RawFrame turnedFrame(const RawFrame& source, const QuarterTurn& turn);

} // namespace clipheave::platform
