// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/list/media_list_model.h"
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

    /// Sets the shown item; nothing of it is edited yet.
    void show(const media::ItemPointer& item) {
        shownItem = item;
        flags = {};
    }
    /// Goes on with the changed copy of the shown item.
    void follow(const ItemChanges& changes) {
        for (const auto& [item, copy] : changes)
            if (shownItem == item)
                shownItem = copy;
    }
};

} // namespace clipheave::app
