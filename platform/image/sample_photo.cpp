// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/sample_photo.h"

#include "platform/foundation/atomic_file.h"
#include "platform/foundation/paths.h"
#include "platform/image/exiv2.h"
#include "platform/image/messages.h"

#include <QBuffer>
#include <QImage>

#include <algorithm>
#include <cmath>
#include <string>

namespace clipheave::platform {

namespace {

struct Scene {
    QRgb skyTop, skyLow, hill, ground;
};
constexpr Scene kScenes[] = {
    {0xFF2B3A67, 0xFFF2A65A, 0xFF3B2C35, 0xFF1F1A24},
    {0xFF5BA4CF, 0xFFDDEEF6, 0xFF5E8C61, 0xFF3E6B48},
    {0xFF0B1D3A, 0xFF2F6F8F, 0xFF14302F, 0xFF0A1B22},
    {0xFFC8D6E5, 0xFFF7F1E3, 0xFF8395A7, 0xFFB8A07E},
};

QRgb mix(QRgb a, QRgb b, double t) {
    const auto part = [t](int x, int y) { return static_cast<int>(std::lround(x + (y - x) * t)); };
    return qRgb(part(qRed(a), qRed(b)), part(qGreen(a), qGreen(b)), part(qBlue(a), qBlue(b)));
}

/// Draws a sky with a sun, a range of hills and a plain.
QImage drawScene(QSize size, int pattern) {
    QImage image(size, QImage::Format_RGB32);
    const Scene& scene = kScenes[static_cast<std::size_t>(std::abs(pattern)) % std::size(kScenes)];
    const double sunX = 0.25 + 0.17 * (std::abs(pattern) % 4);
    for (int y = 0; y < size.height(); ++y) {
        auto* line = static_cast<QRgb*>(static_cast<void*>(image.scanLine(y)));
        const double v = double(y) / size.height();
        for (int x = 0; x < size.width(); ++x) {
            const double u = double(x) / size.width();
            const double ridge =
                0.55 + 0.10 * std::sin(u * 7 + pattern) + 0.04 * std::sin(u * 23 + 2.0 * pattern);
            const double distance = std::hypot((u - sunX) * size.width() / size.height(), v - 0.38);
            QRgb colour = mix(scene.skyTop, scene.skyLow, std::min(1.0, v / 0.6));
            if (distance < 0.09)
                colour = mix(0xFFFFF3D0, colour, std::pow(distance / 0.09, 6));
            if (v > ridge)
                colour = mix(scene.hill, scene.ground, std::min(1.0, (v - ridge) / 0.3));
            line[x] = colour;
        }
    }
    return image;
}

std::string degreesText(double degrees) {
    const double value = std::abs(degrees);
    const int whole = static_cast<int>(value);
    const int minutes = static_cast<int>((value - whole) * 60);
    const double seconds = (value - whole - minutes / 60.0) * 3600;
    return std::to_string(whole) + "/1 " + std::to_string(minutes) + "/1 " +
           std::to_string(std::lround(seconds * 10000)) + "/10000";
}

void setText(Exiv2::ExifData& exif, const char* key, const char* text) {
    if (text)
        exif[key] = std::string(text);
}

Exiv2::ExifData exifOf(const SamplePhoto& photo) {
    Exiv2::ExifData exif;
    setText(exif, "Exif.Image.Make", photo.make);
    setText(exif, "Exif.Image.Model", photo.model);
    setText(exif, "Exif.Image.ImageDescription", photo.description);
    setText(exif, "Exif.Image.Artist", photo.artist);
    setText(exif, "Exif.Image.DateTime", photo.dateTimeOriginal);
    setText(exif, "Exif.Photo.DateTimeOriginal", photo.dateTimeOriginal);
    setText(exif, "Exif.Photo.DateTimeDigitized", photo.dateTimeOriginal);
    exif["Exif.Image.Orientation"] = static_cast<uint16_t>(photo.orientation);
    if (!photo.hasPosition)
        return exif;
    setText(exif, "Exif.GPSInfo.GPSVersionID", "2 2 0 0");
    setText(exif, "Exif.GPSInfo.GPSLatitudeRef", photo.latitude < 0 ? "S" : "N");
    setText(exif, "Exif.GPSInfo.GPSLatitude", degreesText(photo.latitude).c_str());
    setText(exif, "Exif.GPSInfo.GPSLongitudeRef", photo.longitude < 0 ? "W" : "E");
    setText(exif, "Exif.GPSInfo.GPSLongitude", degreesText(photo.longitude).c_str());
    setText(exif, "Exif.GPSInfo.GPSAltitudeRef", photo.altitude < 0 ? "1" : "0");
    const std::string metres = std::to_string(std::lround(std::abs(photo.altitude) * 100)) + "/100";
    setText(exif, "Exif.GPSInfo.GPSAltitude", metres.c_str());
    return exif;
}

/// The encoded image with the EXIF block in it.
Result<QByteArray> withExif(const QByteArray& encoded, const SamplePhoto& photo,
                            const QString& target) {
    try {
        const auto* bytes =
            static_cast<const Exiv2::byte*>(static_cast<const void*>(encoded.constData()));
        std::unique_ptr<Exiv2::Image> image{
            Exiv2::ImageFactory::open(bytes, static_cast<long>(encoded.size())).release()};
        image->readMetadata();
        image->setExifData(exifOf(photo));
        image->writeMetadata();
        Exiv2::BasicIo& io = image->io();
        io.open();
        return bytesOf(io.read(static_cast<long>(io.size())));
    } catch (const std::exception& error) {
        return failure(ErrorCode::Io, kWritePhotoTags, target, QString::fromUtf8(error.what()));
    }
}

QString formatFor(const QString& target) {
    const QString extension = pathExtension(target).toLower();
    if (extension == u"jpg" || extension == u"jpeg")
        return QStringLiteral("jpeg");
    return extension == u"tif" ? QStringLiteral("tiff") : extension;
}

} // namespace

Result<QByteArray> drawSampleImage(QSize size, int pattern, const QString& format) {
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    if (!drawScene(size, pattern).save(&buffer, format.toLatin1().constData(), 90))
        return failure(ErrorCode::NotSupported, kEncodeImage, {}, format);
    return buffer.data();
}

Result<void> writeSamplePhoto(const SamplePhoto& photo, const QString& target) {
    const auto encoded = drawSampleImage(photo.size, photo.pattern, formatFor(target));
    if (!encoded)
        return tl::unexpected(encoded.error());
    const auto tagged = withExif(*encoded, photo, target);
    if (!tagged)
        return tl::unexpected(tagged.error());
    auto file = AtomicFile::create(target);
    if (!file)
        return tl::unexpected(file.error());
    if (auto written = file->write(*tagged); !written)
        return written;
    return file->commit();
}

} // namespace clipheave::platform
