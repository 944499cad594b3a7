// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/export/output_place.h"

#include "platform/foundation/file_manager.h"
#include "platform/foundation/paths.h"
#include "platform/media/messages.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace clipheave::platform {

namespace {

/// The shortest video with its header needs no less.
constexpr std::uint64_t kLeastRoom = 16 << 10;
constexpr std::chrono::milliseconds kCheckInterval{300};

bool isMissing(const QString& path) {
    return ::access(nativePath(path).constData(), F_OK) != 0 &&
           (errno == ENOENT || errno == ENOTDIR);
}

} // namespace

Result<void> OutputPlace::check(std::uint64_t bytes) const {
    const QString folder = containingFolder(m_output);
    const QByteArray native = nativePath(folder);
    if (::access(native.constData(), W_OK | X_OK) != 0)
        return systemFailure(kPrepareOutput, folder, errno);
    struct statvfs room {};
    // Some remote file systems report nothing, or no sizes at all.
    if (::statvfs(native.constData(), &room) != 0 || room.f_blocks == 0)
        return {};
    const std::uint64_t unit = room.f_frsize > 0 ? room.f_frsize : room.f_bsize;
    if (room.f_bavail * unit < std::max(bytes, kLeastRoom))
        return systemFailure(kPrepareOutput, folder, ENOSPC);
    return {};
}

void OutputPlace::removeLink() const {
    struct stat status {};
    if (::lstat(nativePath(m_output).constData(), &status) == 0 && S_ISLNK(status.st_mode))
        ignoreFailure(NSFileManager::defaultManager().removeItemAtPath(m_output),
                      "nothing can be made in this folder, and the export says so");
}

bool OutputPlace::isGone() {
    const auto now = std::chrono::steady_clock::now();
    if (m_gone || now < m_nextLook)
        return m_gone;
    m_nextLook = now + kCheckInterval;
    m_gone = isMissing(m_watched.isEmpty() ? containingFolder(m_output) : m_watched);
    return m_gone;
}

Result<void> OutputPlace::blame() const {
    const bool isFolderMissing = isMissing(containingFolder(m_output));
    if (!m_gone && !isFolderMissing)
        return {};
    return failure(ErrorCode::NotFound, {}, m_output,
                   isFolderMissing ? kOutputFolderGone : kOutputRemoved);
}

} // namespace clipheave::platform
