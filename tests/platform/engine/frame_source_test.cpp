// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/model/media_engine.h"
#include "tests/platform/engine/engine_fixture.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace clipheave::platform {

namespace {

using testkit::ffmpeg;
using FrameList = std::unique_ptr<FrameSource>;

/// Videos whose frames carry their number in ten black or white columns.
class FrameSourceTest : public EngineTest {
protected:
    /// 150 frames, 25 a second unless `graph` spreads them.
    [[nodiscard]] QString video(const char* name, const char* options,
                                const char* graph = "null") const {
        QString path = m_dir.path(name);
        ffmpeg(QByteArray("-f lavfi -i "
                          "color=gray:s=320x160:r=25:d=6,format=yuv420p,geq=lum='if(bitand(N,"
                          "pow(2,floor(X/32))),235,16)':cb=128:cr=128,") +
                   graph + " -vsync passthrough -pix_fmt yuv420p " + options,
               {path});
        return path;
    }
    [[nodiscard]] FrameList open(const QString& path, std::optional<QSize> size = {}) const {
        auto frames = m_engine->openFrames(path, size);
        EXPECT_TRUE(frames) << path;
        return frames ? std::move(*frames) : nullptr;
    }
    /// The number in the frame; -1 for a failure.
    [[nodiscard]] static int number(const Result<RawFrame>& frame) {
        if (!frame)
            return -1;
        const auto* row = reinterpret_cast<const std::uint32_t*>(frame->rgb32.constData()) +
                          qsizetype{frame->width} * (frame->height / 2);
        int value = 0;
        for (int bit = 0; bit < 10; ++bit)
            value |= (row[frame->width * (2 * bit + 1) / 20] & 0xFF) > 128 ? 1 << bit : 0;
        return value;
    }
    /// When the frames begin, by ffprobe, from the start of the file; one below zero is audio
    /// that the decoder swallows.
    [[nodiscard]] static std::vector<double> times(const QString& path) {
        const auto list = [&](const char* what, const char* entries) {
            return testkit::ffprobe(QByteArray("-of csv=p=0 -select_streams ") + what +
                                        " -show_entries " + entries,
                                    path)
                .split('\n');
        };
        const double start = std::max(0.0, list("v", "format=start_time").value(0).toDouble());
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
                << path << " at " << second;
            const auto index = static_cast<std::size_t>(expected(begins, second));
            EXPECT_NEAR(CMTimeGetSeconds(frames->shownTime()), begins[index], 2e-6);
        }
    }
};

} // namespace

TEST_F(FrameSourceTest, GivesTheFrameThatIsShownInEveryContainerAndOrder) {
    const struct {
        const char *name, *options, *graph = "null";
    } videos[] = {
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
        {"fragments.mp4", "-c:v libx264 -g 25 -movflags frag_keyframe+empty_moov"},
        {"hevc.mov", "-c:v libx265 -x265-params log-level=none:keyint=40 -tag:v hvc1"}};
    for (const auto& [name, options, graph] : videos) {
        const QString path = video(name, options, graph);
        std::vector<double> begins = times(path), all;
        for (int i = 0; i < 150; ++i)
            all.push_back(i / 25.0);
        // Small frames share timestamps in a program stream; these are regular.
        if (path.endsWith(u".mpg"))
            begins = all;
        ASSERT_EQ(begins.size(), 150u) << name;
        check(path, begins, {0, 0.2, 0.4, 1, 1.999, 2, 3, 3.04, 5, 5.95});
        check(path, begins, {5.5, 0.3, 4.2, 4.1999, 0, 2.02});
        check(path, begins, all);
    }
}

TEST_F(FrameSourceTest, AppliesEditListsAndSkipsCovers) {
    const QString whole = video("whole.mp4", "-c:v libx264 -g 25 -bf 2");
    // Cut inside a group of frames: what stands before the cut is not shown.
    const QString cut = m_dir.path("cut.mp4");
    ffmpeg("-ss 1.4 -i % -c copy", {whole, cut});
    const auto frames = open(cut);
    ASSERT_TRUE(frames);
    EXPECT_EQ(number(frames->frameAt(kCMTimeZero)), 35);
    EXPECT_EQ(number(frames->frameAt({1, 1})), 60);
    const QString cover = m_dir.path("cover.png");
    ffmpeg("-f lavfi -i color=red:s=64x64 -frames:v 1", {cover});
    const QString withCover = m_dir.path("cover.mp4");
    ffmpeg("-i % -i % -map 0 -map 1 -c copy -disposition:v:0 attached_pic",
           {cover, whole, withCover});
    const auto covered = open(withCover);
    ASSERT_TRUE(covered);
    EXPECT_EQ(covered->size(), QSize(320, 160));
    EXPECT_EQ(number(covered->frameAt({2, 1})), 50);
}

TEST_F(FrameSourceTest, EndsWhereTheVideoEnds) {
    const QString path = video("a.mp4", "-c:v libx264");
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
    // Audio that lasts longer: there is no video then.
    const QString longer = m_dir.path("longer.mp4");
    ffmpeg("-i % -f lavfi -i sine=d=9 -map 0 -map 1 -c:v copy", {path, longer});
    const auto video = open(longer);
    ASSERT_TRUE(video);
    EXPECT_EQ(number(video->frameAt({599, 100})), 149);
    EXPECT_EQ(number(video->frameAt({6, 1})), -1);
}

