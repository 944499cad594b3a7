// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/handles.h"
#include "platform/foundation/result.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <array>
#include <cstdint>
#include <ctime>
#include <functional>
#include <optional>
#include <vector>

namespace clipheave::platform {

struct FileAttributes {
    std::uint64_t NSFileSize = 0; ///< bytes
    /// Moments in UTC form: show them through formatDate() and the like.
    /// The creation date is the stored one, else the birth time, else the modification date.
    QDateTime NSFileCreationDate;
    QDateTime NSFileModificationDate;
    bool isDirectory = false;
    bool isRegular = false;
    std::uint64_t device = 0, inode = 0; ///< identity of the file itself, links followed
};

/// What setting the creation date did.
enum class CreationDateStored {
    Yes,
    NotStoredHere, ///< this file system keeps no extended attributes: say so once
};

struct DirectoryEntry {
    QString name;
    bool isDirectory = false; ///< links followed
};

/// File operations; stateless. Dates that are given and set have milliseconds (a QDateTime holds no
/// more); copies and moves keep nanoseconds.
class NSFileManager {
public:
    static NSFileManager& defaultManager();

    [[nodiscard]] bool fileExistsAtPath(const QString& path) const;
    [[nodiscard]] bool fileExistsAtPath(const QString& path, bool& isDirectory) const;
    /// Links are followed.
    [[nodiscard]] Result<FileAttributes> attributesOfItemAtPath(const QString& path) const;
    /// The same for a file that is open already; saves the look-up.
    [[nodiscard]] Result<FileAttributes> attributesOfOpenFile(int fd, const QString& path) const;

    /// Linux cannot set a birth time: the creation date goes into an extended attribute (the file
    /// system's own where it has one, else "user.clipheave.crtime"), the modification date to the
    /// inode. An absent date is left as it is.
    [[nodiscard]] Result<CreationDateStored>
    setAttributes(const QString& path, const std::optional<QDateTime>& creation,
                  const std::optional<QDateTime>& modification) const;
    [[nodiscard]] Result<CreationDateStored>
    setAttributesOfOpenFile(int fd, const QString& path, const std::optional<QDateTime>& creation,
                            const std::optional<QDateTime>& modification) const;

    /// Direct entries as the file system gives them, unsorted, without "." and "..".
    [[nodiscard]] Result<std::vector<DirectoryEntry>>
    contentsOfDirectoryAtPath(const QString& path) const;
    /// With all intermediate folders; success when it exists already.
    [[nodiscard]] Result<void> createDirectoryAtPath(const QString& path) const;
    [[nodiscard]] Result<void> removeItemAtPath(const QString& path) const;
    /// Never replaces: AlreadyExists.
    [[nodiscard]] Result<void> moveItem(const QString& from, const QString& to) const;

    enum class IfExists { Fail, Replace };
    /// A whole new file under `to` in one step, with the bytes, extended attributes, permissions
    /// and modification date of `from`; the kernel copies (and clones where it can). `progress`
    /// gets the fraction done and stops the copy by returning false (Cancelled, nothing is left).
    [[nodiscard]] Result<void> copyItem(const QString& from, const QString& to, IfExists ifExists,
                                        const std::function<bool(double)>& progress = {}) const;

    /// True when both names lead to one file (device and inode, through links).
    [[nodiscard]] bool isSameFile(const QString& a, const QString& b) const;
    /// `path`, or the first free "B 2.E", "B 3.E" … beside it.
    [[nodiscard]] QString nextFreeName(const QString& path) const;
    /// The rule for every output: `wanted`, but the next free name when that is `source` itself.
    [[nodiscard]] QString outputPathForSource(const QString& wanted, const QString& source) const;
};

/// A file that comes into being in one step. The bytes go to a hidden temporary file in the
/// target's folder (".clipheave-<pid>-<random>.tmp"); commit() makes them durable and renames.
/// Dropped without commit() nothing is left. Left-over temporaries of dead processes are removed by
/// removeStaleTemporaries().
class AtomicFile {
public:
    /// `sizeHint` bytes, from 1 MiB on, are reserved when known, so that a full disk is found at
    /// once and the file lies in one piece. A link is followed. A file that is replaced hands on
    /// its permissions.
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
    /// Extended attributes of the source travel along, and its creation date, which is its birth
    /// time when none is stored; best effort.
    void copyExtendedAttributes(int sourceFd);

    /// Makes the bytes durable and puts them under the target name. AlreadyExists with
    /// IfExists::Fail.
    [[nodiscard]] Result<void>
    commit(NSFileManager::IfExists ifExists = NSFileManager::IfExists::Replace);

private:
    AtomicFile() = default;
    void discard();
    [[nodiscard]] Result<void> reserve(std::uint64_t size);

    QString m_target, m_temporary;
    FileDescriptor m_folder; ///< of the temporary, also when somebody renames the folder meanwhile
    FileDescriptor m_fd;
    std::uint64_t m_position = 0;
    std::uint64_t m_reserved = 0;                   ///< bytes of blocks taken in advance
    std::optional<std::array<timespec, 2>> m_dates; ///< of access and modification, for commit()
};

/// While one lives, AtomicFile::commit() of this thread makes the bytes of a file durable as ever,
/// but leaves its new name to whoever calls syncFolders() with what take() gives. Many small files
/// then wait for their folder once. A power cut in between costs new names, never whole files.
class DeferredFolderSyncs {
public:
    DeferredFolderSyncs();
    ~DeferredFolderSyncs();
    DeferredFolderSyncs(const DeferredFolderSyncs&) = delete;
    DeferredFolderSyncs& operator=(const DeferredFolderSyncs&) = delete;
    [[nodiscard]] QStringList take();
};
void syncFolders(const QStringList& folders);

/// Removes temporaries in `folder` whose process is gone.
void removeStaleTemporaries(const QString& folder);

} // namespace clipheave::platform
