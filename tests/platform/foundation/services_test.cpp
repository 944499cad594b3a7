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
#include <thread>

using namespace clipheave::platform;

TEST(Error, JoinsItsPartsAndMapsTheSystemsNumbers) {
    EXPECT_EQ((Error{ErrorCode::Io, u"read"_qs, u"/a"_qs, u"why"_qs}.text()), u"read: /a: why"_qs);
    EXPECT_EQ((Error{ErrorCode::Io, u"read"_qs, {}, u"why"_qs}.text()), u"read: why"_qs);
    EXPECT_EQ((Error{ErrorCode::NoSpace, u"write"_qs, u"/a"_qs, u"No space"_qs}.text()),
              u"disk full: write: /a: No space"_qs);
    EXPECT_EQ((Error{ErrorCode::NoSpace, u"write"_qs, u"/a"_qs, kDamagedFile}.text()),
              u"damaged file: write: /a"_qs);
    EXPECT_EQ(fillGaps(u"%2 of %1, 5 % of %3%"_qs, {u"%2"_qs, u"b"_qs}), u"b of %2, 5 % of %3%"_qs);
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
            if (line.text == u"again"_qs)
                log(LogLevel::Trace, u"from the listener"_qs);
        });
        auto second = std::make_unique<LogSubscription>(
            LogLevel::Warning, [&](const LogLine& line) { warnings += line.path; });
        log(LogLevel::Trace, u"again"_qs);
        log(LogLevel::Error, u"bad"_qs, u"/p"_qs);
        second.reset();
        log(LogLevel::Error, u"worse"_qs, u"/q"_qs);
        ignoreFailure(Result<void>(failure(ErrorCode::Io, u"sync"_qs)), "why");
        EXPECT_TRUE(logs(LogLevel::Trace));
    }
    EXPECT_FALSE(logs(LogLevel::Error));
    EXPECT_EQ(all, QStringList({u"again"_qs, u"from the listener"_qs, u"bad"_qs, u"worse"_qs,
                                u"sync (ignored: why)"_qs}));
    EXPECT_EQ(warnings, QStringList{u"/p"_qs});
}

TEST(NotificationCenter, DeliversInOrderToThoseWhoAskedForTheName) {
    NSNotificationCenter& center = NSNotificationCenter::defaultCenter();
    QStringList calls;
    int a = 0;
    int b = 0;
    QObject sender;
    center.addObserver_name(&a, u"one"_qs, [&](QObject* object) {
        calls += object == &sender ? u"a"_qs : u"wrong"_qs;
        center.removeObserver(&a); // a handler may change the list
    });
    center.addObserver_name(&b, u"one"_qs, [&](QObject*) { calls += u"b"_qs; });
    center.addObserver_name(&b, u"two"_qs, [&](QObject*) { calls += u"b2"_qs; });
    center.postNotificationName_object(u"one"_qs, &sender);
    center.postNotificationName_object(u"one"_qs, &sender);
    center.postNotificationName_object(u"two"_qs, nullptr);
    center.removeObserver(&b);
    center.postNotificationName_object(u"one"_qs, &sender);
    EXPECT_EQ(calls, QStringList({u"a"_qs, u"b"_qs, u"b"_qs, u"b2"_qs}));
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
    const QString file = dir.path(u"new/folder/x.conf"_qs);
    NSUserDefaults defaults(file);
    EXPECT_TRUE(defaults.stringForKey(u"absent"_qs).isNull());
    EXPECT_EQ(defaults.integerForKey(u"absent"_qs), 0);
    const QStringList texts = {u"a, b,c"_qs,
                               u"100%20"_qs,
                               u"  lead and trail "_qs,
                               u"123"_qs,
                               u"\u00FC\u4E2D\U0001F3AC"_qs,
                               u"@Invalid()"_qs,
                               u"@x"_qs,
                               u""_qs,
                               u"\"quoted\"; \\n"_qs,
                               u"two\nlines\tand tab"_qs,
                               u"0x41 \\x41"_qs,
                               u"@ByteArray(a)"_qs,
                               u"x=1"_qs,
                               u"[s]"_qs,
                               u";c"_qs};
    for (int i = 0; i < texts.size(); ++i)
        ASSERT_TRUE(defaults.setObject_forKey(texts[i], u"key %1"_qs.arg(i)));
    ASSERT_TRUE(defaults.setObject_forKey(42, u"number"_qs));
    ASSERT_TRUE(defaults.setObject_forKey(true, u"flag"_qs));
    ASSERT_TRUE(defaults.setObject_forKey(u"7 apples"_qs, u"text number"_qs));
    for (int i = 0; i < texts.size(); ++i)
        EXPECT_EQ(NSUserDefaults(file).stringForKey(u"key %1"_qs.arg(i)), texts[i]);
    const NSUserDefaults again(file);
    EXPECT_EQ(again.integerForKey(u"key 3"_qs), 123);
    EXPECT_EQ(again.integerForKey(u"number"_qs), 42);
    EXPECT_EQ(again.objectForKey(u"number"_qs).toInt(), 42);
    EXPECT_EQ(again.integerForKey(u"flag"_qs), 1);
    EXPECT_TRUE(again.objectForKey(u"flag"_qs).toBool());
    EXPECT_EQ(again.integerForKey(u"text number"_qs), 7);
    EXPECT_EQ(again.allKeys().size(), texts.size() + 3);
}

