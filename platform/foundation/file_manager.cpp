// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/file_manager.h"

#include "platform/foundation/creation_date.h"
#include "platform/foundation/file_moves.h"
#include "platform/foundation/file_system.h"
#include "platform/foundation/handles.h"
#include "platform/foundation/messages.h"
#include "platform/foundation/paths.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace clipheave::platform {
namespace {

using Directory = std::unique_ptr<DIR, Releaser<::closedir>>;

Result<FileAttributes> attributesOf(const FileReference& file, const QString& path) {
    struct statx status {};
    if (const int error = file.status(status))
        return systemFailure(kReadAttributes, path, error);
    FileAttributes attributes;
    attributes.NSFileSize = status.stx_size;
    attributes.isDirectory = S_ISDIR(status.stx_mode);
    attributes.isRegular = S_ISREG(status.stx_mode);
    attributes.device = makedev(status.stx_dev_major, status.stx_dev_minor);
    attributes.inode = status.stx_ino;
    timespec modified{};
    modified.tv_sec = status.stx_mtime.tv_sec;
    modified.tv_nsec = status.stx_mtime.tv_nsec;
    attributes.NSFileModificationDate = dateFromTimespec(modified);
    attributes.NSFileCreationDate = dateFromTimespec(creationDate(file, status));
    return attributes;
}

int setModificationDate(const FileReference& file, const QDateTime& date) {
    std::array<timespec, 2> times{};
    times[0].tv_nsec = UTIME_OMIT; // the access date
    times[1] = timespecFromDate(date);
    const int result = file.fd >= 0 ? ::futimens(file.fd, times.data())
                                    : ::utimensat(AT_FDCWD, file.name.constData(), times.data(), 0);
    return result == 0 ? 0 : errno;
}

/// Returns whether a date is there already, to the millisecond; a second time would only drop what
/// is below that, and make the file system write the inode once more.
bool hasCreationDate(const FileReference& file, const QDateTime& date) {
    const auto stored = storedCreationDate(file);
    return stored && dateFromTimespec(*stored) == date;
}

bool hasModificationDate(const FileReference& file, const QDateTime& date) {
    struct statx status {};
    if (file.status(status) != 0)
        return false;
    const timespec modified{status.stx_mtime.tv_sec, status.stx_mtime.tv_nsec};
    return dateFromTimespec(modified) == date;
}

int keepCreationDate(const FileReference& file, const QDateTime& date) {
    return hasCreationDate(file, date) ? 0 : storeCreationDate(file, timespecFromDate(date));
}

int keepModificationDate(const FileReference& file, const QDateTime& date) {
    return hasModificationDate(file, date) ? 0 : setModificationDate(file, date);
}

Result<CreationDateStored> setAttributesOf(const FileReference& file, const QString& path,
                                           const std::optional<QDateTime>& creation,
                                           const std::optional<QDateTime>& modification) {
    if ((creation && !creation->isValid()) || (modification && !modification->isValid()))
        return failure(ErrorCode::InvalidArgument, kSetDates, path);
    const int creationError = creation ? keepCreationDate(file, *creation) : 0;
    // Also after a failure: one date that is right is better than none.
    const int modificationError = modification ? keepModificationDate(file, *modification) : 0;
    if (creationError != 0 && creationError != ENOTSUP)
        return systemFailure(kSetCreationDate, path, creationError);
    if (modificationError != 0)
        return systemFailure(kSetModificationDate, path, modificationError);
    return creationError == ENOTSUP ? CreationDateStored::NotStoredHere : CreationDateStored::Yes;
}

bool isDirectoryEntry(int folder, const dirent& entry) {
    if (entry.d_type != DT_UNKNOWN && entry.d_type != DT_LNK)
        return entry.d_type == DT_DIR;
    struct stat status {};
    return ::fstatat(folder, entry.d_name, &status, 0) == 0 && S_ISDIR(status.st_mode);
}

} // namespace

NSFileManager& NSFileManager::defaultManager() {
    static NSFileManager manager;
    return manager;
}

QString canonicalPath(const QString& path) {
    const std::unique_ptr<char, Releaser<std::free>> real(
        ::realpath(nativePath(path).constData(), nullptr));
    return real ? pathFromNative(real.get()) : QString();
}

bool NSFileManager::fileExistsAtPath(const QString& path) const {
    bool isDirectory = false;
    return fileExistsAtPath(path, isDirectory);
}

