// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"

#include <QString>
#include <QStringList>

#include <cstddef>
#include <functional>
#include <optional>

namespace clipheave::jobs {

enum class WriteStatus { Completed, Failed, Cancelled, Skipped };

/// What became of one item of a run.
struct WriteOutcome {
    QString source;
    QStringList outputs;
    WriteStatus status = WriteStatus::Completed;
    std::optional<platform::Error> failure; ///< why it failed or was skipped
    platform::Notes notes;                  ///< what a user should know besides
    double seconds = 0;                     ///< from start to end
    std::size_t item = 0;                   ///< its place among the items of the order

    /// Returns the failure and the notes in the words of the front, separated by semicolons;
    /// the path of the source is left out.
    [[nodiscard]] QString text() const;
};

/// Returns the outcome of a source that is not written, for a reason that needs no operation.
[[nodiscard]] WriteOutcome refusal(const QString& source, const platform::Message& reason,
                                   WriteStatus status = WriteStatus::Failed);

/// Called once an item, on any thread.
using OutcomeHandler = std::function<void(const WriteOutcome& outcome)>;

} // namespace clipheave::jobs
