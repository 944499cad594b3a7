// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPixmap>

namespace clipheave::app {

/// Buttons and fields in each of their states, side by side.
[[nodiscard]] QPixmap grabStates();

} // namespace clipheave::app
