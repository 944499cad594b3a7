// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/media_readers.h"

#include "media/item_texts.h"
#include "media/media_kind.h"
#include "platform/foundation/dates.h"
#include "platform/foundation/error_text.h"
#include "platform/foundation/paths.h"
#include "platform/image/cg_image_source.h"

#include <QVariantMap>

namespace clipheave::media {

namespace {

using namespace platform;

QString textOf(const QVariantMap& dictionary, const char16_t* key) {
    const QString text = dictionary.value(QString::fromUtf16(key)).toString();
    return text.isEmpty() ? QString() : text;
}

/// Sign of a reference letter: "S" and "W" are "-".
QString signOf(const QString& reference) {
    const bool negative = reference.startsWith(u'S') || reference.startsWith(u'W');
    return negative ? QStringLiteral("-") : QStringLiteral("+");
}

void applyPosition(IKImageItem& item, const QVariantMap& gps) {
    if (!gps.contains(QStringLiteral("Latitude")) || !gps.contains(QStringLiteral("Longitude")))
        return;
    item.filelatitude = gps.value(QStringLiteral("Latitude")).toDouble();
    item.latitudeFormat = signOf(textOf(gps, u"LatitudeRef"));
    item.filelongtitude = gps.value(QStringLiteral("Longitude")).toDouble();
    item.longtitudeFormat = signOf(textOf(gps, u"LongitudeRef"));
    if (gps.contains(QStringLiteral("Altitude"))) {
        item.fileAtitude = gps.value(QStringLiteral("Altitude")).toDouble();
        const bool below = gps.value(QStringLiteral("AltitudeRef")).toInt() == 1;
        item.AtitudeFormat = below ? QStringLiteral("-") : QStringLiteral("+");
    }
}

void applyDate(IKImageItem& item, const QVariantMap& exif, const QVariantMap& tiff) {
    for (const QString& text : {textOf(exif, u"DateTimeOriginal"),
                                textOf(exif, u"DateTimeDigitized"), textOf(tiff, u"DateTime")}) {
        if (text.isEmpty())
            continue;
        item.shootDateStr = text;
        if (const auto date = parseDateText(text))
            item.shootDate = *date;
        return;
    }
}

void applyDictionaries(IKImageItem& item, const QVariantMap& properties) {
    const QVariantMap exif = properties.value(QStringLiteral("{Exif}")).toMap();
    const QVariantMap tiff = properties.value(QStringLiteral("{TIFF}")).toMap();
    const QVariantMap iptc = properties.value(QStringLiteral("{IPTC}")).toMap();
    applyDate(item, exif, tiff);
    applyPosition(item, properties.value(QStringLiteral("{GPS}")).toMap());
    item.fileMake = textOf(tiff, u"Make");
    item.fileModel = textOf(tiff, u"Model");
    item.fileArist = textOf(tiff, u"Artist");
    item.fileCopyright = textOf(tiff, u"Copyright");
    item.fileDescription = textOf(tiff, u"ImageDescription");
    item.fileTitle = textOf(iptc, u"ObjectName");
    const QString keywords =
        iptc.value(QStringLiteral("Keywords")).toStringList().join(QStringLiteral(", "));
    item.fileKeyWords = keywords.isEmpty() ? QString() : keywords;
}

void applyPhotoAttributes(IKImageItem& item, const FileAttributes& attributes) {
    item.sizeBytes = attributes.NSFileSize;
    item.fileSize = MediaKind::sizeText(attributes.NSFileSize);
    item.fileCreateDate = attributes.NSFileCreationDate;
    item.fileCreateDateStr = createdDateText(attributes.NSFileCreationDate);
    item.modificationDate = attributes.NSFileModificationDate;
}

} // namespace

Result<MutableItemPointer> readPhotoItem(const QString& path) {
    auto item = std::make_shared<IKImageItem>();
    item->fileName = lastPathComponent(path);
    item->filePath = path;
    const auto source = CGImageSource::createWithPath(path);
    if (source) {
        applyPhotoAttributes(*item, source->attributes());
        item->filePixWidth = source->pixelSize().width();
        item->filepixHeigh = source->pixelSize().height();
        item->problem = source->problem().text();
        applyDictionaries(*item, source->properties());
        return item;
    }
    const auto attributes = NSFileManager::defaultManager().attributesOfItemAtPath(path);
    if (!attributes || !attributes->isRegular)
        return tl::unexpected(source.error());
    applyPhotoAttributes(*item, *attributes);
    item->problem = textBeside(source.error(), path);
    return item;
}

} // namespace clipheave::media
