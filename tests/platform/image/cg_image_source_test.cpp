// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/cg_image_source.h"
#include "platform/image/shoot_date.h"
#include "tests/testkit/corpus_files.h"
#include "tests/testkit/media.h"

#include <QImage>

#include <chrono>

namespace clipheave::platform {

namespace {

QString imageFile(const testkit::TempDir& dir, const char* name) {
    QImage image(64, 48, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    QString path = dir.path(name);
    EXPECT_TRUE(image.save(path)) << name;
    return path;
}

QVariantMap dictionary(const CGImageSource& source, const char* name) {
    return source.properties().value(QString::fromLatin1(name)).toMap();
}

QVariant value(const QVariantMap& map, const char* name) {
    return map.value(QString::fromLatin1(name));
}

} // namespace

TEST(CGImageSource, PublishedNamesAndForms) {
    SKIP_WITHOUT("exiftool");
    const testkit::TempDir dir;
    const QString path = imageFile(dir, "a.jpg");
    testkit::exiftool("-q -overwrite_original -Make=Maker -Orientation#=6 % -ISO=200 -FNumber=2.8 "
                      "-UserComment=Grüße -ExifVersion=0231 -SubSecTimeOriginal=042 "
                      "-GPSLatitude=48.5 -GPSLatitudeRef=S -GPSLongitude=2.25 -GPSLongitudeRef=W "
                      "-GPSAltitude=12.5 -GPSAltitudeRef#=1 -GPSTimeStamp=09:32:02.5 "
                      "-GPSDateStamp=2019:05:04 % -IPTC:Keywords=c -IPTC:CopyrightNotice=Ich",
                      {u"-DateTimeOriginal=2019:05:04 10:11:12"_s, u"-IPTC:Keywords=a, b"_s, path});
    const auto source = CGImageSource::createWithPath(path);
    ASSERT_TRUE(source) << source.error().text();
    EXPECT_EQ(source->pixelSize(), QSize(64, 48));
    EXPECT_EQ(value(source->properties(), "Orientation").toInt(), 6);
    EXPECT_EQ(value(source->properties(), "ColorModel").toString(), u"RGB");
    EXPECT_EQ(value(source->properties(), "Depth").toInt(), 8);
    EXPECT_EQ(value(dictionary(*source, "{TIFF}"), "Make").toString(), u"Maker");
    const QVariantMap exif = dictionary(*source, "{Exif}");
    EXPECT_EQ(value(exif, "ISOSpeedRatings").toList(), QVariantList{200});
    EXPECT_DOUBLE_EQ(value(exif, "FNumber").toDouble(), 2.8);
    EXPECT_EQ(value(exif, "UserComment").toString(), u"Grüße");
    EXPECT_EQ(value(exif, "ExifVersion").toList(), (QVariantList{2, 3, 1}));
    EXPECT_EQ(value(exif, "SubsecTimeOriginal").toString(), u"042");
    const QVariantMap gps = dictionary(*source, "{GPS}");
    EXPECT_NEAR(value(gps, "Latitude").toDouble(), 48.5, 1e-9);
    EXPECT_EQ(value(gps, "LatitudeRef").toString(), u"S");
    EXPECT_NEAR(value(gps, "Longitude").toDouble(), 2.25, 1e-9);
    EXPECT_DOUBLE_EQ(value(gps, "Altitude").toDouble(), 12.5);
    EXPECT_EQ(value(gps, "AltitudeRef"), QVariant(u"1"_s));
    EXPECT_EQ(value(gps, "TimeStamp").toString(), u"09:32:02.500000");
    EXPECT_EQ(value(gps, "DateStamp").toString(), u"2019:05:04");
    EXPECT_EQ(value(gps, "GPSVersion").toString(), u"2.3.0.0");
    const QVariantMap iptc = dictionary(*source, "{IPTC}");
    EXPECT_EQ(value(iptc, "Keywords").toStringList(), (QStringList{u"a, b"_s, u"c"_s}));
    EXPECT_EQ(value(iptc, "CopyrightNotice").toString(), u"Ich");
    EXPECT_EQ(shootDate(source->properties()), QDateTime(QDate(2019, 5, 4), QTime(10, 11, 12)));
    // Cut in a segment behind the tags, which only some releases of the library report.
    const QByteArray whole = testkit::TempDir::read(path);
    const auto cut = CGImageSource::createWithPath(
        dir.write("cut.jpg", whole.left(whole.indexOf("\xFF\xDB") + 20)));
    ASSERT_TRUE(cut) << cut.error().text();
    EXPECT_EQ(dictionary(*cut, "{GPS}"), gps);
}

TEST(CGImageSource, SizesOfPlainImages) {
    const testkit::TempDir dir;
    for (const char* name : {"a.png", "a.bmp", "a.jpg", "a.ppm", "a.ico"}) {
        const auto source = CGImageSource::createWithPath(imageFile(dir, name));
        ASSERT_TRUE(source) << name << source.error().text();
        EXPECT_EQ(source->pixelSize(), QSize(64, 48)) << name;
        EXPECT_TRUE(source->problem().isEmpty()) << name << source->problem().text();
        EXPECT_EQ(value(source->properties(), "Orientation").toInt(), 1) << name;
        EXPECT_FALSE(source->properties().contains(u"{TIFF}"_s)) << name;
    }
}

TEST(CGImageSource, DatesFallBack) {
    const auto text = [](const char* original, const char* digitized, const char* tiff) {
        const auto latin = [](const char* date) { return QString::fromLatin1(date); };
        return shootDateText(
            {{u"{Exif}"_s, QVariantMap{{u"DateTimeOriginal"_s, latin(original)},
                                       {u"DateTimeDigitized"_s, latin(digitized)}}},
             {u"{TIFF}"_s, QVariantMap{{u"DateTime"_s, latin(tiff)}}}});
    };
    constexpr char kA[] = "2001:01:01 01:01:01", kB[] = "2002:02:02 02:02:02",
                   kNone[] = "0000:00:00 00:00:00";
    EXPECT_EQ(text(kA, kB, kB), QLatin1String(kA));
    EXPECT_EQ(text(kNone, kB, kA), QLatin1String(kB));
    EXPECT_EQ(text("", "    :  :     :  :  ", kA), QLatin1String(kA));
    EXPECT_TRUE(text("", "", kNone).isNull());
}

TEST(CGImageSource, OtherFilesAreNoImages) {
    const testkit::TempDir dir;
    // A video: the tag library has a reader for it, which must not be reached.
    const QByteArray video = testkit::box("ftyp", "qt  " + testkit::be(0, 4)) +
                             testkit::box("moov", testkit::fullBox("mvhd", QByteArray(96, '\1')));
    for (const QByteArray& bytes :
         {video, QByteArray("text"), QByteArray(), QByteArray("\xFF\xD8")}) {
        const auto source = CGImageSource::createWithPath(dir.write("x.jpg", bytes));
        ASSERT_FALSE(source) << bytes.left(8).toHex();
        EXPECT_EQ(source.error().code, ErrorCode::InvalidData);
        EXPECT_FALSE(source.error().detail.isEmpty());
    }
    EXPECT_EQ(CGImageSource::createWithPath(dir.path("none")).error().code, ErrorCode::NotFound);
}

TEST(CGImageSource, CorpusSpotChecks) {
    SKIP_WITHOUT_CORPUS();
    const struct {
        const char* name;
        int width, height, orientation;
        const char* date;
        double latitude;
    } cases[] = {
        {"exif-samples__IMG_5195.HEIC", 2566, 3313, 1, "2021:04:11 15:47:53", 39.051344444},
        {"metadata-extractor-images__Issue_487.heic", 4032, 3024, 6, "2020:06:30 11:27:59", 0},
        {"nom-exif__canon-r6.cr3", 5472, 3648, 1, "2025:09:06 20:24:47", 37.386505},
        {"nom-exif__exif.avif", 192, 256, 1, "2022:07:22 21:26:32", 43.290127778},
        {"exiftool__Nikon.nef", 3040, 2014, 1, "2004:06:09 16:02:35", 0},
        {"exiv2__IMG_1361.dng", 4032, 3024, 6, "2020:12:29 14:24:45", 34.059608333},
        {"metadata-extractor-images__Apple_iPhone_5.jpg", 3264, 2448, 3, "2012:09:29 16:11:25",
         47.627166667},
        {"metadata-extractor-images__Issue_473_Java_.webp", 320, 240, 6, "2018:08:27 12:20:23",
         37.392677778},
    };
    for (const auto& c : cases) {
        const auto source = CGImageSource::createWithPath(testkit::corpus() + u"/photo/"_s +
                                                          QString::fromLatin1(c.name));
        ASSERT_TRUE(source) << c.name << source.error().text();
        EXPECT_EQ(source->pixelSize(), QSize(c.width, c.height)) << c.name;
        EXPECT_EQ(value(source->properties(), "Orientation").toInt(), c.orientation) << c.name;
        EXPECT_EQ(shootDateText(source->properties()), QLatin1String(c.date)) << c.name;
        EXPECT_NEAR(value(dictionary(*source, "{GPS}"), "Latitude").toDouble(), c.latitude, 1e-6)
            << c.name;
    }
}

TEST(CGImageSource, CorpusReadsWithoutHarm) {
    SKIP_WITHOUT_CORPUS();
    int read = 0;
    for (const QString& path : testkit::corpusFiles({u"photo"_s, u"broken"_s, u"video"_s})) {
        const auto start = std::chrono::steady_clock::now();
        const auto source = CGImageSource::createWithPath(path);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2)) << path;
        EXPECT_TRUE(source || !source.error().detail.isEmpty()) << path;
        read += source ? 1 : 0;
    }
    EXPECT_GT(read, 150);
}

} // namespace clipheave::platform
