// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace clipheave::platform {

/// How a stored frame is drawn: mirrored, then rotated.
struct Orientation {
    int degrees = 0;       ///< clockwise: 0, 90, 180 or 270
    bool mirrored = false; ///< left to right, before that

    [[nodiscard]] bool isIdentity() const { return degrees == 0 && !mirrored; }
    [[nodiscard]] bool swapsSides() const { return degrees % 180 != 0; }
};

} // namespace clipheave::platform
