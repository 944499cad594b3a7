// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/further_dictionaries.h"

#include "platform/image/exiv2_access.h"
#include "platform/image/heif_reader.h"
#include "platform/image/tag_values.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace clipheave::platform {

namespace {

constexpr std::uint64_t kSignature = 64;
constexpr long kMostValues = 64; ///< of one tag: what is longer is the maker's binary data

/// A maker's dictionary by the beginning of the library's group names.
struct MakerGroup {
    std::string_view group;
    const char* dictionary;
};
constexpr MakerGroup kMakers[] = {
    {"Apple", "{MakerApple}"},     {"Canon", "{MakerCanon}"}, {"Fujifilm", "{MakerFuji}"},
    {"Minolta", "{MakerMinolta}"}, {"Nikon", "{MakerNikon}"}, {"Olympus", "{MakerOlympus}"},
    {"Pentax", "{MakerPentax}"},
};

/// Published names where they differ from the library's.
struct MakerName {
    std::string_view group, tag;
    const char* name;
};
constexpr MakerName kMakerNames[] = {
    {"Canon", "SerialNumber", "CameraSerialNumber"},
    {"Canon", "FirmwareVersion", "Firmware"},
    {"Canon", "ImageNumber", "ImageSerialNumber"},
    {"Nikon", "ISOSpeed", "ISOSetting"},
    {"Nikon", "WhiteBalance", "WhiteBalanceMode"},
    {"Nikon", "Sharpening", "SharpenMode"},
    {"Nikon", "Focus", "FocusMode"},
    {"Nikon", "AuxiliaryLens", "LensAdapter"},
    {"Nikon", "Lens", "LensInfo"},
    {"Nikon", "FlashComp", "FlashExposureComp"},
    {"Nikon", "SerialNumber", "CameraSerialNumber"},
};

Exiv2::ExifData tagsOf(FileReader& reader) {
    if (!isHeif(reader.viewUpTo(0, kSignature))) {
        const auto image = openExiv2Image(reader);
        try {
            image->readMetadata();
        } catch (const Exiv2::Error&) {
            return image->exifData(); // a photo that is cut behind its tags keeps them
        }
        return image->exifData();
    }
    Exiv2::ExifData tags;
    const auto facts = readHeif(reader);
    if (facts && !facts->exif.isEmpty())
        Exiv2::ExifParser::decode(
            tags,
            static_cast<const Exiv2::byte*>(static_cast<const void*>(facts->exif.constData())),
            static_cast<std::uint32_t>(facts->exif.size()));
    return tags;
}

void addMakerTag(const Exiv2::Exifdatum& datum, QVariantMap& dictionaries) {
    const std::string group = datum.groupName(), tag = datum.tagName();
    const auto* maker =
        std::find_if(std::begin(kMakers), std::end(kMakers),
                     [&](const MakerGroup& row) { return group.rfind(row.group, 0) == 0; });
    const bool isText = datum.typeId() == Exiv2::asciiString;
    if (maker == std::end(kMakers) || tag.rfind("0x", 0) == 0 ||
        (!isText && static_cast<long>(datum.count()) > kMostValues))
        return;
    const auto* named =
        std::find_if(std::begin(kMakerNames), std::end(kMakerNames), [&](const MakerName& row) {
            return row.group == maker->group && row.tag == tag;
        });
    const QString name = named != std::end(kMakerNames) ? QString::fromLatin1(named->name)
                                                        : QString::fromStdString(tag);
    const QString dictionary = QString::fromLatin1(maker->dictionary);
    QVariantMap tags = dictionaries.value(dictionary).toMap();
    const QVariant value = tagPlainValue(datum);
    if (value.isValid() && !tags.contains(name))
        dictionaries.insert(dictionary, (tags.insert(name, value), tags));
}

using Finder = Exiv2::ExifData::const_iterator (*)(const Exiv2::ExifData&);

/// The facts of camera and lens, from EXIF or, where that has none, from the maker's data.
QVariantMap auxiliaryDictionary(const Exiv2::ExifData& tags) {
    struct Row {
        const char* name;
        const char* key; ///< of EXIF; null for none
        Finder ofMaker;  ///< null for none
        bool isText;
    };
    static constexpr Row kRows[] = {
        {"LensModel", "Exif.Photo.LensModel", nullptr, true},
        {"LensInfo", "Exif.Photo.LensSpecification", nullptr, false},
        {"LensSerialNumber", "Exif.Photo.LensSerialNumber", nullptr, true},
        {"SerialNumber", "Exif.Photo.BodySerialNumber", Exiv2::serialNumber, true},
        {"OwnerName", "Exif.Photo.CameraOwnerName", nullptr, true},
        {"Firmware", "Exif.Canon.FirmwareVersion", nullptr, true},
        {"FlashCompensation", nullptr, Exiv2::flashBias, false},
    };
    QVariantMap auxiliary;
    for (const Row& row : kRows) {
        auto found = row.key != nullptr ? tags.findKey(Exiv2::ExifKey(row.key)) : tags.end();
        if (found == tags.end() && row.ofMaker != nullptr)
            found = row.ofMaker(tags);
        const QVariant value = found != tags.end() ? tagPlainValue(*found) : QVariant();
        const QVariant shown = row.isText ? QVariant(value.toString().trimmed()) : value;
        if (shown.isValid() && (!row.isText || !shown.toString().isEmpty()))
            auxiliary.insert(QString::fromLatin1(row.name), shown);
    }
    return auxiliary;
}

QVariantMap makerDictionaries(FileReader& reader) {
    const auto read = withExiv2(kReadPhotoTags, reader.path(), [&] {
        const Exiv2::ExifData tags = tagsOf(reader);
        QVariantMap dictionaries;
        if (const QVariantMap auxiliary = auxiliaryDictionary(tags); !auxiliary.isEmpty())
            dictionaries.insert(QStringLiteral("{ExifAux}"), auxiliary);
        for (const Exiv2::Exifdatum& datum : tags)
            addMakerTag(datum, dictionaries);
        return dictionaries;
    });
    return read.value_or(QVariantMap()); // the fault is that of the other dictionaries too
}

} // namespace

QVariantMap furtherDictionaries(FileReader& reader) {
    QVariantMap dictionaries = makerDictionaries(reader);
    const auto add = [&](const char* name, const QVariantMap& dictionary) {
        if (!dictionary.isEmpty())
            dictionaries.insert(QString::fromLatin1(name), dictionary);
    };
    const QByteArray head = reader.viewUpTo(0, 8).toByteArray();
    if (head.startsWith("\xFF\xD8\xFF"))
        add("{JFIF}", jfifDictionary(reader));
    else if (head.startsWith("\x89PNG"))
        add("{PNG}", pngDictionary(reader));
    else if (head.startsWith("GIF8"))
        add("{GIF}", gifDictionary(reader));
    else if (head.startsWith("8BPS"))
        add("{8BIM}", photoshopDictionary(reader));
    return dictionaries;
}

} // namespace clipheave::platform
