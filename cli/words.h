// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace clipheave::cli {

/// Words every message of this process as the command line does. Called once, before any other
/// thread begins.
void installWords();

} // namespace clipheave::cli
