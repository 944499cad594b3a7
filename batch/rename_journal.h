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

/// A move that a job was going to make, as far as its journal tells.
struct JournalMove {
    QString source, target;
    platform::FileIdentity original; ///< the source before the job; unknown: there was none
    platform::FileIdentity copy;     ///< the file under `target` when it had to be copied there
    platform::FileIdentity putBack;  ///< the file under `source` when it had to be copied back
    bool failed = false;             ///< the job knows that the file stayed
};

/// The moves of one job on disk: all of them before the first is made, whatever deviates before it
/// happens. Lies in the user's state folder, one file a job, kept for the last kKeptJobs. As long
/// as an object lives, its file is locked against other processes and objects.
///
/// The file is lines of words separated by blanks; in names, bytes up to 0x20, 0x7F and "%" stand
/// as
/// "%XX". The first line names the format, "move" lines give the plan, the lines after them
/// ("target", "copy", "back", "stays", "end") are appended as things happen. A line that was not
/// finished does not count.
class RenameJournal {
public:
    static constexpr std::size_t kKeptJobs = 20;

    /// A new journal with the sources as they are now; on disk when this returns.
    [[nodiscard]] static platform::Result<RenameJournal> create(std::vector<JournalMove> moves);
    /// The journal of the last job. NotFound without any; NotSupported while that job, or an undo
    /// of it, is still running somewhere.
    [[nodiscard]] static platform::Result<RenameJournal> openLast();
    [[nodiscard]] static bool anyLeft();

    [[nodiscard]] const std::vector<JournalMove>& moves() const { return m_moves; }

    /// Durable when they return: the file will be moved to another name, or is another file, than
    /// planned; a copy of it is about to appear under its target, or under its old name.
    [[nodiscard]] platform::Result<void> noteTarget(std::size_t index, const QString& target,
                                                    const platform::FileIdentity& original);
    [[nodiscard]] platform::Result<void> noteCopy(std::size_t index,
                                                  const platform::FileIdentity& copy);
    [[nodiscard]] platform::Result<void> notePutBack(std::size_t index,
                                                     const platform::FileIdentity& copy);
    /// For what an undo should not mention: best effort.
    void noteStays(std::size_t index);
    /// The job stopped before the move at `index`.
    void noteEnd(std::size_t index);

    /// Removes the file: there is nothing left to take back.
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
