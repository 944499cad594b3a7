// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/list/media_list_model.h"
#include "media/image_item.h"
#include "media/video_pane.h"

#include <QPointF>
#include <QStringList>

namespace clipheave::app {

/// What the panes show and what was edited in them. Main thread.
struct PaneState {
    media::ItemPointer shownItem;  ///< of the detail pane; null: nothing
    media::ChangeFlags flags;      ///< since it is shown
    media::ItemPointer shownPhoto; ///< of the photo pane; null: none
    media::ChangeFlags photoFlags; ///< since it is shown
    QStringList photoOutputs;      ///< of the last Apply
    /// Degrees, as the position fields held them when an edit began there last: latitude in x,
    /// longitude in y.
    QPointF currentCoords;

    /// Sets the shown item; nothing of it is edited yet.
    void show(const media::ItemPointer& item) {
        shownItem = item;
        flags = {};
    }
    void showPhoto(const media::ItemPointer& item) {
        shownPhoto = item;
        photoFlags = {};
    }
    /// Goes on with the changed copies of the shown items.
    void follow(const ItemChanges& changes) {
        for (const auto& [item, copy] : changes)
            for (media::ItemPointer* shown : {&shownItem, &shownPhoto})
                if (*shown == item)
                    *shown = copy;
    }
};

} // namespace clipheave::app
