// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/plan/planned_export.h"

#include <algorithm>
#include <thread>

namespace clipheave::platform {

Result<std::unique_ptr<StreamSource>> openSegment(PlannedSegment& segment, AVMediaType type) {
    if (segment.opened)
        return std::move(segment.opened);
    return StreamSource::open(segment.path, type, segment.stream);
}

int threadsOf(const ExportResources& resources) {
    constexpr int kMostThreads = 64;
    const int cores = static_cast<int>(std::max(std::thread::hardware_concurrency(), 1U));
    return std::clamp(resources.threads > 0 ? resources.threads : cores, 1, kMostThreads);
}

} // namespace clipheave::platform
