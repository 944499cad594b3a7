// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/log.h"
#include "platform/foundation/main_thread.h"
#include "platform/foundation/messages.h"
#include "platform/foundation/notification_center.h"
#include "platform/foundation/result.h"
#include "platform/foundation/user_defaults.h"

#include "tests/testkit/testkit.h"

#include <QThread>

#include <atomic>
#include <cerrno>
#include <memory>

using namespace clipheave::platform;

TEST(Error, JoinsItsPartsAndMapsTheSystemsNumbers) {
    EXPECT_EQ((Error{ErrorCode::Io, u"read"_s, u"/a"_s, u"why"_s}.text()), u"read: /a: why");
    EXPECT_EQ((Error{ErrorCode::Io, u"read"_s, {}, u"why"_s}.text()), u"read: why");
    EXPECT_EQ((Error{ErrorCode::NoSpace, u"write"_s, u"/a"_s, u"No space"_s}.text()),
              u"disk full: write: /a: No space");
    EXPECT_EQ((Error{ErrorCode::NoSpace, u"write"_s, u"/a"_s, kDamagedFile}.text()),
              u"damaged file: write: /a");
    EXPECT_EQ(fillGaps(u"%2 of %1, 5 % of %3%"_s, {u"%2"_s, u"b"_s}), u"b of %2, 5 % of %3%");
    const auto code = [](int number) { return systemFailure({}, {}, number).value().code; };
    EXPECT_EQ(code(ENOSPC), ErrorCode::NoSpace);
    EXPECT_EQ(code(EDQUOT), ErrorCode::NoSpace);
    EXPECT_EQ(code(EROFS), ErrorCode::AccessDenied);
    EXPECT_EQ(code(EIO), ErrorCode::Io);
}

TEST(Log, ReachesTheListenersOfItsLevelWhichMayLogThemselves) {
    EXPECT_FALSE(logs(LogLevel::Error));
    QStringList all;
    QStringList warnings;
    {
        const LogSubscription first(LogLevel::Trace, [&](const LogLine& line) {
            all += line.text;
            if (line.text == u"again"_s)
                log(LogLevel::Trace, u"from the listener"_s);
        });
        auto second = std::make_unique<LogSubscription>(
            LogLevel::Warning, [&](const LogLine& line) { warnings += line.path; });
        log(LogLevel::Trace, u"again"_s);
        log(LogLevel::Error, u"bad"_s, u"/p"_s);
        second.reset();
        log(LogLevel::Error, u"worse"_s, u"/q"_s);
        ignoreFailure(Result<void>(failure(ErrorCode::Io, u"sync"_s)), "why");
        EXPECT_TRUE(logs(LogLevel::Trace));
    }
    EXPECT_FALSE(logs(LogLevel::Error));
    EXPECT_EQ(all, QStringList({u"again"_s, u"from the listener"_s, u"bad"_s, u"worse"_s,
                                u"sync (ignored: why)"_s}));
    EXPECT_EQ(warnings, QStringList{u"/p"_s});
}

TEST(NotificationCenter, DeliversInOrderToThoseWhoAskedForTheName) {
    NSNotificationCenter& center = NSNotificationCenter::defaultCenter();
    QStringList calls;
    int a = 0;
    int b = 0;
    QObject sender;
    center.addObserver_name(&a, u"one"_s, [&](QObject* object) {
        calls += object == &sender ? u"a"_s : u"wrong"_s;
        center.removeObserver(&a); // a handler may change the list
    });
    center.addObserver_name(&b, u"one"_s, [&](QObject*) { calls += u"b"_s; });
    center.addObserver_name(&b, u"two"_s, [&](QObject*) { calls += u"b2"_s; });
    center.postNotificationName_object(u"one"_s, &sender);
    center.postNotificationName_object(u"one"_s, &sender);
    center.postNotificationName_object(u"two"_s, nullptr);
    center.removeObserver(&b);
    center.postNotificationName_object(u"one"_s, &sender);
    EXPECT_EQ(calls, QStringList({u"a"_s, u"b"_s, u"b"_s, u"b2"_s}));
}

TEST(MainThread, WorkersReachItAlsoWhileItWaitsForThem) {
    QThread* ranOn = nullptr;
    performOnMainThread([&] { ranOn = QThread::currentThread(); });
    EXPECT_EQ(ranOn, QThread::currentThread());

    std::atomic<int> onMain = 0;
    std::atomic<int> ended = 0;
    for (int i = 0; i < 4; ++i)
        BackgroundJob::detach([&, main = QThread::currentThread()] {
            performOnMainThread([&] { onMain += QThread::currentThread() == main ? 1 : 100; });
            ended += onMain > 0 ? 1 : 100; // it has run when the call is back
        });
    BackgroundJob::waitForAll();
    EXPECT_EQ(onMain, 4);
    EXPECT_EQ(ended, 4);
}

