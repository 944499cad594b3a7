// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/carried_tags.h"
#include "platform/image/photo_decoding.h"
#include "tests/testkit/media.h"

#include <QColorSpace>
#include <QImage>

namespace clipheave::platform {

namespace {

using testkit::TempDir;

class PhotoDecoding : public testing::Test {
protected:
    /// Returns a pixel of the image as it is decoded from a file of this name.
    QColor decoded(const QImage& image, const char* name, const PhotoHints& hints = {}) {
        const QString path = m_dir.path(name);
        EXPECT_TRUE(image.save(path, nullptr, 100));
        auto reader = FileReader::open(path);
        const auto result = decodedPhoto(reader.value(), hints);
        EXPECT_EQ(result->format(), QImage::Format_RGB32);
        return result->pixelColor(5, 5);
    }
    static QImage filled(QImage::Format format, const QColor& color) {
        QImage image(16, 16, format);
        image.fill(color);
        return image;
    }
    static void expectNear(const QColor& found, const QColor& wanted, int most) {
        EXPECT_LE(std::abs(found.red() - wanted.red()), most) << found.name().toStdString();
        EXPECT_LE(std::abs(found.green() - wanted.green()), most) << found.name().toStdString();
        EXPECT_LE(std::abs(found.blue() - wanted.blue()), most) << found.name().toStdString();
    }
    TempDir m_dir;
};

TEST_F(PhotoDecoding, GivesTheColoursOfTheProfileInSrgb) {
    const QColor plain(180, 120, 60);
    for (const auto space :
         {QColorSpace::AdobeRgb, QColorSpace::DisplayP3, QColorSpace::ProPhotoRgb})
        for (const auto format : {QImage::Format_RGB32, QImage::Format_RGBA64}) {
            QImage image = filled(format, plain);
            image.setColorSpace(space);
            QImage wanted = image.convertedToColorSpace(QColorSpace::SRgb);
            expectNear(decoded(image, "p.png"), wanted.pixelColor(5, 5), 2);
        }
    expectNear(decoded(filled(QImage::Format_RGB32, plain), "plain.jpg"), plain, 3);
    // Adobe RGB that only the tags name: a saturated colour grows more saturated.
    const QColor adobe = decoded(filled(QImage::Format_RGB32, plain), "tagged.jpg", {1, true});
    EXPECT_GT(adobe.red(), plain.red() + 10);
}

TEST_F(PhotoDecoding, TakesGrey16BitsAndTransparency) {
    expectNear(decoded(filled(QImage::Format_Grayscale8, QColor(90, 90, 90)), "g.jpg"),
               {90, 90, 90}, 2);
    expectNear(decoded(filled(QImage::Format_Grayscale16, QColor(90, 90, 90)), "g.png"),
               {90, 90, 90}, 1);
    expectNear(decoded(filled(QImage::Format_RGBA64, QColor(200, 40, 80)), "d.png"), {200, 40, 80},
               1);
    expectNear(decoded(filled(QImage::Format_ARGB32, QColor(200, 40, 80, 51)), "a.png"),
               {244, 212, 220}, 1);
    QImage clear = filled(QImage::Format_ARGB32, QColor(200, 40, 80, 0));
    clear.setPixelColor(15, 15, Qt::red); // Qt 6.8 takes no WebP file of less than 40 bytes
    expectNear(decoded(clear, "a.webp"), {255, 255, 255}, 1);
}

TEST_F(PhotoDecoding, SaysWhyHostileFilesGiveNothing) {
    QByteArray bomb;
    {
        ASSERT_TRUE(filled(QImage::Format_RGB32, Qt::red).save(m_dir.path("b.jpg")));
        bomb = TempDir::read(m_dir.path("b.jpg"));
        const qsizetype frame = bomb.indexOf("\xff\xc0");
        bomb.replace(frame + 5, 4, QByteArray("\x9c\x40\x9c\x40", 4)); // 40000 x 40000
    }
    QByteArray cut = TempDir::read(m_dir.path("b.jpg")).left(30);
    QByteArray half = TempDir::read(m_dir.path("b.jpg")); // grey below, were it decoded
    half.chop(10);
    const struct {
        QByteArray bytes;
        ErrorCode code;
    } cases[] = {
        {bomb, ErrorCode::LimitExceeded},
        {cut, ErrorCode::Truncated},
        {half, ErrorCode::Truncated},
        {QByteArray(5000, '\0'), ErrorCode::NotSupported},
        {"text", ErrorCode::NotSupported},
        {"", ErrorCode::NotSupported},
        {QByteArray("II*\0\x08\0\0\0\xff\xff", 10) + QByteArray(900, '\x11'),
         ErrorCode::InvalidData},
        {QByteArray("\0\0\0\x18"
                    "ftypheic\0\0\0\0mif1heic",
                    24),
         ErrorCode::InvalidData},
        {QByteArray("FUJIFILMCCD-RAW ") + QByteArray(500, '\xff'), ErrorCode::NotSupported}};
    for (const auto& [bytes, code] : cases) {
        auto reader = FileReader::open(m_dir.write("x.jpg", bytes));
        const auto image = decodedPhoto(reader.value(), {});
        ASSERT_FALSE(image) << bytes.left(16);
        EXPECT_EQ(image.error().code, code) << bytes.left(16) << image.error().text();
        EXPECT_EQ(photoThumbnail(reader.value(), 256).isNull(),
                  bytes != half); // shows what is there
    }
}

TEST_F(PhotoDecoding, CarriesTagsWithoutWhatDescribesTheOldFile) {
    SKIP_WITHOUT("exiftool");
    const QString thumbnail = m_dir.path("t.jpg"), photo = m_dir.path("p.tif"),
                  made = m_dir.path("m.jpg");
    ASSERT_TRUE(filled(QImage::Format_RGB32, Qt::green).save(thumbnail));
    ASSERT_TRUE(filled(QImage::Format_RGB32, Qt::red).save(photo));
    testkit::exiftool("-q -n -overwrite_original -Artist=Ann -ExifIFD:ISO=400 -IPTC:City=Rome "
                      "-GPSLatitude=1.5 -GPSLatitudeRef=N -XMP:Label=Red -ColorSpace=2 "
                      "-XMP-GCamera:MotionPhoto=1",
                      {photo});
    auto reader = FileReader::open(photo);
    CarriedTags tags = CarriedTags::of(reader.value());
    EXPECT_TRUE(tags.isAdobeRgb());
    tags.describeUprightSrgb();
    tags.setPixelDimensions({16, 16});
    const auto [segments, leftOut] = tags.segments();
    EXPECT_TRUE(leftOut.isEmpty());
    m_dir.write("m.jpg", withSegments(TempDir::read(thumbnail), segments));
    EXPECT_EQ(testkit::exiftool(
                  "-n -s3 -Artist -ISO -City -GPSLatitude -Label -Orientation -ColorSpace", {made})
                  .trimmed(),
              "Ann\n400\nRome\n1.5\nRed\n1\n1");
    EXPECT_EQ(testkit::exiftool(
                  "-s3 -IFD0:ImageWidth -IFD0:StripOffsets -MotionPhoto -IFD0:Compression", {made}),
              "");
    EXPECT_EQ(testkit::exiftool("-validate -s3 -Warning", {made}).trimmed(), "OK");
}

} // namespace

} // namespace clipheave::platform
