// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/cli/cli_kit.h"

#include <QDir>

namespace {

using testkit::TempDir;

class VideoCommand : public testing::Test {
protected:
    void SetUp() override {
        SKIP_WITHOUT("ffmpeg");
        testkit::ffmpeg(
            "-f lavfi -i testsrc2=s=64x48:r=10:d=1.5 -f lavfi -i sine=d=1.5 -c:v libx264 -c:a aac",
            {m_video});
        m_dir.write(QStringLiteral("text.mp4"), "This is no film.");
    }
    testkit::RunResult video(const QString& job, const QStringList& more) {
        return clitest::cli(QStringList{QStringLiteral("--quiet"), QStringLiteral("--storage"),
                                        m_dir.path(QStringLiteral("store")),
                                        QStringLiteral("video")} +
                            job.split(u' ') + more);
    }
    [[nodiscard]] QString stored() const {
        return QDir(m_dir.path(QStringLiteral("store")))
            .entryList(QDir::Files | QDir::Hidden)
            .join(u' ');
    }

    TempDir m_dir;
    QString m_video = m_dir.path(QStringLiteral("a.mp4"));
    QString m_text = m_dir.path(QStringLiteral("text.mp4"));
};

TEST_F(VideoCommand, NamesOutputsAfterTheirJobs) {
    const struct {
        const char *job, *names;
    } cases[] = {
        {"rotate --by 90", "a.mp4"},
        {"convert --to mov", "a.mov a.mp4"},
        {"gif", "a.gif a.mov a.mp4"},
        {"audio", "a.gif a.mov a.mp4.m4a"}, // an older video of the name goes
        {"merge", "a.gif a.mov a.mp4.m4a MergeVideo.mp4"},
        {"merge", "a.gif a.mov a.mp4.m4a a_MergeVideo.mp4 MergeVideo.mp4"},
    };
    for (const auto& [job, names] : cases) {
        const auto result = video(QLatin1String(job), {m_video});
        EXPECT_EQ(result.exitCode, 0) << job << result.err.toStdString();
        EXPECT_EQ(stored(), QString::fromLatin1(names)) << job;
    }
}

TEST_F(VideoCommand, TakesTitlesOfTheMenus) {
    const auto result =
        video(QStringLiteral("frames"),
              {QStringLiteral("--every"), QStringLiteral("5 pics per second"), m_video});
    EXPECT_EQ(result.exitCode, 0) << result.err.toStdString();
    EXPECT_EQ(stored(), QLatin1String("a_0.jpg a_1.jpg"));
    EXPECT_EQ(
        video(QStringLiteral("rotate"),
              {QStringLiteral("--by"), QStringLiteral("right (clockwise) by 180 degrees"), m_video})
            .exitCode,
        0);
    EXPECT_EQ(video(QStringLiteral("rotate --by 45"), {m_video}).exitCode, 2);
    EXPECT_EQ(video(QStringLiteral("speed --factor 3X"), {m_video}).exitCode, 2);
}

TEST_F(VideoCommand, GoesOnAfterAFailure) {
    const auto result = video(QStringLiteral("mute"), {m_text, m_video});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.err.contains("text.mp4: failed: ")) << result.err.toStdString();
    EXPECT_EQ(stored(), QLatin1String("a.mp4"));
    EXPECT_EQ(TempDir::read(m_text), "This is no film.");
}

TEST_F(VideoCommand, NamesWhatIsNoVideo) {
    const QString web = m_dir.path(QStringLiteral("web.webm"));
    const QString audio = m_dir.path(QStringLiteral("sound.m4a"));
    ASSERT_TRUE(QFile::copy(m_video, web));
    const auto made = video(QStringLiteral("audio"), {m_video});
    ASSERT_TRUE(QFile::rename(m_dir.path(QStringLiteral("store/a.mp4.m4a")), audio))
        << made.err.toStdString();
    const QString typo = m_dir.path(QStringLiteral("typo"));
    for (const char* job : {"compress --quality low", "convert --to mp4", "rotate --by 90"}) {
        const auto beside = video(QLatin1String(job), {web, m_video});
        EXPECT_EQ(beside.exitCode, 0) << beside.err.toStdString();
        const auto result = video(QLatin1String(job), {web, m_video, typo});
        EXPECT_EQ(result.exitCode, 1) << job;
        EXPECT_TRUE(result.err.contains("web.webm: skipped: \".webm\" is none of the known kinds"))
            << result.err.toStdString();
        EXPECT_TRUE(result.err.contains("typo: skipped: ")) << result.err.toStdString();
        EXPECT_EQ(stored(), QLatin1String("a.mp4")) << job;
    }
    EXPECT_EQ(video(QStringLiteral("convert --to mp4"), {audio, m_video}).exitCode, 0);
    const auto skipped = video(QStringLiteral("convert --to mov"), {audio});
    EXPECT_EQ(skipped.exitCode, 1) << "nothing was done";
    EXPECT_TRUE(skipped.err.contains("sound.m4a: skipped: This is not a video"))
        << skipped.err.toStdString();
    const auto tried = video(QStringLiteral("gif"), {audio});
    EXPECT_TRUE(tried.err.contains("sound.m4a: failed: ")) << tried.err.toStdString();
    const auto nothing = video(QStringLiteral("compress --quality low"), {web});
    EXPECT_EQ(nothing.exitCode, 3);
    EXPECT_TRUE(nothing.err.contains("web.webm: skipped: ")) << nothing.err.toStdString();
    EXPECT_EQ(stored(), QLatin1String("a.mp4"));
}

} // namespace
