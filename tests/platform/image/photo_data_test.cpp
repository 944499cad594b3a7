// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/log.h"
#include "platform/image/messages.h"
#include "platform/image/sample_photo.h"
#include "platform/image/write/photo_writer.h"
#include "tests/testkit/testkit.h"

#include <QImage>
#include <QImageWriter>

namespace clipheave::platform {

namespace {

PhotoData dataOf(const QString& path) {
    auto data = CGImageSourceCreateWithData(path);
    EXPECT_TRUE(data) << path;
    return std::move(*data);
}

QVariantMap dictionaryOf(const QString& path, const char* name) {
    PhotoData data = dataOf(path);
    const auto properties = CGImageSourceCopyPropertiesAtIndex(data, 0);
    EXPECT_TRUE(properties) << path;
    return properties ? properties->value(QLatin1String(name)).toMap() : QVariantMap();
}

QString sampleOf(const testkit::TempDir& dir, const char* name, QSize size = {64, 48}) {
    SamplePhoto photo{size, 1, "2025:06:14 21:36:20"};
    photo.make = "Kestrel";
    EXPECT_TRUE(writeSamplePhoto(photo, dir.path(name)));
    return dir.path(name);
}

} // namespace

TEST(PhotoData, GivesTypeCountAndPropertiesOfEveryImage) {
    const testkit::TempDir dir;
    const QByteArray further = testkit::TempDir::read(sampleOf(dir, "b.jpg", {32, 16}));
    PhotoData data =
        dataOf(dir.write("c.jpg", testkit::TempDir::read(sampleOf(dir, "a.jpg")) + further));
    EXPECT_EQ(CGImageSourceGetType(data), u"public.jpeg"_s);
    EXPECT_EQ(CGImageSourceGetCount(data), 2U);
    const auto first = CGImageSourceCopyPropertiesAtIndex(data, 0);
    const auto second = CGImageSourceCopyPropertiesAtIndex(data, 1);
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->value(u"PixelWidth"_s), 64);
    EXPECT_EQ(second->value(u"PixelWidth"_s), 32);
    EXPECT_EQ(second->value(u"{TIFF}"_s).toMap().value(u"Make"_s), u"Kestrel"_s);
    EXPECT_FALSE(CGImageSourceCopyPropertiesAtIndex(data, 2));
    PhotoData text = dataOf(dir.write("d.jpg", "text"));
    EXPECT_EQ(CGImageSourceGetCount(text), 0U);
}

TEST(PhotoData, GivesTheDictionariesOfFormats) {
    const testkit::TempDir dir;
    QImage image(8, 8, QImage::Format_RGB32);
    image.fill(Qt::red);
    image.setText(u"Title"_s, u"Sea"_s);
    image.setText(u"Other"_s, u"no key of its own"_s);
    image.setDotsPerMeterX(2000);
    ASSERT_TRUE(image.save(dir.path("a.png")));
    const QVariantMap png = dictionaryOf(dir.path("a.png"), "{PNG}");
    EXPECT_EQ(png.value(u"Title"_s), u"Sea"_s);
    EXPECT_EQ(png.value(u"XPixelsPerMeter"_s), 2000);
    EXPECT_EQ(png.value(u"InterlaceType"_s), 0);
    EXPECT_FALSE(png.contains(u"Other"_s));
    QImageWriter writer(dir.path("a.jpg"));
    writer.setProgressiveScanWrite(true);
    ASSERT_TRUE(writer.write(image));
    const QVariantMap jfif = dictionaryOf(dir.path("a.jpg"), "{JFIF}");
    EXPECT_EQ(jfif.value(u"JFIFVersion"_s), (QVariantList{1, 1}));
    EXPECT_EQ(jfif.value(u"IsProgressive"_s), true);
    EXPECT_EQ(jfif.value(u"XDensity"_s), 51); // an inch
    const QByteArray gif = "GIF89a" + QByteArray("\1\0\2\0\0\0\0", 7) + "!\xFF\x0BNETSCAPE2.0" +
                           QByteArray("\3\1\7\0\0", 5) + QByteArray("!\xF9\4\0\5\0\0\0", 8) +
                           QByteArray(",\0\0\0\0\1\0\2\0\0\2\2\x44\1\0", 15);
    PhotoData frames = dataOf(dir.write("a.gif", gif + gif.last(15) + ";"));
    EXPECT_EQ(CGImageSourceGetCount(frames), 2U);
    const QVariantMap loops = dictionaryOf(frames.path(), "{GIF}");
    EXPECT_EQ(loops.value(u"LoopCount"_s), 7);
    EXPECT_EQ(loops.value(u"UnclampedDelayTime"_s), 0.05);
    EXPECT_EQ(loops.value(u"DelayTime"_s), 0.1);
    EXPECT_EQ(loops.value(u"HasGlobalColorMap"_s), false);
}

TEST(PhotoDestination, LogsAFailureAndWritesNothing) {
    const testkit::TempDir dir;
    QStringList lines;
    const LogSubscription log(LogLevel::Error,
                              [&](const LogLine& line) { lines.append(line.text); });
    EXPECT_FALSE(rewritePhoto({dir.write("a.jpg", "text"), dir.path("b.jpg"), {}}));
    EXPECT_EQ(lines, QStringList{u"CGImageDestinationFinalize failed"_s});
    // Fewer images than announced.
    PhotoData data = dataOf(sampleOf(dir, "c.jpg"));
    auto destination = CGImageDestinationCreateWithData(dir.path("b.jpg"), u"public.jpeg"_s, 2);
    EXPECT_FALSE(CGImageDestinationAddImageFromSource(destination, data, 1, {}));
    ASSERT_TRUE(CGImageDestinationAddImageFromSource(destination, data, 0, {}));
    EXPECT_FALSE(CGImageDestinationFinalize(destination));
    EXPECT_EQ(lines.size(), 2);
    EXPECT_FALSE(dir.files().contains(u"b.jpg"_s));
}

} // namespace clipheave::platform