TEST_F(FrameSourceTest, AppliesAspectRatiosAndColours) {
    const struct {
        const char *name, *options;
        QSize size;
        const char* reference; ///< filters that make ffmpeg show the same
    } videos[] = {{"709.mp4", "-colorspace bt709 -color_range tv", {320, 180}, "null"},
                  {"601.mp4", "-colorspace smpte170m", {320, 180}, "null"},
                  {"full.mp4", "-pix_fmt yuvj420p -colorspace bt709", {320, 180}, "null"},
                  {"untagged.mp4", "-s 1280x720", {1280, 720}, "scale=in_color_matrix=bt709"},
                  {"wide.mkv", "-vf setsar=2 -colorspace bt709", {640, 180}, "scale=640:180"},
                  {"ten.mkv",
                   "-c:v libx265 -x265-params log-level=none -pix_fmt yuv420p10 -colorspace bt709",
                   {320, 180},
                   "null"},
                  {"odd.mkv",
                   "-vf scale=319:179,setsar=1 -pix_fmt yuv444p -colorspace bt709",
                   {319, 179},
                   "null"}};
    for (const auto& [name, options, size, reference] : videos) {
        const QString path = m_dir.path(name);
        ffmpeg(QByteArray("-f lavfi -i testsrc2=s=320x180:d=1 -pix_fmt yuv420p ") + options,
               {path});
        const QByteArray shown = ffmpeg(QByteArray("-i % -vf select=eq(n\\,10),") + reference +
                                            " -frames:v 1 -f rawvideo -sws_flags "
                                            "bicubic+accurate_rnd+full_chroma_int -pix_fmt bgra -",
                                        {path});
        const auto frames = open(path);
        ASSERT_TRUE(frames);
        EXPECT_EQ(frames->size(), size) << name;
        const auto frame = frames->frameAt({41, 100});
        ASSERT_TRUE(frame) << name;
        EXPECT_EQ(QSize(frame->width, frame->height), size) << name;
        ASSERT_EQ(frame->rgb32.size(), shown.size()) << name;
        double sum = 0;
        for (qsizetype i = 0; i < shown.size(); ++i)
            sum += std::pow((shown[i] & 255) - (frame->rgb32[i] & 255), 2);
        const double mean = sum / static_cast<double>(shown.size());
        EXPECT_LT(mean, 4) << name; // 42 dB; the wrong matrix or range is far above 30
    }
    const auto small = open(m_dir.path("709.mp4"), QSize(32, 18));
    ASSERT_TRUE(small);
    EXPECT_EQ(small->frameAt({0, 1})->width, 32);
}

TEST_F(FrameSourceTest, MapsTheTonesOfHdr) {
    // Grey of 26, 203 and 1000 cd/m2 and saturated red, as PQ and as HLG values of 10 bits.
    const struct {
        const char *name, *transfer, *greys;
    } videos[] = {
        {"pq.mkv", "smpte2084", "if(lt(X,80),381,if(lt(X,160),573,if(lt(X,240),723,64)))"},
        {"hlg.mkv", "arib-std-b67", "if(lt(X,80),396,if(lt(X,160),721,if(lt(X,240),940,64)))"}};
    for (const auto& [name, transfer, greys] : videos) {
        const QString path = m_dir.path(name);
        ffmpeg(QByteArray("-f lavfi -i color=black:s=320x160:d=0.2,format=yuv420p10,geq=lum='") +
                   greys +
                   "':cb=512:cr=512 -vf setparams=color_primaries=bt2020:colorspace=bt2020nc:"
                   "color_trc=" +
                   transfer + " -c:v libx265 -x265-params log-level=none -crf 4",
               {path});
        const auto frames = open(path);
        ASSERT_TRUE(frames);
        const auto frame = frames->frameAt(kCMTimeZero);
        ASSERT_TRUE(frame);
        const auto grey = [&, name = name](int x) {
            const auto pixel =
                reinterpret_cast<const std::uint32_t*>(frame->rgb32.constData())[80 * 320 + x];
            EXPECT_NEAR(pixel & 0xFF, pixel >> 16 & 0xFF, 2) << name;
            EXPECT_NEAR(pixel & 0xFF, pixel >> 8 & 0xFF, 2) << name;
            return static_cast<int>(pixel & 0xFF);
        };
        EXPECT_NEAR(grey(40), 100, 12) << name; // an eighth of white, unchanged: 0.128 in sRGB
        EXPECT_NEAR(grey(120), 225, 8) << name; // paper
        EXPECT_GT(grey(200), 250) << name;
        EXPECT_LT(grey(280), 4) << name;
    }
}

