// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/photo_dictionaries.h"

#include "platform/image/tag_text.h"
#include "platform/image/tag_values.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace clipheave::platform {

namespace {

using ValueReader = QVariant (*)(const Exiv2::Exifdatum&);

/// A tag whose published name or form of value is not the usual one.
struct SpecialTag {
    std::string_view tag; ///< the library's name
    const char* name;     ///< null: the library's name
    ValueReader read;
};

constexpr SpecialTag kSpecialPhotoTags[] = {
    {"ExifVersion", nullptr, tagVersionValue},
    {"FlashpixVersion", "FlashPixVersion", tagVersionValue},
    {"UserComment", nullptr, tagCommentValue},
    {"ISOSpeedRatings", nullptr, tagArrayValue},
    {"LensSpecification", nullptr, tagArrayValue},
    {"SubjectArea", nullptr, tagArrayValue},
    {"ComponentsConfiguration", nullptr, tagArrayValue},
    {"FocalLengthIn35mmFilm", "FocalLenIn35mmFilm", tagPlainValue},
    {"SubjectDistanceRange", "SubjectDistRange", tagPlainValue},
    {"SubSecTime", "SubsecTime", tagPlainValue},
    {"SubSecTimeOriginal", "SubsecTimeOriginal", tagPlainValue},
    {"SubSecTimeDigitized", "SubsecTimeDigitized", tagPlainValue},
    {"MakerNote", nullptr, nullptr},
    {"InteroperabilityTag", nullptr, nullptr},
};

constexpr SpecialTag kSpecialGpsTags[] = {
    {"GPSTag", nullptr, nullptr},
    {"GPSVersionID", "GPSVersion", tagDottedValue},
    {"GPSLatitude", "Latitude", tagDegreesValue},
    {"GPSLongitude", "Longitude", tagDegreesValue},
    {"GPSDestLatitude", "DestLatitude", tagDegreesValue},
    {"GPSDestLongitude", "DestLongitude", tagDegreesValue},
    {"GPSTimeStamp", "TimeStamp", tagClockValue},
    {"GPSAltitudeRef", "AltitudeRef", tagDottedValue}, // one byte, given as text
    {"GPSProcessingMethod", "ProcessingMethod", tagCommentValue},
    {"GPSAreaInformation", "AreaInformation", tagCommentValue},
};

constexpr std::string_view kTiffNames[] = {
    "Make",         "Model",          "ImageDescription",
    "Artist",       "Copyright",      "DateTime",
    "Software",     "Orientation",    "XResolution",
    "YResolution",  "ResolutionUnit", "HostComputer",
    "DocumentName", "Compression",    "PhotometricInterpretation",
};

template <std::size_t N>
const SpecialTag* specialTag(const SpecialTag (&table)[N], std::string_view name) {
    const auto* found = std::find_if(std::begin(table), std::end(table),
                                     [name](const SpecialTag& row) { return row.tag == name; });
    return found != std::end(table) ? found : nullptr;
}

void addTag(QVariantMap& dictionary, const QString& name, const QVariant& value) {
    if (value.isValid() && !dictionary.contains(name))
        dictionary.insert(name, value);
}

void addPhotoTag(const Exiv2::Exifdatum& datum, const std::string& name, PhotoTags& tags) {
    const SpecialTag* special = specialTag(kSpecialPhotoTags, name);
    if (special == nullptr)
        addTag(tags.exif, QString::fromStdString(name), tagPlainValue(datum));
    else if (special->read != nullptr)
        addTag(tags.exif,
               special->name != nullptr ? QString::fromLatin1(special->name)
                                        : QString::fromStdString(name),
               special->read(datum));
}

void addGpsTag(const Exiv2::Exifdatum& datum, const std::string& name, PhotoTags& tags) {
    const SpecialTag* special = specialTag(kSpecialGpsTags, name);
    if (special != nullptr) {
        if (special->read != nullptr)
            addTag(tags.gps, QString::fromLatin1(special->name), special->read(datum));
        return;
    }
    const std::string_view plain(name);
    const std::string_view shortened = plain.substr(0, 3) == "GPS" ? plain.substr(3) : plain;
    addTag(tags.gps,
           QString::fromLatin1(shortened.data(), static_cast<qsizetype>(shortened.size())),
           tagPlainValue(datum));
}

/// Returns the first number of a value, 0 to 64.
int countOf(const Exiv2::Exifdatum& datum) {
    return static_cast<int>(std::clamp<std::int64_t>(integerAt(datum, 0), 0, 64));
}

void addImageTag(const Exiv2::Exifdatum& datum, const std::string& name, PhotoTags& tags) {
    if (std::find(std::begin(kTiffNames), std::end(kTiffNames), name) != std::end(kTiffNames))
        addTag(tags.tiff, QString::fromStdString(name), tagPlainValue(datum));
    else if (name == "BitsPerSample" && datum.count() > 0)
        tags.bitsPerComponent = countOf(datum);
    else if (name == "SamplesPerPixel" && datum.count() > 0)
        tags.components = countOf(datum);
}

/// Published names of IPTC data sets where they differ from the library's; arrays are repeatable.
struct IptcName {
    std::string_view dataSet;
    const char* name;
    bool isArray;
};
constexpr IptcName kIptcNames[] = {
    {"Keywords", "Keywords", true},
    {"Byline", "Byline", true},
    {"BylineTitle", "BylineTitle", true},
    {"SuppCategory", "SupplementalCategory", true},
    {"Contact", "Contact", true},
    {"Writer", "Writer/Editor", true},
    {"ObjectName", "ObjectName", false},
    {"Caption", "Caption/Abstract", false},
    {"Copyright", "CopyrightNotice", false},
    {"City", "City", false},
    {"SubLocation", "SubLocation", false},
    {"ProvinceState", "Province/State", false},
    {"CountryCode", "Country/PrimaryLocationCode", false},
    {"CountryName", "Country/PrimaryLocationName", false},
    {"Headline", "Headline", false},
    {"Credit", "Credit", false},
    {"Source", "Source", false},
    {"Category", "Category", false},
    {"Urgency", "Urgency", false},
    {"SpecialInstructions", "SpecialInstructions", false},
    {"DateCreated", "DateCreated", false},
    {"TimeCreated", "TimeCreated", false},
    {"DigitizationDate", "DigitalCreationDate", false},
    {"DigitizationTime", "DigitalCreationTime", false},
    {"Program", "OriginatingProgram", false},
    {"ProgramVersion", "ProgramVersion", false},
    {"TransmissionReference", "OriginalTransmissionReference", false},
    {"EditStatus", "EditStatus", false},
};
constexpr qsizetype kMostIptcValues = 1000;

} // namespace

