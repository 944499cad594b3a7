// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/ticks.h"

namespace clipheave::platform {

/// A frame and when it is shown in the output.
struct TimedFrame {
    Frame frame;
    Ticks start = 0, end = 0;
};

} // namespace clipheave::platform
