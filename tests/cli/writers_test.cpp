// SPDX-License-Identifier: GPL-3.0-or-later
// The commands that write a whole selection, and what is left of a save that is killed.
#include "platform/foundation/atomic_file.h"
#include "tests/cli/cli_kit.h"
#include "tests/testkit/tiny_disk.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QRandomGenerator>
#include <QThread>

#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

using clipheave::platform::AtomicFile;
using clitest::cli;
using clitest::listed;
using clitest::listedFile;
using clitest::sample;
using testkit::TempDir;

class Commands : public testing::Test {
protected:
    /// {source name: outcome} of a command with an output folder of this test's own.
    QMap<QString, QJsonObject> outcomes(const QByteArray& command, const QStringList& paths) {
        const auto run =
            cli("--json --quiet --storage % " + command, QStringList{m_out.path()} + paths);
        m_exitCode = run.exitCode;
        QMap<QString, QJsonObject> found;
        for (const auto& item : QJsonDocument::fromJson(run.out)["items"_L1].toArray())
            found.insert(item["source"_L1].toString().section(u'/', -1), item.toObject());
        return found;
    }
    TempDir m_out;
    int m_exitCode = -1;
};

TEST_F(Commands, ClearLeavesNothingBelowTheMirroredFolder) {
    const QString placed = m_out.path("placed");
    const auto saved =
        cli("--storage % save --set latitude=31.2 --set longitude=121.4 --artwork",
            {placed, sample("Photos/studio.tif"), sample("Iceland/waterfall-slowmo.m4v"),
             sample("Harbour/phone-clip.3gp")});
    ASSERT_EQ(saved.exitCode, 0) << saved.err;
    const auto before = listed({placed, sample("Iceland")});
    const auto done = outcomes("clear", {placed, sample("Iceland")});
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(done.size(), 4); // two of one name
    const QString mirrored = m_out.path("Iceland/reynisfjara-sunset.mov");
    EXPECT_EQ(done[u"reynisfjara-sunset.mov"_s]["outputs"_L1].toArray(), QJsonArray{mirrored});
    EXPECT_EQ(done[u"reynisfjara-sunset.mov"_s]["message"_L1].toString(), u"Location kept");
    EXPECT_FALSE(TempDir::read(mirrored).contains("Reynisfjara at last light"));
    EXPECT_EQ(TempDir::read(mirrored).mid(8, 4), "M4V ");
    for (const auto& outcome : done)
        for (const auto& output : outcome["outputs"_L1].toArray()) {
            const QJsonObject item = listedFile(output.toString());
            for (const char* key : {"title", "artist", "album", "copyright", "keywords",
                                    "description", "recorded", "director", "artwork"})
                EXPECT_FALSE(item.contains(QLatin1String(key))) << output.toString() << ' ' << key;
            const bool isPlaced = output.toString().contains(u"placed"_s);
            EXPECT_EQ(item.contains("latitude"_L1),
                      !isPlaced && item["name"_L1].toString() != u"waterfall-slowmo.m4v");
        }
    EXPECT_EQ(listed({placed, sample("Iceland")}), before);
}

TEST_F(Commands, NamesAndTitlesGoBothWays) {
    const auto titled =
        outcomes("name-to-title", {sample("Iceland"), sample("Harbour/VID_20250615_123045.mp4")});
    EXPECT_EQ(m_exitCode, 0);
    // The last path was a file: nothing is mirrored.
    const QString output = m_out.path("reynisfjara-sunset.mov");
    EXPECT_EQ(titled[u"reynisfjara-sunset.mov"_s]["outputs"_L1].toArray(), QJsonArray{output});
    const QJsonObject item = listedFile(output);
    EXPECT_EQ(item["title"_L1].toString(), u"reynisfjara-sunset");
    EXPECT_EQ(item["recorded"_L1].toString(), u"2025-06-14 21:41:07");
    EXPECT_EQ(TempDir::read(output).mid(8, 4), "qt  ");

    const auto named = outcomes("title-to-name", {sample("Iceland")});
    EXPECT_EQ(m_exitCode, 0);
    const QString copy = m_out.path("Iceland/Reynisfjara at last light.mov");
    EXPECT_EQ(TempDir::read(copy), TempDir::read(sample("Iceland/reynisfjara-sunset.mov")));
    outcomes("title-to-name", {sample("Iceland")}); // all are there already
    EXPECT_EQ(m_exitCode, 1);
    const auto audio = outcomes("name-to-title", {sample("Northbound")});
    EXPECT_EQ(audio[u"07 Salt & Cedar.mp3"_s]["status"_L1].toString(), u"completed");
    EXPECT_EQ(listedFile(m_out.path("Northbound/07 Salt & Cedar.mp3"))["title"_L1].toString(),
              u"07 Salt & Cedar");
    EXPECT_EQ(cli("clear", {sample("Photos")}).exitCode, 3);
    EXPECT_EQ(cli("clear").exitCode, 2);
}

