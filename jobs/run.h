// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "jobs/output_paths.h"
#include "jobs/output_turns.h"
#include "jobs/run_order.h"
#include "jobs/run_progress.h"
#include "jobs/ticket.h"

#include <QHash>
#include <QSet>

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace clipheave::platform {
class AVAssetExportSession;
} // namespace clipheave::platform

namespace clipheave::jobs {

/// One command's work over a selection. It issues one ticket per item, so that there is exactly one
/// outcome per item whatever the work does, and ends once: when the work has returned and every
/// ticket has been reported. Work on other threads keeps it alive through its tickets. Thread-safe.
class Run : public std::enable_shared_from_this<Run> {
public:
    struct Handlers {
        OutcomeHandler outcome;      ///< once per item, on any thread, in any order
        std::function<void()> ended; ///< once, after the last outcome's handler has returned
        std::function<bool()> stopRequested; ///< checked like cancel(); may be empty
    };
    /// Makes a run over the given places of the order's sources; nothing starts yet.
    [[nodiscard]] static std::shared_ptr<Run>
    create(RunOrder order, const std::vector<std::size_t>& items, Handlers handlers = {});
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
    ~Run();

    /// Does the work, on this thread, once. Items for which it takes no ticket end as Failed, after
    /// cancel() as Cancelled.
    void perform();
    /// Stops what waits or runs: it ends as Cancelled and leaves no part of a file.
    void cancel();
    [[nodiscard]] bool isCancelled() const;
    /// Waits at most `time`; true when the run has ended.
    [[nodiscard]] bool waitForEnd(std::chrono::milliseconds time) const;

    /// Returns the ticket of the next item of this source that has none yet. A source that is not
    /// expected gives a ticket of no run; in an order without sources, a new item.
    [[nodiscard]] Ticket ticket(const QString& source);
    /// Says how many items an order without sources has, about: some may need no work.
    void announce(int total);
    /// Returns how many items there are, or were announced.
    [[nodiscard]] int total() const;
    /// The run as such cannot go on: what has no ticket yet fails for this reason.
    void fail(const platform::Error& error);

    /// Starts an export for its files, of which `source` stands in the progress. The handler, which
    /// holds their tickets, is called on the export's thread.
    void start(const std::shared_ptr<platform::AVAssetExportSession>& session,
               const QString& source, std::function<void()> completionHandler, int files = 1);
    [[nodiscard]] RunProgress progress() const;

    [[nodiscard]] const RunOrder& order() const { return m_order; }
    [[nodiscard]] OutputPaths& paths() { return m_paths; }
    [[nodiscard]] OutputTurns& turns() { return *m_turns; }
    [[nodiscard]] std::optional<platform::Error> failure() const;
    /// Returns true the first time that the run is asked for this note: what holds for the place of
    /// all outputs is said once.
    [[nodiscard]] bool isFirst(const platform::MessageCode& note);
    /// Returns how many outcomes are there.
    [[nodiscard]] int done() const;
    /// Returns the outcomes so far, in the order of the items.
    [[nodiscard]] std::vector<WriteOutcome> outcomes() const;
    /// Returns the places that another try is about: those that failed, or all of a whole order;
    /// none where only the work knows the items.
    [[nodiscard]] std::vector<std::size_t> itemsToRetry() const;

private:
    friend class Ticket;
    struct Item {
        std::size_t place = 0; ///< in the order
        QString source;
        std::optional<std::size_t> nextOfSource; ///< the item after it of the same source
        bool isTaken = false;
        std::optional<WriteOutcome> outcome;
    };
    struct Running {
        std::weak_ptr<platform::AVAssetExportSession> session;
        QString source;
        int files = 1;
    };

    Run(RunOrder order, const std::vector<std::size_t>& items, Handlers handlers);
    [[nodiscard]] std::optional<std::size_t> takeItemOf(const QString& source);
    [[nodiscard]] Ticket ticketOfItem(std::size_t index);
    void settleTheRest();
    void dropEndedExports();
    void take(std::size_t index, WriteOutcome outcome);
    void release();

    const RunOrder m_order;
    const Handlers m_handlers;
    OutputPaths m_paths;
    const std::shared_ptr<OutputTurns> m_turns = std::make_shared<OutputTurns>();
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    std::vector<Item> m_items;
    QHash<QString, std::optional<std::size_t>> m_waiting; ///< a source's next item without ticket
    int m_done = 0;
    static constexpr std::size_t kRunningToKeep = 16;
    std::vector<Running> m_running;
    std::size_t m_runningToKeep = kRunningToKeep; ///< ended ones go when there are as many
    std::optional<platform::Error> m_failure;
    QSet<QString> m_notesSaid;
    std::size_t m_left; ///< items without a handled outcome, and one for the work
    int m_announced = 0;
    bool m_cancelled = false;
    bool m_ended = false;
};

} // namespace clipheave::jobs
