// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/temporaries.h"

#include "platform/foundation/file_manager.h"
#include "platform/foundation/file_system.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/process_space.h"
#include "platform/foundation/temporary_records.h"

#include <cstdint>
#include <ctime>
#include <sys/stat.h>
#include <unistd.h>

namespace clipheave::platform {
namespace {

constexpr std::int64_t kLeftOverAge = 60; // seconds
// Where other machines write too, the clock may be another's.
constexpr std::int64_t kSharedLeftOverAge = 24 * 3600;

constexpr QLatin1String kPrefix(".clipheave-"), kSuffix(".tmp");

/// The process id in the name of a temporary of this process space, 0 for any other name.
int makerOfTemporary(const QString& name) {
    const bool isOurs = name.startsWith(kPrefix) && name.endsWith(kSuffix);
    return isOurs ? processOfName(name.sliced(kPrefix.size()).chopped(kSuffix.size())) : 0;
}

} // namespace

QString temporaryNameBeside(const QString& target) {
    const QString folder = containingFolder(target);
    recordTemporariesIn(folder);
    return appendingPathComponent(folder, kPrefix + newNameOfThisProcess() + kSuffix);
}

bool isTemporaryName(const QString& name) {
    return name.startsWith(kPrefix);
}

bool removeStaleTemporaries(const QString& folder) {
    const auto entries = NSFileManager::defaultManager().contentsOfDirectoryAtPath(folder);
    if (!entries)
        return false;
    const std::int64_t age = isShared(FileReference::ofPath(folder).fileSystemType())
                                 ? kSharedLeftOverAge
                                 : kLeftOverAge;
    bool isDone = true;
    for (const DirectoryEntry& entry : *entries) {
        const int maker = makerOfTemporary(entry.name);
        const QByteArray path =
            maker == 0 ? QByteArray() : nativePath(appendingPathComponent(folder, entry.name));
        struct stat status {};
        if (maker == 0 || ::lstat(path.constData(), &status) != 0 ||
            !(S_ISREG(status.st_mode) || S_ISLNK(status.st_mode)) || makerIsAlive(maker, status))
            continue;
        const bool isOld = std::time(nullptr) - status.st_mtime > age;
        isDone &= isOld && ::unlink(path.constData()) == 0;
    }
    return isDone;
}

} // namespace clipheave::platform
