// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/cg_image_destination.h"
#include "platform/image/tiff_representation.h"
#include "tests/testkit/media.h"

#include <cmath>

namespace clipheave::platform {

namespace {

template <class Colour> RawFrame drawn(int width, int height, Colour colour) {
    RawFrame image{width, height, QByteArray(qsizetype{width} * height * 4, '\0')};
    auto* pixel = reinterpret_cast<std::uint32_t*>(image.rgb32.data());
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            *pixel++ =
                0xFF000000U | colour(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y));
    return image;
}

/// Soft colours; more than 256 of them, all over the cube.
RawFrame gradient(std::uint32_t blue) {
    return drawn(256, 192, [&](std::uint32_t x, std::uint32_t y) {
        return x << 16 | (y + 40) << 8 | (blue + x / 4);
    });
}

QString gifType() {
    return QString::fromUtf16(kUTTypeGIF);
}

QByteArray gifOf(const QString& path, const std::vector<RawFrame>& images,
                 const CGImageGIFProperties& properties = {0}) {
    auto made = CGImageDestinationCreateWithURL(path, gifType(), 100);
    EXPECT_TRUE(made);
    EXPECT_TRUE(CGImageDestinationSetProperties(**made, properties));
    for (const RawFrame& image : images)
        EXPECT_TRUE(CGImageDestinationAddImage(**made, image));
    EXPECT_FALSE(QFile::exists(path)); // not before it is whole
    EXPECT_TRUE(CGImageDestinationFinalize(**made));
    return testkit::TempDir::read(path);
}

/// What the blocks of a GIF say, one letter each: N loops, C control, I image, E end.
struct GifBlocks {
    std::string order;
    int loops = -1;
    std::vector<int> delays;
};

GifBlocks blocksOf(const QByteArray& gif) {
    const auto byte = [&](qsizetype at) { return at < gif.size() ? gif[at] & 255 : 0x3B; };
    GifBlocks result;
    qsizetype at = 13 + ((byte(10) & 0x80) != 0 ? 3 << ((byte(10) & 7) + 1) : 0);
    const auto skipBlocks = [&] {
        while (byte(at) != 0 && at < gif.size())
            at += byte(at) + 1;
        ++at;
    };
    while (byte(at) != 0x3B) {
        if (byte(at) == 0x2C) {
            result.order += 'I';
            at += 11 + ((byte(at + 9) & 0x80) != 0 ? 3 << ((byte(at + 9) & 7) + 1) : 0);
        } else if (byte(at + 1) == 0xF9) {
            result.order += 'C';
            result.delays.push_back(byte(at + 4) | byte(at + 5) << 8);
            at += 2;
        } else {
            result.order += 'N';
            EXPECT_EQ(gif.mid(at + 3, 11), "NETSCAPE2.0");
            result.loops = byte(at + 16) | byte(at + 17) << 8;
            at += 2;
        }
        skipBlocks();
    }
    result.order += at == gif.size() - 1 ? "E" : "?";
    return result;
}

QByteArray decoded(const QString& path) {
    return testkit::ffmpeg("-i % -vsync passthrough -f rawvideo -pix_fmt bgra -", {path});
}

double psnr(const QByteArray& a, const QByteArray& b) {
    EXPECT_EQ(a.size(), b.size());
    double sum = 0;
    for (qsizetype i = 0; i < std::min(a.size(), b.size()); ++i)
        sum += std::pow((a[i] & 255) - (b[i] & 255), 2);
    return 10 * std::log10(255.0 * 255 * static_cast<double>(a.size()) / std::max(sum, 1e-9));
}

} // namespace

