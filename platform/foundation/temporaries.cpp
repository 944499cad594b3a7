// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/temporaries.h"

#include "platform/foundation/file_manager.h"
#include "platform/foundation/file_system.h"
#include "platform/foundation/paths.h"

#include <QFile>
#include <QRandomGenerator>

#include <cerrno>
#include <csignal>
#include <unistd.h>

namespace clipheave::platform {
namespace {

constexpr std::int64_t kLeftOverAge = 60; // seconds
// Where other machines write too, a process of theirs cannot be asked: only what nobody has touched
// for a day is left over.
constexpr std::int64_t kSharedLeftOverAge = 24 * 3600;

/// The process id in ".clipheave-<pid>-<random>.tmp", 0 for any other name.
pid_t makerOfTemporary(const QString& name) {
    const QString prefix = QStringLiteral(".clipheave-");
    if (!name.startsWith(prefix) || !name.endsWith(QLatin1String(".tmp")))
        return 0;
    const QStringView rest = QStringView(name).sliced(prefix.size()).chopped(4);
    const qsizetype dash = rest.indexOf(u'-');
    bool isNumber = false;
    const int pid = dash > 0 ? rest.first(dash).toInt(&isNumber) : 0;
    return isNumber && pid > 0 ? pid : 0;
}

/// When the process began, in seconds since the epoch (proc(5), field 22 of stat); 0 when unknown.
std::int64_t startOfProcess(pid_t pid) {
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    QFile uptime(QStringLiteral("/proc/uptime"));
    if (!stat.open(QIODevice::ReadOnly) || !uptime.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = stat.readAll();
    // The second field is a program name in brackets and may hold blanks.
    const QByteArrayList fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    const long ticks = ::sysconf(_SC_CLK_TCK);
    if (fields.size() < 20 || ticks <= 0)
        return 0;
    const double up = uptime.readAll().split(' ').constFirst().toDouble();
    return std::time(nullptr) - static_cast<std::int64_t>(up) + fields[19].toLongLong() / ticks;
}

/// False also when another process has the same number now: it began after the file was made.
bool makerIsAlive(pid_t pid, std::int64_t fileModified) {
    if (pid == ::getpid())
        return true;
    if (::kill(pid, 0) != 0 && errno == ESRCH)
        return false;
    constexpr std::int64_t kClockSlack = 10;
    return startOfProcess(pid) <= fileModified + kClockSlack;
}

} // namespace

QString temporaryNameBeside(const QString& target) {
    return appendingPathComponent(
        containingFolder(target),
        QStringLiteral(".clipheave-%1-%2.tmp")
            .arg(::getpid())
            .arg(QRandomGenerator::global()->generate64(), 16, 16, QLatin1Char('0')));
}

void removeStaleTemporaries(const QString& folder) {
    const auto entries = NSFileManager::defaultManager().contentsOfDirectoryAtPath(folder);
    if (!entries)
        return;
    const std::int64_t age = isShared(FileReference::ofPath(folder).fileSystemType())
                                 ? kSharedLeftOverAge
                                 : kLeftOverAge;
    for (const DirectoryEntry& entry : *entries) {
        const pid_t maker = makerOfTemporary(entry.name);
        const QByteArray path = nativePath(appendingPathComponent(folder, entry.name));
        struct stat status {};
        if (maker == 0 || ::lstat(path.constData(), &status) != 0 ||
            !(S_ISREG(status.st_mode) || S_ISLNK(status.st_mode)))
            continue;
        if (std::time(nullptr) - status.st_mtime > age && !makerIsAlive(maker, status.st_mtime))
            ::unlink(path.constData());
    }
}

} // namespace clipheave::platform