TEST_F(Commands, TheLongestNamesAndFoldersThatCannotBeWritten) {
    const QString name = QString(83, QChar(0x7267)) + u"aa.mp4"_s;
    const QString source =
        m_out.write(name, TempDir::read(sample("Iceland/dyrholaey-timelapse.mp4")));
    ASSERT_EQ(name.toUtf8().size(), 255);
    auto done = outcomes("clear", {source});
    EXPECT_EQ(m_exitCode, 0) << done.first()["message"_L1].toString();
    EXPECT_TRUE(done.first()["outputs"_L1][0].toString().endsWith(u" 2.mp4"));

    // A file where the folder should be; it stands for one that must not be written, too.
    const QString file = m_out.write("file", "x");
    EXPECT_EQ(cli("--storage % clear", {file, source}).exitCode, 1);
    const QString folder = m_out.path("small");
    const testkit::TinyDisk disk(folder, "size=64k");
    SKIP_WITHOUT_DISK(disk);
    const auto full = cli("--storage % clear", {folder, source});
    EXPECT_TRUE(m_out.files("small").isEmpty());
    disk.makeReadOnly();
    const auto readOnly = cli("--storage % clear", {folder, source});
    EXPECT_EQ(full.exitCode, 1);
    EXPECT_EQ(full.err.count("No space left"), 1) << full.err;
    EXPECT_EQ(readOnly.exitCode, 1);
    EXPECT_TRUE(readOnly.err.contains("Read-only")) << readOnly.err;
}

TEST_F(Commands, AFileThatIsGivenTwiceStandsOnceInTheList) {
    const TempDir in;
    const QString file =
        in.write("in/a.mp4", TempDir::read(sample("Iceland/dyrholaey-timelapse.mp4")));
    const QString link = in.path("link.mp4"), hard = in.path("in/hard.mp4");
    ASSERT_TRUE(QFile::link(file, link));
    ASSERT_EQ(::link(file.toUtf8().constData(), hard.toUtf8().constData()), 0);
    const QStringList paths{file, file, in.path("in/../in/a.mp4"), link, in.path("in")};
    outcomes("save --set title=T", paths);
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(m_out.files(), QStringList({u"a.mp4"_s, u"hard.mp4"_s}));
    EXPECT_EQ(outcomes("video mute", {in.path("in"), link}).size(), 2);
    EXPECT_EQ(listed(paths).size(), 2);
    EXPECT_EQ(listed(paths, "--photos").size(), 2);
    const auto plan = cli("--json rename --dry-run --text N", paths).out;
    EXPECT_EQ(plan.count("a.mp4"), 1) << plan;
    const auto merged = outcomes("video merge", {file, file});
    EXPECT_EQ(merged.first()["status"_L1].toString(), u"completed");
}

