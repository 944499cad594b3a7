// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/model/media_engine.h"
#include "tests/testkit/testkit.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace clipheave::platform {

namespace {

using FrameList = std::unique_ptr<FrameSource>;

/// Films whose pictures carry their number in ten black or white columns.
class FrameSourceTest : public testing::Test {
protected:
    void SetUp() override {
        if (!testkit::hasProgram(QStringLiteral("ffmpeg")))
            GTEST_SKIP() << "needs ffmpeg";
        const auto loaded = mediaEngine();
        ASSERT_TRUE(loaded) << loaded.error().text().toStdString();
        m_engine = *loaded;
    }
    static QByteArray ffmpeg(const QString& options) {
        const auto made = testkit::run(QStringLiteral("ffmpeg"),
                                       (QStringLiteral("-v error -y ") + options).split(u' '));
        EXPECT_EQ(made.exitCode, 0) << options.toStdString() << made.err.toStdString();
        return made.out;
    }
    /// 150 pictures, 25 a second unless `graph` spreads them.
    [[nodiscard]] QString film(const char* name, const char* options,
                               const char* graph = "null") const {
        const QString path = m_dir.path(QString::fromLatin1(name));
        ffmpeg(QStringLiteral("-f lavfi -i "
                              "color=gray:s=320x160:r=25:d=6,format=yuv420p,geq=lum='if(bitand(N,"
                              "pow(2,floor(X/32))),235,16)':cb=128:cr=128,%1 -vsync passthrough "
                              "-pix_fmt yuv420p %2 %3")
                   .arg(QLatin1String(graph), QLatin1String(options), path));
        return path;
    }
    [[nodiscard]] FrameList open(const QString& path, std::optional<QSize> size = {}) const {
        auto frames = m_engine->openFrames(path, size);
        EXPECT_TRUE(frames) << path.toStdString();
        return frames ? std::move(*frames) : nullptr;
    }
    /// The number in the picture; -1 for a failure.
    [[nodiscard]] static int number(const Result<RawPicture>& picture) {
        if (!picture)
            return -1;
        const auto* row = reinterpret_cast<const std::uint32_t*>(picture->rgb32.constData()) +
                          qsizetype{picture->width} * (picture->height / 2);
        int value = 0;
        for (int bit = 0; bit < 10; ++bit)
            value |= (row[picture->width * (2 * bit + 1) / 20] & 0xFF) > 128 ? 1 << bit : 0;
        return value;
    }
    /// When the pictures begin, by ffprobe, from the start of the file.
    [[nodiscard]] static std::vector<double> times(const QString& path) {
        const auto list = [&](const char* what, const char* entries) {
            return testkit::run(QStringLiteral("ffprobe"),
                                QStringLiteral("-v error -select_streams %1 -of csv=p=0 "
                                               "-show_entries %2 %3")
                                    .arg(QLatin1String(what), QLatin1String(entries), path)
                                    .split(u' '))
                .out.split('\n');
        };
        const double start = list("v", "format=start_time").value(0).toDouble();
        std::vector<double> result;
        for (const QByteArray& line : list("v:0", "frame=best_effort_timestamp_time"))
            if (line.contains('.'))
                result.push_back(line.split(',').value(0).toDouble() - start);
        std::sort(result.begin(), result.end());
        return result;
    }
    [[nodiscard]] static int expected(const std::vector<double>& times, double second) {
        const auto after = std::upper_bound(times.begin(), times.end(), second + 2e-6);
        return std::max(0, static_cast<int>(after - times.begin()) - 1);
    }
    /// Asks for the times in one run and compares all.
    void check(const QString& path, const std::vector<double>& begins,
               const std::vector<double>& asked) const {
        const auto frames = open(path);
        ASSERT_TRUE(frames);
        for (const double second : asked) {
            const CMTime time = CMTimeMakeWithSeconds(second, 1'000'000);
            EXPECT_EQ(number(frames->frameAt(time)), expected(begins, second))
                << path.toStdString() << " at " << second;
            const auto index = static_cast<std::size_t>(expected(begins, second));
            EXPECT_NEAR(CMTimeGetSeconds(frames->shownTime()), begins[index], 2e-6);
        }
    }

    testkit::TempDir m_dir;
    MediaEngine* m_engine = nullptr;
};

} // namespace

