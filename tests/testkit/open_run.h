// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "jobs/run.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <utility>
#include <vector>

namespace testkit {

/// The outcomes of what `work` starts, when all of it has ended; items in the order in which it
/// took their tickets.
inline std::vector<clipheave::jobs::WriteOutcome>
outcomesOf(const std::function<void(clipheave::jobs::Run& run)>& work,
           clipheave::jobs::Run::Handlers handlers = {}) {
    clipheave::jobs::RunOrder order;
    order.work = [&work](clipheave::jobs::Run& run, const auto&) { work(run); };
    const auto run = clipheave::jobs::Run::create(order, {}, std::move(handlers));
    run->perform();
    EXPECT_TRUE(run->waitForEnd(std::chrono::minutes(4)));
    return run->outcomes();
}

} // namespace testkit
