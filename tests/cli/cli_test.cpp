// SPDX-License-Identifier: GPL-3.0-or-later
// The whole program through its command line, on the library that it makes itself; what it wrote is
// read by programs that this project did not write.
#include "tests/cli/cli_kit.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSet>
#include <QThread>

#include <csignal>
#include <cstdio>

namespace {

using testkit::RunResult;
using testkit::streamHash;

using clitest::cli;
using clitest::listed;
using clitest::listedFile;
using clitest::sample;
using testkit::TempDir;

QJsonObject itemNamed(const QJsonArray& items, const QString& name) {
    for (const auto& item : items)
        if (item.toObject().value(u"name"_s) == name)
            return item.toObject();
    ADD_FAILURE() << "no item " << name;
    return {};
}

/// "identifier=value" of every metadata item.
QSet<QString> metadataOf(const QString& path) {
    QSet<QString> lines;
    for (const auto& entry : listedFile(path, "--metadata")["metadata"_L1].toArray()) {
        const QJsonValue value = entry["value"_L1];
        lines.insert(entry["identifier"_L1].toString() + u'=' +
                     (value.isString()
                          ? value.toString()
                          : QString::fromUtf8(QJsonDocument(value.toObject()).toJson())));
    }
    return lines;
}

class Cli : public testing::Test {
protected:
    RunResult save(const QByteArray& options, const QStringList& more) const {
        return cli("--storage % save " + options, QStringList{m_out.path()} + more);
    }
    /// The one path that a run has printed.
    static QString pathOf(const RunResult& run) {
        EXPECT_EQ(run.exitCode, 0) << run.err;
        return QString::fromUtf8(run.out.trimmed());
    }

