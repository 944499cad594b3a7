// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace clipheave::jobs {

enum class WriteStatus { Completed, Failed, Cancelled, Skipped };

/// What became of one item of a writing command.
struct WriteOutcome {
    QString source;
    QStringList outputs;
    WriteStatus status = WriteStatus::Completed;
    /// Why it failed or was skipped, or what a user should know of a success; may be empty.
    QString message;
    double seconds = 0; ///< from start to end
};

/// Called once an item, on any thread.
using OutcomeHandler = std::function<void(const WriteOutcome& outcome)>;

} // namespace clipheave::jobs
