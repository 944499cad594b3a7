// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/temporary_records.h"

#include "platform/foundation/file_manager.h"
#include "platform/foundation/handles.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/process_space.h"
#include "platform/foundation/state_folder.h"
#include "platform/foundation/temporaries.h"

#include <QDir>
#include <QFile>
#include <QSet>

#include <algorithm>
#include <ctime>
#include <fcntl.h>
#include <mutex>
#include <sys/stat.h>
#include <unistd.h>

namespace clipheave::platform {
namespace {

constexpr QLatin1String kRecordSuffix(".temporaries");
constexpr qint64 kLargestRecord = 16 << 20;
constexpr std::int64_t kLongestAway = 30 * 24 * 3600; // seconds

/// The record of this process: paths of folders, each with a NUL behind it.
class TemporaryRecord {
public:
    ~TemporaryRecord() {
        if (m_fd && m_process == ::getpid())
            ::unlink(m_path.constData());
    }
    void add(const QString& folder) {
        const std::lock_guard lock(m_mutex);
        if (m_process != ::getpid()) { // the first folder, or a fork
            m_process = ::getpid();
            m_folders.clear();
            open();
        }
        const QByteArray name =
            nativePath(folder.startsWith(u'/') ? folder : QDir::currentPath() + u'/' + folder);
        if (!m_fd || m_folders.contains(name))
            return;
        m_folders.insert(name);
        const QByteArray line = name + '\0';
        // A line that is cut by a full disk names a folder that is not there.
        static_cast<void>(
            ::write(m_fd.get(), line.constData(), static_cast<std::size_t>(line.size())) < 0);
    }

private:
    void open() {
        m_fd.reset();
        if (!createStateFolder())
            return;
        m_path = nativePath(
            appendingPathComponent(stateFolder(), newNameOfThisProcess() + kRecordSuffix));
        m_fd.reset(
            ::open(m_path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_APPEND | O_CLOEXEC, 0600));
    }

    std::mutex m_mutex;
    pid_t m_process = 0;
    FileDescriptor m_fd;
    QByteArray m_path;
    QSet<QByteArray> m_folders;
};

/// Returns whether nothing of the record is left to do.
bool isWorkedOff(const QString& record, const struct stat& status) {
    QFile file(record);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const bool mayBeAway = std::time(nullptr) - status.st_mtime < kLongestAway;
    const QByteArrayList folders = file.read(kLargestRecord).split('\0');
    // Every folder, whatever the others give.
    return std::count_if(folders.begin(), folders.end(), [&](const QByteArray& name) {
               const QString folder = pathFromNative(name);
               const bool isThere = NSFileManager::defaultManager().fileExistsAtPath(folder);
               return !name.isEmpty() && (isThere ? !removeStaleTemporaries(folder) : mayBeAway);
           }) == 0;
}

} // namespace

void recordTemporariesIn(const QString& folder) {
    static TemporaryRecord record;
    record.add(folder);
}

void removeTemporariesOfDeadProcesses() {
    const QString folder = stateFolder();
    const auto entries = NSFileManager::defaultManager().contentsOfDirectoryAtPath(folder);
    if (!entries)
        return;
    for (const DirectoryEntry& entry : *entries) {
        if (!entry.name.endsWith(kRecordSuffix))
            continue;
        const int maker = processOfName(entry.name.chopped(kRecordSuffix.size()));
        const QString path = appendingPathComponent(folder, entry.name);
        struct stat status {};
        if (maker == 0 || ::lstat(nativePath(path).constData(), &status) != 0 ||
            !S_ISREG(status.st_mode) || makerIsAlive(maker, status))
            continue;
        if (isWorkedOff(path, status))
            ::unlink(nativePath(path).constData());
    }
}

} // namespace clipheave::platform
