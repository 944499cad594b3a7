// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QDateTime>
#include <QString>

#include <cstdint>
#include <ctime>

#include <sys/stat.h>

// The system calls behind NSFileManager and AtomicFile; nothing here knows what a file is for.
namespace clipheave::platform {

/// A file by its descriptor or, when that is -1, by its native name (links followed).
struct FileReference {
    int fd = -1;
    QByteArray name;

    static FileReference ofDescriptor(int fd) { return {fd, {}}; }
    static FileReference ofPath(const QString& path);

    /// 0 or errno.
    int status(struct statx& answer) const;
    /// The `f_type` of statfs(2), 0 when it is not known.
    [[nodiscard]] std::uint32_t fileSystemType() const;
    /// Names of the extended attributes that the file system lists; empty without any.
    [[nodiscard]] QByteArrayList attributeNames() const;
    /// The value, at most 64 KiB; null when there is none.
    [[nodiscard]] QByteArray attribute(const char* attributeName) const;
    /// 0 or errno.
    int setAttribute(const char* attributeName, QByteArrayView value) const;
};

/// File systems on which the blocks of a new file can be reserved without a drawback: where files
/// are cloned, a reservation would demand room that a clone does not need.
[[nodiscard]] bool reservesBlocksCheaply(std::uint32_t fileSystemType);
/// Other machines may write here: a process id says nothing about who made a file.
[[nodiscard]] bool isShared(std::uint32_t fileSystemType);

/// True when the name is taken, also by a link that leads nowhere.
[[nodiscard]] bool nameIsTaken(const QByteArray& name);
/// rename(2) that never replaces; 0 or errno (EEXIST).
int renameWithoutReplacing(const QByteArray& from, const QByteArray& to);

[[nodiscard]] QDateTime dateFromTimespec(const timespec& time);
[[nodiscard]] timespec timespecFromDate(const QDateTime& date);

} // namespace clipheave::platform
