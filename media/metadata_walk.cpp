// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/metadata_walk.h"

#include "media/fields.h"
#include "media/item_texts.h"
#include "platform/foundation/log.h"
#include "platform/media/model/tag_mapping.h"

#include <QHash>

namespace clipheave::media {

namespace {

using platform::AVMetadataItem;
using platform::EncodedImage;
using platform::FileSlice;

/// What is not one text as it stands: an image, a position, the year of a date.
enum class OtherTarget { Artwork, Location, Year };
struct OtherRow {
    const char* identifier;
    OtherTarget target;
};
constexpr char kCover[] = "itsk/covr";
// Of every table. Sources: as for kFields.
constexpr OtherRow kOtherRows[] = {
    {"id3/APIC", OtherTarget::Artwork},
    {kCover, OtherTarget::Artwork},
    {"uiso/loci", OtherTarget::Location},
    // Where phones put it, in every brand.
    {"itsk/%A9xyz", OtherTarget::Location},
    {"uiso/%A9xyz", OtherTarget::Location},
    {"udta/%A9xyz", OtherTarget::Location},
    {"mdta/com.apple.quicktime.location.ISO6709", OtherTarget::Location},
    {"id3/TDRC", OtherTarget::Year},
};

struct FieldRead {
    const Field* field = nullptr;
    bool standsIn = false;
};
using FieldMap = QHash<QString, FieldRead>;

FieldMap fieldMap(int walks) {
    FieldMap map;
    for (const Field& field : kFields)
        for (const ReadIdentifier& read : field.read)
            if ((read.walks & walks) != 0)
                map.insert(QString::fromLatin1(read.identifier), {&field, read.standsIn});
    return map;
}

const FieldMap& fieldsOf(WalkTable table) {
    static const FieldMap video = fieldMap(kVideos | kSingleVideos);
    static const FieldMap videoInFolder = fieldMap(kVideos);
    static const FieldMap audio = fieldMap(kAudioFiles);
    static const FieldMap aiff = fieldMap(kAudioFiles | kAiffFiles);
    switch (table) {
    case WalkTable::Video:
        return video;
    case WalkTable::VideoInFolder:
        return videoInFolder;
    case WalkTable::AiffAudio:
        return aiff;
    case WalkTable::Audio:
        break;
    }
    return audio;
}

QString nothingIfEmpty(const QString& text) {
    return text.isEmpty() ? QString() : text;
}

void setArtwork(IKImageItem& item, const AVMetadataItem& source) {
    EncodedImage image;
    if (const auto* slice = std::get_if<FileSlice>(&source.value)) {
        if (auto reader = platform::FileReader::open(slice->path))
            image = EncodedImage::fromSlice(*reader, *slice);
    } else if (const auto* bytes = std::get_if<QByteArray>(&source.value)) {
        image = EncodedImage::fromBytes(*bytes);
    }
    if (!image.isNull())
        item.fileImage = image;
}

void setKeywords(IKImageItem& item, const AVMetadataItem& source) {
    item.fileKeyWords = nothingIfEmpty(source.stringValue());
    if (platform::logs(platform::LogLevel::Trace)) {
        const bool isText = std::holds_alternative<QString>(source.value);
        platform::log(platform::LogLevel::Trace,
                      QStringLiteral("[AVitem value]===%1,=%2=")
                          .arg(item.fileKeyWords, isText ? u"text" : u"data"),
                      item.filePath);
    }
}

void applyField(IKImageItem& item, const Field& field, const AVMetadataItem& source) {
    switch (field.readAs) {
    case ReadAs::Text:
        item.*field.record = nothingIfEmpty(source.stringValue());
        break;
    case ReadAs::Keywords:
        setKeywords(item, source);
        break;
    case ReadAs::Track:
        item.*field.record = nothingIfEmpty(platform::trackNumberText(source));
        break;
    case ReadAs::Date:
        if (const QString text = source.stringValue(); !text.isEmpty())
            applyShootDateText(item, text, SecondsCut::TwoDigits);
        break;
    }
}

/// Deliberate: an original artist takes no performer's place, whatever the order in the file.
void applyRead(IKImageItem& item, const FieldRead& read, const AVMetadataItem& source) {
    if (!read.standsIn || (item.*read.field->record).isEmpty())
        applyField(item, *read.field, source);
}

/// ID3v2.4 has a date where earlier versions have the year, which wins where both stand.
void setYearOfDate(IKImageItem& item, const AVMetadataItem& source) {
    if (item.fileReleasedYear.isEmpty())
        item.fileReleasedYear = nothingIfEmpty(platform::yearText(source.stringValue()));
}

/// Returns false when no row names the item.
bool applyOther(IKImageItem& item, const AVMetadataItem& source) {
    for (const OtherRow& row : kOtherRows) {
        if (source.identifier != QLatin1String(row.identifier))
            continue;
        if (row.target == OtherTarget::Artwork)
            setArtwork(item, source);
        else if (row.target == OtherTarget::Year)
            setYearOfDate(item, source);
        else
            applyLocationText(item, source.stringValue());
        return true;
    }
    return false;
}

/// Make and model have one more row each: whatever maps to the common identifier.
void applyCommonRow(IKImageItem& item, const AVMetadataItem& source) {
    const QString common = source.commonIdentifier();
    if (common == u"common/make")
        item.fileMake = nothingIfEmpty(source.stringValue());
    else if (common == u"common/model")
        item.fileModel = nothingIfEmpty(source.stringValue());
}

} // namespace

void applyMetadata(IKImageItem& item, const QList<AVMetadataItem>& metadata, WalkTable table) {
    const FieldMap& fields = fieldsOf(table);
    const platform::SourceBox* box = nullptr;
    for (const AVMetadataItem& source : metadata) {
        // Of several images in one entry the first is the cover.
        const bool isFurther = source.source && source.source.get() == box;
        box = source.source.get();
        if (isFurther && source.identifier == QLatin1String(kCover))
            continue;
        const auto field = fields.constFind(source.identifier);
        if (field != fields.cend())
            applyRead(item, *field, source);
        else if (!applyOther(item, source) && table == WalkTable::Video)
            applyCommonRow(item, source);
    }
}

} // namespace clipheave::media