TEST_F(FrameSourceTest, GivesThePictureThatIsShownInEveryContainerAndOrder) {
    const struct {
        const char *name, *options, *graph = "null";
    } films[] = {
        {"b-frames.mp4", "-c:v libx264 -bf 3 -g 50 -sc_threshold 0"},
        {"one-key.mp4", "-c:v libx264 -bf 2 -g 999"},
        {"open.mkv", "-c:v libx264 -x264-params open-gop=1:bframes=3:keyint=20:scenecut=0"},
        {"vfr.mp4", "-c:v libx264 -g 30 -video_track_timescale 90000",
         "setpts='(N+floor(N/3)*7)/25/TB'"},
        {"late.mkv", "-c:v libx264 -output_ts_offset 2.5"},
        {"a.ts", "-c:v mpeg2video -bf 2 -g 12"},
        {"h264.ts", "-c:v libx264 -bf 3 -g 25"},
        {"a.avi", "-c:v mjpeg"},
        {"a.webm", "-c:v libvpx -g 40"},
        {"a.mpg", "-c:v mpeg2video -g 12"},
        {"pieces.mp4", "-c:v libx264 -g 25 -movflags frag_keyframe+empty_moov"},
        {"hevc.mov", "-c:v libx265 -x265-params log-level=none:keyint=40 -tag:v hvc1"}};
    for (const auto& [name, options, graph] : films) {
        const QString path = film(name, options, graph);
        std::vector<double> begins = times(path), all;
        for (int i = 0; i < 150; ++i)
            all.push_back(i / 25.0);
        // Small pictures share time stamps in a program stream; these are regular.
        if (path.endsWith(u".mpg"))
            begins = all;
        ASSERT_EQ(begins.size(), 150u) << name;
        check(path, begins, {0, 0.2, 0.4, 1, 1.999, 2, 3, 3.04, 5, 5.95});
        check(path, begins, {5.5, 0.3, 4.2, 4.1999, 0, 2.02});
        check(path, begins, all);
    }
}

TEST_F(FrameSourceTest, AppliesEditListsAndAttachedPictures) {
    const QString whole = film("whole.mp4", "-c:v libx264 -g 25 -bf 2");
    // Cut inside a group of pictures: what stands before the cut is not shown.
    const QString cut = m_dir.path(QStringLiteral("cut.mp4"));
    ffmpeg(QStringLiteral("-ss 1.4 -i %1 -c copy %2").arg(whole, cut));
    const auto frames = open(cut);
    ASSERT_TRUE(frames);
    EXPECT_EQ(number(frames->frameAt(kCMTimeZero)), 35);
    EXPECT_EQ(number(frames->frameAt({1, 1})), 60);
    const QString cover = m_dir.path(QStringLiteral("cover.png"));
    ffmpeg(QStringLiteral("-f lavfi -i color=red:s=64x64 -frames:v 1 ") + cover);
    const QString withCover = m_dir.path(QStringLiteral("cover.mp4"));
    ffmpeg(QStringLiteral("-i %1 -i %2 -map 0 -map 1 -c copy -disposition:v:0 attached_pic %3")
               .arg(cover, whole, withCover));
    const auto covered = open(withCover);
    ASSERT_TRUE(covered);
    EXPECT_EQ(covered->size(), QSize(320, 160));
    EXPECT_EQ(number(covered->frameAt({2, 1})), 50);
}

TEST_F(FrameSourceTest, EndsWhereTheFilmEnds) {
    const QString path = film("a.mp4", "-c:v libx264");
    const auto frames = open(path);
    ASSERT_TRUE(frames);
    EXPECT_NEAR(frames->durationSeconds(), 6, 0.001);
    EXPECT_EQ(number(frames->frameAt({-5, 1})), 0);
    EXPECT_EQ(number(frames->frameAt({5999, 1000})), 149);
    for (const CMTime time : {CMTime{61, 10}, CMTime{INT64_MAX, 1}, CMTime{1, 0}}) {
        const auto beyond = frames->frameAt(time);
        ASSERT_FALSE(beyond);
        EXPECT_EQ(beyond.error().code, ErrorCode::InvalidArgument);
    }
    EXPECT_EQ(number(frames->frameAt({1, 1})), 25); // usable afterwards
    // Sound that lasts longer: the last picture stays for a moment, then there is no film.
    const QString longer = m_dir.path(QStringLiteral("longer.mp4"));
    ffmpeg(
        QStringLiteral("-i %1 -f lavfi -i sine=d=9 -map 0 -map 1 -c:v copy %2").arg(path, longer));
    const auto film = open(longer);
    ASSERT_TRUE(film);
    EXPECT_EQ(number(film->frameAt({65, 10})), 149);
    EXPECT_EQ(number(film->frameAt({8, 1})), -1);
}

} // namespace clipheave::platform
