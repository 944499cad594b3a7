// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/platform/engine/export_fixture.h"

#include <QtEndian>

namespace clipheave::platform {

namespace {

class ExportAudioTest : public ExportTest {
protected:
    [[nodiscard]] static ExportPlan audioOf(const QString& path, double from, double to,
                                            double speed = 1) {
        ExportPlan plan;
        plan.audio.emplace().segments = {segment(path, from, to, 0, speed)};
        plan.container = ExportContainer::M4A;
        return plan;
    }
    /// Changes of sign in a second.
    [[nodiscard]] static double crossings(const std::vector<float>& audio) {
        int count = 0;
        for (std::size_t i = 1; i < audio.size(); ++i)
            count += (audio[i] < 0) != (audio[i - 1] < 0) ? 1 : 0;
        return 8000.0 * count / static_cast<double>(audio.size());
    }
};

/// A tone that rises, so that a shift in time is seen.
constexpr char kChirp[] = "aevalsrc=0.5*sin(2*PI*(200*t+150*t*t)):d=3:s=48000";

} // namespace

TEST_F(ExportAudioTest, EncodesAndCutsToTheSample) {
    const struct {
        const char *name, *options, *expected;
    } cases[] = {{"a.mov", "-vn -c:a aac -ac 2", "aac,48000,2,3.000000"},
                 {"b.wav", "-vn -ac 1", "aac,48000,1,3.000000"},
                 {"c.mp3", "-vn -c:a libmp3lame -ar 22050", "aac,22050,1,3.000000"},
                 {"d.ts", "-c:v libx264 -c:a aac", "aac,48000,1,3."},
                 {"e.webm", "-vn -c:a libopus", "aac,48000,1,3.000000"},
                 {"f.mka", "-vn -ar 192000 -c:a flac", "aac,96000,1,3.000000"}};
    for (const auto& [name, options, expected] : cases) {
        const QString source = make(name, options, "testsrc2=d=3:s=64x64", kChirp);
        exported(audioOf(source, 0, 3), "out.m4a");
        const QByteArray got =
            ffprobe(m_out, "a", "stream=codec_name,sample_rate,channels,duration");
        EXPECT_TRUE(got.startsWith(expected)) << name << got;
        const std::vector<float> all = samples(source), copy = samples(m_out);
        EXPECT_GT(correlation(all, copy), 0.98) << name;
        // From the middle: what stood at 1.25 s is at the start.
        exported(audioOf(source, 1.25, 2.5), "out.m4a");
        const std::vector<float> part = samples(m_out);
        // The last packet is decoded whole, beyond the end that the edit list sets.
        EXPECT_NEAR(static_cast<double>(part.size()), 10150, 200) << name;
        EXPECT_NEAR(ffprobe(m_out, "a", "stream=duration").toDouble(), 1.25, 0.0001) << name;
        EXPECT_GT(correlation({copy.begin() + 10000, copy.end()}, part), 0.95) << name;
    }
}

TEST_F(ExportAudioTest, StretchesTimeAtTheSamePitch) {
    const QString source = make("a.m4a", "-vn -c:a aac", "testsrc2=d=3", "sine=d=3:f=440:r=44100");
    for (const double speed : {0.2, 0.5, 4.0}) {
        exported(audioOf(source, 0, 3, speed), "out.m4a");
        EXPECT_NEAR(ffprobe(m_out, "a", "stream=duration").toDouble(), 3 / speed, 0.001) << speed;
        EXPECT_NEAR(crossings(samples(m_out)), 880, 25) << speed;
    }
}

TEST_F(ExportAudioTest, ChangesVolumeAndChannels) {
    const QString source = make("a.m4a", "-vn -c:a ac3 -ac 6", "testsrc2=d=3", kChirp);
    ExportPlan plan = audioOf(source, 0, 2.9);
    exported(plan, "out.m4a");
    EXPECT_EQ(ffprobe(m_out, "a", "stream=channels,channel_layout"), "6,5.1");
    plan.audio->channels = 2;
    plan.audio->volume = 0.5;
    exported(plan, "out.m4a");
    EXPECT_EQ(ffprobe(m_out, "a", "stream=channels,channel_layout"), "2,stereo");
    plan.audio->volume = 0;
    exported(plan, "out.m4a");
    EXPECT_EQ(ffprobe(m_out, "a", "stream=channels,duration"), "2,2.900000");
    const std::vector<float> audio = samples(m_out);
    EXPECT_THAT(audio, testing::Each(0.0F));
    EXPECT_GE(audio.size(), 23200u);
}

TEST_F(ExportAudioTest, SilenceLastsAsLongAsTheAudio) {
    const struct {
        const char *name, *options; // some of them guess their ends
    } cases[] = {{"a.mov", "-c:v mpeg2video -c:a mp2"},
                 {"a2.mov", "-c:v mpeg2video -c:a aac"}, // its last packet is not heard whole
                 {"b.ts", "-c:v mpeg2video -c:a aac"},
                 {"c.mpg", "-c:v mpeg2video -c:a mp2"},
                 {"d.avi", "-c:v mpeg4 -c:a libmp3lame"}};
    for (const auto& [name, options] : cases)
        for (const char* tone : {"sine=d=3:r=44100", "sine=d=2:r=44100"}) {
            const QString source = make(name, options, "testsrc2=d=3:s=64x64:r=25", tone);
            ExportPlan plan = planFor(source, 3.2);
            exported(plan);
            const double heard = ffprobe(m_out, "a", "stream=duration").toDouble();
            plan.audio->volume = 0;
            exported(plan);
            EXPECT_NEAR(ffprobe(m_out, "a", "stream=duration").toDouble(), heard, 0.001)
                << name << ' ' << tone;
        }
}

TEST_F(ExportAudioTest, AnAnnouncedEndThatIsWrongCutsNothing) {
    const QString source = make("a.mp4", "-c:v libx264 -c:a aac -use_editlist 0",
                                "testsrc2=d=3:s=64x64:r=25", "sine=d=3:r=44100");
    QByteArray bytes = testkit::TempDir::read(source);
    const qsizetype header = bytes.indexOf("mdhd", bytes.indexOf("mdhd") + 4) + 20;
    // The media header of the audio says less than its table, and that in the middle of a packet.
    const auto heardWith = [&](quint32 announced) {
        qToBigEndian<quint32>(announced, bytes.data() + header);
        ExportPlan plan = planFor(m_dir.write("short.mp4", bytes), 3.2);
        exported(plan);
        return ffprobe(m_out, "a", "stream=duration").toDouble();
    };
    EXPECT_NEAR(heardWith(51 * 1024 + 700), heardWith(51 * 1024), 0.001);
    EXPECT_GT(heardWith(51 * 1024 + 700), 3);
}

TEST_F(ExportAudioTest, KeepsVideoAndAudioTogether) {
    // The audio begins half a second after the video, behind an edit list.
    const QString videoFile = make("video.mp4", "-c:v libx264 -an");
    const QString tone = make("tone.m4a", "-vn -c:a aac", "testsrc2=d=3", kChirp);
    // The other container has no edit list; its timestamps are known only when it is decoded.
    for (int i = 0; i < 4; ++i) {
        const QString source = m_dir.path(i < 2 ? u"late.mp4"_s : u"late.mkv"_s);
        testkit::ffmpeg("-i % -itsoffset 0.5 -i % -c copy", {videoFile, tone, source});
        const auto mode = i % 2 == 0 ? ExportMode::Encode : ExportMode::Copy;
        ExportPlan plan = planFor(source, 3.5);
        plan.video->mode = plan.audio->mode = mode;
        exported(plan);
        const QString audio = m_dir.path("audio.wav");
        testkit::ffmpeg("-i % -vn -af aresample=async=1:first_pts=0", {m_out, audio});
        const std::vector<float> got = samples(audio);
        ASSERT_GT(got.size(), 5000u);
        EXPECT_GT(correlation({got.begin() + 4000, got.end()}, samples(tone)), 0.95) << i;
    }
}

} // namespace clipheave::platform