TEST(UserDefaults, EveryTextComesBackAsItWas) {
    const testkit::TempDir dir;
    const QString file = dir.path("new/folder/x.conf");
    NSUserDefaults defaults(file);
    EXPECT_TRUE(defaults.stringForKey(u"absent"_s).isNull());
    EXPECT_EQ(defaults.integerForKey(u"absent"_s), 0);
    const QStringList texts =
        u"a, b,c|100%20|  lead and trail |123|\u00FC\u4E2D\U0001F3AC|@Invalid()|@x||\"quoted\"; "
        u"\\n|"
        "two\nlines\tand tab|0x41 \\x41|@ByteArray(a)|x=1|[s]|;c"_s.split(u'|');
    for (int i = 0; i < texts.size(); ++i)
        ASSERT_TRUE(defaults.setObject_forKey(texts[i], u"key %1"_s.arg(i)));
    ASSERT_TRUE(defaults.setObject_forKey(42, u"number"_s));
    ASSERT_TRUE(defaults.setObject_forKey(true, u"flag"_s));
    ASSERT_TRUE(defaults.setObject_forKey(u"7 apples"_s, u"text number"_s));
    for (int i = 0; i < texts.size(); ++i)
        EXPECT_EQ(NSUserDefaults(file).stringForKey(u"key %1"_s.arg(i)), texts[i]);
    const NSUserDefaults again(file);
    EXPECT_EQ(again.integerForKey(u"key 3"_s), 123);
    EXPECT_EQ(again.integerForKey(u"number"_s), 42);
    EXPECT_EQ(again.objectForKey(u"number"_s).toInt(), 42);
    EXPECT_EQ(again.integerForKey(u"flag"_s), 1);
    EXPECT_TRUE(again.objectForKey(u"flag"_s).toBool());
    EXPECT_EQ(again.integerForKey(u"text number"_s), 7);
    EXPECT_EQ(again.allKeys().size(), texts.size() + 3);
}

TEST(UserDefaults, SetsABrokenStoreAside) {
    const testkit::TempDir dir;
    const QString good = dir.write("good.conf", "[General]\nstoragePath=/videos/\xC3\xBC\n");
    EXPECT_TRUE(NSUserDefaults(good).setAsideWhenBroken().isNull());
    EXPECT_TRUE(NSUserDefaults(dir.path("absent")).setAsideWhenBroken().isNull());
    const QByteArray rubbish[] = {QByteArray("storagePath=\x01\n"), QByteArray("a=\xFF\xFE\n"),
                                  QByteArray("[General]\n\0\0\0", 13), QByteArray(2 << 20, 'a')};
    int number = 0;
    for (const QByteArray& bytes : rubbish) {
        const QString file = dir.write("x.conf", bytes);
        const QString backup = NSUserDefaults(file).setAsideWhenBroken();
        ++number;
        EXPECT_EQ(backup, number == 1 ? file + u".broken"_s : file + u".broken %1"_s.arg(number));
        EXPECT_EQ(testkit::TempDir::read(backup), bytes);
        EXPECT_TRUE(NSUserDefaults(file).allKeys().isEmpty());
    }
}

TEST(UserDefaults, KeepsWhatOthersHaveWrittenMeanwhile) {
    const testkit::TempDir dir;
    const QString file = dir.write("x.conf", "[General]\nmine=1\nlist=a, b\n");
    NSUserDefaults defaults(file);
    EXPECT_EQ(defaults.stringForKey(u"list"_s), u"a, b");
    dir.write("x.conf", "[General]\nmine=1\ntheirs=second value\n");
    ASSERT_TRUE(defaults.setObject_forKey(2, u"mine"_s));
    EXPECT_EQ(defaults.stringForKey(u"theirs"_s), u"second value");
    ASSERT_TRUE(defaults.removeObjectForKey(u"mine"_s));
    EXPECT_FALSE(defaults.contains(u"mine"_s));
    EXPECT_EQ(testkit::TempDir::read(file), QByteArray("[General]\ntheirs=second value\n"));
    // A folder in the way: said, not swallowed.
    EXPECT_FALSE(NSUserDefaults(dir.path()).setObject_forKey(1, u"k"_s));
    EXPECT_TRUE(NSUserDefaults().filePath().endsWith(u"/clipheave/clipheave.conf"_s));
}