TEST(Gif, LoopsForEverWithoutDelaysAndLooksLikeItsImages) {
    const testkit::TempDir dir;
    const QString path = dir.path("a.gif");
    const std::vector<RawFrame> images{gradient(0), gradient(90), gradient(180)};
    const QByteArray gif = gifOf(path, images);
    EXPECT_TRUE(gif.startsWith("GIF89a"));
    const GifBlocks blocks = blocksOf(gif);
    EXPECT_EQ(blocks.order, "NCICICIE");
    EXPECT_EQ(blocks.loops, 0);
    EXPECT_EQ(blocks.delays, std::vector<int>(3, 0));
    SKIP_WITHOUT("ffmpeg");
    const QByteArray pixels = decoded(path);
    const qsizetype size = images[0].rgb32.size();
    ASSERT_EQ(pixels.size(), 3 * size);
    for (int i = 0; i < 3; ++i) // a fixed palette of 6 x 6 x 6 comes to 26
        EXPECT_GT(psnr(pixels.mid(i * size, size), images[static_cast<std::size_t>(i)].rgb32), 34);
}

TEST(Gif, KeepsEveryColourOfAnImageWithFew) {
    SKIP_WITHOUT("ffmpeg");
    const testkit::TempDir dir;
    const QString path = dir.path("few.gif");
    // Dark, and closer together than coarse counting shows.
    const RawFrame image = drawn(64, 64, [](std::uint32_t x, std::uint32_t y) {
        return (10 + x / 8) << 16 | (10 + y / 8) << 8 | (10 + (x + y) / 42);
    });
    gifOf(path, {image});
    EXPECT_EQ(decoded(path), image.rgb32);
    const RawFrame one = drawn(1, 1, [](std::uint32_t, std::uint32_t) { return 0x123456U; });
    EXPECT_EQ(blocksOf(gifOf(path + u'1', {one}, {})).order, "CIE");
    EXPECT_EQ(decoded(path + u'1'), one.rgb32);
}

TEST(Gif, RefusesWhatIsNoAnimation) {
    const testkit::TempDir dir;
    const QString path = dir.path("a.gif");
    EXPECT_FALSE(CGImageDestinationCreateWithURL(path, u"public.png"_s, 1));
    EXPECT_FALSE(CGImageDestinationCreateWithURL(path, gifType(), 0));
    EXPECT_FALSE(CGImageDestinationCreateWithURL(dir.path("no/a.gif"), gifType(), 1));
    auto made = CGImageDestinationCreateWithURL(path, gifType(), 2);
    ASSERT_TRUE(made);
    EXPECT_FALSE(CGImageDestinationFinalize(**made)); // without an image
    EXPECT_FALSE(CGImageDestinationAddImage(**made, {4, 4, QByteArray(63, 'x')}));
    EXPECT_FALSE(CGImageDestinationAddImage(**made, {0, 4, {}}));
    const RawFrame image = gradient(0);
    EXPECT_TRUE(CGImageDestinationAddImage(**made, image));
    EXPECT_FALSE(CGImageDestinationSetProperties(**made, {0})); // too late
    EXPECT_FALSE(CGImageDestinationAddImage(**made, {4, 4, QByteArray(64, 'x')}));
    EXPECT_TRUE(CGImageDestinationAddImage(**made, image));
    EXPECT_FALSE(CGImageDestinationAddImage(**made, image)); // one too many
    made->reset();
    EXPECT_TRUE(testkit::namesIn(dir.path()).isEmpty());
}

TEST(FrameTiff, HoldsThePixelsAsTheyAre) {
    const testkit::TempDir dir;
    for (const auto& [width, height] : {std::pair{1, 1}, {3, 5}, {256, 192}}) {
        const RawFrame image = drawn(
            width, height, [](std::uint32_t x, std::uint32_t y) { return x << 16 | y << 8 | 7; });
        const auto bytes = TIFFRepresentation(image);
        ASSERT_TRUE(bytes);
        EXPECT_TRUE(bytes->startsWith(QByteArray("II*\0", 4)));
        const QString path = dir.write("a.tiff", *bytes);
        if (testkit::hasProgram(u"ffmpeg"_s)) {
            EXPECT_EQ(decoded(path), image.rgb32) << width;
        }
        if (testkit::hasProgram(u"exiftool"_s)) {
            const QByteArray said = testkit::exiftool("-validate", {path});
            EXPECT_TRUE(said.contains("OK")) << said;
        }
    }
    EXPECT_FALSE(TIFFRepresentation(RawFrame{}));
    EXPECT_FALSE(TIFFRepresentation(RawFrame{2, 2, QByteArray(15, 'x')}));
}

} // namespace clipheave::platform