    TempDir m_out;
};

TEST_F(Cli, DemoLibraryIsListedWithItsTags) {
    const QJsonArray items = listed({sample()});
    const QJsonArray photos = listed({sample("Photos")}, "--photos");
    EXPECT_EQ(items.size() + photos.size(), clitest::library().made.out.count('\n'));
    const QJsonObject movie = itemNamed(items, u"reynisfjara-sunset.mov"_s);
    EXPECT_EQ(movie["title"_L1].toString(), u"Reynisfjara at last light");
    EXPECT_EQ(movie["recorded"_L1].toString(), u"2025-06-14 21:41:07");
    EXPECT_NEAR(movie["longitude"_L1].toDouble(), -19.0571, 1e-4);
    EXPECT_EQ(movie["width"_L1].toInt(), 640);
    for (const char* name :
         {"07 Salt & Cedar.mp3", "voiceover-draft3.m4a", "interview-sigrun-lav.wav",
          "field-rec-surf.aiff", "Quiet Harbours ep15.opus", "archive-tape.wma", "beacon.au"}) {
        const QJsonObject audio = itemNamed(items, QString::fromUtf8(name));
        EXPECT_FALSE(audio["artist"_L1].toString().isEmpty()) << name;
        EXPECT_GT(audio["durationSeconds"_L1].toDouble(), 1) << name;
    }
    const QJsonObject photo = itemNamed(photos, u"IMG_0425.jpg"_s);
    EXPECT_EQ(photo["model"_L1].toString(), u"Phone 9");
    EXPECT_NEAR(photo["latitude"_L1].toDouble(), -33.8688, 1e-4);
    EXPECT_NEAR(photo["altitude"_L1].toDouble(), -1.5, 1e-9);
}

TEST_F(Cli, SavedTitleIsSeenByOthersAndNothingElseChanges) {
    const QString title = u"Nýr titill \"2\""_s;
    for (const char* name : {"Iceland/reynisfjara-sunset.mov", "Iceland/dyrholaey-timelapse.mp4",
                             "Iceland/waterfall-slowmo.m4v", "Harbour/phone-clip.3gp"}) {
        SCOPED_TRACE(name);
        const QString source = sample(name);
        const QByteArray before = TempDir::read(source);
        const QString output = pathOf(save("--set % %", {u"title="_s + title, source}));
        EXPECT_EQ(QFileInfo(output).fileName(), QFileInfo(source).fileName());
        EXPECT_EQ(TempDir::read(source), before);

        QSet<QString> expected = metadataOf(source);
        expected.removeIf([](const QString& line) {
            return line.startsWith(u"itsk/%A9nam=") || line.startsWith(u"uiso/titl=") ||
                   line.startsWith(u"mdta/com.apple.quicktime.title=");
        });
        expected.insert(u"itsk/%A9nam="_s + title);
        EXPECT_EQ(metadataOf(output), expected);
        EXPECT_EQ(QFileInfo(output).lastModified(), QFileInfo(source).lastModified());
        if (testkit::hasProgram(u"ffmpeg"_s)) {
            EXPECT_FALSE(streamHash(source).isEmpty());
            EXPECT_EQ(streamHash(output), streamHash(source));
        }
        if (testkit::hasProgram(u"exiftool"_s)) {
            EXPECT_EQ(QString::fromUtf8(testkit::exiftool("-s3 -ItemList:Title", {output})), title);
        }
    }
}

TEST_F(Cli, EveryFieldReadsBackAsTyped) {
    const QStringList fields =
        u"title=t|album=a|artist=b|director=c|actors=d|producer=e|publisher=f|copyright=© g|"
        u"keywords=h, i|description=j|recorded=2020:01:31 10:00:00|created=2019:02:03 04:05:06"_s
            .split(u'|');
    for (const char* name : {"Iceland/reynisfjara-sunset.mov", "Iceland/dyrholaey-timelapse.mp4"}) {
        SCOPED_TRACE(name);
        const QString output =
            pathOf(save("--set latitude=-33.5 --set longitude=151.25 --set altitude=-2 " +
                            QByteArray("--set % ").repeated(fields.size()) + "--artwork",
                        fields + QStringList{sample("Photos/studio.tif"), sample(name)}));
        const QJsonObject item = listedFile(output);
        for (const QString& field : fields)
            EXPECT_EQ(item[field.section(u'=', 0, 0)].toString(), field.section(u'=', 1)) << field;
        EXPECT_DOUBLE_EQ(item["latitude"_L1].toDouble(), -33.5);
        EXPECT_DOUBLE_EQ(item["longitude"_L1].toDouble(), 151.25);
        EXPECT_DOUBLE_EQ(item["altitude"_L1].toDouble(), -2);
        EXPECT_EQ(item["artwork"_L1]["width"_L1].toInt(), 640);
        // A blanked field is gone afterwards.
        const QJsonObject after = listedFile(
            pathOf(cli("--storage % save --set copyright= %", {m_out.path("2"), output})));
        EXPECT_FALSE(after.contains("copyright"_L1));
        EXPECT_EQ(after["keywords"_L1].toString(), u"h, i");
    }
}

TEST_F(Cli, SavingOverTheSourceTakesAnotherName) {
    const QString source = sample("Iceland/waterfall-slowmo.m4v");
    const QByteArray before = TempDir::read(source);
    const QString output =
        pathOf(cli("--storage % save --set title=x %", {sample("Iceland"), source}));
    EXPECT_EQ(QFileInfo(output).fileName(), u"waterfall-slowmo 2.m4v");
    EXPECT_EQ(TempDir::read(source), before);
    QFile::remove(output);
    // Two files of one name in one run: both are there afterwards.
    const TempDir other;
    const QString same = other.write("waterfall-slowmo.m4v", before);
    EXPECT_EQ(save("--set title=x", {source, same}).out.count('\n'), 2);
    EXPECT_EQ(m_out.files().size(), 2);
}

TEST_F(Cli, ExitStatusesSayWhatHappened) {
    const QString video = sample("Iceland/waterfall-slowmo.m4v");
    EXPECT_EQ(cli({}).exitCode, 2);
    EXPECT_EQ(cli("nothing").exitCode, 2);
    EXPECT_EQ(cli("--help").exitCode, 0);
    EXPECT_EQ(save("--set nofield=x", {video}).exitCode, 2);
    const RunResult badDate = save("--set created=yesterday", {video});
    EXPECT_EQ(badDate.exitCode, 2);
    EXPECT_TRUE(badDate.err.contains("Invalid date format"));
    EXPECT_EQ(save("--set latitude=+-3 --set longitude=1", {video}).exitCode, 2);
    EXPECT_EQ(cli("--storage % clear", {QString(), video}).exitCode, 2);
    const RunResult farAway = save("--set latitude=500 --set longitude=1", {video});
    EXPECT_EQ(farAway.exitCode, 2);
    EXPECT_TRUE(farAway.err.contains("from -90 to 90")) << farAway.err;
    const RunResult nothing = cli("list", {sample("Photos")});
    EXPECT_EQ(nothing.exitCode, 3);
    EXPECT_TRUE(nothing.err.contains("No Item has been selected"));
    const TempDir broken;
    const RunResult mixed =
        save("--set title=x", {video, broken.write("silent.wma", "no audio in here")});
    EXPECT_EQ(mixed.exitCode, 1);
    EXPECT_EQ(mixed.out.count('\n'), 1);
}

TEST_F(Cli, HostileNamesAndFilesAreListedOrNamed) {
    const TempDir dir;
    const QByteArray odd = dir.path().toUtf8() + "/caf\xE9.mov";
    const QByteArray bytes = TempDir::read(sample("Iceland/reynisfjara-sunset.mov"));
    std::FILE* file = std::fopen(odd.constData(), "wb");
    ASSERT_TRUE(file);
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), file);
    std::fclose(file);
    dir.write("cut.mp4", bytes.left(3000));
    dir.write("none.mkv", "nothing of the kind");
    const RunResult result = cli("--json list", {dir.path(), dir.path("gone.mp4")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.out.contains("caf\\udce9.mov"));
    const QJsonArray items = QJsonDocument::fromJson(result.out).array();
    ASSERT_EQ(items.size(), 4);
    int messages = 0;
    for (const auto& item : items)
        messages += item.toObject().contains("message"_L1);
    EXPECT_EQ(messages, 3);
    EXPECT_TRUE(save("--set title=x", {dir.path()}).out.contains("caf\xE9.mov"));
}