TEST_F(Commands, OutputsHaveThePermissionsAndTheExactDatesOfTheirSources) {
    const TempDir in;
    QStringList sources;
    for (const char* name : {"Iceland/waterfall-slowmo.m4v", "Northbound/07 Salt & Cedar.mp3",
                             "Northbound/01 Northbound Tide.flac", "Harbour/interview-cam-b.mkv"}) {
        sources += in.write(QString::fromUtf8(name).section(u'/', -1), TempDir::read(sample(name)));
        const QByteArray path = sources.back().toUtf8();
        const timespec times[2] = {{1, 0}, {1'000'000'000, 123'456'789}};
        ASSERT_EQ(
            ::chmod(path.constData(), 0600) + ::utimensat(AT_FDCWD, path.constData(), times, 0), 0);
    }
    for (const char* command : {"save --set title=t", "clear"}) {
        const auto done = outcomes(command, sources);
        EXPECT_EQ(m_exitCode, 0);
        for (const auto& outcome : done) {
            const QByteArray output = outcome["outputs"_L1][0].toString().toUtf8();
            struct stat status {};
            ASSERT_EQ(::stat(output.constData(), &status), 0) << output;
            EXPECT_EQ(status.st_mode & 0777U, 0600U) << output;
            EXPECT_EQ(status.st_mtim.tv_nsec, 123'456'789) << output;
        }
    }
}

/// Returns whether the file has it, whatever it holds.
bool hasAttribute(const QString& path, const char* name) {
    return ::getxattr(path.toUtf8().constData(), name, nullptr, 0) >= 0;
}

TEST_F(Commands, WhatADownloadLeftBesideAFileGoesWithAClearAlone) {
    const TempDir in;
    QStringList sources;
    for (const char* name : {"Iceland/waterfall-slowmo.m4v", "Northbound/07 Salt & Cedar.mp3",
                             "Northbound/01 Northbound Tide.flac", "Harbour/interview-cam-b.mkv"}) {
        sources += in.write(QString::fromUtf8(name).section(u'/', -1), TempDir::read(sample(name)));
        if (::setxattr(sources.back().toUtf8().constData(), "user.xdg.origin.url", "u", 1, 0) != 0)
            GTEST_SKIP() << "no extended attributes here";
    }
    for (const char* command : {"save --set title=t", "clear"}) {
        const auto done = outcomes(command, sources);
        EXPECT_EQ(done.size(), sources.size());
        for (const auto& outcome : done) {
            const QString output = outcome["outputs"_L1][0].toString();
            EXPECT_EQ(hasAttribute(output, "user.xdg.origin.url"), command[0] == 's') << output;
            EXPECT_TRUE(hasAttribute(output, "user.clipheave.crtime")) << output;
        }
    }
}

TEST_F(Commands, ACreationDateThatCannotBeStoredIsNamedOnceARun) {
    const testkit::TinyDisk disk(m_out.path("disk"), nullptr, "ramfs");
    SKIP_WITHOUT_DISK(disk);
    const auto run = cli("--storage % save --set title=t %",
                         {m_out.path("disk"), sample("Iceland/waterfall-slowmo.m4v"),
                          sample("Northbound/01 Northbound Tide.flac")});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(testkit::namesIn(m_out.path("disk")).size(), 2);
    EXPECT_EQ(run.err.count("Creation date not stored here"), 1) << run.err;
}

TEST_F(Commands, WhatAKilledRunLeftBelowTheStorageFolderGoesAtTheNext) {
    const QString folder = m_out.path("mirrored");
    ASSERT_TRUE(QDir().mkpath(folder));
    const pid_t child = ::fork();
    if (child == 0) {
        auto file = AtomicFile::create(folder + u"/clip.m4v"_s);
        ::raise(file ? SIGKILL : SIGUSR1);
    }
    int ended = 0;
    ASSERT_EQ(::waitpid(child, &ended, 0), child);
    const QStringList left = testkit::namesIn(folder);
    ASSERT_EQ(left.size(), 1);
    const timespec old[2] = {{1'000, 0}, {1'000, 0}};
    const QByteArray path = (folder + u'/' + left.first()).toUtf8();
    ASSERT_EQ(::utimensat(AT_FDCWD, path.constData(), old, 0), 0);
    (void)outcomes("save --set title=t", {sample("Iceland/waterfall-slowmo.m4v")});
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_THAT(testkit::namesIn(folder), testing::IsEmpty());
}

// CLIPHEAVE_KILLS sets how often (40).
TEST_F(Commands, AKilledSaveLeavesTheOldFileOrTheNewOne) {
    const QByteArray movie = TempDir::read(sample("Iceland/waterfall-slowmo.m4v"));
    const QByteArray source = movie + testkit::box("free", QByteArray(24 << 20, 'x'));
    const QString path = m_out.write("in/clip.m4v", source);
    const QString storage = m_out.path("out");
    const QString output = storage + u"/clip.m4v"_s;
    const QStringList save = testkit::words("--storage % save --set title=new %", {storage, path});
    QElapsedTimer clock;
    clock.start();
    ASSERT_EQ(testkit::run(QStringLiteral(CLIPHEAVE_CLI), save).exitCode, 0);
    const auto whole = static_cast<quint32>(clock.elapsed());
    const QByteArray expected = TempDir::read(output);
    const int kills = std::max(40, qEnvironmentVariableIntValue("CLIPHEAVE_KILLS"));
    int killed = 0, kept = 0;
    for (int i = 0; i < kills; ++i) {
        QFile::remove(output);
        if (i % 2 == 1)
            m_out.write("out/clip.m4v", "old");
        QProcess process;
        process.start(QStringLiteral(CLIPHEAVE_CLI), save);
        ASSERT_TRUE(process.waitForStarted());
        QThread::usleep(QRandomGenerator::global()->bounded(1 + whole * 1500));
        process.kill();
        ASSERT_TRUE(process.waitForFinished());
        killed += process.exitStatus() == QProcess::CrashExit;
        const QByteArray found = TempDir::read(output);
        const bool isOld = i % 2 == 1 ? found == "old" : !QFile::exists(output);
        kept += isOld;
        ASSERT_TRUE(isOld || found == expected) << found.size() << " bytes";
        ASSERT_EQ(QFileInfo(path).size(), source.size());
    }
    EXPECT_TRUE(TempDir::read(path) == source);
    EXPECT_GT(killed, 0);
    EXPECT_GT(kept, 0);
    RecordProperty("killed", killed);
    RecordProperty("kept", kept);
}

} // namespace
