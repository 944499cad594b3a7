// SPDX-License-Identifier: GPL-3.0-or-later
// Saving and clearing audio files of every kind that the sample library has.
#include "tests/cli/cli_kit.h"

#include <QDir>
#include <QDirIterator>

namespace {

using clitest::cli;
using clitest::listed;
using testkit::TempDir;

/// The audio of a file, decoded.
QByteArray samplesOf(const QString& path) {
    return testkit::ffmpeg("-i % -map 0:a -f md5 -", {path});
}

class AudioCommands : public testing::Test {
protected:
    static void SetUpTestSuite() {
        s_dir = new TempDir;
        ASSERT_EQ(cli({QStringLiteral("--quiet"), QStringLiteral("demo"), s_dir->path()}).exitCode,
                  0);
        QDirIterator files(s_dir->path(),
                           {QStringLiteral("*.mp3"), QStringLiteral("*.flac"),
                            QStringLiteral("*.m4a"), QStringLiteral("*.wav")},
                           QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext())
            s_sources << files.next();
        ASSERT_GE(s_sources.size(), 3);
    }
    static void TearDownTestSuite() { delete s_dir; }
    QString output(const QString& source) const { return m_out.path(source.section(u'/', -1)); }
    static TempDir* s_dir;
    static QStringList s_sources;
    TempDir m_out;
};
TempDir* AudioCommands::s_dir = nullptr;
QStringList AudioCommands::s_sources;

TEST_F(AudioCommands, SaveThenClearKeepTheAudio) {
    const QStringList storage{QStringLiteral("--storage"), m_out.path()};
    ASSERT_EQ(cli(storage +
                  QStringList{QStringLiteral("save"), QStringLiteral("--set"),
                              QStringLiteral("title=N\u00E9u"), QStringLiteral("--set"),
                              QStringLiteral("lyricist=L"), QStringLiteral("--set"),
                              QStringLiteral("recorded=2001:02:03 04:05:06")} +
                  s_sources)
                  .exitCode,
              0);
    for (const QString& source : s_sources) {
        const QJsonObject item = listed({output(source)}).first().toObject();
        EXPECT_EQ(item[QLatin1String("title")], QStringLiteral("N\u00E9u")) << source.toStdString();
        EXPECT_EQ(item[QLatin1String("lyricist")], QStringLiteral("L")) << source.toStdString();
        EXPECT_EQ(item[QLatin1String("recorded")], QStringLiteral("2001:02:03 04:05:06"));
        EXPECT_EQ(samplesOf(output(source)), samplesOf(source)) << source.toStdString();
    }
    ASSERT_EQ(cli(storage + QStringList{QStringLiteral("clear")} + s_sources).exitCode, 0);
    for (const QString& source : s_sources) {
        const QJsonObject item = listed({output(source)}).first().toObject();
        for (const char* name : {"title", "artist", "album", "year", "recorded"})
            EXPECT_FALSE(item.contains(QLatin1String(name))) << source.toStdString() << name;
        EXPECT_EQ(samplesOf(output(source)), samplesOf(source)) << source.toStdString();
    }
}

TEST_F(AudioCommands, FieldsOfOtherKindsAndMissingPlacesAreTold) {
    const auto save = [&](const char* field, const QString& path) {
        return cli({QStringLiteral("--storage"), m_out.path(), QStringLiteral("save"),
                    QStringLiteral("--set"), QLatin1String(field), path});
    };
    const QString flac = s_sources.filter(QStringLiteral(".flac")).value(0);
    ASSERT_FALSE(flac.isEmpty());
    EXPECT_EQ(save("latitude=1", flac).exitCode, 1);
    EXPECT_FALSE(QFile::exists(output(flac)));
    const auto publisher = save("publisher=P", flac);
    EXPECT_EQ(publisher.exitCode, 0);
    EXPECT_TRUE(publisher.err.contains("Publisher not stored"));
    EXPECT_EQ(TempDir::read(output(flac)), TempDir::read(flac));
    EXPECT_EQ(save("created=yesterday", flac).exitCode, 2);
}

} // namespace
