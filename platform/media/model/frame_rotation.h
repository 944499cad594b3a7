// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/model/affine_transform.h"
#include "platform/media/model/media_engine.h"

#include <array>
#include <optional>

namespace clipheave::platform {

/// How a stored frame becomes the one that is shown: mirrored left to right first, then rotated
/// clockwise.
struct FrameRotation {
    int degrees = 0; ///< 0, 90, 180 or 270
    bool mirrored = false;

    [[nodiscard]] bool isIdentity() const { return degrees == 0 && !mirrored; }
    [[nodiscard]] bool swapsSides() const { return degrees % 180 != 0; }
    [[nodiscard]] FrameRotation inverted() const {
        return mirrored ? *this : FrameRotation{(360 - degrees) % 360, false};
    }
};

/// Returns what a transform does to a frame; nothing for one that slants or flattens it. Scale and
/// position do not matter.
[[nodiscard]] std::optional<FrameRotation> rotationOfTransform(const CGAffineTransform& transform);
/// Returns the rotation nearest to a display matrix {a b u c d v x y w}; none for one that
/// flattens.
[[nodiscard]] FrameRotation nearestRotation(const std::array<double, 9>& matrix);

[[nodiscard]] RawFrame rotatedFrame(const RawFrame& source, const FrameRotation& rotation);

} // namespace clipheave::platform
