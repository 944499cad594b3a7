// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "batch/date_plan.h"
#include "jobs/run_order.h"
#include "jobs/write_request.h"

#include <functional>
#include <vector>

// Planned dates as orders: one copy an item, on the queue of the exports; lines that write nothing
// are skipped with their note. Another try writes the same dates, whatever the window holds by
// then.
namespace clipheave::batch {

using Requests = std::vector<jobs::WriteRequest>;

/// Starts the writing of a camera date into a copy of a photo, into the storage folder.
using PhotoDateWriter =
    std::function<void(jobs::Run& run, const jobs::WriteRequest& request, const QString& date)>;

/// Writes camera dates by the writer of each kind, into the storage folder. Audio requests have the
/// pane of their own item: a writer of audio files writes all of it.
[[nodiscard]] jobs::RunOrder cameraDateOrder(std::vector<DateLine> lines, Requests requests,
                                             PhotoDateWriter writePhoto);
/// Copies files of every kind and gives the copies their file dates.
[[nodiscard]] jobs::RunOrder fileDateOrder(std::vector<FileDateLine> lines, Requests requests);
/// Writes the date items of videos, below the storage folder as below the parent of the imported
/// folder.
[[nodiscard]] jobs::RunOrder nameDateOrder(std::vector<DateLine> lines, Requests requests);

} // namespace clipheave::batch
