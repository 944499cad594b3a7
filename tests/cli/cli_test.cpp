// SPDX-License-Identifier: GPL-3.0-or-later
// The whole program through its command line, on the library that it makes itself; what it wrote is
// read by programs that this project did not write.
#include "tests/cli/cli_kit.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSet>
#include <QThread>

#include <csignal>

namespace {

using testkit::RunResult;
using testkit::streamHash;

using clitest::cli;
using clitest::listed;

QJsonObject itemNamed(const QJsonArray& items, const QString& name) {
    for (const auto& item : items)
        if (item.toObject().value(QStringLiteral("name")) == name)
            return item.toObject();
    ADD_FAILURE() << "no item " << name.toStdString();
    return {};
}

/// "identifier=value" of every metadata item.
QSet<QString> metadataOf(const QString& path) {
    QSet<QString> lines;
    const QJsonObject item = listed({QStringLiteral("--metadata"), path}).first().toObject();
    for (const auto& entry : item.value(QStringLiteral("metadata")).toArray()) {
        const QJsonObject one = entry.toObject();
        const QJsonValue value = one.value(QStringLiteral("value"));
        lines.insert(one.value(QStringLiteral("identifier")).toString() + u'=' +
                     (value.isString()
                          ? value.toString()
                          : QString::fromUtf8(QJsonDocument(value.toObject()).toJson())));
    }
    return lines;
}

/// One library for all tests of this program.
class Cli : public testing::Test {
protected:
    static void SetUpTestSuite() {
        s_dir = new testkit::TempDir;
        const RunResult made = cli({QStringLiteral("--quiet"), QStringLiteral("demo"),
                                    s_dir->path(QStringLiteral("lib"))});
        ASSERT_EQ(made.exitCode, 0) << made.err.toStdString();
        s_written = made.out.split('\n').size() - 1;
    }
    static void TearDownTestSuite() { delete s_dir; }

    static QString library(const QString& name = {}) {
        return s_dir->path(name.isEmpty() ? QStringLiteral("lib") : QStringLiteral("lib/") + name);
    }
    static QString storage() { return s_dir->path(QStringLiteral("out")); }

