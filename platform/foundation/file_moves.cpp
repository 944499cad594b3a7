// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/file_moves.h"

#include "platform/foundation/atomic_file.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/file_system.h"
#include "platform/foundation/folder_syncs.h"
#include "platform/foundation/messages.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/temporaries.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace clipheave::platform {
namespace {

using CopyHook = std::function<Result<void>(const FileIdentity&)>;

FileIdentity identityFrom(const struct statx& status) {
    FileIdentity identity;
    identity.device = makedev(status.stx_dev_major, status.stx_dev_minor);
    identity.inode = status.stx_ino;
    if (status.stx_mask & STATX_BTIME) {
        identity.bornSeconds = status.stx_btime.tv_sec;
        identity.bornNanoseconds = status.stx_btime.tv_nsec;
    }
    return identity;
}

/// "a.JPG" to "a.jpg" where both are one name: the target is there, but it is the file itself.
bool isOtherSpellingOfItself(const QString& from, const QString& to) {
    if (from == to || from.compare(to, Qt::CaseInsensitive) != 0)
        return false;
    struct stat a {};
    struct stat b {};
    const bool same = ::lstat(nativePath(from).constData(), &a) == 0 &&
                      ::lstat(nativePath(to).constData(), &b) == 0 && a.st_dev == b.st_dev &&
                      a.st_ino == b.st_ino;
    return same && (S_ISDIR(a.st_mode) || a.st_nlink == 1); // else: two hard links
}

bool isUntouched(const struct stat& before, const QByteArray& name) {
    struct stat now {};
    return ::lstat(name.constData(), &now) == 0 && now.st_dev == before.st_dev &&
           now.st_ino == before.st_ino && now.st_size == before.st_size &&
           now.st_mtim.tv_sec == before.st_mtim.tv_sec &&
           now.st_mtim.tv_nsec == before.st_mtim.tv_nsec;
}

Result<void> allow(const CopyHook& hook, const FileIdentity& identity) {
    return hook ? hook(identity) : Result<void>();
}

/// A link under a hidden name beside its target, gone again unless it gets there.
class LinkCopy {
public:
    LinkCopy(const QByteArray& leadsTo, const QString& target)
        : m_name(temporaryNameBeside(target)) {
        m_error = ::symlink(leadsTo.constData(), nativePath(m_name).constData()) == 0 ? 0 : errno;
    }
    ~LinkCopy() {
        if (m_error == 0)
            ::unlink(nativePath(m_name).constData());
    }
    LinkCopy(const LinkCopy&) = delete;
    LinkCopy& operator=(const LinkCopy&) = delete;

    [[nodiscard]] int error() const { return m_error; }
    [[nodiscard]] const QString& name() const { return m_name; }

private:
    QString m_name;
    int m_error;
};

Result<void> copyLink(const QString& from, const QString& to, const struct stat& status,
                      const CopyHook& hook) {
    const MessageCode operation = kMoveLink;
    std::array<char, PATH_MAX> leadsTo;
    const ssize_t length =
        ::readlink(nativePath(from).constData(), leadsTo.data(), leadsTo.size() - 1);
    if (length < 0)
        return systemFailure(operation, from, errno);
    const LinkCopy copy(QByteArray(leadsTo.data(), length), to);
    if (copy.error() != 0)
        return systemFailure(operation, to, copy.error());
    const std::array<timespec, 2> times = {status.st_atim, status.st_mtim};
    ::utimensat(AT_FDCWD, nativePath(copy.name()).constData(), times.data(), AT_SYMLINK_NOFOLLOW);
    if (Result<void> allowed = allow(hook, identityOfItem(copy.name())); !allowed)
        return allowed;
    if (const int error = renameWithoutReplacing(nativePath(copy.name()), nativePath(to)))
        return systemFailure(operation, to, error);
    syncFolders({deletingLastPathComponent(to)});
    return {};
}

Result<void> copyFile(const QString& from, const QString& to, const struct stat& status,
                      const CopyHook& hook) {
    Result<AtomicFile> copy = AtomicFile::copyOf(from, to);
    if (!copy)
        return tl::unexpected(copy.error());
    if (!isUntouched(status, nativePath(from)))
        return failure(ErrorCode::InvalidData, kMoveItem, from, kFileHasChanged);
    struct statx made {};
    if (const int error = FileReference::ofDescriptor(copy->fd()).status(made))
        return systemFailure(kMoveItem, to, error);
    if (Result<void> allowed = allow(hook, identityFrom(made)); !allowed)
        return allowed;
    return copy->commit(NSFileManager::IfExists::Fail);
}

Result<MoveOutcome> moveAcross(const QString& from, const QString& to, const CopyHook& hook) {
    const MessageCode operation = kMoveItem;
    struct stat status {};
    if (::lstat(nativePath(from).constData(), &status) != 0)
        return systemFailure(operation, from, errno);
    if (nameIsTaken(nativePath(to))) // before the work is done
        return systemFailure(operation, to, EEXIST);
    if (!S_ISREG(status.st_mode) && !S_ISLNK(status.st_mode))
        return failure(ErrorCode::NotSupported, operation, from, kNeitherFileNorLink);
    const Result<void> copied = S_ISLNK(status.st_mode) ? copyLink(from, to, status, hook)
                                                        : copyFile(from, to, status, hook);
    if (!copied)
        return tl::unexpected(copied.error());
    MoveOutcome outcome;
    outcome.copied = true;
    if (!isUntouched(status, nativePath(from)))
        outcome.sourceKept = Error{ErrorCode::InvalidData, kRemoveItem, from, kFileHasChanged};
    else if (::unlink(nativePath(from).constData()) != 0)
        outcome.sourceKept = systemFailure(kRemoveItem, from, errno).value();
    return outcome;
}

} // namespace

bool FileIdentity::isSameAs(const FileIdentity& other) const {
    if (!isKnown() || !other.isKnown() || inode != other.inode)
        return false;
    const auto tellsBirth = [](const FileIdentity& file) {
        return file.bornSeconds != 0 || file.bornNanoseconds != 0;
    };
    if (tellsBirth(*this) && tellsBirth(other))
        return bornSeconds == other.bornSeconds && bornNanoseconds == other.bornNanoseconds;
    return device == other.device;
}

FileIdentity identityOfItem(const QString& path) {
    struct statx status {};
    if (::statx(AT_FDCWD, nativePath(path).constData(), AT_SYMLINK_NOFOLLOW,
                STATX_INO | STATX_BTIME, &status) != 0)
        return {};
    return identityFrom(status);
}

Result<MoveOutcome> moveItemWithOutcome(const QString& from, const QString& to,
                                        const CopyHook& hook) {
    const MessageCode operation = kMoveItem;
    if (to.contains(QChar::Null)) // the system would take the text before it
        return failure(ErrorCode::InvalidArgument, operation, to);
    int error = renameWithoutReplacing(nativePath(from), nativePath(to));
    if (error == EEXIST && isOtherSpellingOfItself(from, to))
        error = ::rename(nativePath(from).constData(), nativePath(to).constData()) ? errno : 0;
    if (error == EXDEV)
        return moveAcross(from, to, hook);
    if (error != 0)
        return systemFailure(operation, error == EEXIST ? to : from, error);
    return MoveOutcome();
}

} // namespace clipheave::platform