TEST_F(Cli, PreferencesArePrintedSetAndChecked) {
    const TempDir dir;
    const QString config = dir.path("prefs.conf"), folder = dir.path("a b/c");
    const auto prefs = [&](const QByteArray& options, const QStringList& more = {}) {
        return cli("--config % prefs " + options, QStringList{config} + more);
    };
    EXPECT_TRUE(prefs("").out.contains("Postion = Lower left corner\n"));
    EXPECT_FALSE(QFile::exists(config)); // reading writes nothing
    EXPECT_EQ(prefs("storagePath", {folder}).exitCode, 0);
    EXPECT_TRUE(QDir(folder).exists());
    EXPECT_EQ(prefs("storagePath").out, folder.toUtf8() + '\n');
    EXPECT_EQ(prefs("Postion", {u"lower left corner"_s}).exitCode, 0); // as the window stores it
    EXPECT_EQ(prefs("Postion").out, "lower left corner\n");
    EXPECT_EQ(prefs("Postion", {u"in the middle"_s}).exitCode, 2);
    EXPECT_EQ(prefs("fontsize 0").exitCode, 2);
    EXPECT_EQ(prefs("fontSize").exitCode, 2);
}

TEST_F(Cli, AnInterruptedSaveLeavesNothingBehind) {
    const TempDir dir;
    // Valid boxes around a payload that is long to copy; sparse, so the test needs no disk.
    const QString big = dir.write("big.mp4", TempDir::read(sample("Iceland/waterfall-slowmo.m4v")));
    QFile grown(big);
    ASSERT_TRUE(grown.open(QIODevice::Append));
    const qint64 payload = qint64{6} << 30;
    grown.write(testkit::be(1, 4) + "free" + testkit::be(static_cast<quint64>(payload) + 16, 8));
    ASSERT_TRUE(grown.resize(grown.size() + payload));
    grown.close();
    const QString save = u"exec %1 --storage %2 save --set title=x %3"_s.arg(
        QStringLiteral(CLIPHEAVE_CLI), dir.path("out"), big);
    const struct {
        QString shell;
        int first, second, status;
    } cases[] = {// Twice, as from a parent that sends it to the program and to its group.
                 {save, SIGINT, SIGINT, 130},
                 {save, SIGHUP, SIGHUP, 129},
                 {u"trap '' HUP; "_s + save, SIGHUP, SIGINT, 130}};
    for (const auto& [shell, first, second, status] : cases) {
        QProcess process;
        process.start(u"sh"_s, {u"-c"_s, shell});
        ASSERT_TRUE(process.waitForStarted());
        for (int i = 0; i < 5000 && dir.files("out").isEmpty(); ++i)
            QThread::msleep(2);
        for (const int signal : {first, second}) {
            ::kill(static_cast<pid_t>(process.processId()), signal);
            QThread::msleep(2);
        }
        ASSERT_TRUE(process.waitForFinished(60'000));
        if (process.exitCode() == 0)
            GTEST_SKIP() << "the copy was faster than the signal";
        EXPECT_EQ(process.exitCode(), status);
        EXPECT_TRUE(dir.files("out").isEmpty());
    }
}

TEST_F(Cli, NamesWhatItSkipsOnALineEach) {
    const TempDir dir;
    const QString odd = dir.write("a\nwarning: b\033[31m.mp4", "no video");
    const auto result = cli("list", {odd, dir.path("gone.mp4"), dir.write("c.xyz", "x")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.err.contains("gone.mp4: skipped: The file was not found"));
    EXPECT_TRUE(result.err.contains("c.xyz: skipped: "));
    EXPECT_EQ(result.err.count('\n'), 3) << result.err;
    EXPECT_FALSE(result.err.contains('\033'));
    const auto nothing = cli("list /no/dir");
    EXPECT_EQ(nothing.out, QByteArray()) << "a table without rows";
    EXPECT_EQ(nothing.exitCode, 1);
    EXPECT_EQ(nothing.err.count("/no/dir"), 1) << nothing.err;
}

TEST_F(Cli, FoldersWithDotsAreMirroredAsByTheirFullNames) {
    for (const char* folder : {"Iceland/.", "Harbour/../Iceland", "Iceland"}) {
        const TempDir out;
        EXPECT_EQ(cli("--quiet --storage % clear %", {out.path(), sample(folder)}).exitCode, 0);
        EXPECT_EQ(out.files("Iceland").size(), 3) << folder;
    }
}

} // namespace
