// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/export/export_queue.h"

#include <gtest/gtest.h>

#include <sched.h>
#include <sys/resource.h>

namespace {

using clipheave::platform::ExportQueue;

TEST(ExportQueue, JobsAndTheirThreadsGiveWayOnlyWhenAsked) {
    const auto niceness = [] { return ::getpriority(PRIO_PROCESS, 0); }; // of the calling thread
    const int usual = niceness();
    for (const bool givesWay : {false, true}) {
        ExportQueue queue;
        if (givesWay)
            queue.giveWayToOthers();
        int job = -1, encoder = -1, policy = -1;
        queue.add([&] {
            job = niceness();
            policy = ::sched_getscheduler(0);
            std::thread([&] { encoder = niceness(); }).join();
        });
        queue.waitForAll();
        EXPECT_EQ(job > usual, givesWay);
        EXPECT_EQ(encoder, job);
        EXPECT_EQ(policy == SCHED_BATCH, givesWay);
    }
    EXPECT_EQ(niceness(), usual);
}

} // namespace
