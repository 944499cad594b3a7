// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/temporaries.h"

#include "platform/foundation/file_manager.h"
#include "platform/foundation/file_system.h"
#include "platform/foundation/paths.h"

#include <QCryptographicHash>
#include <QFile>
#include <QRandomGenerator>
#include <QSysInfo>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <unistd.h>

namespace clipheave::platform {
namespace {

constexpr std::int64_t kLeftOverAge = 60; // seconds
// Where other machines write too, the clock may be another's.
constexpr std::int64_t kSharedLeftOverAge = 24 * 3600;

constexpr QLatin1String kPrefix(".clipheave-"), kSuffix(".tmp");

/// Twelve hexadecimal digits for the processes among which a process id is unique. The host name is
/// in them because containers of one image share the machine's id.
const QString& processSpace() {
    static const QString space = [] {
        std::array<char, 256> host{};
        std::array<char, 64> pidNamespace{}; // "pid:[4026531836]"
        ::gethostname(host.data(), host.size() - 1);
        if (::readlink("/proc/self/ns/pid", pidNamespace.data(), pidNamespace.size() - 1) < 0)
            pidNamespace[0] = '\0';
        const QByteArray text =
            QSysInfo::machineUniqueId() + '\n' + host.data() + '\n' + pidNamespace.data();
        return QString::fromLatin1(
            QCryptographicHash::hash(text, QCryptographicHash::Sha256).toHex().first(12));
    }();
    return space;
}

/// The process id in the name of a temporary of this process space, 0 for any other name.
pid_t makerOfTemporary(const QString& name) {
    if (!name.startsWith(kPrefix) || !name.endsWith(kSuffix))
        return 0;
    const QStringList parts =
        name.sliced(kPrefix.size()).chopped(kSuffix.size()).split(QLatin1Char('-'));
    if (parts.size() != 3 || parts[0] != processSpace())
        return 0;
    return std::max(parts[1].toInt(), 0);
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

/// False also when another process has the same number now, this one too: it began after the file
/// was made.
bool makerIsAlive(pid_t pid, const struct stat& file) {
    if (::kill(pid, 0) != 0 && errno == ESRCH)
        return false;
    constexpr std::int64_t kClockSlack = 10;
    // One's own may have the date of its source already.
    const std::int64_t made = pid == ::getpid() ? file.st_ctime : file.st_mtime;
    return startOfProcess(pid) <= made + kClockSlack;
}

} // namespace

QString temporaryNameBeside(const QString& target) {
    return appendingPathComponent(
        containingFolder(target),
        kPrefix + processSpace() +
            QStringLiteral("-%1-%2")
                .arg(::getpid())
                .arg(QRandomGenerator::global()->generate64(), 16, 16, QLatin1Char('0')) +
            kSuffix);
}

bool isTemporaryName(const QString& name) {
    return name.startsWith(kPrefix);
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
        if (std::time(nullptr) - status.st_mtime > age && !makerIsAlive(maker, status))
            ::unlink(path.constData());
    }
}

} // namespace clipheave::platform
