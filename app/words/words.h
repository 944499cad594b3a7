// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace clipheave::app {

/// Gives every message of this process the window's words. Called once, before any other thread
/// begins.
void installWords();

} // namespace clipheave::app
