// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/exact_dates.h"
#include "platform/foundation/file_manager.h"

#include "platform/foundation/handles.h"
#include "platform/foundation/paths.h"

#include "tests/testkit/testkit.h"

#include <algorithm>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

using namespace clipheave::platform;

namespace {

constexpr const char* kTestAttribute = "user.clipheave.crtime";

const NSFileManager& files() {
    return NSFileManager::defaultManager();
}

bool setTestAttribute(const QString& path, const char* name, const QByteArray& value) {
    return ::setxattr(nativePath(path).constData(), name, value.constData(),
                      static_cast<std::size_t>(value.size()), 0) == 0;
}

QByteArray testAttribute(const QString& path, const char* name) {
    QByteArray value(256, '\0');
    value.resize(::getxattr(nativePath(path).constData(), name, value.data(), 256));
    return value;
}

QDateTime creationOf(const QString& path) {
    const auto attributes = files().attributesOfItemAtPath(path);
    return attributes ? attributes->NSFileCreationDate : QDateTime();
}

QDateTime utc(const char* text) {
    return QDateTime::fromString(QString::fromLatin1(text), Qt::ISODateWithMs);
}

class CreationDates : public testing::Test {
protected:
    void SetUp() override {
        path = dir.write("file", "bytes");
        if (!setTestAttribute(path, "user.test", "x"))
            GTEST_SKIP() << "no extended attributes here";
    }
    const testkit::TempDir dir;
    QString path;
};

} // namespace

TEST_F(CreationDates, AreStoredAsTextAndReadBackFirst) {
    const QDateTime creation = utc("0987-06-05T04:03:02.123Z");
    const QDateTime modification = utc("2001-02-03T04:05:06.789Z");
    const QDateTime born = creationOf(path);
    EXPECT_LT(qAbs(born.secsTo(QDateTime::currentDateTime())), 60); // the birth time
    ASSERT_EQ(files().setAttributes(path, {}, modification), CreationDateStored::Yes);
    EXPECT_EQ(creationOf(path), born);
    ASSERT_EQ(files().setAttributes(path, creation, {}), CreationDateStored::Yes);
    EXPECT_EQ(testAttribute(path, kTestAttribute), "0987-06-05T04:03:02.123000000Z");
    const auto attributes = files().attributesOfItemAtPath(path);
    ASSERT_TRUE(attributes);
    EXPECT_EQ(attributes->NSFileCreationDate, creation);
    EXPECT_EQ(attributes->NSFileModificationDate, modification);
    EXPECT_EQ(attributes->NSFileSize, 5u);
    EXPECT_TRUE(attributes->isRegular && !attributes->isDirectory);

    const FileDescriptor fd(::open(nativePath(path).constData(), O_RDONLY));
    const QDateTime beforeEpoch = utc("1969-12-31T23:59:59.250Z");
    ASSERT_TRUE(files().setAttributesOfOpenFile(fd.get(), path, beforeEpoch, beforeEpoch));
    EXPECT_EQ(files().attributesOfOpenFile(fd.get(), path)->NSFileCreationDate, beforeEpoch);
    EXPECT_EQ(files().attributesOfOpenFile(fd.get(), path)->NSFileModificationDate, beforeEpoch);
    EXPECT_FALSE(files().setAttributes(path, QDateTime(), {}));

    // A QDateTime drops what is below the millisecond; the file that it came from has it.
    ASSERT_TRUE(setTestAttribute(path, kTestAttribute, "2021-03-04T05:06:07.123456789Z"));
    const testkit::TempDir dir;
    const QString copy = dir.write("copy", {});
    ASSERT_TRUE(files().setAttributes(copy, creationOf(path), modification));
    restoreExactDates(path, copy);
    EXPECT_EQ(testAttribute(copy, kTestAttribute), "2021-03-04T05:06:07.123456789Z");
    EXPECT_EQ(files().attributesOfItemAtPath(copy)->NSFileModificationDate, modification);
}

