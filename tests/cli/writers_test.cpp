// SPDX-License-Identifier: GPL-3.0-or-later
// The commands that write a whole selection, and what is left of a save that is killed.
#include "tests/cli/cli_kit.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QRandomGenerator>
#include <QThread>

#include <sys/mount.h>
#include <unistd.h>

namespace {

using clitest::cli;
using clitest::listed;
using testkit::TempDir;

class Commands : public testing::Test {
protected:
    static void SetUpTestSuite() {
        s_dir = new TempDir;
        ASSERT_EQ(cli({QStringLiteral("--quiet"), QStringLiteral("demo"),
                       s_dir->path(QStringLiteral("lib"))})
                      .exitCode,
                  0);
    }
    static void TearDownTestSuite() { delete s_dir; }

    static QString library(const char* name) {
        return s_dir->path(QStringLiteral("lib/") + QLatin1String(name));
    }
    /// {source name: outcome} of a command with an output folder of this test's own.
    QMap<QString, QJsonObject> outcomes(const QStringList& command) {
        const auto run = cli(QStringList{QStringLiteral("--json"), QStringLiteral("--quiet"),
                                         QStringLiteral("--storage"), m_out.path()} +
                             command);
        m_exitCode = run.exitCode;
        QMap<QString, QJsonObject> found;
        for (const auto& item : QJsonDocument::fromJson(run.out)[QLatin1String("items")].toArray())
            found.insert(item[QLatin1String("source")].toString().section(u'/', -1),
                         item.toObject());
        return found;
    }
    static TempDir* s_dir;
    TempDir m_out;
    int m_exitCode = -1;
};
TempDir* Commands::s_dir = nullptr;

TEST_F(Commands, ClearLeavesNothingBelowTheMirroredFolder) {
    const QString placed = m_out.path(QStringLiteral("placed"));
    ASSERT_EQ(cli({QStringLiteral("--storage"), placed, QStringLiteral("save"),
                   QStringLiteral("--set"), QStringLiteral("latitude=31.2"),
                   QStringLiteral("--set"), QStringLiteral("longitude=121.4"),
                   QStringLiteral("--artwork"), library("Photos/studio.tif"),
                   library("Iceland/waterfall-slowmo.m4v"), library("Harbour/phone-clip.3gp")})
                  .exitCode,
              0);
    const auto before = listed({placed, library("Iceland")});
    const auto done = outcomes({QStringLiteral("clear"), placed, library("Iceland")});
    EXPECT_EQ(m_exitCode, 0);
    EXPECT_EQ(done.size(), 4); // two of one name
    const QString mirrored = m_out.path(QStringLiteral("Iceland/reynisfjara-sunset.mov"));
    EXPECT_EQ(done[QStringLiteral("reynisfjara-sunset.mov")][QLatin1String("outputs")].toArray(),
              QJsonArray{mirrored});
    EXPECT_EQ(done[QStringLiteral("reynisfjara-sunset.mov")][QLatin1String("message")].toString(),
              u"Location kept");
    EXPECT_FALSE(TempDir::read(mirrored).contains("Reynisfjara at last light"));
    EXPECT_EQ(TempDir::read(mirrored).mid(8, 4), "M4V ");
    for (const auto& outcome : done)
        for (const auto& output : outcome[QLatin1String("outputs")].toArray()) {
            const QJsonObject item = listed({output.toString()}).first().toObject();
            for (const char* key : {"title", "artist", "album", "copyright", "keywords",
                                    "description", "recorded", "director", "artwork"})
                EXPECT_FALSE(item.contains(QLatin1String(key)))
                    << output.toString().toStdString() << ' ' << key;
            const bool isPlaced = output.toString().contains(QStringLiteral("placed"));
            EXPECT_EQ(item.contains(QLatin1String("latitude")),
                      !isPlaced &&
                          item[QLatin1String("name")].toString() != u"waterfall-slowmo.m4v");
        }
    EXPECT_EQ(listed({placed, library("Iceland")}), before);
}

TEST_F(Commands, NamesAndTitlesGoBothWays) {
    const auto titled = outcomes({QStringLiteral("name-to-title"), library("Iceland"),
                                  library("Harbour/VID_20250615_123045.mp4")});
    EXPECT_EQ(m_exitCode, 0);
    // The last path was a file: nothing is mirrored.
    const QString output = m_out.path(QStringLiteral("reynisfjara-sunset.mov"));
    EXPECT_EQ(titled[QStringLiteral("reynisfjara-sunset.mov")][QLatin1String("outputs")].toArray(),
              QJsonArray{output});
    const QJsonObject item = listed({output}).first().toObject();
    EXPECT_EQ(item[QLatin1String("title")].toString(), u"reynisfjara-sunset");
    EXPECT_EQ(item[QLatin1String("recorded")].toString(), u"2025-06-14 21:41:07");
    EXPECT_EQ(TempDir::read(output).mid(8, 4), "qt  ");

    const auto named = outcomes({QStringLiteral("title-to-name"), library("Iceland")});
    EXPECT_EQ(m_exitCode, 0);
    const QString copy = m_out.path(QStringLiteral("Iceland/Reynisfjara at last light.mov"));
    EXPECT_EQ(TempDir::read(copy), TempDir::read(library("Iceland/reynisfjara-sunset.mov")));
    outcomes({QStringLiteral("title-to-name"), library("Iceland")}); // all are there already
    EXPECT_EQ(m_exitCode, 1);
    const auto audio = outcomes({QStringLiteral("name-to-title"), library("Northbound")});
    EXPECT_EQ(audio[QStringLiteral("07 Salt & Cedar.mp3")][QLatin1String("status")].toString(),
              u"skipped");
    EXPECT_EQ(cli({QStringLiteral("clear"), library("Photos")}).exitCode, 3);
    EXPECT_EQ(cli({QStringLiteral("clear")}).exitCode, 2);
}

TEST_F(Commands, TheLongestNamesAndFoldersThatCannotBeWritten) {
    const QString name = QString(83, QChar(0x7267)) + QStringLiteral("aa.mp4");
    const QString source =
        m_out.write(name, TempDir::read(library("Iceland/dyrholaey-timelapse.mp4")));
    ASSERT_EQ(name.toUtf8().size(), 255);
    auto done = outcomes({QStringLiteral("clear"), source});
    EXPECT_EQ(m_exitCode, 0) << done.first()[QLatin1String("message")].toString().toStdString();
    EXPECT_TRUE(done.first()[QLatin1String("outputs")][0].toString().endsWith(u" 2.mp4"));

    // A file where the folder should be; it stands for one that must not be written, too.
    const QString file = m_out.write(QStringLiteral("file"), "x");
    EXPECT_EQ(cli({QStringLiteral("--storage"), file, QStringLiteral("clear"), source}).exitCode,
              1);
    const QByteArray target = m_out.path(QStringLiteral("small")).toUtf8();
    QDir().mkpath(QString::fromUtf8(target));
    if (::mount("tmpfs", target.constData(), "tmpfs", 0, "size=64k") != 0)
        GTEST_SKIP() << "no rights to make a full disk";
    const auto full = cli(
        {QStringLiteral("--storage"), QString::fromUtf8(target), QStringLiteral("clear"), source});
    const bool isEmpty =
        QDir(QString::fromUtf8(target)).isEmpty(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot);
    ::mount(nullptr, target.constData(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr);
    const auto readOnly = cli(
        {QStringLiteral("--storage"), QString::fromUtf8(target), QStringLiteral("clear"), source});
    ::umount(target.constData());
    EXPECT_EQ(full.exitCode, 1);
    EXPECT_TRUE(full.err.contains("No space left")) << full.err.toStdString();
    EXPECT_TRUE(isEmpty);
    EXPECT_EQ(readOnly.exitCode, 1);
    EXPECT_TRUE(readOnly.err.contains("Read-only")) << readOnly.err.toStdString();
}

// CLIPHEAVE_KILLS sets how often (40).
TEST_F(Commands, AKilledSaveLeavesTheOldFileOrTheNewOne) {
    const QByteArray movie = TempDir::read(library("Iceland/waterfall-slowmo.m4v"));
    const QByteArray source = movie + testkit::box("free", QByteArray(24 << 20, 'x'));
    const QString path = m_out.write(QStringLiteral("in/clip.m4v"), source);
    const QString storage = m_out.path(QStringLiteral("out"));
    const QString output = storage + QStringLiteral("/clip.m4v");
    const QStringList save{QStringLiteral("--storage"), storage,
                           QStringLiteral("save"),      QStringLiteral("--set"),
                           QStringLiteral("title=new"), path};
    QElapsedTimer clock;
    clock.start();
    ASSERT_EQ(cli(save).exitCode, 0);
    const auto whole = static_cast<quint32>(clock.elapsed());
    const QByteArray expected = TempDir::read(output);
    const int kills = std::max(40, qEnvironmentVariableIntValue("CLIPHEAVE_KILLS"));
    int killed = 0, kept = 0;
    for (int i = 0; i < kills; ++i) {
        QFile::remove(output);
        if (i % 2 == 1)
            m_out.write(QStringLiteral("out/clip.m4v"), "old");
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
