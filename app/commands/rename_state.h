// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace clipheave::app {

/// What the rename window was asked for. Main thread.
struct RenameState {
    bool useCustomName = true; ///< a custom text, not metadata tags
    int running = 0;           ///< renames and undoings under way
};

} // namespace clipheave::app
