// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/photo_tags.h"

#include "platform/image/exiv2_access.h"
#include "platform/image/photo_dictionaries.h"

#include <cstdint>

namespace clipheave::platform {

namespace {

QSize plausibleSize(std::int64_t width, std::int64_t height) {
    constexpr std::int64_t kLargest = 1 << 20;
    if (width <= 0 || height <= 0 || width > kLargest || height > kLargest)
        return {};
    return {static_cast<int>(width), static_cast<int>(height)};
}

/// Tags of a TIFF structure that holds one group only, its main directory read as that group.
void addCanonTags(const QByteArray& bytes, const char* group, PhotoTags& tags) {
    if (bytes.isEmpty())
        return;
    Exiv2::ExifData raw, regrouped;
    const auto* data = static_cast<const Exiv2::byte*>(static_cast<const void*>(bytes.constData()));
    Exiv2::ExifParser::decode(raw, data, static_cast<std::uint32_t>(bytes.size()));
    for (const Exiv2::Exifdatum& datum : raw)
        if (datum.groupName() == "Image")
            regrouped.add(Exiv2::ExifKey(datum.tag(), group), &datum.value());
    addExifDictionaries(regrouped, tags);
    if (tags.pixelSize.isEmpty()) {
        const auto width = raw.findKey(Exiv2::ExifKey("Exif.Image.ImageWidth"));
        const auto height = raw.findKey(Exiv2::ExifKey("Exif.Image.ImageLength"));
        if (width != raw.end() && height != raw.end() && width->count() > 0 && height->count() > 0)
            tags.pixelSize = plausibleSize(integerAt(*width, 0), integerAt(*height, 0));
    }
}

/// Returns what ended the reading before all was read, or nothing. Deliberate: a photo that is cut
/// behind its tags keeps them. Releases of the library differ in whether they report such an end.
Message readAsFarAsItGoes(Exiv2::Image& image, const QString& path) {
    try {
        image.readMetadata();
        return {};
    } catch (const Exiv2::Error& error) {
        if (image.exifData().empty() && image.iptcData().empty())
            throw;
        return Error{ErrorCode::InvalidData, kReadPhotoTags, path, QString::fromUtf8(error.what())}
            .text();
    }
}

} // namespace

Result<PhotoTags> readPhotoTags(FileReader& reader) {
    return withExiv2(kReadPhotoTags, reader.path(), [&] {
        const auto image = openExiv2Image(reader);
        PhotoTags tags;
        tags.problem = readAsFarAsItGoes(*image, reader.path());
        addExifDictionaries(image->exifData(), tags);
        addIptcDictionary(image->iptcData(), tags);
        tags.pixelSize = plausibleSize(image->pixelWidth(), image->pixelHeight());
        tags.iccProfile = iccProfileOf(*image);
        return tags;
    });
}

Result<PhotoTags> decodePhotoTags(const HeifFacts& facts) {
    return withExiv2(kReadPhotoTags, {}, [&] {
        PhotoTags tags;
        if (!facts.exif.isEmpty()) {
            Exiv2::ExifData data;
            Exiv2::ExifParser::decode(
                data,
                static_cast<const Exiv2::byte*>(static_cast<const void*>(facts.exif.constData())),
                static_cast<std::uint32_t>(facts.exif.size()));
            addExifDictionaries(data, tags);
        }
        addCanonTags(facts.mainTags, "Image", tags);
        addCanonTags(facts.photoTags, "Photo", tags);
        addCanonTags(facts.gpsTags, "GPSInfo", tags);
        return tags;
    });
}

} // namespace clipheave::platform
