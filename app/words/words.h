// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace clipheave::app {

/// Words every message of this process as the window does. Called once, before any other thread
/// begins.
void installWords();

} // namespace clipheave::app