TEST(UserDefaults, SetsABrokenStoreAside) {
    const testkit::TempDir dir;
    const QString good = dir.write(u"good.conf"_qs, "[General]\nstoragePath=/videos/\xC3\xBC\n");
    EXPECT_TRUE(NSUserDefaults(good).setAsideWhenBroken().isNull());
    EXPECT_TRUE(NSUserDefaults(dir.path(u"absent"_qs)).setAsideWhenBroken().isNull());
    const QByteArray rubbish[] = {QByteArray("storagePath=\x01\n"), QByteArray("a=\xFF\xFE\n"),
                                  QByteArray("[General]\n\0\0\0", 13), QByteArray(2 << 20, 'a')};
    int number = 0;
    for (const QByteArray& bytes : rubbish) {
        const QString file = dir.write(u"x.conf"_qs, bytes);
        const QString backup = NSUserDefaults(file).setAsideWhenBroken();
        ++number;
        EXPECT_EQ(backup, number == 1 ? file + u".broken"_qs : file + u".broken %1"_qs.arg(number));
        EXPECT_EQ(testkit::TempDir::read(backup), bytes);
        EXPECT_TRUE(NSUserDefaults(file).allKeys().isEmpty());
    }
}

TEST(UserDefaults, KeepsWhatOthersHaveWrittenMeanwhile) {
    const testkit::TempDir dir;
    const QString file = dir.write(u"x.conf"_qs, "[General]\nmine=1\nlist=a, b\n");
    NSUserDefaults defaults(file);
    EXPECT_EQ(defaults.stringForKey(u"list"_qs), u"a, b"_qs);
    dir.write(u"x.conf"_qs, "[General]\nmine=1\ntheirs=second value\n");
    ASSERT_TRUE(defaults.setObject_forKey(2, u"mine"_qs));
    EXPECT_EQ(defaults.stringForKey(u"theirs"_qs), u"second value"_qs);
    ASSERT_TRUE(defaults.removeObjectForKey(u"mine"_qs));
    EXPECT_FALSE(defaults.contains(u"mine"_qs));
    EXPECT_EQ(testkit::TempDir::read(file), QByteArray("[General]\ntheirs=second value\n"));
    // A folder in the way: said, not swallowed.
    EXPECT_FALSE(NSUserDefaults(dir.path()).setObject_forKey(1, u"k"_qs));
    EXPECT_TRUE(NSUserDefaults().filePath().endsWith(u"/clipheave/clipheave.conf"_qs));
}
