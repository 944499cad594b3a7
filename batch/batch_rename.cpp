// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/batch_rename.h"

#include "batch/rename_journal.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/paths.h"

#include <QDir>

#include <optional>

namespace clipheave::batch {
namespace {

using platform::Error;
using platform::ErrorCode;
using platform::FileIdentity;
using platform::MoveOutcome;
using platform::NSFileManager;
using platform::Result;

QString whyNotMoved(const Error& error, const RenameMove& move) {
    if (error.code == ErrorCode::AlreadyExists)
        return renameNoteText(RenameNote::NameExists);
    if (error.code == ErrorCode::NotFound)
        return renameNoteText(platform::identityOfItem(move.source).isKnown()
                                  ? RenameNote::NoFolder
                                  : RenameNote::Missing);
    return error.detail.isEmpty() ? error.text() : error.detail.text();
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
    RenameOutcome make(const RenameMove& move, std::size_t index) {
        Result<MoveOutcome> moved = tryTarget(move, move.target, index);
        QString target = move.target;
        if (!moved && moved.error().code == ErrorCode::AlreadyExists &&
            !move.retryTarget.isNull()) {
            target = move.retryTarget;
            moved = tryTarget(move, target, index);
        }
        RenameOutcome outcome{move.source, move.source, moved.has_value(), {}};
        if (!moved) {
            outcome.message = whyNotMoved(moved.error(), move);
            m_journal.noteStays(index);
            return outcome;
        }
        outcome.target = target;
        if (target != move.target)
            outcome.message = renameNoteText(RenameNote::NameExists);
        if (moved->sourceKept) {
            carryDatesOver(move.source, target);
            outcome.message =
                QStringLiteral("the original stays too: ") + moved->sourceKept->detail.text();
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

bool isStopRequested(const RenameProgress& progress) {
    return progress.stopRequested && progress.stopRequested();
}

} // namespace

Result<std::vector<RenameOutcome>> runRename(const std::vector<RenameMove>& plan,
                                             const RenameProgress& progress) {
    std::vector<JournalMove> moves = movesForJournal(plan);
    std::optional<RenameJournal> journal;
    if (!moves.empty()) {
        auto made = RenameJournal::create(std::move(moves));
        if (!made)
            return tl::unexpected(made.error());
        journal = std::move(*made);
    }
    std::vector<RenameOutcome> outcomes;
    std::size_t index = 0;
    bool anyMoved = false;
    for (const RenameMove& move : plan) {
        if (isStopRequested(progress)) {
            if (journal)
                journal->noteEnd(index);
            break;
        }
        if (move.stays)
            outcomes.push_back({move.source, move.source, false, renameNoteText(move.note)});
        else
            outcomes.push_back(RenameJob(*journal).make(move, index++));
        anyMoved = anyMoved || outcomes.back().moved;
        if (progress.done)
            progress.done(outcomes.back(), outcomes.size(), plan.size());
    }
    if (journal && !anyMoved)
        journal->drop();
    return outcomes;
}

bool canUndoRename() {
    return RenameJournal::anyLeft();
}

} // namespace clipheave::batch
