// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/export/export_runner.h"

#include "platform/engine/export/audio_lane.h"
#include "platform/engine/export/copy_lane.h"
#include "platform/engine/export/lane_writer.h"
#include "platform/engine/export/video_lane.h"
#include "platform/engine/messages.h"
#include "platform/engine/plan/export_plan_reader.h"
#include "platform/foundation/file_manager.h"

#include <algorithm>
#include <thread>

namespace clipheave::platform {

namespace {

/// The threads that fill the lanes; stopped and joined at the end.
class LaneThreads {
public:
    explicit LaneThreads(PacketLanes& lanes) : m_lanes(lanes) {}
    ~LaneThreads() {
        m_lanes.stop();
        for (std::thread& thread : m_threads)
            thread.join();
    }
    LaneThreads(const LaneThreads&) = delete;
    LaneThreads& operator=(const LaneThreads&) = delete;

    template <class Function> void add(Function function) {
        m_threads.emplace_back(std::move(function));
    }

private:
    PacketLanes& m_lanes;
    std::vector<std::thread> m_threads;
};

Result<void> checkTarget(const ExportPlan& plan, const QString& target) {
    const NSFileManager& files = NSFileManager::defaultManager();
    const auto isTarget = [&](const ExportSegment& segment) {
        return files.isSameFile(segment.path, target);
    };
    const auto reads = [&](const std::vector<ExportSegment>& segments) {
        return std::any_of(segments.begin(), segments.end(), isTarget);
    };
    if ((plan.video && reads(plan.video->segments)) || (plan.audio && reads(plan.audio->segments)))
        return failure(ErrorCode::InvalidArgument, kRunExport, target, kTargetIsSource);
    return {};
}

void runLanes(const ExportPlan& plan, PlannedExport& planned, int threads, PacketLanes& lanes,
              LaneThreads& running) {
    std::size_t lane = 0;
    if (!planned.video.empty()) {
        running.add([&plan, &planned, &lanes, threads, lane] {
            if (plan.video->mode == ExportMode::Copy)
                copyTrack(planned.video, &plan.video->preferredTransform, lanes, lane);
            else
                encodeVideo(*plan.video, planned.video, threads, lanes, lane);
        });
        ++lane;
    }
    if (!planned.audio.empty())
        running.add([&plan, &planned, &lanes, lane] {
            if (plan.audio->mode == ExportMode::Copy)
                copyTrack(planned.audio, nullptr, lanes, lane);
            else
                encodeAudio(*plan.audio, planned.audio, lanes, lane);
        });
}

} // namespace

Result<Notes> runExportPlan(const ExportPlan& plan, const QString& target,
                            const ExportResources& resources,
                            const std::function<bool(double)>& progress) {
    if (auto free = checkTarget(plan, target); !free)
        return tl::unexpected(free.error());
    auto planned = readExportPlan(plan);
    if (!planned)
        return tl::unexpected(planned.error());
    const int threads = threadsOf(resources);
    const auto count = static_cast<std::size_t>(!planned->video.empty()) +
                       static_cast<std::size_t>(!planned->audio.empty());
    PacketLanes lanes(count);
    Result<void> written;
    {
        LaneThreads running(lanes);
        runLanes(plan, *planned, threads, lanes, running);
        written = writeLanes(lanes, plan, *planned, target, progress);
    }
    if (!written)
        return tl::unexpected(written.error());
    if (progress)
        progress(1);
    return planned->notes + lanes.notes();
}

} // namespace clipheave::platform
