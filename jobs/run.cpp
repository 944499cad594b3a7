// SPDX-License-Identifier: GPL-3.0-or-later
#include "jobs/run.h"

#include "jobs/messages.h"
#include "media/fields.h"
#include "platform/foundation/guarded.h"
#include "platform/foundation/log.h"
#include "platform/media/export/av_asset_export_session.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace clipheave::jobs {

using namespace platform;

namespace {

void logDropped(const WriteOutcome& outcome) {
    log(LogLevel::Warning, Message(kOutcomeDropped, {outcome.text()}).text(), outcome.source);
}

WriteOutcome cancelledOutcome(const QString& source) {
    WriteOutcome outcome;
    outcome.source = source;
    outcome.status = WriteStatus::Cancelled;
    return outcome;
}

} // namespace

/// What all copies of a ticket share.
struct Ticket::Duty {
    Duty(std::shared_ptr<Run> itsRun, std::size_t item) : run(std::move(itsRun)), index(item) {}
    Duty(const Duty&) = delete;
    Duty& operator=(const Duty&) = delete;
    ~Duty() {
        if (!isDone)
            run->take(index, refusal({}, kNoOutcome));
    }

    const std::shared_ptr<Run> run;
    const std::size_t index;
    std::atomic<bool> isDone = false;
};

void Ticket::report(const WriteOutcome& outcome) const {
    if (!m_duty || m_duty->isDone.exchange(true))
        return logDropped(outcome);
    m_run->take(m_duty->index, outcome);
}

std::shared_ptr<Run> Run::create(RunOrder order, const std::vector<std::size_t>& items,
                                 Handlers handlers) {
    return std::shared_ptr<Run>(new Run(std::move(order), items, std::move(handlers)));
}

Run::Run(RunOrder order, const std::vector<std::size_t>& items, Handlers handlers)
    : m_order(std::move(order)), m_handlers(std::move(handlers)), m_left(items.size() + 1) {
    for (const std::size_t place : items) {
        Item& item = m_items.emplace_back();
        item.place = place;
        item.source = m_order.sources[static_cast<qsizetype>(place)];
    }
    for (std::size_t i = m_items.size(); i-- > 0;)
        m_items[i].nextOfSource = std::exchange(m_waiting[m_items[i].source], i);
}

Run::~Run() = default;

void Run::perform() {
    std::vector<std::size_t> places;
    for (const Item& item : m_items)
        places.push_back(item.place);
    if (const auto worked = guarded([&] { m_order.work(*this, places); }); !worked)
        fail(worked.error());
    settleTheRest();
    release();
}

void Run::cancel() {
    const std::lock_guard lock(m_mutex);
    m_cancelled = true;
    for (const Running& running : m_running)
        if (const auto session = running.session.lock())
            session->cancelExport();
}

bool Run::isCancelled() const {
    {
        const std::lock_guard lock(m_mutex);
        if (m_cancelled)
            return true;
    }
    return m_handlers.stopRequested && m_handlers.stopRequested();
}

bool Run::waitForEnd(std::chrono::milliseconds time) const {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, time, [this] { return m_ended; });
}

Ticket Run::ticket(const QString& source) {
    const std::optional<std::size_t> index = takeItemOf(source);
    return index ? ticketOfItem(*index) : Ticket();
}

/// Returns the place of the item that this ticket is for, in an order without sources a new one.
std::optional<std::size_t> Run::takeItemOf(const QString& source) {
    const std::lock_guard lock(m_mutex);
    if (!m_order.sources.isEmpty()) {
        const auto waiting = m_waiting.find(source);
        if (waiting == m_waiting.end() || !*waiting)
            return std::nullopt;
        const std::size_t index = **waiting;
        *waiting = m_items[index].nextOfSource;
        m_items[index].isTaken = true;
        return index;
    }
    Item& item = m_items.emplace_back();
    item.place = m_items.size() - 1;
    item.source = source;
    item.isTaken = true;
    ++m_left;
    return item.place;
}

Ticket Run::ticketOfItem(std::size_t index) {
    const auto self = shared_from_this();
    return {self, std::make_shared<Ticket::Duty>(self, index)};
}

void Run::fail(const Error& error) {
    const std::lock_guard lock(m_mutex);
    m_failure = error;
}

