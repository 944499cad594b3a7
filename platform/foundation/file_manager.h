// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"

#include <QDateTime>
#include <QString>

#include <cstdint>
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

/// Returns the absolute path without links, "." and "..", as the kernel follows them; empty where
/// nothing is there.
[[nodiscard]] QString canonicalPath(const QString& path);

/// File operations; stateless. Dates that are returned and set have milliseconds (a QDateTime holds
/// no more); copies and moves keep nanoseconds.
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
};

} // namespace clipheave::platform
