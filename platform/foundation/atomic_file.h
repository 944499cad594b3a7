// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_manager.h"
#include "platform/foundation/file_system.h"
#include "platform/foundation/handles.h"

#include <array>
#include <ctime>
#include <sys/types.h>

namespace clipheave::platform {

/// A file that comes into being in one step. The bytes go to a hidden temporary file in the
/// target's folder (temporaryNameBeside()), which nobody else can read; commit() makes
/// them durable and renames.
/// Dropped without commit() nothing is left. Left-over temporaries of dead processes are removed by
/// removeTemporariesOfDeadProcesses().
class AtomicFile {
public:
    /// `sizeHint` bytes, from 1 MiB on, are reserved when known, so that a full disk is found at
    /// once and the file is not fragmented. A link is followed. A file that is replaced hands on
    /// its permissions; another gets those of a new file.
    [[nodiscard]] static Result<AtomicFile> create(const QString& target,
                                                   std::uint64_t sizeHint = 0);
    /// The bytes of `from` with its extended attributes, permissions and dates, not committed yet.
    /// `progress` as in NSFileManager::copyItem().
    [[nodiscard]] static Result<AtomicFile>
    copyOf(const QString& from, const QString& to,
           const std::function<bool(double)>& progress = {});
    AtomicFile(AtomicFile&&) noexcept;
    AtomicFile& operator=(AtomicFile&&) noexcept;
    ~AtomicFile();

    [[nodiscard]] int fd() const { return m_fd.get(); }
    [[nodiscard]] const QString& temporaryPath() const { return m_temporary; }
    [[nodiscard]] std::uint64_t position() const { return m_position; }

    /// Appends at position().
    [[nodiscard]] Result<void> write(QByteArrayView bytes);
    /// Appends `length` bytes of `sourceFd` from `offset` by copy_file_range, falling back to
    /// read/write; `progress` gets the bytes copied so far and stops the copy by returning false
    /// (Cancelled).
    [[nodiscard]] Result<void> copyFrom(int sourceFd, std::uint64_t offset, std::uint64_t length,
                                        const std::function<bool(std::uint64_t)>& progress = {});
    /// Sets the permissions that the file gets with its name, whatever it replaces.
    void setPermissions(mode_t mode) { m_mode = mode; }
    /// Gives the file the permissions of `source` when it gets its name, whatever it replaces.
    /// Where its group is another one, members of that group get what everybody has. Best effort:
    /// the permissions stay as they were when nothing is known of `source`.
    void takePermissionsOf(const FileReference& source);
    enum class Attributes {
        All,
        OfSystem, ///< none of those that programs describe a file with (origin, comment, rating)
    };
    /// Extended attributes of the source travel along, and its dates; that of its creation is its
    /// birth time when none is stored. Best effort.
    void copyExtendedAttributes(int sourceFd, Attributes which = Attributes::All);

    /// Makes the bytes durable and puts them under the target name. AlreadyExists with
    /// IfExists::Fail.
    [[nodiscard]] Result<void>
    commit(NSFileManager::IfExists ifExists = NSFileManager::IfExists::Replace);

private:
    AtomicFile() = default;
    void discard();
    [[nodiscard]] Result<void> reserve(std::uint64_t size);

    QString m_target, m_temporary;
    mode_t m_mode = 0;       ///< the permissions under the final name
    FileDescriptor m_folder; ///< of the temporary, also when somebody renames the folder meanwhile
    FileDescriptor m_fd;
    std::uint64_t m_position = 0;
    std::uint64_t m_reserved = 0;                   ///< bytes of blocks taken in advance
    std::optional<std::array<timespec, 2>> m_dates; ///< of access and modification, for commit()
    bool m_needsDates = false;                      ///< else best effort
};

} // namespace clipheave::platform
