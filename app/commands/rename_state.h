// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace clipheave::app {

/// The mode of the rename window and its running jobs. Main thread.
struct RenameState {
    bool useCustomName = true; ///< a custom text, not metadata tags
    int running = 0;           ///< renames and undoings under way
};

} // namespace clipheave::app
