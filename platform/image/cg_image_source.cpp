// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/cg_image_source.h"

#include "platform/foundation/paths.h"
#include "platform/image/heif_reader.h"
#include "platform/image/image_layout.h"
#include "platform/image/messages.h"
#include "platform/image/photo_tags.h"
#include "platform/media/model/encoded_image.h"

#include <QFile>
#include <QImageReader>

#include <algorithm>
#include <array>
#include <unistd.h>

namespace clipheave::platform {

namespace {

constexpr std::uint64_t kSignatureBytes = 64;

/// What the readers found, before it becomes the dictionaries.
struct PhotoFacts {
    PhotoTags tags;
    ImageLayout layout;
    QSize pixelSize;
    int orientation = 0; ///< 0: as the tags say
    Message problem;
};

/// Size of images that the header sniffer does not know, by the reader that the name calls for:
/// TGA carries no signature.
QSize sizeByImageReader(const FileReader& reader) {
    static constexpr std::array kFormats{"ico", "cur", "icns", "tga", "svg", "svgz",
                                         "pbm", "pgm", "ppm",  "xbm", "xpm", "wbmp"};
    const QByteArray format = pathExtension(reader.path()).toLower().toLatin1();
    if (std::find(kFormats.begin(), kFormats.end(), format) == kFormats.end())
        return {};
    QFile file;
    const int copy = dup(reader.fd());
    if (copy < 0 || !file.open(copy, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle) ||
        !file.seek(0))
        return {};
    return QImageReader(&file, format).size();
}

/// Images whose own header is the truth about their size. TIFF is not among them: the first
/// directory of a raw photo is its preview.
QSize sizeByHeader(FileReader& reader) {
    const auto header = sniffImage(reader.viewUpTo(0, FileReader::kWindow));
    if (header && header->format != QLatin1String("tiff"))
        return header->size;
    return {};
}

/// The size that the camera states; for files cut before their image.
QSize statedSize(const QVariantMap& exif) {
    return {exif.value(QStringLiteral("PixelXDimension")).toInt(),
            exif.value(QStringLiteral("PixelYDimension")).toInt()};
}

Result<PhotoFacts> readHeifPhoto(FileReader& reader) {
    const Result<HeifFacts> boxes = readHeif(reader);
    if (!boxes)
        return tl::unexpected(boxes.error());
    PhotoFacts facts;
    facts.problem = boxes->problem;
    if (auto tags = decodePhotoTags(*boxes); tags)
        facts.tags = std::move(*tags);
    else
        facts.problem = tags.error().text();
    facts.pixelSize = boxes->pixelSize.isEmpty() ? facts.tags.pixelSize : boxes->pixelSize;
    facts.orientation = boxes->orientation;
    facts.tags.iccProfile = boxes->iccProfile;
    facts.layout = {boxes->components, boxes->bitsPerComponent};
    return facts;
}

Result<PhotoFacts> readOtherPhoto(FileReader& reader) {
    PhotoFacts facts;
    facts.pixelSize = sizeByHeader(reader);
    facts.layout = imageLayout(reader);
    auto tags = readPhotoTags(reader);
    if (tags) {
        facts.tags = std::move(*tags);
        facts.problem = facts.tags.problem;
        if (facts.layout.components == 0)
            facts.layout = {facts.tags.components, facts.tags.bitsPerComponent};
        if (facts.pixelSize.isEmpty())
            facts.pixelSize = facts.tags.pixelSize;
    }
    if (facts.pixelSize.isEmpty())
        if (const auto header = sniffImage(reader.viewUpTo(0, FileReader::kWindow)))
            facts.pixelSize = header->size;
    if (facts.pixelSize.isEmpty() && tags)
        facts.pixelSize = statedSize(facts.tags.exif);
    if (facts.pixelSize.isEmpty() && !tags)
        facts.pixelSize = sizeByImageReader(reader);
    if (tags)
        return facts;
    if (facts.pixelSize.isEmpty())
        return tl::unexpected(tags.error());
    if (tags.error().code != ErrorCode::NotSupported) // an image may have no tags
        facts.problem = tags.error().text();
    return facts;
}

bool isEmpty(const PhotoFacts& facts) {
    const PhotoTags& tags = facts.tags;
    return facts.pixelSize.isEmpty() && tags.exif.isEmpty() && tags.tiff.isEmpty() &&
           tags.gps.isEmpty() && tags.iptc.isEmpty();
}

int orientationOf(const PhotoFacts& facts) {
    const int value = facts.orientation != 0
                          ? facts.orientation
                          : facts.tags.tiff.value(QStringLiteral("Orientation")).toInt();
    return value >= 1 && value <= 8 ? value : 1;
}

void addResolution(const QVariantMap& tiff, QVariantMap& properties) {
    constexpr double kCentimetresAnInch = 2.54;
    constexpr int kUnitCentimetre = 3;
    const double x = tiff.value(QStringLiteral("XResolution")).toDouble();
    const double y = tiff.value(QStringLiteral("YResolution")).toDouble();
    const bool metric = tiff.value(QStringLiteral("ResolutionUnit")).toInt() == kUnitCentimetre;
    const double factor = metric ? kCentimetresAnInch : 1;
    if (x > 0)
        properties.insert(QStringLiteral("DPIWidth"), x * factor);
    if (y > 0)
        properties.insert(QStringLiteral("DPIHeight"), y * factor);
}

QVariantMap dictionariesOf(const PhotoFacts& facts) {
    QVariantMap properties;
    if (!facts.pixelSize.isEmpty()) {
        properties.insert(QStringLiteral("PixelWidth"), facts.pixelSize.width());
        properties.insert(QStringLiteral("PixelHeight"), facts.pixelSize.height());
    }
    const int orientation = orientationOf(facts);
    properties.insert(QStringLiteral("Orientation"), orientation);
    addResolution(facts.tags.tiff, properties);
    if (facts.layout.bitsPerComponent > 0)
        properties.insert(QStringLiteral("Depth"), facts.layout.bitsPerComponent);
    if (const QString model = colorModel(facts.layout); !model.isEmpty())
        properties.insert(QStringLiteral("ColorModel"), model);
    if (const QString name = iccProfileName(facts.tags.iccProfile); !name.isEmpty())
        properties.insert(QStringLiteral("ProfileName"), name);
    QVariantMap tiff = facts.tags.tiff;
    if (!tiff.isEmpty() || orientation != 1)
        tiff.insert(QStringLiteral("Orientation"), orientation);
    const auto add = [&properties](const char* name, const QVariantMap& dictionary) {
        if (!dictionary.isEmpty())
            properties.insert(QString::fromLatin1(name), dictionary);
    };
    add("{TIFF}", tiff);
    add("{Exif}", facts.tags.exif);
    add("{GPS}", facts.tags.gps);
    add("{IPTC}", facts.tags.iptc);
    return properties;
}

} // namespace

Result<CGImageSource> CGImageSource::createWithPath(const QString& path) {
    Result<FileReader> reader = FileReader::open(path);
    if (!reader)
        return tl::unexpected(reader.error());
    const auto attributes =
        NSFileManager::defaultManager().attributesOfOpenFile(reader->fd(), path);
    if (!attributes)
        return tl::unexpected(attributes.error());
    const bool heif = isHeif(reader->viewUpTo(0, kSignatureBytes));
    const Result<PhotoFacts> facts = heif ? readHeifPhoto(*reader) : readOtherPhoto(*reader);
    if (!facts) {
        Error error = facts.error();
        error.code = ErrorCode::InvalidData;
        return tl::unexpected(std::move(error));
    }
    if (isEmpty(*facts))
        return failure(ErrorCode::InvalidData, kReadPhoto, path,
                       facts->problem.isEmpty() ? Message(kNoImage) : facts->problem);
    CGImageSource source;
    source.m_attributes = *attributes;
    source.m_properties = dictionariesOf(*facts);
    source.m_problem = facts->problem;
    return source;
}

QSize CGImageSource::pixelSize() const {
    return {m_properties.value(QStringLiteral("PixelWidth")).toInt(),
            m_properties.value(QStringLiteral("PixelHeight")).toInt()};
}

} // namespace clipheave::platform