bool NSFileManager::fileExistsAtPath(const QString& path, bool& isDirectory) const {
    struct stat status {};
    const bool exists = ::stat(nativePath(path).constData(), &status) == 0;
    isDirectory = exists && S_ISDIR(status.st_mode);
    return exists;
}

Result<FileAttributes> NSFileManager::attributesOfItemAtPath(const QString& path) const {
    return attributesOf(FileReference::ofPath(path), path);
}

Result<FileAttributes> NSFileManager::attributesOfOpenFile(int fd, const QString& path) const {
    return attributesOf(FileReference::ofDescriptor(fd), path);
}

Result<CreationDateStored>
NSFileManager::setAttributes(const QString& path, const std::optional<QDateTime>& creation,
                             const std::optional<QDateTime>& modification) const {
    return setAttributesOf(FileReference::ofPath(path), path, creation, modification);
}

Result<CreationDateStored>
NSFileManager::setAttributesOfOpenFile(int fd, const QString& path,
                                       const std::optional<QDateTime>& creation,
                                       const std::optional<QDateTime>& modification) const {
    return setAttributesOf(FileReference::ofDescriptor(fd), path, creation, modification);
}

Result<std::vector<DirectoryEntry>>
NSFileManager::contentsOfDirectoryAtPath(const QString& path) const {
    const MessageCode operation = kReadFolder;
    const Directory folder(::opendir(nativePath(path).constData()));
    if (!folder)
        return systemFailure(operation, path, errno);
    std::vector<DirectoryEntry> entries;
    for (;;) {
        errno = 0; // the end and a failure look alike otherwise
        const dirent* entry = ::readdir(folder.get());
        if (!entry && errno != 0)
            return systemFailure(operation, path, errno);
        if (!entry)
            return entries;
        const QByteArrayView name(entry->d_name);
        if (name != "." && name != "..")
            entries.push_back(
                {pathFromNative(name), isDirectoryEntry(::dirfd(folder.get()), *entry)});
    }
}

Result<void> NSFileManager::createDirectoryAtPath(const QString& path) const {
    const MessageCode operation = kCreateFolder;
    if (path.isEmpty() || path.contains(QChar::Null))
        return failure(ErrorCode::InvalidArgument, operation, path);
    bool isThere = false;
    if (fileExistsAtPath(path, isThere) && isThere)
        return {}; // as for every file of a run but the first
    const QByteArray name = nativePath(path);
    // From the inside out would need fewer calls, but existing parents need not be searchable.
    for (qsizetype slash = 0; slash >= 0;) {
        slash = name.indexOf('/', slash + 1);
        const QByteArray part = slash < 0 ? name : name.first(slash);
        if (::mkdir(part.constData(), 0777) == 0 || slash >= 0)
            continue;
        const int error = errno;
        bool isDirectory = false;
        if (!fileExistsAtPath(path, isDirectory))
            return systemFailure(operation, path, error == EEXIST ? ENOENT : error);
        if (!isDirectory)
            return systemFailure(operation, path, EEXIST);
    }
    return {};
}

Result<void> NSFileManager::removeItemAtPath(const QString& path) const {
    const MessageCode operation = kRemoveItem;
    const QByteArray name = nativePath(path);
    if (::unlink(name.constData()) == 0)
        return {};
    const int error = errno;
    struct stat status {};
    if (::lstat(name.constData(), &status) != 0 || !S_ISDIR(status.st_mode))
        return systemFailure(operation, path, error);
    std::error_code failed;
    std::filesystem::remove_all(std::filesystem::path(name.toStdString()), failed);
    if (failed)
        return systemFailure(operation, path, failed.value());
    return {};
}

Result<void> NSFileManager::moveItem(const QString& from, const QString& to) const {
    const Result<MoveOutcome> moved = moveItemWithOutcome(from, to, {});
    if (!moved)
        return tl::unexpected(moved.error());
    if (moved->sourceKept)
        return tl::unexpected(*moved->sourceKept);
    return {};
}

bool NSFileManager::isSameFile(const QString& a, const QString& b) const {
    struct stat first {};
    struct stat second {};
    return ::stat(nativePath(a).constData(), &first) == 0 &&
           ::stat(nativePath(b).constData(), &second) == 0 && first.st_dev == second.st_dev &&
           first.st_ino == second.st_ino;
}

QString NSFileManager::nextFreeName(const QString& path) const {
    QString candidate = path;
    for (int number = 2; nameIsTaken(nativePath(candidate)); ++number)
        candidate = numberedName(path, number);
    return candidate;
}

} // namespace clipheave::platform
