// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/asset/av_asset_image_generator.h"
#include "tests/testkit/media.h"

namespace clipheave::platform {

namespace {

/// One second each of red, lime and blue, with a white upper left corner; rotated by `degrees`.
QString colourVideo(const testkit::TempDir& dir, int degrees) {
    const QString path = dir.path(u"%1.mov"_s.arg(degrees));
    testkit::ffmpeg("-filter_complex "
                    "color=red:s=64x32:d=1:r=10[a];color=lime:s=64x32:d=1:r=10[b];"
                    "color=blue:s=64x32:d=1:r=10[c];[a][b][c]concat=n=3,drawbox=0:0:16:16:"
                    "white:fill -c:v libx264 -pix_fmt yuv420p",
                    {path});
    if (degrees != 0)
        testkit::rotateClockwise(path, degrees);
    return path;
}

std::uint32_t pixelAt(const RawFrame& frame, int x, int y) {
    return reinterpret_cast<const std::uint32_t*>(frame.rgb32.constData())[frame.width * y + x];
}

bool isWhite(std::uint32_t pixel) {
    return (pixel & 0xFF) > 200 && (pixel >> 8 & 0xFF) > 200 && (pixel >> 16 & 0xFF) > 200;
}

} // namespace

TEST(AVAssetImageGenerator, RotatesTheFrameOnlyWhenAsked) {
    SKIP_WITHOUT("ffmpeg");
    const testkit::TempDir dir;
    const struct {
        int degrees, width, x, y; ///< where the corner is, rotated clockwise
    } rotations[] = {{0, 64, 4, 4}, {90, 32, 28, 4}, {180, 64, 60, 28}, {270, 32, 4, 60}};
    for (const auto& [degrees, width, x, y] : rotations) {
        const auto asset = AVURLAsset::assetWithPath(colourVideo(dir, degrees));
        ASSERT_TRUE(asset);
        auto generator = AVAssetImageGenerator::initWithAsset(*asset);
        const auto stored = generator.copyCGImageAtTime({0, 1});
        ASSERT_TRUE(stored) << stored.error().text();
        EXPECT_EQ(stored->width, 64);
        EXPECT_TRUE(isWhite(pixelAt(*stored, 4, 4))) << degrees;
        generator.setAppliesPreferredTrackTransform(true);
        const auto upright = generator.copyCGImageAtTime({0, 1});
        ASSERT_TRUE(upright);
        EXPECT_EQ(upright->width, width) << degrees;
        EXPECT_TRUE(isWhite(pixelAt(*upright, x, y))) << degrees;
        EXPECT_FALSE(isWhite(pixelAt(*upright, upright->width / 2, upright->height / 2)));
    }
}

TEST(AVAssetImageGenerator, ReturnsWhenTheFrameBegins) {
    SKIP_WITHOUT("ffmpeg");
    const testkit::TempDir dir;
    const auto asset = AVURLAsset::assetWithPath(colourVideo(dir, 0));
    ASSERT_TRUE(asset);
    auto generator = AVAssetImageGenerator::initWithAsset(*asset);
    generator.setRequestedTimeToleranceBefore(kCMTimeZero);
    generator.setRequestedTimeToleranceAfter(kCMTimeZero);
    CMTime actual{-1, 1};
    const auto green = generator.copyCGImageAtTime(CMTimeMakeWithSeconds(1.96, 600), &actual);
    ASSERT_TRUE(green);
    EXPECT_EQ(CMTimeCompare(actual, {19, 10}), 0);
    EXPECT_GT(pixelAt(*green, 40, 20) >> 8 & 0xFF, 200u);
    EXPECT_FALSE(generator.copyCGImageAtTime({4, 1}));
    const auto blue = generator.copyCGImageAtTime({2, 1}, &actual);
    ASSERT_TRUE(blue);
    EXPECT_GT(pixelAt(*blue, 40, 20) & 0xFF, 200u);
    // Audio alone gives the same plain failure each time.
    const QString audio = dir.path("s.wav");
    testkit::ffmpeg("-f lavfi -i sine=d=1", {audio});
    const auto silentVideo = AVURLAsset::assetWithPath(audio);
    ASSERT_TRUE(silentVideo);
    auto none = AVAssetImageGenerator::initWithAsset(*silentVideo);
    for (int i = 0; i < 2; ++i) {
        const auto frame = none.copyCGImageAtTime({0, 1});
        ASSERT_FALSE(frame);
        EXPECT_EQ(frame.error().code, ErrorCode::NotSupported);
    }
}

} // namespace clipheave::platform
