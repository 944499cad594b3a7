// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_moves.h"
#include "platform/foundation/handles.h"
#include "platform/foundation/result.h"

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <vector>

namespace clipheave::batch {

/// A planned move, as far as the journal records it.
struct JournalMove {
    QString source, target;
    platform::FileIdentity original; ///< the source before the job; unknown: there was none
    platform::FileIdentity copy;     ///< the file under `target` when it had to be copied there
    platform::FileIdentity putBack;  ///< the file under `source` when it had to be copied back
    bool failed = false;             ///< the job knows that the file stayed
};

/// Records the moves of one job on disk: all of them before the first is made, and each deviation
/// before it happens. Each job has a file of its own in the user's state folder; those of the last
/// kKeptJobs are kept. While an object lives, its file is locked against other processes and
/// objects.
///
/// The file consists of lines of words separated by blanks; in names, bytes up to 0x20, 0x7F and
/// "%" are written as "%XX". The first line names the format, "move" lines hold the plan, and the
/// lines after them ("target", "copy", "back", "stays", "end") are appended as the job goes on. An
/// unfinished line does not count.
class RenameJournal {
public:
    static constexpr std::size_t kKeptJobs = 20;

    /// Creates a journal with the identities that the sources have now; it is durable on return.
    [[nodiscard]] static platform::Result<RenameJournal> create(std::vector<JournalMove> moves);
    /// Opens the journal of the last job. Fails with NotFound when there is none, with NotSupported
    /// while that job, or an undo of it, is still running in any process.
    [[nodiscard]] static platform::Result<RenameJournal> openLast();
    [[nodiscard]] static bool anyLeft();

    [[nodiscard]] const std::vector<JournalMove>& moves() const { return m_moves; }

    /// These record, durably on return, that a file will be moved to another name than planned or
    /// is another file; that a copy of it is about to appear under its target; and the same under
    /// its old name.
    [[nodiscard]] platform::Result<void> noteTarget(std::size_t index, const QString& target,
                                                    const platform::FileIdentity& original);
    [[nodiscard]] platform::Result<void> noteCopy(std::size_t index,
                                                  const platform::FileIdentity& copy);
    [[nodiscard]] platform::Result<void> notePutBack(std::size_t index,
                                                     const platform::FileIdentity& copy);
    /// Records that the file stayed, so that an undo does not mention it. Best effort.
    void noteStays(std::size_t index);
    /// Records that the job stopped before the move at `index`. Best effort.
    void noteEnd(std::size_t index);

    /// Removes the file: nothing is left to undo.
    void drop();

private:
    RenameJournal() = default;
    [[nodiscard]] static platform::Result<RenameJournal> open(const QString& path);
    [[nodiscard]] bool read();
    void take(const QByteArray& line);
    [[nodiscard]] platform::Result<void> append(const QByteArray& line, bool durable);

    QString m_path;
    platform::FileDescriptor m_fd; ///< holds the lock
    std::vector<JournalMove> m_moves;
};

} // namespace clipheave::batch
