// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/batch_rename.h"
#include "batch/messages.h"
#include "batch/rename_journal.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/file_reader.h"
#include "platform/foundation/file_system.h"
#include "platform/foundation/folder_syncs.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/temporaries.h"

#include <QSet>
#include <QStringList>

#include <algorithm>
#include <array>
#include <climits>
#include <optional>
#include <unistd.h>

namespace clipheave::batch {
namespace {

using jobs::WriteOutcome;
using jobs::WriteStatus;
using platform::ErrorCode;
using platform::FileIdentity;
using platform::FileReader;
using platform::Message;
using platform::Result;

/// What an undo does with one move of the job.
enum class UndoStep {
    Nothing,    ///< the file has its old name
    PutBack,    ///< it has the new one, and the old one is free
    RemoveCopy, ///< it has its old name, and a copy the new one
    OldNameTaken,
    OtherFile, ///< another file has the new name
    Gone,      ///< neither name is there
    DiskAway,  ///< not even the folder is there
};

UndoStep undoStepFor(const JournalMove& move) {
    if (move.failed)
        return UndoStep::Nothing;
    const FileIdentity atOld = platform::identityOfItem(move.source);
    const FileIdentity atNew = platform::identityOfItem(move.target);
    const bool isBack = atOld.isSameAs(move.original) || atOld.isSameAs(move.putBack);
    const bool isCopy = atNew.isSameAs(move.copy);
    if (isBack)
        return isCopy ? UndoStep::RemoveCopy : UndoStep::Nothing;
    if (isCopy || atNew.isSameAs(move.original))
        return atOld.isKnown() ? UndoStep::OldNameTaken : UndoStep::PutBack;
    if (atNew.isKnown())
        return UndoStep::OtherFile;
    const QByteArray folder =
        platform::nativePath(platform::deletingLastPathComponent(move.target));
    return platform::nameIsTaken(folder) ? UndoStep::Gone : UndoStep::DiskAway;
}

Message whyNotPutBack(UndoStep step) {
    switch (step) {
    case UndoStep::OldNameTaken:
        return kOldNameTaken;
    case UndoStep::OtherFile:
        return kAnotherFile;
    case UndoStep::Gone:
        return kFileGone;
    case UndoStep::DiskAway:
        return kFolderGone;
    case UndoStep::Nothing:
    case UndoStep::PutBack:
    case UndoStep::RemoveCopy:
        break;
    }
    return {};
}

std::optional<QByteArray> whereLinkLeads(const QString& path) {
    std::array<char, PATH_MAX> leadsTo;
    const ssize_t length =
        ::readlink(platform::nativePath(path).constData(), leadsTo.data(), leadsTo.size());
    return length < 0 ? std::nullopt : std::optional(QByteArray(leadsTo.data(), length));
}

bool haveSameBytes(const QString& a, const QString& b) {
    const auto linkA = whereLinkLeads(a);
    const auto linkB = whereLinkLeads(b);
    if (linkA || linkB)
        return linkA == linkB;
    auto first = FileReader::open(a);
    auto second = FileReader::open(b);
    if (!first || !second || first->size() != second->size())
        return false;
    for (std::uint64_t at = 0; at < first->size(); at += FileReader::kWindow) {
        const std::uint64_t length = std::min(FileReader::kWindow, first->size() - at);
        const auto one = first->read(at, length);
        const auto other = second->read(at, length);
        if (!one || !other || *one != *other)
            return false;
    }
    return true;
}

/// Takes one job back.
class UndoJob {
public:
    explicit UndoJob(RenameJournal& journal) : m_journal(journal) {}

    /// Nothing where the job had moved nothing.
    std::optional<WriteOutcome> takeBack(std::size_t index) {
        const JournalMove& move = m_journal.moves()[index];
        const UndoStep step = undoStepFor(move);
        if (step == UndoStep::Nothing)
            return std::nullopt;
        WriteOutcome outcome = jobs::refusal(move.target, whyNotPutBack(step));
        if (step == UndoStep::PutBack)
            outcome = putBack(move, index);
        else if (step == UndoStep::RemoveCopy)
            outcome = removeCopy(move);
        const bool isBack = outcome.status == WriteStatus::Completed;
        if (isBack) {
            outcome.outputs = {move.source};
            m_anyPutBack = true;
            remember(move.source);
            remember(move.target);
        }
        m_anyDiskAway = m_anyDiskAway || step == UndoStep::DiskAway;
        m_anyLeft = m_anyLeft || (!isBack && step != UndoStep::OtherFile && step != UndoStep::Gone);
        return outcome;
    }

    /// After the last move: does the job remain the one to take back?
    [[nodiscard]] bool isWorthAnotherTry() const {
        return m_anyLeft && (m_anyPutBack || m_anyDiskAway);
    }
    /// Where names have changed.
    [[nodiscard]] QStringList folders() const { return m_folders.values(); }

private:
    WriteOutcome putBack(const JournalMove& move, std::size_t index) {
        const auto moved =
            platform::moveItemWithOutcome(move.target, move.source, [&](const FileIdentity& copy) {
                return m_journal.notePutBack(index, copy);
            });
        if (!moved)
            return jobs::refusal(move.target, moved.error().code == ErrorCode::AlreadyExists
                                                  ? kOldNameTaken
                                                  : moved.error().detail);
        WriteOutcome outcome;
        if (moved->sourceKept)
            outcome.notes = {{kNewNameStays, {moved->sourceKept->detail.text()}}};
        return outcome;
    }

    /// The copy may have been edited since; then there are two files, and both stay.
    static WriteOutcome removeCopy(const JournalMove& move) {
        if (!haveSameBytes(move.source, move.target))
            return jobs::refusal(move.target, kChangedCopyStays);
        const auto removed =
            platform::NSFileManager::defaultManager().removeItemAtPath(move.target);
        return removed ? WriteOutcome() : jobs::refusal(move.target, removed.error().detail);
    }

    void remember(const QString& path) {
        m_folders.insert(platform::deletingLastPathComponent(path));
    }

    RenameJournal& m_journal;
    QSet<QString> m_folders;
    bool m_anyPutBack = false;
    bool m_anyDiskAway = false;
    bool m_anyLeft = false; ///< files that are there, but could not be put back
};

/// Hidden files of moves across file systems that were under way when the program was killed.
void removeUnfinishedCopies(const std::vector<JournalMove>& moves) {
    QSet<QString> folders;
    for (const JournalMove& move : moves)
        folders << platform::deletingLastPathComponent(move.target)
                << platform::deletingLastPathComponent(move.source);
    for (const QString& folder : folders)
        platform::removeStaleTemporaries(folder);
}

} // namespace

Result<void> undoLastRename(jobs::Run& run) {
    auto journal = RenameJournal::openLast();
    if (!journal) {
        run.fail(journal.error());
        return tl::unexpected(journal.error());
    }
    removeUnfinishedCopies(journal->moves());
    UndoJob job(*journal);
    const std::size_t total = journal->moves().size();
    run.announce(static_cast<int>(total));
    for (std::size_t done = 1; done <= total; ++done) {
        if (run.isCancelled())
            return {};
        const std::size_t index = total - done;
        if (const auto outcome = job.takeBack(index))
            run.ticket(journal->moves()[index].target).report(*outcome);
    }
    // The journal must not be gone after a power cut that brings the new names back.
    platform::syncFolders(job.folders());
    if (!job.isWorthAnotherTry())
        journal->drop();
    return {};
}

} // namespace clipheave::batch
