// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"

#include <QHash>
#include <QStringList>

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace clipheave::jobs {

class Run;

/// What a command asks for, as a value that holds its requests: another try repeats exactly this,
/// whatever the window shows by then.
struct RunOrder {
    /// Starts the work on the given places of `sources` and returns; it takes a ticket for each.
    /// What it leaves to other threads holds tickets, nothing else of the run.
    using Work = std::function<void(Run& run, const std::vector<std::size_t>& items)>;

    QStringList sources; ///< of all items, in list order; empty when only the work knows them
    Work work;
    bool isWhole = false; ///< another try is about all items: one output is made of them
    /// What a user should know of an item whatever comes of it, by its place.
    QHash<std::size_t, platform::Notes> notes = {};

    /// Returns the places of all sources.
    [[nodiscard]] std::vector<std::size_t> allItems() const {
        std::vector<std::size_t> items;
        for (std::size_t i = 0; i < static_cast<std::size_t>(sources.size()); ++i)
            items.push_back(i);
        return items;
    }
};

} // namespace clipheave::jobs
