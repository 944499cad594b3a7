// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/photo_tags.h"

#include "platform/image/exiv2.h"
#include "platform/image/messages.h"
#include "platform/image/photo_dictionaries.h"

#include <QMutex>

#include <exiv2/webpimage.hpp> // not among those of exiv2.hpp

#include <algorithm>
#include <array>
#include <mutex>
#include <string>

namespace clipheave::platform {

namespace {

void lockXmp(void* mutex, bool lock) {
    if (lock)
        static_cast<QMutex*>(mutex)->lock();
    else
        static_cast<QMutex*>(mutex)->unlock();
}

/// The XMP part of the library keeps state of the whole process; it takes our lock around it.
void initializeLibrary() {
    static QMutex mutex;
    static std::once_flag once;
    std::call_once(once, [] {
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
        Exiv2::XmpParser::initialize(&lockXmp, &mutex);
    });
}

/// Runs `work`; what it throws becomes a failure. The only place where exceptions of the library
/// end.
template <class Work>
Result<PhotoTags> guarded(const QString& path, MessageCode operation, Work work) {
    const auto failed = [&](ErrorCode code, const Message& text) {
        return failure(code, operation, path, text);
    };
    try {
        initializeLibrary();
        return work();
    } catch (const Exiv2::Error& error) {
        const bool unknown = error.code() == Exiv2::ErrorCode::kerFileContainsUnknownImageType ||
                             error.code() == Exiv2::ErrorCode::kerUnsupportedImageType;
        return failed(unknown ? ErrorCode::NotSupported : ErrorCode::InvalidData,
                      QString::fromUtf8(error.what()));
    } catch (const std::bad_alloc&) {
        return failed(ErrorCode::LimitExceeded, kTagsNeedTooMuchMemory);
    } catch (const std::exception& error) {
        return failed(ErrorCode::InvalidData, QString::fromUtf8(error.what()));
    }
}

/// The library also reads videos, where hostile files keep it busy for ever, and sidecars.
bool isPhoto(const Exiv2::Image& image) {
    static constexpr std::array kTypes{
        Exiv2::ImageType::jpeg, Exiv2::ImageType::exv,  Exiv2::ImageType::crw,
        Exiv2::ImageType::cr2,  Exiv2::ImageType::tiff, Exiv2::ImageType::mrw,
        Exiv2::ImageType::png,  Exiv2::ImageType::webp, Exiv2::ImageType::orf,
        Exiv2::ImageType::psd,  Exiv2::ImageType::raf,  Exiv2::ImageType::rw2,
        Exiv2::ImageType::gif,  Exiv2::ImageType::bmp,  Exiv2::ImageType::tga,
        Exiv2::ImageType::jp2,  Exiv2::ImageType::pgf};
    return std::find(kTypes.begin(), kTypes.end(), image.imageType()) != kTypes.end();
}

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
    return guarded(reader.path(), kReadPhotoTags, [&]() -> PhotoTags {
        // The open file once more under a name of plain ASCII: the library takes names as text.
        const std::string name = "/proc/self/fd/" + std::to_string(reader.fd());
        const auto image = std::unique_ptr<Exiv2::Image>{Exiv2::ImageFactory::open(name).release()};
        if (!isPhoto(*image))
            throw Exiv2::Error(Exiv2::ErrorCode::kerUnsupportedImageType,
                               static_cast<int>(image->imageType()));
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
    return guarded({}, kReadPhotoTags, [&] {
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
