// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/platform/formats/fixtures.h"

#include <QFile>

using namespace clipheave::platform;
using testkit::be;
using testkit::le;

namespace {

QByteArray ffmpegImage(const testkit::TempDir& folder, const QString& name) {
    const QString path = folder.path(name);
    testkit::ffmpeg("-f lavfi -i testsrc=s=70x50 -frames:v 1", {path});
    return testkit::TempDir::read(path);
}

} // namespace

TEST(EncodedImage, KnowsFormatAndSizeOfWhatAnotherProgramWrote) {
    const testkit::TempDir folder;
    for (const char* name : {"a.jpeg", "a.png", "a.gif", "a.bmp", "a.tiff", "a.webp"}) {
        const QByteArray bytes = ffmpegImage(folder, QString::fromLatin1(name));
        const EncodedImage image = EncodedImage::fromBytes(bytes);
        EXPECT_EQ(image.format(), QString::fromLatin1(name + 2));
        EXPECT_EQ(image.size(), QSize(70, 50)) << name;
        EXPECT_EQ(image.bytes(), bytes);
    }
    // The two other kinds of WebP.
    const auto vp8x = fixtures::raw("RIFF\0\0\0\0WEBPVP8X\x0A\0\0\0\0\0\0\0\x45\0\0\x31\0\0");
    EXPECT_EQ(EncodedImage::fromBytes(vp8x).size(), QSize(70, 50));
    const auto vp8l = "RIFF" + le(0, 4) + "WEBPVP8L" + le(10, 4) + '\x2F' + le(69 | 49 << 14, 4);
    EXPECT_EQ(EncodedImage::fromBytes(vp8l).size(), QSize(70, 50));
}

TEST(EncodedImage, IsNullForWhatIsNoImage) {
    EXPECT_TRUE(EncodedImage::fromBytes({}).isNull());
    EXPECT_TRUE(EncodedImage::fromBytes("not an image at all, but long enough").isNull());
    EXPECT_TRUE(
        EncodedImage::fromBytes("\x89PNG\r\n\x1A\n" + be(13, 4) + "IHDR" + be(0, 4) + be(5, 4))
            .isNull());
    EXPECT_TRUE(
        EncodedImage::fromBytes(fixtures::raw("\xFF\xD8\xFF\xE0\x00\x10") + QByteArray(14, '\0'))
            .isNull());
}

TEST(EncodedImage, StaysInTheFileAndReadsOnlySegmentHeaders) {
    const QByteArray jpeg =
        fixtures::raw("\xFF\xD8") +
        (fixtures::raw("\xFF\xE2\xFF\xFF") + QByteArray(65533, 'p')).repeated(12) +
        fixtures::raw("\xFF\xC2\x00\x11\x08\x00\x32\x00\x46\x03") + QByteArray(5000, 'q');
    const testkit::TempDir folder;
    const QString path = folder.write("a", QByteArray(777, 'x') + jpeg + "tail");
    auto reader = FileReader::open(path);
    const FileSlice slice{path, 777, static_cast<quint64>(jpeg.size())};
    const EncodedImage image = EncodedImage::fromSlice(*reader, slice);
    EXPECT_EQ(image.format(), u"jpeg");
    EXPECT_EQ(image.size(), QSize(70, 50));
    EXPECT_EQ(image.byteCount(), slice.length);
    EXPECT_EQ(image.bytes(), jpeg);
    EXPECT_TRUE(image == EncodedImage::fromBytes(jpeg));
    EXPECT_TRUE(EncodedImage::fromSlice(*reader, {path, 777, UINT64_MAX}).isNull());
    folder.write("a", QByteArray(1'000'000, 'z'));
    EXPECT_TRUE(image.bytes().isNull()) << "other bytes at the place are not the image";
    QFile::remove(path);
    EXPECT_TRUE(image.bytes().isNull());
}
