// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/log.h"
#include "platform/media/model/media_engine.h"
#include "tests/platform/engine/engine_fixture.h"

#include <QtEndian>

#include <array>

namespace clipheave::platform {

namespace {

using testing::AllOf;
using testing::Each;
using testing::Ge;
using testing::Le;

/// Silence, then half of full scale, then full scale on one channel only: two seconds each.
class AudioPeaks : public EngineTest {
protected:
    [[nodiscard]] QString audio(const QString& name, const char* options) const {
        testkit::ffmpeg(
            QByteArray(
                "-f lavfi -i aevalsrc=0|if(lt(t\\,2)\\,0\\,if(lt(t\\,4)\\,0.5\\,1))*sin(2513*t)"
                ":d=6:s=44100 ") +
                options,
            {m_dir.path(name)});
        return m_dir.path(name);
    }
    [[nodiscard]] Result<QByteArray> peaks(const QString& path, int columns) const {
        return m_engine->audioPeaks(path, columns, [] { return true; });
    }
};

} // namespace

TEST_F(AudioPeaks, FollowTheLoudnessInEverySampleFormat) {
    const std::array<std::pair<const char*, const char*>, 8> files{{
        {"a.wav", "-c:a pcm_s16le"},
        {"b.wav", "-c:a pcm_u8"},
        {"c.wav", "-c:a pcm_f32le"},
        {"d.wav", "-c:a pcm_f64le"},
        {"e.flac", "-c:a flac -sample_fmt s32"},
        {"f.mp3", "-c:a libmp3lame -b:a 192k"},
        {"g.m4a", "-c:a aac -b:a 160k"},
        {"h.mka", "-c:a pcm_s24le"},
    }};
    for (const auto& [name, options] : files) {
        const auto found = peaks(audio(QString::fromLatin1(name), options), 60);
        ASSERT_TRUE(found) << name << ": " << found.error().text();
        ASSERT_EQ(found->size(), 60) << name;
        std::vector<int> columns;
        for (const char byte : *found)
            columns.push_back(static_cast<unsigned char>(byte));
        // Lossy codecs smear over the edges: one column beside each is not looked at.
        const auto part = [&](int from, int to) {
            return std::vector<int>(columns.begin() + from, columns.begin() + to);
        };
        EXPECT_THAT(part(0, 19), Each(Le(4))) << name;
        EXPECT_THAT(part(21, 39), Each(AllOf(Ge(118), Le(140)))) << name;
        EXPECT_THAT(part(41, 59), Each(Ge(240))) << name;
    }
}

TEST_F(AudioPeaks, AreOfEveryFrameOfAPhonesPackets) {
    // Speech of 12.2 kbit/s whose bits are noise, in samples of five frames as phones store it.
    constexpr int kFrames = 20, kFrameBytes = 32, kTogether = 5;
    QByteArray speech = "#!AMR\n";
    for (int i = 0; i < kFrames * kFrameBytes; ++i)
        speech += static_cast<char>(i % kFrameBytes == 0 ? 0x3C : i * 7919 >> 3);
    const QString path = m_dir.path("phone.3gp");
    testkit::ffmpeg("-f amr -i", {m_dir.write("speech.amr", speech), u"-c"_s, u"copy"_s, path});
    QByteArray bytes = testkit::TempDir::read(path);
    const auto set = [&bytes](const char* box, int field, int old, int value) {
        const qsizetype at = bytes.indexOf(box) + 4 + field;
        ASSERT_EQ(qFromBigEndian<qint32>(bytes.constData() + at), old) << box << field;
        qToBigEndian<qint32>(value, bytes.data() + at);
    };
    set("stsz", 4, kFrameBytes, kFrameBytes * kTogether);
    set("stsz", 8, kFrames, kFrames / kTogether);
    set("stts", 8, kFrames, kFrames / kTogether);
    set("stts", 12, 160, 160 * kTogether);
    set("stsc", 12, kFrames, kFrames / kTogether);
    const auto found = peaks(m_dir.write("phone.3gp", bytes), kFrames);
    ASSERT_TRUE(found) << found.error().text();
    for (const char column : *found)
        EXPECT_GE(static_cast<unsigned char>(column), 20);
}

TEST_F(AudioPeaks, RefuseWhatHasNoneAndStopWhenAsked) {
    const QString wave = audio(u"a.wav"_s, "-c:a pcm_s16le");
    EXPECT_EQ(peaks(wave, 0).error().code, ErrorCode::InvalidArgument);
    EXPECT_EQ(peaks(wave, 1'000'000).error().code, ErrorCode::InvalidArgument);
    EXPECT_EQ(peaks(m_dir.path("none.wav"), 60).error().code, ErrorCode::NotFound);
    int asked = 0;
    const auto stopped = m_engine->audioPeaks(wave, 60, [&asked] { return ++asked < 3; });
    ASSERT_FALSE(stopped);
    EXPECT_EQ(stopped.error().code, ErrorCode::Cancelled);
    EXPECT_EQ(asked, 3);
    // A file cut in the middle is as long as what is there.
    const QByteArray bytes = testkit::TempDir::read(wave);
    const auto cut = peaks(m_dir.write("cut.wav", bytes.left(bytes.size() / 2)), 60);
    ASSERT_TRUE(cut);
    EXPECT_EQ(static_cast<unsigned char>(cut->at(19)), 0);
    EXPECT_GE(static_cast<unsigned char>(cut->at(59)), 118);
    EXPECT_EQ(peaks(m_dir.write("empty.wav", bytes.left(44)), 60).has_value(), false);
    const QString video = m_dir.path("mute.mp4");
    SampleMedia mute;
    mute.container = u"mp4"_s;
    mute.videoCodec = u"mpeg4"_s;
    ASSERT_TRUE(m_engine->writeSample(mute, video));
    EXPECT_EQ(peaks(video, 60).error().code, ErrorCode::NotSupported);
}

TEST_F(AudioPeaks, LogWhatDamageLeftOut) {
    const QString path = audio(u"whole.flac"_s, "-c:a flac");
    QByteArray bytes = testkit::TempDir::read(path);
    std::fill_n(bytes.begin() + bytes.size() / 2, 4000, '\x5a');
    const QString hurt = m_dir.write("hurt.flac", bytes);
    QStringList paths;
    const LogSubscription listening(LogLevel::Info,
                                    [&](const LogLine& line) { paths << line.path; });
    ASSERT_TRUE(peaks(path, 60));
    EXPECT_TRUE(paths.isEmpty());
    ASSERT_TRUE(peaks(hurt, 60));
    EXPECT_EQ(paths, QStringList{hurt});
}

} // namespace clipheave::platform
