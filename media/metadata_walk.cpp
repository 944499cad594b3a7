// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/metadata_walk.h"

#include "media/item_texts.h"
#include "platform/foundation/log.h"

#include <QHash>

#include <iterator>
#include <span>

namespace clipheave::media {

namespace {

using platform::AVMetadataItem;
using platform::EncodedImage;
using platform::FileSlice;

/// How an item's value reaches the record.
enum class Target { Text, Keywords, Track, Artwork, Location, Date };

struct Row {
    const char* identifier;
    Target target;
    QString IKImageItem::*field; ///< of text targets
};

constexpr QString IKImageItem::*kNoField = nullptr;

// The rows of a table in the order in which they are tested; sources: the key spaces of QuickTime
// metadata, iTunes lists, ISO user data, ID3 frames.
constexpr Row kVideoRows[] = {
    {"id3/TALB", Target::Text, &IKImageItem::fileAblumName},
    {"itsk/%A9alb", Target::Text, &IKImageItem::fileAblumName},
    {"id3/TPE1", Target::Text, &IKImageItem::fileArist},
    {"itsk/%A9ART", Target::Text, &IKImageItem::fileArist},
    {"id3/APIC", Target::Artwork, kNoField},
    {"itsk/covr", Target::Artwork, kNoField},
    {"id3/TIT2", Target::Text, &IKImageItem::fileTitle},
    {"itsk/%A9nam", Target::Text, &IKImageItem::fileTitle},
    {"uiso/loci", Target::Location, kNoField},
    {"mdta/com.apple.quicktime.location.ISO6709", Target::Location, kNoField},
    {"mdta/com.apple.quicktime.make", Target::Text, &IKImageItem::fileMake},
    {"mdta/com.apple.quicktime.model", Target::Text, &IKImageItem::fileModel},
    {"mdta/com.apple.quicktime.publisher", Target::Text, &IKImageItem::filePublisher},
    {"itsk/%A9pub", Target::Text, &IKImageItem::filePublisher},
    {"mdta/com.apple.quicktime.copyright", Target::Text, &IKImageItem::fileCopyright},
    {"itsk/cprt", Target::Text, &IKImageItem::fileCopyright},
    {"mdta/com.apple.quicktime.keywords", Target::Keywords, &IKImageItem::fileKeyWords},
    {"udta/%A9key", Target::Keywords, &IKImageItem::fileKeyWords},
    {"mdta/com.apple.quicktime.description", Target::Text, &IKImageItem::fileDescription},
    {"itsk/%A9des", Target::Text, &IKImageItem::fileDescription},
    {"mdta/com.apple.quicktime.director", Target::Text, &IKImageItem::fileDirector},
    {"itsk/%A9dir", Target::Text, &IKImageItem::fileDirector},
    {"mdta/com.apple.quicktime.performer", Target::Text, &IKImageItem::fileActor},
    {"itsk/%A9prf", Target::Text, &IKImageItem::fileActor},
    {"mdta/com.apple.quicktime.producer", Target::Text, &IKImageItem::fileproducer},
    {"itsk/%A9prd", Target::Text, &IKImageItem::fileproducer},
    {"id3/TYER", Target::Text, &IKImageItem::fileReleasedYear},
    {"uiso/date", Target::Date, kNoField},
    {"mdta/com.apple.quicktime.creationdate", Target::Date, kNoField},
};

// What a video given by its own path reads on top of a video met in a folder.
constexpr Row kSingleVideoRows[] = {
    {"uiso/dscp", Target::Text, &IKImageItem::fileDescription},
    {"mdta/com.apple.proapps.manufacturer", Target::Text, &IKImageItem::fileproducer},
};

constexpr Row kAudioRows[] = {
    {"id3/TALB", Target::Text, &IKImageItem::fileAblumName},
    {"itsk/%A9alb", Target::Text, &IKImageItem::fileAblumName},
    {"id3/TPE1", Target::Text, &IKImageItem::fileArist},
    {"itsk/%A9ART", Target::Text, &IKImageItem::fileArist},
    {"id3/TOPE", Target::Text, &IKImageItem::fileArist},
    {"id3/APIC", Target::Artwork, kNoField},
    {"itsk/covr", Target::Artwork, kNoField},
    {"id3/TIT2", Target::Text, &IKImageItem::fileTitle},
    {"itsk/%A9nam", Target::Text, &IKImageItem::fileTitle},
    {"uiso/loci", Target::Location, kNoField},
    {"mdta/com.apple.quicktime.location.ISO6709", Target::Location, kNoField},
    {"id3/TYER", Target::Text, &IKImageItem::fileReleasedYear},
    {"itsk/%A9day", Target::Text, &IKImageItem::fileReleasedYear},
    {"mdta/com.apple.quicktime.publisher", Target::Text, &IKImageItem::filePublisher},
    {"itsk/%A9pub", Target::Text, &IKImageItem::filePublisher},
    {"id3/TPUB", Target::Text, &IKImageItem::filePublisher},
    {"mdta/com.apple.quicktime.copyright", Target::Text, &IKImageItem::fileCopyright},
    {"itsk/cprt", Target::Text, &IKImageItem::fileCopyright},
    {"id3/TCOP", Target::Text, &IKImageItem::fileCopyright},
    {"mdta/com.apple.quicktime.description", Target::Text, &IKImageItem::fileDescription},
    {"id3/COMM", Target::Text, &IKImageItem::fileComments},
    {"itsk/%A9cmt", Target::Text, &IKImageItem::fileComments},
    {"id3/TIT3", Target::Text, &IKImageItem::fileSubTitle},
    {"itsk/%A9st3", Target::Text, &IKImageItem::fileSubTitle},
    {"id3/TPE2", Target::Text, &IKImageItem::fileBand},
    {"itlk/com.apple.iTunes.BAND", Target::Text, &IKImageItem::fileBand}, // as a save writes it
    {"id3/TEXT", Target::Text, &IKImageItem::fileLyricist},
    {"itsk/%A9lyr", Target::Text, &IKImageItem::fileLyricist},
    {"id3/TCOM", Target::Text, &IKImageItem::fileComposer},
    {"itsk/%A9wrt", Target::Text, &IKImageItem::fileComposer},
    // Deliberate: the track number lands in the album-artist field, where the pane shows it.
    {"id3/TRCK", Target::Track, &IKImageItem::fileAlbumArist},
    {"itsk/trkn", Target::Track, &IKImageItem::fileAlbumArist},
    {"uiso/date", Target::Date, kNoField},
    {"mdta/com.apple.quicktime.creationdate", Target::Date, kNoField},
    {"id3/TRDA", Target::Date, kNoField},
};

constexpr Row kAiffRows[] = {
    {"caaf/info-album", Target::Text, &IKImageItem::fileAblumName},
    {"caaf/info-artist", Target::Text, &IKImageItem::fileArist},
    {"caaf/info-title", Target::Text, &IKImageItem::fileTitle},
    {"caaf/info-year", Target::Text, &IKImageItem::fileReleasedYear},
    {"caaf/info-comments", Target::Text, &IKImageItem::fileComments},
    {"caaf/info-composer", Target::Text, &IKImageItem::fileComposer},
    {"caaf/info-track%20number", Target::Track, &IKImageItem::fileAlbumArist},
};

using RowMap = QHash<QString, const Row*>;

RowMap rowMap(std::initializer_list<std::span<const Row>> tables) {
    RowMap map;
    for (const auto& table : tables)
        for (const Row& row : table)
            map.insert(QString::fromLatin1(row.identifier), &row);
    return map;
}

const RowMap& rowsOf(WalkTable table) {
    static const RowMap video = rowMap({kVideoRows, kSingleVideoRows});
    static const RowMap videoInFolder = rowMap({kVideoRows});
    static const RowMap audio = rowMap({kAudioRows});
    static const RowMap aiff = rowMap({kAudioRows, kAiffRows});
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

void applyRow(IKImageItem& item, const Row& row, const AVMetadataItem& source) {
    switch (row.target) {
    case Target::Text:
        item.*row.field = nothingIfEmpty(source.stringValue());
        break;
    case Target::Keywords:
        setKeywords(item, source);
        break;
    case Target::Track:
        item.*row.field = nothingIfEmpty(platform::trackNumberText(source));
        break;
    case Target::Artwork:
        setArtwork(item, source);
        break;
    case Target::Location:
        applyLocationText(item, source.stringValue());
        break;
    case Target::Date: {
        const QString text = source.stringValue();
        if (!text.isEmpty())
            applyShootDateText(item, text, SecondsCut::TwoDigits);
        break;
    }
    }
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
    const RowMap& rows = rowsOf(table);
    for (const AVMetadataItem& source : metadata) {
        const auto row = rows.constFind(source.identifier);
        if (row != rows.cend())
            applyRow(item, **row, source);
        else if (table == WalkTable::Video)
            applyCommonRow(item, source);
    }
}

} // namespace clipheave::media