    static testkit::TempDir* s_dir;
    static qsizetype s_written;
};
testkit::TempDir* Cli::s_dir = nullptr;
qsizetype Cli::s_written = 0;

TEST_F(Cli, DemoLibraryIsListedWithItsTags) {
    const QJsonArray items = listed({library()});
    const QJsonArray photos =
        listed({QStringLiteral("--photos"), library(QStringLiteral("Photos"))});
    EXPECT_EQ(items.size() + photos.size(), s_written);
    const QJsonObject movie = itemNamed(items, QStringLiteral("reynisfjara-sunset.mov"));
    EXPECT_EQ(movie.value(QStringLiteral("title")).toString(), u"Reynisfjara at last light");
    EXPECT_EQ(movie.value(QStringLiteral("recorded")).toString(), u"2025-06-14 21:41:07");
    EXPECT_NEAR(movie.value(QStringLiteral("longitude")).toDouble(), -19.0571, 1e-4);
    EXPECT_EQ(movie.value(QStringLiteral("width")).toInt(), 640);
    for (const char* name :
         {"07 Salt & Cedar.mp3", "voiceover-draft3.m4a", "interview-sigrun-lav.wav",
          "field-rec-surf.aiff", "Quiet Harbours ep15.opus", "archive-tape.wma", "beacon.au"}) {
        const QJsonObject audio = itemNamed(items, QString::fromUtf8(name));
        EXPECT_FALSE(audio.value(QStringLiteral("artist")).toString().isEmpty()) << name;
        EXPECT_GT(audio.value(QStringLiteral("durationSeconds")).toDouble(), 1) << name;
    }
    const QJsonObject photo = itemNamed(photos, QStringLiteral("IMG_0425.jpg"));
    EXPECT_EQ(photo.value(QStringLiteral("model")).toString(), u"Phone 9");
    EXPECT_NEAR(photo.value(QStringLiteral("latitude")).toDouble(), -33.8688, 1e-4);
    EXPECT_NEAR(photo.value(QStringLiteral("altitude")).toDouble(), -1.5, 1e-9);
}

TEST_F(Cli, SavedTitleIsSeenByOthersAndNothingElseChanges) {
    const QString title = QStringLiteral("Nýr titill \"2\"");
    for (const char* name : {"Iceland/reynisfjara-sunset.mov", "Iceland/dyrholaey-timelapse.mp4",
                             "Iceland/waterfall-slowmo.m4v", "Harbour/phone-clip.3gp"}) {
        const QString source = library(QString::fromLatin1(name));
        const QByteArray before = testkit::TempDir::read(source);
        const RunResult saved =
            cli({QStringLiteral("--storage"), storage(), QStringLiteral("save"),
                 QStringLiteral("--set"), QStringLiteral("title=") + title, source});
        ASSERT_EQ(saved.exitCode, 0) << saved.err.toStdString();
        const QString output = QString::fromUtf8(saved.out.trimmed());
        EXPECT_EQ(QFileInfo(output).fileName(), QFileInfo(source).fileName());
        EXPECT_EQ(testkit::TempDir::read(source), before) << name;

        QSet<QString> expected = metadataOf(source);
        expected.removeIf([](const QString& line) { return line.startsWith(u"itsk/%A9nam="); });
        expected.insert(QStringLiteral("itsk/%A9nam=") + title);
        EXPECT_EQ(metadataOf(output), expected) << name;
        EXPECT_EQ(QFileInfo(output).lastModified(), QFileInfo(source).lastModified());
        if (testkit::hasProgram(QStringLiteral("ffmpeg"))) {
            EXPECT_FALSE(streamHash(source).isEmpty());
            EXPECT_EQ(streamHash(output), streamHash(source)) << name;
        }
        if (testkit::hasProgram(QStringLiteral("exiftool"))) {
            EXPECT_EQ(QString::fromUtf8(testkit::exiftool("-s3 -ItemList:Title", {output})), title)
                << name;
        }
    }
}

TEST_F(Cli, EveryFieldReadsBackAsTyped) {
    const std::pair<const char*, const char*> fields[] = {{"title", "t"},
                                                          {"album", "a"},
                                                          {"artist", "b"},
                                                          {"director", "c"},
                                                          {"actors", "d"},
                                                          {"producer", "e"},
                                                          {"publisher", "f"},
                                                          {"copyright", "© g"},
                                                          {"keywords", "h, i"},
                                                          {"description", "j"},
                                                          {"recorded", "2020:01:31 10:00:00"},
                                                          {"created", "2019:02:03 04:05:06"}};
    for (const char* name : {"Iceland/reynisfjara-sunset.mov", "Iceland/dyrholaey-timelapse.mp4"}) {
        QStringList arguments{QStringLiteral("--storage"), storage(), QStringLiteral("save")};
        for (const auto& [field, text] : fields)
            arguments << QStringLiteral("--set")
                      << QString::fromUtf8(field) + u'=' + QString::fromUtf8(text);
        arguments << QStringLiteral("--set") << QStringLiteral("latitude=-33.5")
                  << QStringLiteral("--set") << QStringLiteral("longitude=151.25")
                  << QStringLiteral("--set") << QStringLiteral("altitude=-2")
                  << QStringLiteral("--artwork") << library(QStringLiteral("Photos/studio.tif"))
                  << library(QString::fromLatin1(name));
        const RunResult saved = cli(arguments);
        ASSERT_EQ(saved.exitCode, 0) << saved.err.toStdString();
        const QJsonObject item =
            listed({QString::fromUtf8(saved.out.trimmed())}).first().toObject();
        for (const auto& [field, text] : fields)
            EXPECT_EQ(item.value(QLatin1String(field)).toString(), QString::fromUtf8(text))
                << name << ' ' << field;
        EXPECT_DOUBLE_EQ(item.value(QStringLiteral("latitude")).toDouble(), -33.5);
        EXPECT_DOUBLE_EQ(item.value(QStringLiteral("longitude")).toDouble(), 151.25);
        EXPECT_DOUBLE_EQ(item.value(QStringLiteral("altitude")).toDouble(), -2);
        EXPECT_EQ(
            item.value(QStringLiteral("artwork")).toObject().value(QStringLiteral("width")).toInt(),
            640);
        // A blanked field is gone afterwards.
        const QString output = QString::fromUtf8(saved.out.trimmed());
        const RunResult blanked = cli(
            {QStringLiteral("--storage"), storage() + QStringLiteral("/2"), QStringLiteral("save"),
             QStringLiteral("--set"), QStringLiteral("copyright="), output});
        const QJsonObject after =
            listed({QString::fromUtf8(blanked.out.trimmed())}).first().toObject();
        EXPECT_FALSE(after.contains(QStringLiteral("copyright"))) << name;
        EXPECT_EQ(after.value(QStringLiteral("keywords")).toString(), u"h, i");
    }
}

TEST_F(Cli, SavingOverTheSourceTakesAnotherName) {
    const QString source = library(QStringLiteral("Iceland/waterfall-slowmo.m4v"));
    const QByteArray before = testkit::TempDir::read(source);
    const QStringList arguments{QStringLiteral("--storage"), library(QStringLiteral("Iceland")),
                                QStringLiteral("save"),      QStringLiteral("--set"),
                                QStringLiteral("title=x"),   source};
    const RunResult saved = cli(arguments);
    EXPECT_EQ(QFileInfo(QString::fromUtf8(saved.out.trimmed())).fileName(),
              u"waterfall-slowmo 2.m4v");
    EXPECT_EQ(testkit::TempDir::read(source), before);
    QFile::remove(QString::fromUtf8(saved.out.trimmed()));
    // Two files of one name in one run: both are there afterwards.
    const RunResult twice = cli({QStringLiteral("--storage"), storage() + QStringLiteral("/twice"),
                                 QStringLiteral("save"), QStringLiteral("--set"),
                                 QStringLiteral("title=x"), source, source});
    EXPECT_EQ(twice.out.count('\n'), 2);
    EXPECT_EQ(QDir(storage() + QStringLiteral("/twice")).entryList(QDir::Files).size(), 2);
}

TEST_F(Cli, ExitStatusesSayWhatHappened) {
    const QString video = library(QStringLiteral("Iceland/waterfall-slowmo.m4v"));
    const auto save = [&](const QStringList& more) {
        return cli(QStringList{QStringLiteral("--storage"), storage(), QStringLiteral("save")} +
                   more);
    };
    EXPECT_EQ(cli({}).exitCode, 2);
    EXPECT_EQ(cli({QStringLiteral("nothing")}).exitCode, 2);
    EXPECT_EQ(cli({QStringLiteral("--help")}).exitCode, 0);
    EXPECT_EQ(save({QStringLiteral("--set"), QStringLiteral("nofield=x"), video}).exitCode, 2);
    const RunResult badDate =
        save({QStringLiteral("--set"), QStringLiteral("created=yesterday"), video});
    EXPECT_EQ(badDate.exitCode, 2);
    EXPECT_TRUE(badDate.err.contains("Invalid date format"));
    const RunResult nothing = cli({QStringLiteral("list"), library(QStringLiteral("Photos"))});
    EXPECT_EQ(nothing.exitCode, 3);
    EXPECT_TRUE(nothing.err.contains("No Item has been selected"));
    const testkit::TempDir broken;
    const RunResult mixed = save({QStringLiteral("--set"), QStringLiteral("title=x"), video,
                                  broken.write(QStringLiteral("silent.wma"), "no sound in here")});
    EXPECT_EQ(mixed.exitCode, 1);
    EXPECT_EQ(mixed.out.count('\n'), 1);
}

TEST_F(Cli, HostileNamesAndFilesAreListedOrNamed) {
    const testkit::TempDir dir;
    const QByteArray odd = dir.path().toUtf8() + "/caf\xE9.mov";
    QFile source(library(QStringLiteral("Iceland/reynisfjara-sunset.mov")));
    ASSERT_TRUE(source.open(QIODevice::ReadOnly));
    const QByteArray bytes = source.readAll();
    std::FILE* file = std::fopen(odd.constData(), "wb");
    ASSERT_TRUE(file);
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), file);
    std::fclose(file);
    dir.write(QStringLiteral("cut.mp4"), bytes.left(3000));
    dir.write(QStringLiteral("none.mkv"), "nothing of the kind");
    const RunResult result = cli({QStringLiteral("--json"), QStringLiteral("list"), dir.path(),
                                  dir.path(QStringLiteral("gone.mp4"))});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.out.contains("caf\\udce9.mov"));
    const QJsonArray items = QJsonDocument::fromJson(result.out).array();
    ASSERT_EQ(items.size(), 4);
    int told = 0;
    for (const auto& item : items)
        told += item.toObject().contains(QStringLiteral("message"));
    EXPECT_EQ(told, 3);
    const RunResult saved = cli({QStringLiteral("--storage"), storage(), QStringLiteral("save"),
                                 QStringLiteral("--set"), QStringLiteral("title=x"), dir.path()});
    EXPECT_TRUE(saved.out.contains("caf\xE9.mov"));
}

