// SPDX-License-Identifier: GPL-3.0-or-later
#include "photo/photo_facts.h"

#include "media/image_item.h"
#include "photo/photo_texts.h"
#include "platform/foundation/dates.h"
#include "platform/image/cg_image_source.h"
#include "platform/index/md_item.h"

#include <cmath>

namespace clipheave::photo {

namespace {

/// Cameras name times of less than this as a fraction.
constexpr double kShortestInDecimals = 0.3; // s

QString plainNumber(double number) {
    return QString::number(number, 'g', 4);
}

/// "1/250 s, f/8", or what is there of it.
QString exposureText(const QVariantMap& exif) {
    QStringList parts;
    const double seconds = exif.value(QStringLiteral("ExposureTime")).toDouble();
    if (std::isfinite(seconds) && seconds > 0)
        parts.append(seconds < kShortestInDecimals
                         ? QStringLiteral("1/%1 s").arg(plainNumber(std::round(1 / seconds)))
                         : QStringLiteral("%1 s").arg(plainNumber(seconds)));
    const double aperture = exif.value(QStringLiteral("FNumber")).toDouble();
    if (std::isfinite(aperture) && aperture > 0)
        parts.append(QStringLiteral("f/%1").arg(plainNumber(aperture)));
    return parts.join(QStringLiteral(", "));
}

QString focalLengthText(const QVariantMap& exif) {
    const double length = exif.value(QStringLiteral("FocalLength")).toDouble();
    return std::isfinite(length) && length > 0 ? QStringLiteral("%1 mm").arg(plainNumber(length))
                                               : QString();
}

QString dimensionsText(const media::IKImageItem& item) {
    return item.filePixWidth > 0 && item.filepixHeigh > 0
               ? QStringLiteral("%1 x %2").arg(item.filePixWidth).arg(item.filepixHeigh)
               : QString();
}

QString kindText(const media::IKImageItem& item) {
    return item.filePath.isEmpty()
               ? QString()
               : platform::kindTextForFile(item.filePath, platform::Container::Unknown);
}

QString modifiedText(const media::IKImageItem& item) {
    return platform::formatDate(item.modificationDate, platform::DatePattern::Colon);
}

media::FactLine fact(const char* label, const QString& value) {
    return {QLatin1String(label), value.isEmpty() ? QString() : value};
}

} // namespace

QList<media::FactLine> photoFacts(const media::IKImageItem& item, const QVariantMap& properties) {
    const QVariantMap exif = properties.value(QStringLiteral("{Exif}")).toMap();
    const QStringList speeds = exif.value(QStringLiteral("ISOSpeedRatings")).toStringList();
    return {fact("Kind: ", kindText(item)),
            fact("File Dimensions: ", dimensionsText(item)),
            fact("File Size: ", item.fileSize),
            fact("Lens: ", exif.value(QStringLiteral("LensModel")).toString().trimmed()),
            fact("Exposure: ", exposureText(exif)),
            fact("ISO: ", speeds.value(0)),
            fact("Focal length: ", focalLengthText(exif)),
            fact("Created Date: ", item.fileCreateDateStr),
            fact("Modified Date: ", modifiedText(item))};
}

platform::Result<ShownPhoto> shownPhoto(const media::IKImageItem& item) {
    const auto source = platform::CGImageSource::createWithPath(item.filePath);
    if (!source)
        return tl::unexpected(source.error());
    return ShownPhoto{paneOfProperties(source->properties()),
                      photoFacts(item, source->properties())};
}

platform::Result<PhotoDates> photoDates(const media::IKImageItem& item) {
    const auto source = platform::CGImageSource::createWithPath(item.filePath);
    if (!source)
        return tl::unexpected(source.error());
    const QVariantMap exif = source->properties().value(QStringLiteral("{Exif}")).toMap();
    return PhotoDates{exif.value(QStringLiteral("DateTimeOriginal")).toString(),
                      exif.value(QStringLiteral("DateTimeDigitized")).toString(),
                      item.fileCreateDateStr, modifiedText(item)};
}

} // namespace clipheave::photo
