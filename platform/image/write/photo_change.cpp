// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/write/photo_change.h"

#include "platform/image/photo_dictionaries.h"
#include "platform/image/write/tag_encoding.h"
#include "platform/image/write/thumbnail_tags.h"

#include <algorithm>
#include <array>

namespace clipheave::platform {

using Kind = TiffDirectory::Kind;

namespace {

constexpr std::uint16_t kOrientation = 0x0112;

/// Tags of IFD0 that Windows keeps the same facts in, as UTF-16.
constexpr std::uint16_t kXpTitle = 0x9C9B, kXpComment = 0x9C9C, kXpAuthor = 0x9C9D,
                        kXpKeywords = 0x9C9E, kXpSubject = 0x9C9F;
constexpr std::uint16_t kBytes = 1;

/// Where on Earth the image lies. Source: OGC 19-008r4 (GeoTIFF), annex B.
constexpr std::uint16_t kGeoTiffTags[] = {0x830E, 0x8482, 0x85D8, 0x87AF, 0x87B0, 0x87B1};

/// IPTC data sets of record 2. Source: IPTC-NAA IIM 4.2.
struct IptcKey {
    const char* name;
    std::uint8_t dataSet;
};
constexpr IptcKey kIptcKeys[] = {
    {"ObjectName", 5},
    {"EditStatus", 7},
    {"Urgency", 10},
    {"Category", 15},
    {"SupplementalCategory", 20},
    {"Keywords", 25},
    {"SpecialInstructions", 40},
    {"DateCreated", 55},
    {"TimeCreated", 60},
    {"DigitalCreationDate", 62},
    {"DigitalCreationTime", 63},
    {"OriginatingProgram", 65},
    {"ProgramVersion", 70},
    {"Byline", 80},
    {"BylineTitle", 85},
    {"City", 90},
    {"SubLocation", 92},
    {"Province/State", 95},
    {"Country/PrimaryLocationCode", 100},
    {"Country/PrimaryLocationName", 101},
    {"OriginalTransmissionReference", 103},
    {"Headline", 105},
    {"Credit", 110},
    {"Source", 115},
    {"CopyrightNotice", 116},
    {"Contact", 118},
    {"Caption/Abstract", 120},
    {"Writer/Editor", 122},
};

QStringList textsOf(const QVariant& value) {
    if (value.typeId() == QMetaType::QVariantList || value.typeId() == QMetaType::QStringList) {
        QStringList texts;
        for (const QVariant& text : value.toList())
            if (!text.toString().isEmpty())
                texts.append(text.toString());
        return texts;
    }
    const QString text = value.toString();
    return text.isEmpty() ? QStringList() : QStringList{text};
}

/// Returns dates and times as the data sets have them, "CCYYMMDD" and "HHMMSS+HHMM": lists show
/// them with signs between.
QStringList inIptcForm(std::uint8_t dataSet, QStringList texts) {
    const bool isDate = dataSet == 55 || dataSet == 62, isTime = dataSet == 60 || dataSet == 63;
    for (QString& text : texts) {
        if (isDate || isTime)
            text.remove(u':');
        if (isDate)
            text.remove(u'-');
    }
    return texts;
}

void readIptc(const QVariantMap& dictionary, PhotoChange& change) {
    for (auto it = dictionary.begin(); it != dictionary.end(); ++it) {
        const auto* row =
            std::find_if(std::begin(kIptcKeys), std::end(kIptcKeys),
                         [&](const IptcKey& key) { return it.key() == QLatin1String(key.name); });
        if (row == std::end(kIptcKeys))
            change.unknownKeys.append(it.key());
        else
            change.iptc[row->dataSet] = inIptcForm(row->dataSet, textsOf(it.value()));
    }
}

void readTags(const QVariantMap& dictionary, const char* group, std::vector<AskedTag>& tags,
              PhotoChange& change) {
    for (auto it = dictionary.begin(); it != dictionary.end(); ++it) {
        const auto known = tagOfProperty(it.key(), group);
        const AskedTag asked{known ? known->tag : std::uint16_t{0},
                             known ? known->type : std::uint16_t{0}, it.value(), it.key()};
        const bool isBlank = !it->isValid() || it->toString().isEmpty();
        const bool isText = it->typeId() == QMetaType::QString;
        if (known &&
            ((isBlank && (isText || !it->isValid())) || encodedTag(asked, TiffStructure())))
            tags.push_back(asked);
        else
            change.unknownKeys.append(it.key());
    }
}

void askText(std::vector<AskedTag>& tags, std::uint16_t tag, const QVariant& value) {
    tags.push_back({tag, kBytes, value, {}});
}

/// Windows' texts of a fact, where they stand, follow it: an old one would be shown there.
void addWindowsTexts(const PhotoChange& change, TiffEditor& editor, std::vector<AskedTag>& more) {
    const auto renew = [&](std::uint16_t tag, const QString& text) {
        if (editor.has(Kind::Image, tag))
            askText(more, tag, text.isEmpty() ? QVariant() : QVariant(text));
    };
    for (const AskedTag& asked : change.image)
        if (asked.name == QLatin1String("Artist"))
            renew(kXpAuthor, asked.value.toString());
        else if (asked.name == QLatin1String("ImageDescription"))
            renew(kXpSubject, asked.value.toString());
    for (const AskedTag& asked : change.exif)
        if (asked.name == QLatin1String("UserComment"))
            renew(kXpComment, asked.value.toString());
    if (const auto title = change.iptc.find(5); title != change.iptc.end())
        renew(kXpTitle, title->second.join(u' '));
    if (const auto keywords = change.iptc.find(25); keywords != change.iptc.end())
        renew(kXpKeywords, keywords->second.join(u';'));
}

void apply(Kind kind, const std::vector<AskedTag>& tags, TiffEditor& editor) {
    for (const AskedTag& asked : tags) {
        const auto value = encodedTag(asked, editor.structure());
        if (value)
            editor.set(kind, asked.tag, *value);
        else
            editor.remove(kind, asked.tag);
    }
}

void setRaw(TiffEditor& editor, Kind kind, std::uint16_t tag, std::uint16_t type,
            const QByteArray& bytes) {
    if (!editor.has(kind, tag))
        editor.set(kind, tag,
                   {type,
                    static_cast<std::uint32_t>(static_cast<std::uint64_t>(bytes.size()) /
                                               tiffTypeSize(type)),
                    bytes});
}

/// Tags of the Exif directory (Exif 2.32, 4.6.5), as ranges. Some writers of TIFF files put them
/// beside those of the image.
bool isExifTag(std::uint16_t tag) {
    static constexpr std::pair<std::uint16_t, std::uint16_t> kRanges[] = {
        {0x829A, 0x829A}, {0x829D, 0x829D}, {0x8822, 0x8822}, {0x8824, 0x8824}, {0x8827, 0x8828},
        {0x8830, 0x8835}, {0x9000, 0x9004}, {0x9010, 0x9012}, {0x9101, 0x9102}, {0x9201, 0x920A},
        {0x9214, 0x9214}, {0x927C, 0x927C}, {0x9286, 0x9292}, {0x9400, 0x9405}, {0xA000, 0xA005},
        {0xA20B, 0xA217}, {0xA300, 0xA302}, {0xA401, 0xA40C}, {0xA420, 0xA420}, {0xA430, 0xA435},
        {0xA460, 0xA462}, {0xA500, 0xA500}};
    return std::any_of(std::begin(kRanges), std::end(kRanges), [tag](const auto& range) {
        return tag >= range.first && tag <= range.second;
    });
}

void removeExif(TiffEditor& editor) {
    editor.removeAll(Kind::Exif);
    std::set<std::uint16_t> strayed;
    for (const TiffDirectory& directory : editor.structure().directories)
        for (const TiffEntry& entry : directory.entries)
            if (isExifTag(entry.tag))
                strayed.insert(entry.tag);
    for (const std::uint16_t tag : strayed)
        for (const Kind kind : {Kind::Image, Kind::Sub})
            editor.remove(kind, tag);
}

/// What an Exif directory must have (Exif 2.32, 4.6.8) when this is the first of the file.
void addMandatoryExif(TiffEditor& editor) {
    constexpr std::uint16_t kUndefined = 7, kShort = 3, kStrips = 0x0111, kTiles = 0x0144;
    setRaw(editor, Kind::Exif, 0x9000, kUndefined, "0232");
    if (!editor.has(Kind::Image, kStrips) && !editor.has(Kind::Image, kTiles)) // not of TIFF files
        setRaw(editor, Kind::Exif, 0x9101, kUndefined, QByteArray("\1\2\3\0", 4));
    setRaw(editor, Kind::Exif, 0xA000, kUndefined, "0100");
    setRaw(editor, Kind::Exif, 0xA001, kShort, editor.structure().bytes16(0xFFFF));
}

bool isEmptyBlock(const TiffStructure& structure) {
    return std::all_of(structure.directories.begin(), structure.directories.end(),
                       [](const TiffDirectory& directory) { return directory.entries.empty(); });
}

/// Returns the entries that an all-metadata removal keeps: how the picture stands, and beside that
/// what a block must have (Exif 2.32, 4.6.8): its resolution and where its colours lie.
std::set<std::uint16_t> keptOfEverything(const TiffEditor& editor) {
    constexpr std::uint16_t kUpright = 1, kLast = 8;
    const TiffStructure& structure = editor.structure();
    const TiffEntry* orientation = structure.directories.front().find(kOrientation);
    if (orientation == nullptr || orientation->valueSize != 2)
        return {};
    const std::uint16_t value = structure.u16(orientation->field);
    if (value <= kUpright || value > kLast)
        return {};
    return {kOrientation, 0x011A, 0x011B, 0x0128, 0x0213};
}

/// The dictionaries that a removal of all metadata names. "{8BIM}" is the one that no command
/// names.
constexpr const char* kDictionaries[] = {
    "{Exif}",         "{GPS}",       "{TIFF}",         "{GIF}",         "{JFIF}",    "{PNG}",
    "{IPTC}",         "{Raw}",       "{MakerCanon}",   "{MakerNikon}",  "{ExifAux}", "{EXR}",
    "{MakerMinolta}", "{MakerFuji}", "{MakerOlympus}", "{MakerPentax}", "{8BIM}",
};

bool removesEvery(const QVariantMap& properties) {
    return std::all_of(std::begin(kDictionaries), std::end(kDictionaries), [&](const char* name) {
        const auto found = properties.find(QLatin1String(name));
        return found != properties.end() && !found->isValid();
    });
}

} // namespace

QVariantMap everyDictionaryRemoved() {
    QVariantMap properties;
    for (const char* name : kDictionaries)
        properties.insert(QLatin1String(name), QVariant());
    return properties;
}

PhotoChange changeOf(const QVariantMap& properties) {
    PhotoChange change;
    const auto read = [&](const char* name, bool& drops, const auto& reader) {
        const auto found = properties.find(QLatin1String(name));
        if (found == properties.end())
            return;
        drops = !found->isValid() || found->isNull();
        if (!drops)
            reader(found->toMap());
    };
    read("{Exif}", change.dropsExif,
         [&](const QVariantMap& map) { readTags(map, "Photo", change.exif, change); });
    read("{GPS}", change.dropsGps,
         [&](const QVariantMap& map) { readTags(map, "GPSInfo", change.gps, change); });
    read("{TIFF}", change.dropsTiff,
         [&](const QVariantMap& map) { readTags(map, "Image", change.image, change); });
    read("{IPTC}", change.dropsIptc, [&](const QVariantMap& map) { readIptc(map, change); });
    change.dropsEverything = removesEvery(properties);
    return change;
}

QString iptcName(std::uint8_t dataSet) {
    const auto* row = std::find_if(std::begin(kIptcKeys), std::end(kIptcKeys),
                                   [&](const IptcKey& key) { return key.dataSet == dataSet; });
    return row != std::end(kIptcKeys) ? QLatin1String(row->name) : QString::number(dataSet);
}

void applyChange(const PhotoChange& change, TiffEditor& editor) {
    if (change.dropsEverything) {
        editor.removeFurtherImages();
        editor.keepOnly(keptOfEverything(editor));
    } else if (change.dropsTiff) {
        for (const std::uint16_t tag : tagsOfTiffDictionary())
            editor.remove(Kind::Image, tag);
    }
    if (change.dropsExif || change.dropsEverything)
        removeExif(editor);
    if (change.dropsGps || change.dropsEverything) {
        editor.removeAll(Kind::Gps);
        for (const std::uint16_t tag : kGeoTiffTags)
            editor.remove(Kind::Image, tag);
    }
    std::vector<AskedTag> windows;
    addWindowsTexts(change, editor, windows);
    apply(Kind::Image, windows, editor);
    const bool setsExif = std::any_of(change.exif.begin(), change.exif.end(),
                                      [](const AskedTag& tag) { return tag.value.isValid(); });
    if (setsExif && !editor.has(Kind::Exif))
        addMandatoryExif(editor);
    apply(Kind::Image, change.image, editor);
    apply(Kind::Exif, change.exif, editor);
    apply(Kind::Gps, change.gps, editor);
}

namespace {

/// The same but for the thumbnails.
Result<QByteArray> changedBlock(const QByteArray& block, const PhotoChange& change) {
    if (block.isEmpty() && !change.setsTags())
        return QByteArray();
    auto editor = TiffEditor::open(TiffSource::ofBlock(block.isEmpty() ? emptyTiffBlock() : block));
    if (!editor)
        return tl::unexpected(editor.error());
    applyChange(change, *editor);
    const auto patch = editor->finish();
    if (!patch)
        return tl::unexpected(patch.error());
    const QByteArray changed =
        compactedTiffBlock(patch->applied(block.isEmpty() ? emptyTiffBlock() : block));
    const auto structure = readTiffStructure(TiffSource::ofBlock(changed));
    return structure && isEmptyBlock(*structure) ? QByteArray() : changed;
}

} // namespace

Result<QByteArray> changedTiffBlock(const QByteArray& block, const PhotoChange& change) {
    auto changed = changedBlock(block, change);
    if (changed && change.changesTags())
        changed = withChangedThumbnails(*changed, change, &changedBlock);
    return changed;
}

PhotoChange changeOfFurtherImage(const PhotoChange& change, const TiffEditor& editor) {
    PhotoChange further = change;
    const auto reduce = [&](Kind kind, std::vector<AskedTag>& tags) {
        tags.erase(
            std::remove_if(tags.begin(), tags.end(),
                           [&](const AskedTag& asked) { return !editor.has(kind, asked.tag); }),
            tags.end());
    };
    reduce(Kind::Image, further.image);
    reduce(Kind::Exif, further.exif);
    if (!editor.has(Kind::Gps))
        further.gps.clear();
    return further;
}

} // namespace clipheave::platform
