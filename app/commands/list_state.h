// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/list/path_rows.h"
#include "media/image_item.h"

#include <QElapsedTimer>

#include <cstdint>
#include <vector>

namespace clipheave::app {

/// The media list in import order, which commands count by. Main thread.
struct ListState {
    std::vector<media::ItemPointer> items; ///< localPhotoItemArray
    PathRows rows;                         ///< of `items`
    std::uint64_t totalBytes = 0;          ///< of `items`
    std::size_t handedOver = 0;            ///< how many of `items` the shown list has already
    QElapsedTimer summaryAge;              ///< since the summary was made last
};

} // namespace clipheave::app