bool Run::isFirst(const MessageCode& note) {
    const std::lock_guard lock(m_mutex);
    const qsizetype before = m_notesSaid.size();
    m_notesSaid.insert(QString::fromLatin1(note.id));
    return m_notesSaid.size() > before;
}

void Run::announce(int total) {
    const std::lock_guard lock(m_mutex);
    m_announced = total;
}

int Run::total() const {
    const std::lock_guard lock(m_mutex);
    return std::max(m_announced, static_cast<int>(m_items.size()));
}

void Run::settleTheRest() {
    const bool cancelled = isCancelled();
    std::vector<std::size_t> left;
    {
        const std::lock_guard lock(m_mutex);
        m_waiting.clear();
        for (std::size_t i = 0; i < m_items.size(); ++i)
            if (!std::exchange(m_items[i].isTaken, true))
                left.push_back(i);
    }
    for (const std::size_t index : left) {
        WriteOutcome outcome = refusal({}, kNoOutcome);
        outcome.failure = failure().value_or(*outcome.failure);
        take(index, cancelled && !failure() ? cancelledOutcome({}) : outcome);
    }
}

void Run::take(std::size_t index, WriteOutcome outcome) {
    {
        const std::lock_guard lock(m_mutex);
        Item& item = m_items[index];
        outcome.source = item.source;
        outcome.item = item.place;
        outcome.notes += m_order.notes.value(item.place);
        item.outcome = outcome;
        ++m_done;
    }
    if (m_handlers.outcome)
        ignoreFailure(guarded([&] { m_handlers.outcome(outcome); }), "the run keeps the outcome");
    release();
}

void Run::release() {
    {
        const std::lock_guard lock(m_mutex);
        if (--m_left > 0)
            return;
    }
    if (m_handlers.ended)
        ignoreFailure(guarded(m_handlers.ended), "the run has ended all the same");
    const std::lock_guard lock(m_mutex);
    m_ended = true;
    m_changed.notify_all();
}

void Run::start(const std::shared_ptr<AVAssetExportSession>& session, const QString& source,
                std::function<void()> completionHandler, int files) {
    const bool cancelled = isCancelled();
    {
        const std::lock_guard lock(m_mutex);
        dropEndedExports();
        m_running.push_back({session, source, files});
        if (cancelled || m_cancelled)
            session->cancelExport();
    }
    session->setFieldIdentifiers(media::kFieldIdentifiers);
    session->exportAsynchronouslyWithCompletionHandler(std::move(completionHandler));
}

/// Called locked. Acts only once the list has doubled: exports of a large run wait in their queue,
/// and checking all of them at each start would be quadratic.
void Run::dropEndedExports() {
    if (m_running.size() < m_runningToKeep)
        return;
    std::erase_if(m_running, [](const Running& ended) { return ended.session.expired(); });
    m_runningToKeep = std::max(kRunningToKeep, 2 * m_running.size());
}

RunProgress Run::progress() const {
    const std::lock_guard lock(m_mutex);
    RunProgress progress;
    for (const auto& [weak, source, files] : m_running)
        if (const auto session = weak.lock();
            session && session->status() == AVAssetExportSessionStatus::Exporting)
            progress.exports.push_back({source, session->progress(), files});
    return progress;
}

std::optional<Error> Run::failure() const {
    const std::lock_guard lock(m_mutex);
    return m_failure;
}

int Run::done() const {
    const std::lock_guard lock(m_mutex);
    return m_done;
}

std::vector<WriteOutcome> Run::outcomes() const {
    const std::lock_guard lock(m_mutex);
    std::vector<WriteOutcome> all;
    for (const Item& item : m_items)
        if (item.outcome)
            all.push_back(*item.outcome);
    return all;
}

std::vector<std::size_t> Run::itemsToRetry() const {
    if (m_order.sources.isEmpty()) // only the work knows its items
        return {};
    const std::lock_guard lock(m_mutex);
    std::vector<std::size_t> failed;
    for (const Item& item : m_items)
        if (item.outcome && item.outcome->status == WriteStatus::Failed)
            failed.push_back(item.place);
    return failed.empty() || !m_order.isWhole ? failed : m_order.allItems();
}

} // namespace clipheave::jobs
