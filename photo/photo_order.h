// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "jobs/run.h"
#include "jobs/run_settings.h"
#include "media/image_item.h"

#include <functional>
#include <vector>

namespace clipheave::photo {

/// What every photo command starts from: the selection, in list order, and the folders.
struct PhotoRequest {
    std::vector<media::ItemPointer> items;
    jobs::RunSettings settings;
};

/// A command over the items on a run; it takes a ticket for each.
using PhotoWorker = std::function<void(jobs::Run& run, const PhotoRequest& request)>;
/// Returns the order of a command over the items of the request. `isWhole`: it makes one output of
/// them.
[[nodiscard]] jobs::RunOrder photoOrder(PhotoWorker worker, PhotoRequest request,
                                        bool isWhole = false);
/// Returns whether the item is a photo; its outcome says so otherwise.
[[nodiscard]] bool isPhotoOrSkip(jobs::Run& run, const media::ItemPointer& item);

} // namespace clipheave::photo