TEST_F(CreationDates, DamagedTextsAreNotBelieved) {
    const QDateTime born = creationOf(path);
    for (const char* text :
         {"", "2021-03-04T05:06:07", "2021-03-04T05:06:07.Z", "2021-03-04T05:06:07.1234567890Z",
          "2021-02-30T05:06:07Z", "2021-03-04T25:06:07Z", "2021-03-04 05:06:07Z",
          "2021-03-04T05:06:07xZ"}) {
        ASSERT_TRUE(setTestAttribute(path, kTestAttribute, text));
        EXPECT_EQ(creationOf(path), born) << text;
    }
    ASSERT_TRUE(setTestAttribute(path, kTestAttribute, "2021-03-04T05:06:07.5Z"));
    EXPECT_EQ(creationOf(path), utc("2021-03-04T05:06:07.500Z"));
}

TEST_F(CreationDates, OfTheSmbServerAreReadAndPatched) {
    using testkit::le;
    const quint64 ticks = 132'000'000'000'000'000; // 2019-04-17T18:40:00Z
    const QDateTime date = utc("2019-04-17T18:40:00Z");
    const QByteArray head3 = QByteArray("0x20\0\0", 6) + le(3, 2) + le(3, 2) + QByteArray(2, '\0');
    const QByteArray head4 = le(0, 2) + le(4, 2) + le(4, 4);
    const QByteArray head5 = le(0, 2) + le(5, 2) + le(5, 4);
    const QByteArray flags = le(0x11, 4) + le(0x20, 4);
    const QByteArray before3 = head3 + flags + QByteArray(20, '\0');
    const QByteArray records[] = {before3 + le(ticks, 8) + le(0, 8),
                                  head4 + flags + le(0, 8) + le(ticks, 8),
                                  head5 + flags + le(ticks, 8)};
    const QDateTime born = creationOf(path);
    for (const QByteArray& record : records) {
        ASSERT_TRUE(setTestAttribute(path, "user.DOSATTRIB", record));
        EXPECT_EQ(creationOf(path), date);
        for (qsizetype cut = 0; cut < record.size() - 8; ++cut) { // any length is survived
            ASSERT_TRUE(setTestAttribute(path, "user.DOSATTRIB", record.left(cut)));
            EXPECT_EQ(creationOf(path), born);
        }
    }
    ASSERT_TRUE(setTestAttribute(path, "user.DOSATTRIB", records[1]));
    const QDateTime later = date.addSecs(1);
    ASSERT_TRUE(files().setAttributes(path, later, {}));
    EXPECT_EQ(testAttribute(path, "user.DOSATTRIB"),
              head4 + flags + le(0, 8) + le(ticks + 10'000'000, 8));
    EXPECT_EQ(creationOf(path), later);
}

TEST(FileManager, NoExtendedAttributesIsNoFailure) {
    // The kernel keeps none in /proc, and none of the "user" kind there can ever be.
    const FileDescriptor fd(::open("/proc/self/status", O_RDONLY));
    const auto stored =
        files().setAttributesOfOpenFile(fd.get(), {}, utc("2021-03-04T05:06:07Z"), {});
    ASSERT_TRUE(stored);
    EXPECT_EQ(*stored, CreationDateStored::NotStoredHere);
}

TEST(FileManager, ListsFoldersWithLinksAndOddNames) {
    const testkit::TempDir dir;
    dir.write("sub/inner", "x");
    dir.write("b\u00FC", "x");
    const QByteArray base = dir.path().toUtf8();
    ASSERT_EQ(::symlink("sub", (base + "/toSub").constData()), 0);
    ASSERT_EQ(::symlink("nowhere", (base + "/dangling\xFF").constData()), 0);
    const auto entries = files().contentsOfDirectoryAtPath(dir.path());
    ASSERT_TRUE(entries);
    QStringList seen;
    for (const DirectoryEntry& entry : *entries)
        seen += entry.name + (entry.isDirectory ? u"/"_s : QString());
    std::sort(seen.begin(), seen.end());
    EXPECT_EQ(seen, QStringList({u"b\u00FC"_s, u"dangling\xDCFF"_s, u"sub/"_s, u"toSub/"_s}));
    EXPECT_EQ(files().contentsOfDirectoryAtPath(dir.path("b")).error().code, ErrorCode::NotFound);
    EXPECT_FALSE(files().fileExistsAtPath(dir.path(u"dangling\xDCFF"_s)));
    EXPECT_TRUE(files().removeItemAtPath(dir.path(u"dangling\xDCFF"_s)));
    bool isDirectory = false;
    EXPECT_TRUE(files().fileExistsAtPath(dir.path("toSub"), isDirectory));
    EXPECT_TRUE(isDirectory);
}

