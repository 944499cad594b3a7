// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/file_system.h"

#include "platform/foundation/paths.h"
#include "platform/foundation/utc.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <iterator>
#include <linux/magic.h>
#include <sys/statfs.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace clipheave::platform {
namespace {

constexpr std::size_t kAttributeListGuess = 1024;
constexpr qsizetype kMaxAttributeBytes =
    64 * 1024; // the kernel's XATTR_SIZE_MAX and XATTR_LIST_MAX

// Not every release of linux/magic.h has these.
constexpr std::uint32_t kF2fsMagic = 0xF2F52010;
constexpr std::uint32_t kExfatMagic = 0x2011BAB0;
constexpr std::uint32_t kNtfs3Magic = 0x7366746E;
constexpr std::uint32_t kZfsMagic = 0x2FC12FC1;
constexpr std::uint32_t kBcachefsMagic = 0xCA451A4E;
constexpr std::uint32_t kJfsMagic = 0x3153464A;

} // namespace

FileReference FileReference::ofPath(const QString& path) {
    return {-1, nativePath(path)};
}

int FileReference::status(struct statx& answer) const {
    const unsigned mask = STATX_BASIC_STATS | STATX_BTIME;
    const int result = fd >= 0 ? ::statx(fd, "", AT_EMPTY_PATH, mask, &answer)
                               : ::statx(AT_FDCWD, name.constData(), 0, mask, &answer);
    return result == 0 ? 0 : errno;
}

std::uint32_t FileReference::fileSystemType() const {
    struct statfs answer {};
    const int result = fd >= 0 ? ::fstatfs(fd, &answer) : ::statfs(name.constData(), &answer);
    return result == 0 ? static_cast<std::uint32_t>(answer.f_type) : 0;
}

QByteArrayList FileReference::attributeNames() const {
    const auto list = [this](char* target, std::size_t size) {
        return fd >= 0 ? ::flistxattr(fd, target, size)
                       : ::listxattr(name.constData(), target, size);
    };
    // Most files have none: the first call returns without an allocation.
    std::array<char, kAttributeListGuess> guess;
    ssize_t size = list(guess.data(), guess.size());
    QByteArray names;
    if (size > 0)
        names = QByteArray(guess.data(), size - 1);
    if (size < 0 && errno == ERANGE) {
        names.resize(kMaxAttributeBytes);
        size = list(names.data(), static_cast<std::size_t>(names.size()));
        names.resize(size > 0 ? size - 1 : 0);
    }
    return names.isEmpty() ? QByteArrayList() : names.split('\0');
}

QByteArray FileReference::attribute(const char* attributeName) const {
    const auto get = [&](QByteArray& target) {
        const auto room = static_cast<std::size_t>(target.size());
        return fd >= 0 ? ::fgetxattr(fd, attributeName, target.data(), room)
                       : ::getxattr(name.constData(), attributeName, target.data(), room);
    };
    QByteArray value(256, Qt::Uninitialized);
    ssize_t size = get(value);
    if (size < 0 && errno == ERANGE) {
        value.resize(kMaxAttributeBytes);
        size = get(value);
    }
    if (size < 0)
        return {};
    value.resize(size);
    return value;
}

int FileReference::setAttribute(const char* attributeName, QByteArrayView value) const {
    const auto size = static_cast<std::size_t>(value.size());
    const int result = fd >= 0 ? ::fsetxattr(fd, attributeName, value.data(), size, 0)
                               : ::setxattr(name.constData(), attributeName, value.data(), size, 0);
    return result == 0 ? 0 : errno;
}

bool reservesBlocksCheaply(std::uint32_t fileSystemType) {
    return fileSystemType == EXT4_SUPER_MAGIC || fileSystemType == TMPFS_MAGIC ||
           fileSystemType == kF2fsMagic || fileSystemType == MSDOS_SUPER_MAGIC;
}

bool isShared(std::uint32_t fileSystemType) {
    // Those known to be local are named: new remote ones come up, and FUSE may be one.
    static constexpr std::uint32_t kLocal[] = {
        EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC,       BTRFS_SUPER_MAGIC, kF2fsMagic,
        TMPFS_MAGIC,      OVERLAYFS_SUPER_MAGIC, RAMFS_MAGIC,       MSDOS_SUPER_MAGIC,
        kExfatMagic,      kNtfs3Magic,           kZfsMagic,         kBcachefsMagic,
        kJfsMagic,        ECRYPTFS_SUPER_MAGIC,  NILFS_SUPER_MAGIC, REISERFS_SUPER_MAGIC};
    return std::find(std::begin(kLocal), std::end(kLocal), fileSystemType) == std::end(kLocal);
}

bool nameIsTaken(const QByteArray& name) {
    struct stat status {};
    return ::lstat(name.constData(), &status) == 0;
}

int renameWithoutReplacing(const QByteArray& from, const QByteArray& to) {
    const auto outcome = [](int result) { return result == 0 ? 0 : errno; };
    int error = outcome(
        ::renameat2(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), RENAME_NOREPLACE));
    if (error != EINVAL && error != ENOSYS && error != EOPNOTSUPP)
        return error;
    // Not known here (network and FUSE file systems): a hard link never replaces either.
    error = outcome(::linkat(AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), 0));
    if (error == 0) {
        error = outcome(::unlink(from.constData()));
        if (error != 0) // one file, one name
            ::unlink(to.constData());
        return error;
    }
    if (error == EEXIST || error == ENOENT || error == EXDEV)
        return error;
    // Neither here: looking first leaves a moment in which another program could take the name.
    return nameIsTaken(to) ? EEXIST : outcome(::rename(from.constData(), to.constData()));
}

QDateTime dateFromTimespec(const timespec& time) {
    // Not in local time: without TZ in the environment that costs 7 µs a date, and an import makes
    // two for every file.
    return QDateTime::fromMSecsSinceEpoch(time.tv_sec * 1000 + time.tv_nsec / 1'000'000, kUtc);
}

timespec timespecFromDate(const QDateTime& date) {
    const qint64 ms = date.toMSecsSinceEpoch();
    const qint64 rest = (ms % 1000 + 1000) % 1000;
    timespec time{};
    time.tv_sec = (ms - rest) / 1000;
    time.tv_nsec = rest * 1'000'000;
    return time;
}

} // namespace clipheave::platform
