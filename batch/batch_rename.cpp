// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/batch_rename.h"

#include "batch/messages.h"
#include "batch/rename_journal.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/paths.h"

#include <QDir>

#include <chrono>
#include <mutex>
#include <optional>

namespace clipheave::batch {
namespace {

using jobs::WriteOutcome;
using jobs::WriteStatus;
using platform::Error;
using platform::ErrorCode;
using platform::FileIdentity;
using platform::Message;
using platform::MoveOutcome;
using platform::NSFileManager;
using platform::Result;

Message whyNotMoved(const Error& error, const RenameMove& move) {
    if (error.code == ErrorCode::AlreadyExists)
        return renameNoteMessage(RenameNote::NameExists);
    if (error.code == ErrorCode::NotFound)
        return renameNoteMessage(platform::identityOfItem(move.source).isKnown()
                                     ? RenameNote::NoFolder
                                     : RenameNote::Missing);
    return error.detail.isEmpty() ? Message(error.text()) : error.detail;
}

/// Both dates of the file that kept the old name go to the new one.
void carryDatesOver(const QString& from, const QString& to) {
    const auto& manager = NSFileManager::defaultManager();
    const auto dates = manager.attributesOfItemAtPath(from);
    if (!dates)
        return;
    // Deliberate: crossed. The old path is there only when the file could not be removed from
    // another file system; then the copy shows its creation date as the modification date.
    platform::ignoreFailure(
        manager.setAttributes(to, dates->NSFileModificationDate, dates->NSFileCreationDate),
        "the file itself is complete under its new name");
}

std::vector<JournalMove> movesForJournal(const std::vector<RenameMove>& plan) {
    std::vector<JournalMove> moves;
    for (const RenameMove& move : plan) {
        if (move.stays)
            continue;
        JournalMove entry;
        entry.source = QDir::isAbsolutePath(move.source) ? move.source
                                                         : QDir::currentPath() + u'/' + move.source;
        entry.target = QDir::isAbsolutePath(move.target) ? move.target
                                                         : QDir::currentPath() + u'/' + move.target;
        moves.push_back(entry);
    }
    return moves;
}

/// Makes the moves of one plan.
class RenameJob {
public:
    explicit RenameJob(RenameJournal& journal) : m_journal(journal) {}

    /// `index` is the move's place in the journal.
    WriteOutcome make(const RenameMove& move, std::size_t index) {
        Result<MoveOutcome> moved = tryTarget(move, move.target, index);
        QString target = move.target;
        if (!moved && moved.error().code == ErrorCode::AlreadyExists &&
            !move.retryTarget.isNull()) {
            target = move.retryTarget;
            moved = tryTarget(move, target, index);
        }
        if (!moved) {
            m_journal.noteStays(index);
            return jobs::refusal(move.source, whyNotMoved(moved.error(), move));
        }
        WriteOutcome outcome;
        outcome.outputs = {target};
        if (target != move.target)
            outcome.notes = {renameNoteMessage(RenameNote::NameExists)};
        if (moved->sourceKept) {
            carryDatesOver(move.source, target);
            outcome.notes = {{kOriginalStays, {moved->sourceKept->detail.text()}}};
        }
        return outcome;
    }

private:
    Result<MoveOutcome> tryTarget(const RenameMove& move, const QString& target,
                                  std::size_t index) {
        const JournalMove& planned = m_journal.moves()[index];
        const FileIdentity file = platform::identityOfItem(move.source);
        if (file.isKnown() && (target != move.target || !file.isSameAs(planned.original))) {
            if (const auto noted = m_journal.noteTarget(index, target, file); !noted)
                return tl::unexpected(noted.error());
        }
        const QString folder = platform::deletingLastPathComponent(target);
        if (!move.storageFolder.isNull() && folder == withoutEndSlash(move.storageFolder)) {
            const auto made = NSFileManager::defaultManager().createDirectoryAtPath(folder);
            if (!made)
                return tl::unexpected(made.error());
        }
        return platform::moveItemWithOutcome(move.source, target, [&](const FileIdentity& copy) {
            return m_journal.noteCopy(index, copy);
        });
    }

    static QString withoutEndSlash(const QString& folder) {
        return platform::deletingLastPathComponent(folder + QLatin1String("/x"));
    }

    RenameJournal& m_journal;
};

/// Returns nothing for a plan that moves no file.
Result<std::optional<RenameJournal>> journalOf(const std::vector<RenameMove>& plan) {
    std::vector<JournalMove> moves = movesForJournal(plan);
    if (moves.empty())
        return std::nullopt;
    auto made = RenameJournal::create(std::move(moves));
    if (!made)
        return tl::unexpected(made.error());
    return std::optional(std::move(*made));
}

/// Held by the rename of this process that runs.
std::mutex& renameTurn() {
    static std::mutex turn;
    return turn;
}

} // namespace

Result<void> runRename(const std::vector<RenameMove>& plan, jobs::Run& run) {
    using Clock = std::chrono::steady_clock;
    auto journal = journalOf(plan);
    if (!journal) {
        run.fail(journal.error());
        return tl::unexpected(journal.error());
    }
    std::size_t index = 0;
    bool anyMoved = false;
    for (const RenameMove& move : plan) {
        if (run.isCancelled()) {
            if (*journal)
                (*journal)->noteEnd(index);
            break;
        }
        const auto start = Clock::now();
        const auto ticket = run.ticket(move.source);
        WriteOutcome outcome = move.stays ? jobs::refusal(move.source, renameNoteMessage(move.note))
                                          : RenameJob(**journal).make(move, index++);
        outcome.seconds = std::chrono::duration<double>(Clock::now() - start).count();
        anyMoved = anyMoved || outcome.status == WriteStatus::Completed;
        ticket.report(outcome);
    }
    if (*journal && !anyMoved)
        (*journal)->drop();
    return {};
}

jobs::RunOrder renameOrder(const std::shared_ptr<RenameBatch>& batch) {
    jobs::RunOrder order;
    for (const media::ItemPointer& item : batch->items)
        order.sources.append(item->filePath);
    order.work = [batch](jobs::Run& run, const auto& items) {
        const std::lock_guard turn(renameTurn());
        if (batch->plan.empty())
            batch->plan = planRename(batch->request, batch->items, surroundingsOnDisk());
        std::vector<RenameMove> lines;
        for (const std::size_t item : items) {
            lines.push_back(batch->plan[item]);
            lines.back().stays &= !batch->wasTried; // that is what is to be tried
        }
        batch->wasTried = true;
        platform::ignoreFailure(runRename(lines, run), "the run's outcomes say it");
    };
    return order;
}

jobs::RunOrder undoOrder() {
    jobs::RunOrder order;
    order.work = [](jobs::Run& run, const auto&) {
        const std::lock_guard turn(renameTurn());
        platform::ignoreFailure(undoLastRename(run), "the run has it");
    };
    return order;
}

bool canUndoRename() {
    return RenameJournal::anyLeft();
}

} // namespace clipheave::batch
