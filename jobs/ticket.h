// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "jobs/write_outcome.h"

#include <memory>

namespace clipheave::jobs {

class Run;

/// The right and the duty to report the outcome of one item. Copies share it: the first report
/// counts, a second one is dropped and logged, and when the last copy is destroyed without a report
/// the item has failed. A ticket keeps its run alive. Thread-safe.
class Ticket {
public:
    Ticket() = default; ///< belongs to no run; its report is dropped and logged

    [[nodiscard]] const std::shared_ptr<Run>& run() const { return m_run; }
    void report(const WriteOutcome& outcome) const;

private:
    friend class Run;
    struct Duty;
    Ticket(std::shared_ptr<Run> run, std::shared_ptr<Duty> duty)
        : m_run(std::move(run)), m_duty(std::move(duty)) {}

    std::shared_ptr<Run> m_run;
    std::shared_ptr<Duty> m_duty;
};

} // namespace clipheave::jobs
