// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/image_item.h"
#include "media/video_pane.h"

#include <QPointF>

namespace clipheave::app {

/// What the detail pane shows and what was edited in it. Main thread.
struct PaneState {
    media::ItemPointer shownItem; ///< null: nothing
    media::ChangeFlags flags;     ///< since it is shown
    /// Degrees, as the position fields held them when an edit began there last: latitude in x,
    /// longitude in y.
    QPointF currentCoords;
};

} // namespace clipheave::app
