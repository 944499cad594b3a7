// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/cli/cli_kit.h"

#include <QFile>

namespace {

using testkit::TempDir;

class VideoCommand : public testing::Test {
protected:
    void SetUp() override {
        SKIP_WITHOUT("ffmpeg");
        testkit::ffmpeg(
            "-f lavfi -i testsrc2=s=64x48:r=10:d=1.5 -f lavfi -i sine=d=1.5 -c:v libx264 -c:a aac",
            {m_video});
        m_dir.write("text.mp4", "This is no video.");
    }
    testkit::RunResult video(const QByteArray& job, const QStringList& more) {
        return clitest::cli("--quiet --storage % video " + job,
                            QStringList{m_dir.path("store")} + more);
    }
    [[nodiscard]] QString stored() const { return m_dir.files("store").join(u' '); }

    TempDir m_dir;
    QString m_video = m_dir.path("a.mp4");
    QString m_text = m_dir.path("text.mp4");
};

TEST_F(VideoCommand, NamesOutputsAfterTheirJobs) {
    const struct {
        const char *job, *names;
    } cases[] = {
        {"rotate --by 90", "a.mp4"},
        {"convert --to mov", "a.mov a.mp4"},
        {"gif", "a.gif a.mov a.mp4"},
        {"audio", "a.gif a.mov a.mp4.m4a"}, // an older video of the name goes
        {"merge", "MergeVideo.mp4 a.gif a.mov a.mp4.m4a"},
        {"merge", "MergeVideo.mp4 a.gif a.mov a.mp4.m4a a_MergeVideo.mp4"},
    };
    for (const auto& [job, names] : cases) {
        const auto result = video(job, {m_video});
        EXPECT_EQ(result.exitCode, 0) << job << result.err;
        EXPECT_EQ(stored(), QString::fromLatin1(names)) << job;
    }
}

TEST_F(VideoCommand, ReplacesItsOutputOfBeforeBesideTheSource) {
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(clitest::cli("--quiet --storage % video rotate --by 90", {m_dir.path(), m_video})
                      .exitCode,
                  0);
    EXPECT_EQ(m_dir.files(), (QStringList{u"a 2.mp4"_s, u"a.mp4"_s, u"text.mp4"_s}));
}

TEST_F(VideoCommand, TakesTitlesOfTheMenus) {
    const auto result = video("frames --every", {u"5 pics per second"_s, m_video});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(stored(), u"a_0.jpg a_1.jpg");
    const QString rotation = u"right (clockwise) by 180 degrees"_s;
    EXPECT_EQ(video("rotate --by", {rotation, m_video}).exitCode, 0);
    EXPECT_EQ(video("rotate --by 45", {m_video}).exitCode, 2);
    EXPECT_EQ(video("speed --factor 3X", {m_video}).exitCode, 2);
}

TEST_F(VideoCommand, GoesOnAfterAFailure) {
    const auto result = video("mute", {m_text, m_video});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.err.contains("text.mp4: failed: ")) << result.err;
    EXPECT_EQ(result.err.count("text.mp4"), 1) << result.err;
    EXPECT_FALSE(result.err.toLower().contains("export:")) << result.err;
    EXPECT_EQ(stored(), u"a.mp4");
    EXPECT_EQ(TempDir::read(m_text), "This is no video.");
}

TEST_F(VideoCommand, NamesWhatIsNoVideo) {
    const QString web = m_dir.path("web.webm");
    const QString audio = m_dir.path("audio.m4a");
    ASSERT_TRUE(QFile::copy(m_video, web));
    const auto made = video("audio", {m_video});
    ASSERT_TRUE(QFile::rename(m_dir.path("store/a.mp4.m4a"), audio)) << made.err;
    const QString typo = m_dir.path("typo");
    for (const char* job : {"compress --quality low", "convert --to mp4", "rotate --by 90"}) {
        const auto beside = video(job, {web, m_video});
        EXPECT_EQ(beside.exitCode, 0) << beside.err;
        const auto result = video(job, {web, m_video, typo});
        EXPECT_EQ(result.exitCode, 1) << job;
        EXPECT_TRUE(result.err.contains("web.webm: skipped: \".webm\" is none of the known kinds"))
            << result.err;
        EXPECT_TRUE(result.err.contains("typo: skipped: ")) << result.err;
        EXPECT_EQ(stored(), u"a.mp4") << job;
    }
    EXPECT_EQ(video("convert --to mp4", {audio, m_video}).exitCode, 0);
    const auto skipped = video("convert --to mov", {audio});
    EXPECT_EQ(skipped.exitCode, 1) << "nothing was done";
    EXPECT_TRUE(skipped.err.contains("audio.m4a: skipped: This is not a video")) << skipped.err;
    const auto tried = video("gif", {audio});
    EXPECT_TRUE(tried.err.contains("audio.m4a: failed: ")) << tried.err;
    const auto nothing = video("compress --quality low", {web});
    EXPECT_EQ(nothing.exitCode, 3);
    EXPECT_TRUE(nothing.err.contains("web.webm: skipped: ")) << nothing.err;
    EXPECT_EQ(stored(), u"a.mp4");
}

} // namespace
