// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/process_space.h"

#include <QCryptographicHash>
#include <QFile>
#include <QRandomGenerator>
#include <QStringList>
#include <QSysInfo>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <unistd.h>

namespace clipheave::platform {
namespace {

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

} // namespace

QString newNameOfThisProcess() {
    return processSpace() +
           QStringLiteral("-%1-%2")
               .arg(::getpid())
               .arg(QRandomGenerator::global()->generate64(), 16, 16, QLatin1Char('0'));
}

int processOfName(const QString& name) {
    const QStringList parts = name.split(QLatin1Char('-'));
    return parts.size() == 3 && parts[0] == processSpace() ? std::max(parts[1].toInt(), 0) : 0;
}

bool makerIsAlive(int process, const struct stat& file) {
    if (::kill(process, 0) != 0 && errno == ESRCH)
        return false;
    constexpr std::int64_t kClockSlack = 10;
    // One's own may have the date of its source already.
    const std::int64_t made = process == ::getpid() ? file.st_ctime : file.st_mtime;
    return startOfProcess(process) <= made + kClockSlack;
}

} // namespace clipheave::platform