TEST_F(Cli, PreferencesArePrintedSetAndChecked) {
    const testkit::TempDir dir;
    const QStringList config{QStringLiteral("--config"), dir.path(QStringLiteral("prefs.conf")),
                             QStringLiteral("prefs")};
    EXPECT_TRUE(cli(config).out.contains("Postion = Lower left corner\n"));
    EXPECT_FALSE(QFile::exists(dir.path(QStringLiteral("prefs.conf")))); // reading writes nothing
    EXPECT_EQ(
        cli(config + QStringList{QStringLiteral("storagePath"), dir.path(QStringLiteral("a b/c"))})
            .exitCode,
        0);
    EXPECT_TRUE(QDir(dir.path(QStringLiteral("a b/c"))).exists());
    EXPECT_EQ(cli(config + QStringList{QStringLiteral("storagePath")}).out,
              dir.path(QStringLiteral("a b/c")).toUtf8() + '\n');
    EXPECT_EQ(cli(config + QStringList{QStringLiteral("fontsize"), QStringLiteral("0")}).exitCode,
              2);
    EXPECT_EQ(cli(config + QStringList{QStringLiteral("fontSize")}).exitCode, 2);
}

TEST_F(Cli, AnInterruptedSaveLeavesNothingBehind) {
    const testkit::TempDir dir;
    // Valid boxes around a payload that is long to copy; sparse, so the test needs no disk.
    QFile source(library(QStringLiteral("Iceland/waterfall-slowmo.m4v")));
    ASSERT_TRUE(source.open(QIODevice::ReadOnly));
    const QString big = dir.write(QStringLiteral("big.mp4"), source.readAll());
    QFile grown(big);
    ASSERT_TRUE(grown.open(QIODevice::Append));
    const qint64 payload = qint64{6} << 30;
    grown.write(testkit::be(1, 4) + "free" + testkit::be(static_cast<quint64>(payload) + 16, 8));
    ASSERT_TRUE(grown.resize(grown.size() + payload));
    grown.close();
    QDir out(dir.path(QStringLiteral("out")));
    const QString save = QStringLiteral("exec %1 --storage %2 save --set title=x %3")
                             .arg(QStringLiteral(CLIPHEAVE_CLI), out.path(), big);
    const struct {
        QString shell;
        int first, second, status;
    } cases[] = {// Twice, as a program gets it whose parent passes it on to it and to its group.
                 {save, SIGINT, SIGINT, 130},
                 {save, SIGHUP, SIGHUP, 129},
                 {QStringLiteral("trap '' HUP; ") + save, SIGHUP, SIGINT, 130}};
    for (const auto& [shell, first, second, status] : cases) {
        QProcess process;
        process.start(QStringLiteral("sh"), {QStringLiteral("-c"), shell});
        ASSERT_TRUE(process.waitForStarted());
        for (int i = 0; i < 5000 && out.entryList(QDir::Files | QDir::Hidden).isEmpty(); ++i)
            QThread::msleep(2);
        for (const int signal : {first, second}) {
            ::kill(static_cast<pid_t>(process.processId()), signal);
            QThread::msleep(2);
        }
        ASSERT_TRUE(process.waitForFinished(60'000));
        if (process.exitCode() == 0)
            GTEST_SKIP() << "the copy was faster than the signal";
        EXPECT_EQ(process.exitCode(), status);
        EXPECT_TRUE(out.entryList(QDir::Files | QDir::Hidden).isEmpty());
    }
}

TEST_F(Cli, NamesWhatItSkipsOnALineEach) {
    const testkit::TempDir dir;
    const QString odd = dir.write(QStringLiteral("a\nwarning: b\033[31m.mp4"), "no video");
    const auto result = cli({QStringLiteral("list"), odd, dir.path(QStringLiteral("gone.mp4")),
                             dir.write(u"c.xyz"_qs, "x")});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.err.contains("gone.mp4: skipped: The file was not found"));
    EXPECT_TRUE(result.err.contains("c.xyz: skipped: "));
    EXPECT_EQ(result.err.count('\n'), 3) << result.err.toStdString();
    EXPECT_FALSE(result.err.contains('\033'));
}

} // namespace