TEST(FileManager, CreatesAndRemovesFolders) {
    const testkit::TempDir dir;
    const QString deep = dir.path("a//b/c/");
    EXPECT_TRUE(files().createDirectoryAtPath(deep));
    EXPECT_TRUE(files().createDirectoryAtPath(deep));
    const QString file = dir.write("a/f", "x");
    EXPECT_EQ(files().createDirectoryAtPath(file).error().code, ErrorCode::AlreadyExists);
    EXPECT_EQ(files().createDirectoryAtPath(file + u"/x"_s).error().code, ErrorCode::NotFound);
    const QString outside = dir.write("outside/kept", "x");
    ASSERT_EQ(::symlink("../outside", nativePath(dir.path("a/link")).constData()), 0);
    EXPECT_TRUE(files().removeItemAtPath(dir.path("a")));
    EXPECT_FALSE(files().fileExistsAtPath(dir.path("a")));
    EXPECT_TRUE(files().fileExistsAtPath(outside));
    EXPECT_EQ(files().removeItemAtPath(file).error().code, ErrorCode::NotFound);
}

TEST(FileManager, MovingNeverReplaces) {
    const testkit::TempDir dir;
    const QString a = dir.write("a", "A");
    const QString b = dir.write("b", "B");
    EXPECT_EQ(files().moveItem(a, b).error().code, ErrorCode::AlreadyExists);
    EXPECT_EQ(files().moveItem(a, a).error().code, ErrorCode::AlreadyExists);
    EXPECT_EQ(testkit::TempDir::read(b), "B");
    EXPECT_EQ(files().moveItem(dir.path("no"), dir.path("x")).error().code, ErrorCode::NotFound);
    // Two hard links in two spellings stay two names.
    const QString spelling = dir.path("A");
    ASSERT_EQ(::link(nativePath(a).constData(), nativePath(spelling).constData()), 0);
    EXPECT_EQ(files().moveItem(a, spelling).error().code, ErrorCode::AlreadyExists);
    EXPECT_TRUE(files().moveItem(a, dir.path("c")));
    EXPECT_FALSE(files().fileExistsAtPath(a));
    EXPECT_EQ(testkit::TempDir::read(dir.path("c")), "A");
    EXPECT_EQ(files().moveItem(b, dir.path(u"x\0y"_s)).error().code, ErrorCode::InvalidArgument);
}

TEST(FileManager, FindsFreeNamesAndKnowsTheSameFile) {
    const testkit::TempDir dir;
    const QString source = dir.write("clip.mov", "x");
    dir.write("clip 2.mov", "x");
    ASSERT_EQ(::symlink("nowhere", nativePath(dir.path("clip 3.mov")).constData()), 0);
    EXPECT_EQ(files().nextFreeName(source), dir.path("clip 4.mov"));
    EXPECT_EQ(files().nextFreeName(dir.path("new")), dir.path("new"));
    dir.write(".rc", "x");
    EXPECT_EQ(files().nextFreeName(dir.path(".rc")), dir.path(".rc 2"));

    const QString hardLink = dir.path("same.mov");
    ASSERT_EQ(::link(nativePath(source).constData(), nativePath(hardLink).constData()), 0);
    EXPECT_TRUE(files().isSameFile(source, hardLink));
    EXPECT_EQ(files().nextFreeName(hardLink), dir.path("same 2.mov"));
    EXPECT_FALSE(files().isSameFile(source, dir.path("clip 2.mov")));
}
