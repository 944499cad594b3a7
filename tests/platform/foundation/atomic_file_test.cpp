// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/atomic_file.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/temporaries.h"
#include "platform/foundation/temporary_records.h"

#include "platform/foundation/file_reader.h"
#include "platform/foundation/messages.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/process_space.h"

#include "tests/testkit/tiny_disk.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <csignal>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <utility>

using namespace clipheave::platform;
using IfExists = NSFileManager::IfExists;

namespace {

const NSFileManager& manager() {
    return NSFileManager::defaultManager();
}

struct stat statusOf(const QString& path) {
    struct stat status {};
    EXPECT_EQ(::stat(nativePath(path).constData(), &status), 0);
    return status;
}

unsigned permissionsOf(const QString& path) {
    return statusOf(path).st_mode & 0777u;
}

} // namespace

TEST(AtomicFile, AppearsWholeOrNotAtAll) {
    const testkit::TempDir dir;
    const QString target = dir.write("t", "old");
    ASSERT_EQ(::chmod(nativePath(target).constData(), 0640), 0);
    {
        auto dropped = AtomicFile::create(target);
        ASSERT_TRUE(dropped && dropped->write("half"));
        AtomicFile moved = std::move(*dropped);
        EXPECT_TRUE(manager().fileExistsAtPath(moved.temporaryPath()));
        EXPECT_EQ(testkit::TempDir::read(target), "old");
    }
    EXPECT_EQ(testkit::namesIn(dir.path()), QStringList{u"t"_s});

    auto file = AtomicFile::create(target, 1 << 20);
    ASSERT_TRUE(file && file->write("new ") && file->write("bytes"));
    EXPECT_EQ(file->commit(IfExists::Fail).error().code, ErrorCode::AlreadyExists);
    EXPECT_EQ(testkit::TempDir::read(target), "old");
    ASSERT_TRUE(file->commit());
    EXPECT_EQ(testkit::TempDir::read(target), "new bytes");
    EXPECT_EQ(testkit::namesIn(dir.path()), QStringList{u"t"_s});
    struct stat status {};
    ASSERT_EQ(::stat(nativePath(target).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0640u);   // who may read it stays
    EXPECT_LT(status.st_blocks * 512, 1 << 20); // what was reserved and not used is given back

    auto fresh = AtomicFile::create(dir.path("fresh"));
    ASSERT_TRUE(fresh && fresh->commit(IfExists::Fail));
    const mode_t mask = ::umask(0);
    ::umask(mask);
    ASSERT_EQ(::stat(nativePath(dir.path("fresh")).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0666u & ~mask);
    EXPECT_EQ(AtomicFile::create(dir.path("no/x")).error().code, ErrorCode::NotFound);
    EXPECT_EQ(AtomicFile::create({}).error().code, ErrorCode::InvalidArgument);
}

TEST(AtomicFile, WritesThroughALinkAndIntoTheCurrentFolder) {
    const testkit::TempDir dir;
    const QString real = dir.write("sub/real", "old");
    const QString link = dir.path("link");
    ASSERT_EQ(::symlink("sub/real", nativePath(link).constData()), 0);
    auto file = AtomicFile::create(link);
    ASSERT_TRUE(file && file->write("new") && file->commit());
    EXPECT_EQ(testkit::TempDir::read(real), "new");
    struct stat status {};
    ASSERT_EQ(::lstat(nativePath(link).constData(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));

    const QString before = QDir::currentPath();
    QDir::setCurrent(dir.path());
    auto relative = AtomicFile::create(u"r\xDCFE"_s);
    EXPECT_TRUE(relative && relative->commit());
    QDir::setCurrent(before);
    EXPECT_TRUE(manager().removeItemAtPath(dir.path(u"r\xDCFE"_s)));
}

TEST(AtomicFile, IsNeverMoreReadableThanItsSource) {
    const testkit::TempDir dir;
    const QString source = dir.write("s", "private"), target = dir.write("t", "for all");
    ASSERT_EQ(::chmod(nativePath(source).constData(), 0600), 0);
    auto file = AtomicFile::create(target);
    ASSERT_TRUE(file);
    EXPECT_EQ(permissionsOf(file->temporaryPath()), 0600u);
    file->takePermissionsOf(FileReference::ofPath(source));
    ASSERT_TRUE(file->commit());
    EXPECT_EQ(permissionsOf(target), 0600u);

    ASSERT_EQ(::chmod(nativePath(source).constData(), 0664), 0);
    if (::chown(nativePath(source).constData(), static_cast<uid_t>(-1), 1) != 0)
        GTEST_SKIP() << "files cannot be given away here";
    ASSERT_TRUE(manager().copyItem(source, target, IfExists::Replace));
    EXPECT_EQ(permissionsOf(target), 0644u); // of another group, which is not the one meant
}

TEST(AtomicFile, ACopyOfAFileThatIsWrittenToFails) {
    const testkit::TempDir dir;
    const QString source = dir.write("s", "bytes");
    const auto appended = [&source](double) { return QFile(source).resize(4), true; };
    EXPECT_EQ(manager().copyItem(source, dir.path("c"), IfExists::Replace, appended).error().detail,
              Message(kFileHasChanged));
    EXPECT_EQ(testkit::namesIn(dir.path()), QStringList{u"s"_s});
}

TEST(AtomicFile, CopiesRangesWithProgressUntilStopped) {
    const testkit::TempDir dir;
    QByteArray bytes(40 << 20, '\0');
    for (qsizetype i = 0; i < bytes.size(); i += 4096)
        bytes[i] = static_cast<char>(i >> 12);
    const auto source = FileReader::open(dir.write("s", bytes));
    const QString target = dir.path("t");
    auto file = AtomicFile::create(target, 100);
    ASSERT_TRUE(source && file && file->write("head"));
    std::vector<std::uint64_t> steps;
    const auto note = [&](std::uint64_t copied) { return steps.push_back(copied), true; };
    ASSERT_TRUE(file->copyFrom(source->fd(), 5, (40 << 20) - 5, note));
    EXPECT_GE(steps.size(), 3u);
    EXPECT_EQ(steps.back(), (40u << 20) - 5);
    ASSERT_TRUE(file->write("tail"));
    EXPECT_EQ(file->position(), (40u << 20) + 3);
    EXPECT_EQ(file->copyFrom(source->fd(), 40 << 20, 1).error().code, ErrorCode::Truncated);
    EXPECT_EQ(file->copyFrom(source->fd(), 2, UINT64_MAX).error().code, ErrorCode::InvalidArgument);
    ASSERT_TRUE(file->commit());
    EXPECT_TRUE(testkit::TempDir::read(target) == "head" + bytes.mid(5) + "tail");

    auto stopped = AtomicFile::create(target);
    ASSERT_TRUE(stopped);
    const auto stop = [](std::uint64_t) { return false; };
    EXPECT_EQ(stopped->copyFrom(source->fd(), 0, 40 << 20, stop).error().code,
              ErrorCode::Cancelled);

    // The kernel copies nothing out of a pipe-like file: reading it does.
    const FileDescriptor virtualFile(::open("/proc/version", O_RDONLY));
    auto text = AtomicFile::create(target);
    ASSERT_TRUE(text && text->copyFrom(virtualFile.get(), 0, 5) && text->commit());
    EXPECT_EQ(testkit::TempDir::read(target), "Linux");
}

TEST(AtomicFile, CopiesOfItemsKeepDatesPermissionsAndAttributes) {
    const testkit::TempDir dir;
    const QString source = dir.write("s", "bytes");
    const QByteArray name = nativePath(source);
    if (::setxattr(name.constData(), "user.tag", "red", 3, 0) != 0)
        GTEST_SKIP() << "no extended attributes here";
    ASSERT_EQ(::chmod(name.constData(), 0604), 0);
    const timespec times[2] = {{1, 0}, {1'000'000'000, 123'456'789}};
    ASSERT_EQ(::utimensat(AT_FDCWD, name.constData(), times, 0), 0);
    ::usleep(20'000); // the copy's own birth is another moment
    const QString copy = dir.path("c");
    ASSERT_TRUE(manager().copyItem(source, copy, IfExists::Fail));
    EXPECT_EQ(manager().copyItem(source, copy, IfExists::Fail).error().code,
              ErrorCode::AlreadyExists);
    EXPECT_TRUE(manager().copyItem(source, copy, IfExists::Replace));
    EXPECT_EQ(manager().copyItem(dir.path(), copy, IfExists::Replace).error().code,
              ErrorCode::NotSupported);
    EXPECT_EQ(testkit::TempDir::read(copy), "bytes");
    struct stat status {};
    ASSERT_EQ(::stat(nativePath(copy).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0604u);
    EXPECT_EQ(status.st_mtim.tv_sec, 1'000'000'000);
    EXPECT_EQ(status.st_mtim.tv_nsec, 123'456'789);
    char tag[4] = {};
    EXPECT_EQ(::getxattr(nativePath(copy).constData(), "user.tag", tag, 3), 3);
    EXPECT_STREQ(tag, "red");
    EXPECT_EQ(manager().attributesOfItemAtPath(copy)->NSFileCreationDate,
              manager().attributesOfItemAtPath(source)->NSFileCreationDate);
}

TEST(AtomicFile, AFullDiskIsReportedAndLeavesNothing) {
    const testkit::TempDir dir;
    const testkit::TinyDisk disk(dir.path("disk"), "size=1m");
    SKIP_WITHOUT_DISK(disk);
    const QString target = dir.path("disk/t");
    EXPECT_EQ(AtomicFile::create(target, 2 << 20).error().code, ErrorCode::NoSpace);
    {
        auto file = AtomicFile::create(target);
        ASSERT_TRUE(file);
        EXPECT_EQ(file->write(QByteArray(2 << 20, 'x')).error().code, ErrorCode::NoSpace);
    }
    const QString big = dir.write("big", QByteArray(2 << 20, 'x'));
    EXPECT_EQ(manager().copyItem(big, target, IfExists::Replace).error().code, ErrorCode::NoSpace);
    EXPECT_EQ(manager().moveItem(big, target).error().code, ErrorCode::NoSpace);
    EXPECT_TRUE(manager().fileExistsAtPath(big));
    EXPECT_TRUE(manager().contentsOfDirectoryAtPath(dir.path("disk"))->empty());

    const QString small = dir.write("small", "s"); // a move between file systems
    EXPECT_TRUE(manager().moveItem(small, target));
    EXPECT_EQ(testkit::TempDir::read(target), "s");
    EXPECT_FALSE(manager().fileExistsAtPath(small));
}

TEST(AtomicFile, WhatAKilledProcessLeavesIsRemovedLater) {
    const testkit::TempDir dir;
    const QString target = dir.write("t", "old");
    const pid_t child = ::fork();
    if (child == 0) {
        auto file = AtomicFile::create(target);
        if (file && file->write("half"))
            ::raise(SIGKILL);
        ::_exit(1);
    }
    int ended = 0;
    ASSERT_EQ(::waitpid(child, &ended, 0), child);
    ASSERT_TRUE(WIFSIGNALED(ended));
    ASSERT_EQ(testkit::namesIn(dir.path()).size(), 2);
    removeStaleTemporaries(dir.path());
    EXPECT_EQ(testkit::namesIn(dir.path()).size(), 2); // too young to be sure

    const auto own = AtomicFile::create(target);
    ASSERT_TRUE(own);
    const QString foreign = u".clipheave-notes.tmp"_s;
    // Process 1 lives, yet it began after this file was written: another one had its number.
    QString reused = lastPathComponent(own->temporaryPath());
    reused.replace(u"-%1-"_s.arg(::getpid()), u"-1-"_s);
    // Of another machine, or of a container: their process may be at work.
    QString elsewhere = lastPathComponent(own->temporaryPath());
    elsewhere.replace(11, 12, u"0123456789ab"_s).replace(u"-%1-"_s.arg(::getpid()), u"-999999-"_s);
    dir.write(foreign, "x");
    dir.write(reused, "x");
    dir.write(elsewhere, "x");
    const timespec old[2] = {{1'000, 0}, {1'000, 0}};
    for (const QString& name : testkit::namesIn(dir.path()))
        ASSERT_EQ(::utimensat(AT_FDCWD, nativePath(dir.path(name)).constData(), old, 0), 0);
    removeStaleTemporaries(dir.path());
    EXPECT_THAT(testkit::namesIn(dir.path()),
                testing::UnorderedElementsAre(u"t"_s, foreign, elsewhere,
                                              lastPathComponent(own->temporaryPath())));
    EXPECT_EQ(testkit::TempDir::read(target), "old");
}

/// Returns a name that a run of this program makes, started by `wrapper`; empty where that fails.
QString nameMadeUnder(const QStringList& wrapper) {
    const QStringList self{QCoreApplication::applicationFilePath(),
                           u"--gtest_filter=*BelongToTheirSpaceAlone"_s};
    const auto made = testkit::run(u"env"_s, QStringList{u"PRINT_NAME=1"_s} + wrapper + self);
    return QRegularExpression(u"[0-9a-f]{12}-\\d+-[0-9a-f]{16}"_s)
        .match(QString::fromLatin1(made.out))
        .captured();
}

TEST(AtomicFile, TemporariesBelongToTheirSpaceAlone) {
    if (qEnvironmentVariableIsSet("PRINT_NAME")) {
        std::puts(newNameOfThisProcess().toLatin1().constData());
        return;
    }
    const QStringList alone = testkit::words("unshare --user --map-root-user");
    const QString sameSpace = nameMadeUnder({});
    const QString otherPids = nameMadeUnder(alone + testkit::words("--pid --fork"));
    const QString otherHost = nameMadeUnder(
        alone + testkit::words("--uts sh -c %", {u"hostname elsewhere; \"$0\" \"$1\""_s}));
    ASSERT_FALSE(sameSpace.isEmpty());
    if (otherPids.isEmpty() || otherHost.isEmpty())
        GTEST_SKIP() << "needs the right to make namespaces";
    EXPECT_EQ(otherPids.section(u'-', 1, 1), u"1") << "that number stands for another process here";
    const testkit::TempDir dir;
    QStringList elsewhere;
    for (const QString& name : {sameSpace, otherPids, otherHost}) {
        const QString file = dir.write(u".clipheave-%1.tmp"_s.arg(name), "x");
        const timespec old[2] = {{1'000, 0}, {1'000, 0}};
        ASSERT_EQ(::utimensat(AT_FDCWD, nativePath(file).constData(), old, 0), 0);
        if (name != sameSpace)
            elsewhere << lastPathComponent(file);
    }
    removeStaleTemporaries(dir.path());
    EXPECT_THAT(testkit::namesIn(dir.path()), testing::UnorderedElementsAreArray(elsewhere));

    // The first process of a container has one number in every run.
    struct stat ours {};
    EXPECT_EQ(processOfName(newNameOfThisProcess()), ::getpid());
    EXPECT_FALSE(makerIsAlive(::getpid(), ours)) << "made long before this process";
    ours.st_ctime = std::time(nullptr);
    EXPECT_TRUE(makerIsAlive(::getpid(), ours));
}

TEST(AtomicFile, ARecordLeadsToWhatAKilledProcessLeft) {
    const testkit::TempDir dir, state;
    const QByteArray before = qgetenv("XDG_STATE_HOME");
    qputenv("XDG_STATE_HOME", state.path().toUtf8());
    const QString folder = dir.path("mirrored/folder");
    ASSERT_TRUE(manager().createDirectoryAtPath(folder));
    const auto end = [&](int signal) {
        const pid_t child = ::fork();
        if (child == 0) {
            auto file = AtomicFile::create(folder + u"/t"_s);
            ::raise(file ? signal : SIGUSR1);
        }
        int ended = 0;
        ::waitpid(child, &ended, 0);
    };
    end(SIGKILL);
    const QString records = state.path("clipheave");
    ASSERT_EQ(testkit::namesIn(folder).size(), 1);
    ASSERT_EQ(testkit::namesIn(records).size(), 1);
    removeTemporariesOfDeadProcesses();
    EXPECT_EQ(testkit::namesIn(folder).size(), 1); // too young: the record stays
    EXPECT_EQ(testkit::namesIn(records).size(), 1);

    const QString left = folder + u'/' + testkit::namesIn(folder).first();
    const timespec old[2] = {{1'000, 0}, {1'000, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, nativePath(left).constData(), old, 0), 0);
    removeTemporariesOfDeadProcesses();
    EXPECT_EQ(testkit::namesIn(folder).size(), 0);
    EXPECT_EQ(testkit::namesIn(records).size(), 0);
    qputenv("XDG_STATE_HOME", before);
}