TEST_F(FrameSourceTest, GoesOnAfterDamageAndFailsPlainly) {
    const QString path = video("a.mp4", "-c:v libx264 -g 25 -movflags +faststart");
    const QByteArray whole = testkit::TempDir::read(path);
    const qsizetype payload = whole.indexOf("mdat") + 4;
    // A third of the frames is noise.
    QByteArray noisy = whole;
    for (qsizetype i = payload + (whole.size() - payload) / 3;
         i < payload + (whole.size() - payload) * 2 / 3; ++i)
        noisy[i] = static_cast<char>(i * 7919 >> 3);
    const auto damaged = open(m_dir.write("noisy.mp4", noisy));
    ASSERT_TRUE(damaged);
    EXPECT_EQ(number(damaged->frameAt({1, 1})), 25);
    EXPECT_EQ(number(damaged->frameAt({585, 100})), 146);
    // Headers that promise six seconds, and half the video.
    const auto cut =
        open(m_dir.write("cut.mp4", whole.left(payload + (whole.size() - payload) / 2)));
    ASSERT_TRUE(cut);
    EXPECT_EQ(number(cut->frameAt({1, 1})), 25);
    const auto lost = cut->frameAt({59, 10});
    ASSERT_FALSE(lost);
    EXPECT_EQ(lost.error().code, ErrorCode::InvalidArgument);
    // A duration of a million seconds.
    QByteArray endless = whole;
    endless.replace(endless.indexOf("mvhd") + 20, 4, testkit::be(1'000'000'000, 4));
    const auto hostile = open(m_dir.write("endless.mp4", endless));
    ASSERT_TRUE(hostile);
    EXPECT_FALSE(hostile->frameAt({500000, 1}));
    EXPECT_EQ(number(hostile->frameAt({2, 1})), 50);
    const auto failure = [&](const QString& name, const QByteArray& bytes) {
        const auto opened = m_engine->openFrames(m_dir.write(name, bytes), {});
        return opened ? (*opened)->frameAt({0, 1}).error().code : opened.error().code;
    };
    EXPECT_EQ(failure(u"text.mp4"_s, "not a video at all"), ErrorCode::InvalidData);
    EXPECT_EQ(failure(u"head.mp4"_s, whole.left(payload)), ErrorCode::InvalidData);
    EXPECT_EQ(m_engine->openFrames(m_dir.path("no.mp4"), {}).error().code, ErrorCode::NotFound);
    EXPECT_FALSE(m_engine->openFrames(path, QSize(0, 5)));
}

TEST_F(FrameSourceTest, ReadsRealVideos) {
    if (testkit::corpus().isEmpty())
        GTEST_SKIP() << "needs CLIPHEAVE_CORPUS";
    const struct {
        const char* name;
        QSize size;
    } videos[] = {{"ExoPlayer__video_1.mp4", {288, 352}},
                  {"media__dolbyVision-hdr.MOV", {720, 1280}},
                  {"metadata-extractor-images__with-gps.mov", {320, 568}},
                  {"libwebm__bbb_480p_vp9_opus_1second.webm", {854, 480}},
                  {"media__sd-hls0000000000.ts", {}},
                  {"exiv2__flame.avi", {}},
                  {"media__video.mp4", {}}};
    for (const auto& [name, size] : videos) {
        const QString path = testkit::corpus() + u"/video/"_s + QLatin1String(name);
        const auto begins = times(path);
        ASSERT_FALSE(begins.empty()) << name;
        const auto frames = open(path);
        ASSERT_TRUE(frames);
        if (!size.isEmpty()) {
            EXPECT_EQ(frames->size(), size) << name;
        }
        for (const double second : {0.0, 0.05, 0.1, begins.back() + 0.001}) {
            const auto frame = frames->frameAt(CMTimeMakeWithSeconds(second, 1'000'000));
            ASSERT_TRUE(frame) << name << second << frame.error().text();
            EXPECT_NEAR(CMTimeGetSeconds(frames->shownTime()),
                        begins[static_cast<std::size_t>(expected(begins, second))], 2e-6)
                << name << " " << second;
        }
    }
}

TEST_F(FrameSourceTest, ReadsEveryVideoWithoutHarm) {
    if (testkit::corpus().isEmpty())
        GTEST_SKIP() << "needs CLIPHEAVE_CORPUS";
    int opened = 0, allFrames = 0;
    for (const char* folder : {"video", "broken"})
        for (QDirIterator files(testkit::corpus() + u'/' + QLatin1String(folder), QDir::Files);
             files.hasNext();) {
            QElapsedTimer timer;
            timer.start();
            const auto frames = m_engine->openFrames(files.next(), {});
            opened += frames ? 1 : 0;
            for (const CMTime time : {CMTime{1, 2}, CMTime{5, 1}, CMTime{0, 1}, CMTime{400000, 1}})
                if (frames) {
                    const auto frame = (*frames)->frameAt(time);
                    allFrames += frame ? 1 : 0;
                    if (frame) {
                        EXPECT_EQ(QSize(frame->width, frame->height), (*frames)->size());
                    }
                }
            EXPECT_LT(timer.elapsed(), 20000) << files.filePath();
        }
    EXPECT_GT(opened, 40);
    EXPECT_GT(allFrames, 60);
}

} // namespace clipheave::platform
