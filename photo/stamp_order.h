// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "jobs/run_order.h"
#include "jobs/run_settings.h"
#include "media/image_item.h"
#include "photo/stamp_drawing.h"

#include <vector>

namespace clipheave::photo {

/// What the command takes from its front.
struct StampRequest {
    std::vector<media::ItemPointer> items;
    StampStyle style;
    jobs::RunSettings settings;
};

/// Returns the order that writes a copy of each photo, with its date drawn on it, into the storage
/// folder (see DateStamp). Items that are no photos are skipped.
[[nodiscard]] jobs::RunOrder stampOrder(StampRequest request);

} // namespace clipheave::photo
