// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPixmap>

namespace clipheave::app {

/// Returns an image of buttons and fields in each of their states, side by side.
[[nodiscard]] QPixmap grabStates();

} // namespace clipheave::app
