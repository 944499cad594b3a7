// SPDX-License-Identifier: GPL-3.0-or-later
// Saving and clearing audio files of every kind that the sample library has.
#include "tests/cli/cli_kit.h"

#include <QDirIterator>
#include <QFile>

namespace {

using clitest::cli;
using clitest::listedFile;
using clitest::sample;
using testkit::TempDir;

/// The audio of a file, decoded.
QByteArray samplesOf(const QString& path) {
    return testkit::ffmpeg("-i % -map 0:a -f md5 -", {path});
}

class AudioCommands : public testing::Test {
protected:
    void SetUp() override {
        QDirIterator files(sample(), {u"*.mp3"_s, u"*.flac"_s, u"*.m4a"_s, u"*.wav"_s}, QDir::Files,
                           QDirIterator::Subdirectories);
        while (files.hasNext())
            m_sources << files.next();
        ASSERT_GE(m_sources.size(), 3);
    }
    testkit::RunResult run(const QByteArray& command, const QStringList& more) const {
        return cli("--storage % " + command, QStringList{m_out.path()} + more);
    }
    QString output(const QString& source) const { return m_out.path(source.section(u'/', -1)); }

    QStringList m_sources;
    TempDir m_out;
};

TEST_F(AudioCommands, SaveThenClearKeepTheAudio) {
    const QStringList recorded{u"recorded=2001:02:03 04:05:06"_s};
    ASSERT_EQ(
        run("save --set title=N\u00E9u --set lyricist=L --set", recorded + m_sources).exitCode, 0);
    for (const QString& source : m_sources) {
        const QJsonObject item = listedFile(output(source));
        EXPECT_EQ(item["title"_L1].toString(), u"N\u00E9u") << source;
        EXPECT_EQ(item["lyricist"_L1].toString(), u"L") << source;
        EXPECT_EQ(item["recorded"_L1].toString(), u"2001:02:03 04:05:06");
        EXPECT_EQ(samplesOf(output(source)), samplesOf(source)) << source;
    }
    ASSERT_EQ(run("clear", m_sources).exitCode, 0);
    for (const QString& source : m_sources) {
        const QJsonObject item = listedFile(output(source));
        for (const char* name : {"title", "artist", "album", "year", "recorded"})
            EXPECT_FALSE(item.contains(QLatin1String(name))) << source << name;
        EXPECT_EQ(samplesOf(output(source)), samplesOf(source)) << source;
    }
}

TEST_F(AudioCommands, FieldsOfOtherKindsAndMissingPlacesAreNoted) {
    const QString flac = m_sources.filter(u".flac"_s).value(0);
    ASSERT_FALSE(flac.isEmpty());
    EXPECT_EQ(run("save --set latitude=1", {flac}).exitCode, 1);
    EXPECT_FALSE(QFile::exists(output(flac)));
    const auto publisher = run("save --set publisher=P", {flac});
    EXPECT_EQ(publisher.exitCode, 0);
    EXPECT_TRUE(publisher.err.contains("Publisher not stored"));
    EXPECT_EQ(TempDir::read(output(flac)), TempDir::read(flac));
    EXPECT_EQ(run("save --set created=yesterday", {flac}).exitCode, 2);
}

} // namespace
