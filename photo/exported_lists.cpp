// SPDX-License-Identifier: GPL-3.0-or-later
#include "photo/list_content.h"
#include "photo/list_keys.h"

namespace clipheave::photo {

namespace {

QVariantMap dictionaryOf(const QVariantMap& properties, const char* name) {
    return properties.value(QLatin1String(name)).toMap();
}

/// Returns the positions with their signs.
QVariantMap withSigns(QVariantMap gps) {
    for (auto entry = gps.begin(); entry != gps.end(); ++entry) {
        const SignedKey* key = signedKey(entry.key());
        const auto reference = gps.constFind(referenceKey(entry.key()));
        if (key && reference != gps.constEnd() &&
            reference->toString() == QLatin1String(key->negative))
            entry.value() = -entry->toDouble();
    }
    return gps;
}

QVariantMap joined(QVariantMap first, const QVariantMap& second) {
    first.insert(second);
    return first;
}

constexpr const char* kTemplateKeys[] = {
    "Artist",    "ImageDescription",  "Copyright",   "Make",        "Model",      "LensMake",
    "LensModel", "DateTimeDigitized", "UserComment", "Keywords",    "ObjectName", "DateStamp",
    "TimeStamp", "Altitude",          "Latitude",    "LatitudeRef", "Longitude",  "LongitudeRef",
};

QVariantMap templateOf(const QVariantMap& properties) {
    QVariantMap content;
    for (const char* name : kTemplateKeys) {
        const ListKey* key = listKey(QLatin1String(name));
        const QVariant value = properties.value(key->dictionary).toMap().value(key->name);
        if (value.isValid())
            content.insert(key->name, value);
    }
    return content;
}

} // namespace

QString fileNameOf(PhotoList list) {
    switch (list) {
    case PhotoList::Tiff:
        return QStringLiteral("ExportTiffInfo.plist");
    case PhotoList::Exif:
        return QStringLiteral("ExportExifInfo.plist");
    case PhotoList::ExifAndTiff:
        return QStringLiteral("ExportExifandTiffInfo.plist");
    case PhotoList::ExifAndGps:
        return QStringLiteral("ExportExifandGPSInfo.plist");
    case PhotoList::Template:
        return QStringLiteral("templatefile.plist");
    case PhotoList::AllMetadata:
        break;
    }
    return QStringLiteral("ExportAllMetadataInfo.plist");
}

QVariantMap contentOf(PhotoList list, const QVariantMap& properties) {
    const QVariantMap tiff = dictionaryOf(properties, "{TIFF}");
    const QVariantMap exif = dictionaryOf(properties, "{Exif}");
    const QVariantMap gps = withSigns(dictionaryOf(properties, "{GPS}"));
    QVariantMap all = properties;
    if (!gps.isEmpty())
        all.insert(QStringLiteral("{GPS}"), gps);
    switch (list) {
    case PhotoList::Tiff:
        return tiff;
    case PhotoList::Exif:
        return exif;
    case PhotoList::ExifAndTiff:
        return joined(exif, tiff);
    case PhotoList::ExifAndGps:
        return joined(exif, gps);
    case PhotoList::Template:
        return templateOf(all);
    case PhotoList::AllMetadata:
        break;
    }
    return all;
}

} // namespace clipheave::photo
