// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/workspace/ns_workspace.h"

#include "platform/foundation/log.h"

#include "tests/testkit/testkit.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>

#include <csignal>
#include <sys/prctl.h>
#include <thread>

using namespace clipheave::platform;

namespace {

/// Takes the calls that a file browser would.
class FakeFileBrowser : public QDBusVirtualObject {
public:
    QList<QVariantList> calls;

    [[nodiscard]] QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.interface() != u"org.freedesktop.FileManager1"_s ||
            message.member() != u"ShowItems"_s || message.signature() != u"ass"_s)
            return false;
        calls += message.arguments();
        connection.send(message.createReply());
        return true;
    }
};

template <class Condition> bool waitUntil(Condition holds) {
    QElapsedTimer timer;
    for (timer.start(); !holds() && timer.elapsed() < 10'000;)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    return holds();
}

/// A desktop whose handler of URLs writes down what it gets.
class Desktop : public testing::Test {
protected:
    void SetUp() override {
        const QString handler =
            dir.write("xdg-open", "#!/bin/sh\nprintf '%s\\n' \"$*\" >> " + opened.toUtf8() + "\n");
        QFile::setPermissions(handler, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        qputenv("PATH", dir.path().toUtf8() + ":/usr/bin:/bin");
        qputenv("DISPLAY", ":77");
        qunsetenv("WAYLAND_DISPLAY");
    }
    [[nodiscard]] bool waitForOpened(const QByteArray& lines) const {
        return waitUntil([&] { return testkit::TempDir::read(opened) == lines; });
    }

    const testkit::TempDir dir;
    const QString opened = dir.path("opened");
    QStringList logged;
    const LogSubscription subscription{LogLevel::Info,
                                       [this](const LogLine& line) { logged += line.path; }};
};

/// The same with a message bus of its own; the process keeps the first it has met.
class DesktopWithBus : public Desktop {
protected:
    void SetUp() override {
        Desktop::SetUp();
        if (!testkit::hasProgram(u"dbus-daemon"_s))
            GTEST_SKIP() << "dbus-daemon is not installed";
        if (!bus) {
            bus = new QProcess(qApp);
            // Also a test that is killed leaves no bus behind.
            bus->setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
            bus->start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address"_s});
            ASSERT_TRUE(bus->waitForReadyRead(10'000));
            address = QString::fromLatin1(bus->readLine().trimmed());
        }
        qputenv("DBUS_SESSION_BUS_ADDRESS", address.toLatin1());
        if (!QDBusConnection::sessionBus().isConnected())
            GTEST_SKIP() << "this process has met another bus before";
    }
    static void TearDownTestSuite() {
        if (!bus)
            return;
        bus->kill();
        bus->waitForFinished();
        delete bus;
        bus = nullptr;
    }

    static inline QProcess* bus = nullptr;
    static inline QString address;
};

} // namespace

TEST_F(DesktopWithBus, FilesAreShownInTheFileBrowserFromAnyThread) {
    FakeFileBrowser browser;
    QDBusConnection service = QDBusConnection::connectToBus(address, u"fake"_s);
    ASSERT_TRUE(service.registerService(u"org.freedesktop.FileManager1"_s));
    ASSERT_TRUE(service.registerVirtualObject(u"/org/freedesktop/FileManager1"_s, &browser));
    std::thread([] {
        NSWorkspace::sharedWorkspace().selectFiles({u"/a b/\u00FC#?%.mov"_s, u"/caf\xDCE9"_s});
    }).join();
    ASSERT_TRUE(waitUntil([&] { return !browser.calls.isEmpty(); }));
    EXPECT_EQ(browser.calls.constFirst().constFirst().toStringList(),
              QStringList({u"file:///a%20b/%C3%BC%23%3F%25.mov"_s, u"file:///caf%E9"_s}));
    EXPECT_EQ(browser.calls.size(), 1);

    const auto shownOf = [&](const QStringList& paths) {
        browser.calls.clear();
        NSWorkspace::sharedWorkspace().selectFiles(paths);
        EXPECT_TRUE(waitUntil([&] { return !browser.calls.isEmpty(); }));
        return browser.calls.constFirst().constFirst().toStringList();
    };
    QStringList frames, mirrored;
    for (int i = 0; i < 3600; ++i)
        frames += u"/out/video_%1.jpg"_s.arg(i);
    for (int i = 0; i < 50; ++i)
        mirrored += u"/out/2025/day %1/video.mp4"_s.arg(i);
    EXPECT_EQ(shownOf(frames), QStringList{u"file:///out"_s});
    EXPECT_EQ(shownOf(mirrored), QStringList{u"file:///out/2025"_s}) << "not fifty windows";
    EXPECT_EQ(shownOf(mirrored.first(2)).size(), 2);
    EXPECT_TRUE(logged.isEmpty());
    QDBusConnection::disconnectFromBus(u"fake"_s);
    EXPECT_FALSE(QFile::exists(opened));
}

TEST_F(DesktopWithBus, WithoutAFileBrowserTheFolderIsOpened) {
    NSWorkspace::sharedWorkspace().selectFiles({u"/a b/c"_s, u"/a b/d"_s});
    EXPECT_TRUE(waitForOpened("file:///a%20b\n"));
    qunsetenv("DISPLAY");
    NSWorkspace::sharedWorkspace().selectFiles({u"/a b/c"_s, u"/a b/d"_s});
    EXPECT_TRUE(waitUntil([&] { return logged.size() == 2; }));
    EXPECT_FALSE(NSWorkspace::sharedWorkspace().openURL(QUrl(u"https://example.org/"_s)));
}

TEST_F(Desktop, WithoutABusTheFolderIsOpened) {
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + dir.path().toUtf8() + "/absent");
    if (QDBusConnection::sessionBus().isConnected())
        GTEST_SKIP() << "this process has met a bus before";
    NSWorkspace::sharedWorkspace().selectFiles({u"/a/b"_s});
    EXPECT_TRUE(waitForOpened("file:///a\n"));
}

TEST_F(Desktop, PagesAndDraftsGoToTheDesktopsHandler) {
    const QUrl draft = NSWorkspace::mailDraft(u"a+b@example.org"_s, u"ClipHeave"_s,
                                              u"Tom & J\u00FCrgen=100%?\n#1"_s);
    const QByteArray expected = "mailto:a%2Bb@example.org?SUBJECT=ClipHeave&BODY="
                                "Tom%20%26%20J%C3%BCrgen%3D100%25%3F%0A%231";
    EXPECT_EQ(draft.toEncoded(), expected);
    EXPECT_TRUE(NSWorkspace::sharedWorkspace().openURL(draft));
    EXPECT_TRUE(waitForOpened(expected + '\n'));
    EXPECT_FALSE(NSWorkspace::sharedWorkspace().openURL(QUrl(u"--help"_s)));
    qputenv("PATH", "/nowhere");
    EXPECT_FALSE(NSWorkspace::sharedWorkspace().openURL(draft));
}

TEST_F(Desktop, TheVideosFolderIsTheUsersOwn) {
    qputenv("HOME", dir.path().toUtf8());
    qputenv("XDG_CONFIG_HOME", dir.path().toUtf8() + "/config");
    EXPECT_EQ(videosFolder(), dir.path("Videos"));
    dir.write("config/user-dirs.dirs", "XDG_VIDEOS_DIR=\"$HOME/Filme \xC3\xBC\"\n");
    EXPECT_EQ(videosFolder(), dir.path("Filme \u00FC"));
    dir.write("config/user-dirs.dirs", "XDG_VIDEOS_DIR=\"$HOME/\"\n");
    EXPECT_EQ(videosFolder(), dir.path("Videos"));
    EXPECT_EQ(loginName(),
              QString::fromUtf8(testkit::run(u"/usr/bin/id"_s, {u"-un"_s}).out.trimmed()));
}