void addExifDictionaries(const Exiv2::ExifData& data, PhotoTags& tags) {
    for (const Exiv2::Exifdatum& datum : data) {
        const std::string group = datum.groupName();
        const std::string name = datum.tagName();
        if (name.substr(0, 2) == "0x") // unknown tags have no published name
            continue;
        if (group == "Photo")
            addPhotoTag(datum, name, tags);
        else if (group == "GPSInfo")
            addGpsTag(datum, name, tags);
        else if (group == "Image")
            addImageTag(datum, name, tags);
    }
}

void addIptcDictionary(const Exiv2::IptcData& data, PhotoTags& tags) {
    for (const Exiv2::Iptcdatum& datum : data) {
        if (datum.record() != Exiv2::IptcDataSets::application2)
            continue;
        const std::string dataSet = datum.tagName();
        const auto* row =
            std::find_if(std::begin(kIptcNames), std::end(kIptcNames),
                         [&](const IptcName& entry) { return entry.dataSet == dataSet; });
        if (row == std::end(kIptcNames))
            continue;
        const QString name = QString::fromLatin1(row->name);
        const QString text = textFromTagBytes(datum.toString());
        if (text.isEmpty())
            continue;
        if (!row->isArray) {
            addTag(tags.iptc, name, text);
            continue;
        }
        QVariantList values = tags.iptc.value(name).toList();
        if (values.size() < kMostIptcValues)
            tags.iptc.insert(name, values << text);
    }
}

namespace {

/// Returns the library's name of a published one.
std::string libraryName(const QString& name, std::string_view group) {
    const auto named = [&](const auto& table) -> std::string {
        for (const SpecialTag& row : table)
            if (row.name != nullptr && name == QLatin1String(row.name))
                return std::string(row.tag);
        return {};
    };
    if (group == "Photo") {
        const std::string special = named(kSpecialPhotoTags);
        return special.empty() ? name.toStdString() : special;
    }
    if (group == "GPSInfo") {
        const std::string special = named(kSpecialGpsTags);
        return special.empty() ? "GPS" + name.toStdString() : special;
    }
    const std::string plain = name.toStdString();
    const bool isShown =
        std::find(std::begin(kTiffNames), std::end(kTiffNames), plain) != std::end(kTiffNames);
    return isShown ? plain : std::string();
}

/// Returns the type as a file has it: the library has more.
std::uint16_t typeInFile(Exiv2::TypeId type) {
    return type == Exiv2::comment ? static_cast<std::uint16_t>(Exiv2::undefined)
                                  : static_cast<std::uint16_t>(type);
}

} // namespace

std::optional<TagNumber> tagOfProperty(const QString& name, const char* group) {
    const std::string tag = libraryName(name, group);
    if (tag.empty())
        return std::nullopt;
    try {
        const Exiv2::ExifKey key("Exif." + std::string(group) + "." + tag);
        return TagNumber{key.tag(), typeInFile(key.defaultTypeId())};
    } catch (const Exiv2::Error&) {
        return std::nullopt;
    }
}

std::vector<std::uint16_t> tagsOfTiffDictionary() {
    static constexpr std::string_view kOfImage[] = {"Orientation", "XResolution",
                                                    "YResolution", "ResolutionUnit",
                                                    "Compression", "PhotometricInterpretation"};
    std::vector<std::uint16_t> tags;
    for (const std::string_view name : kTiffNames)
        if (std::find(std::begin(kOfImage), std::end(kOfImage), name) == std::end(kOfImage))
            tags.push_back(Exiv2::ExifKey("Exif.Image." + std::string(name)).tag());
    return tags;
}

} // namespace clipheave::platform
