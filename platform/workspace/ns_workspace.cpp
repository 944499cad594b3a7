// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/workspace/ns_workspace.h"

#include "platform/foundation/log.h"
#include "platform/foundation/paths.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDir>
#include <QSet>
#include <QStandardPaths>

#include <array>
#include <csignal>
#include <thread>

#include <fcntl.h>
#include <pwd.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace clipheave::platform {
namespace {

constexpr int kReplyTimeout = 5000; // milliseconds
constexpr int kMostShownFiles = 100, kMostShownFolders = 4;

QString absolutePath(const QString& path) {
    return path.startsWith(u'/') ? path : appendingPathComponent(QDir::currentPath(), path);
}

/// Returns the address with the name's own bytes: a QUrl would lose those that are not UTF-8.
QString fileUrl(const QString& path) {
    return QLatin1String("file://") +
           QString::fromLatin1(nativePath(absolutePath(path)).toPercentEncoding("/"));
}

bool hasDesktop() {
    return !qEnvironmentVariableIsEmpty("DISPLAY") ||
           !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

/// Starts the desktop's handler in a session of its own, with nothing to read or write. A plain
/// fork, as QProcess does it, copies the page tables of the whole program first: while videos are
/// encoded the window would hang.
bool startHandler(QByteArray url) {
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_RDWR, 0);
    sigset_t none;
    sigemptyset(&none); // threads of the command line block signals
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK);
    char name[] = "xdg-open";
    char* const arguments[] = {name, url.data(), nullptr};
    pid_t pid = 0;
    const bool started =
        ::posix_spawnp(&pid, name, &actions, &attributes, arguments, ::environ) == 0;
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    if (started) // reaped by a thread that nobody waits for
        std::thread([pid] { ::waitpid(pid, nullptr, 0); }).detach();
    return started;
}

bool openEncoded(const QString& url) {
    // Without a desktop the handler would start a text browser that nobody sees.
    if (!hasDesktop())
        return false;
    return startHandler(url.toUtf8());
}

void logPaths(const QStringList& paths) {
    for (const QString& path : paths)
        log(LogLevel::Info, QStringLiteral("Output: %1").arg(displayPath(path)), path);
}

QString commonFolder(const QSet<QString>& folders) {
    QString common = *folders.constBegin();
    for (const QString& folder : folders)
        while (common.size() > 1 && !(folder + u'/').startsWith(common + u'/'))
            common = deletingLastPathComponent(common);
    return common;
}

/// Returns the paths to show. File browsers open one window per folder and select thousands of
/// files slowly: the folder that contains all of them stands for many.
QStringList worthShowing(const QStringList& paths) {
    QSet<QString> folders;
    for (const QString& path : paths)
        folders.insert(deletingLastPathComponent(absolutePath(path)));
    if (paths.size() <= kMostShownFiles && folders.size() <= kMostShownFolders)
        return paths;
    return {commonFolder(folders)};
}

/// On a thread of its own: starting the handler blocks its caller, the window, while it is read
/// from a disk that is busy with videos.
void openFolderOf(const QStringList& paths) {
    if (!hasDesktop())
        return logPaths(paths);
    std::thread([paths] {
        const QString folder = deletingLastPathComponent(absolutePath(paths.constFirst()));
        if (!openEncoded(fileUrl(folder)))
            logPaths(paths);
    }).detach();
}

void showInFileBrowser(const QStringList& paths) {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        openFolderOf(paths);
        return;
    }
    QStringList urls;
    for (const QString& path : worthShowing(paths))
        urls += fileUrl(path);
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call.setArguments({urls, QString()}); // the second: a start-up id, none
    auto* reply = new QDBusPendingCallWatcher(bus.asyncCall(call, kReplyTimeout), qApp);
    QObject::connect(reply, &QDBusPendingCallWatcher::finished, reply, [paths, reply] {
        if (reply->isError())
            openFolderOf(paths);
        reply->deleteLater();
    });
}

} // namespace

NSWorkspace& NSWorkspace::sharedWorkspace() {
    static NSWorkspace workspace;
    return workspace;
}

void NSWorkspace::selectFiles(const QStringList& paths) {
    if (paths.isEmpty())
        return;
    if (!qApp)
        logPaths(paths);
    else // the reply arrives in an event loop, and a job's thread has none
        QMetaObject::invokeMethod(qApp, [paths] { showInFileBrowser(paths); });
}

bool NSWorkspace::openURL(const QUrl& url) {
    return url.isValid() && !url.isRelative() && openEncoded(url.toString(QUrl::FullyEncoded));
}

QUrl NSWorkspace::mailDraft(const QString& address, const QString& subject, const QString& body) {
    return QUrl::fromEncoded("mailto:" + QUrl::toPercentEncoding(address, "@,") +
                                 "?SUBJECT=" + QUrl::toPercentEncoding(subject) +
                                 "&BODY=" + QUrl::toPercentEncoding(body),
                             QUrl::StrictMode);
}

QString videosFolder() {
    const QString home = QDir::homePath();
    QString folder = QStandardPaths::writableLocation(QStandardPaths::MoviesLocation);
    // The home folder itself there means "none" (xdg-user-dirs).
    if (folder.isEmpty() || QDir::cleanPath(folder) == QDir::cleanPath(home))
        return appendingPathComponent(home, QStringLiteral("Videos"));
    return folder;
}

QString loginName() {
    std::array<char, 16384> buffer{};
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found)
        return QString::fromLocal8Bit(found->pw_name);
    return qEnvironmentVariable("USER");
}

} // namespace clipheave::platform
