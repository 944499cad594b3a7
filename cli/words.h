// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace clipheave::cli {

/// Gives every message of this process the command line's words. Called once, before any other
/// thread begins.
void installWords();

} // namespace clipheave::cli
