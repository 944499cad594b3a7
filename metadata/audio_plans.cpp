// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/audio_plans.h"

#include "media/fields.h"
#include "metadata/metadata_keys.h"
#include "platform/media/model/tag_mapping.h"

#include <QSet>

#include <algorithm>
#include <array>

namespace clipheave::metadata {

namespace {

using platform::AVMetadataItem;
using platform::Id3TextFrame;

constexpr char16_t kKeySpaceId3[] = u"org.id3";
constexpr char kBandIdentifier[] = "id3/TPE2";
constexpr char kGroupIdentifier[] = "id3/TIT1";

/// One text field of the audio pane and where each writer puts it.
struct AudioTextRow {
    const media::Field* field;
    platform::ID3_WrittenFrame frame;
    const char16_t* dictionaryKey;
    media::WrittenItem item{};         ///< empty: the one of a video
    const char16_t* flacKey = nullptr; ///< null: nowhere

    [[nodiscard]] const media::WrittenItem& written() const {
        return item.identifier ? item : field->written;
    }
};

consteval AudioTextRow rowOf(const char* name, platform::ID3_WrittenFrame frame,
                             const char16_t* dictionaryKey, media::WrittenItem item = {}) {
    const media::Field& field = media::fieldNamed(name);
    return {&field, frame, dictionaryKey, item, field.infoKey};
}

constexpr AudioTextRow withFlacKey(AudioTextRow row, const char16_t* key) {
    row.flacKey = key;
    return row;
}

// In the order in which every writer builds them.
constexpr std::array kAudioTextRows{
    rowOf("title", platform::ID3FID_TITLE_, u"Title"),
    rowOf("subtitle", platform::ID3FID_SUBTITLE_, u"Subtitle",
          {kKeySpaceITunes, u"title", "itsk/%A9st3"}),
    rowOf("album", platform::ID3FID_ALBUM_, u"Album"),
    rowOf("artist", platform::ID3FID_LEADARTIST_, u"Artist"),
    withFlacKey(rowOf("albumArtist", platform::ID3FID_TRACKNUM_, u"Track Number",
                      {kKeySpaceITunes, u"trkn", "itsk/trkn"}),
                nullptr),
    rowOf("composer", platform::ID3FID_COMPOSER_, u"Composer",
          {kKeySpaceITunes, u"\u00A9wrt", "itsk/%A9wrt"}),
    withFlacKey(rowOf("recorded", platform::ID3FID_RECORDINGDATES_, u"Record Date",
                      {AVMetadataKeySpaceCommon, u"creationDate", "common/creationDate"}),
                u"recorded date"),
    rowOf("year", platform::ID3FID_YEAR_, u"Release Year",
          {kKeySpaceITunes, u"\u00A9day", "itsk/%A9day"}),
    rowOf("copyright", platform::ID3FID_COPYRIGHT_, u"Copyright"),
    rowOf("publisher", platform::ID3FID_PUBLISHER_, u"Publisher"),
    rowOf("band", platform::ID3FID_BAND_, u"Band", {kKeySpaceId3, u"TPE2", kBandIdentifier}),
    rowOf("comments", platform::ID3FID_COMMENT_, u"Comments",
          {kKeySpaceITunes, u"\u00A9cmt", "itsk/%A9cmt"}),
    rowOf("lyricist", platform::ID3FID_LYRICIST_, u"Lyrics",
          {kKeySpaceITunes, u"\u00A9lyr", "itsk/%A9lyr"}),
};
constexpr int kMp3Order[] = {0, 1, 3, 2, 4, 5, 6, 7, 8, 9, 10, 11, 12}; // artist before album

bool isRecordDate(const AudioTextRow& row) {
    return row.frame == platform::ID3FID_RECORDINGDATES_;
}

/// What the pane says, or the date that a writer of dates puts in its place.
const QString& textOf(const AudioTextRow& row, const media::AudioPane& pane,
                      const QString& recordDate) {
    return isRecordDate(row) && !recordDate.isNull() ? recordDate
                                                     : pane.texts.*row.field->audio.text;
}

/// The changed fields of the pane: row and text.
QList<std::pair<const AudioTextRow*, QString>> changedTexts(const media::AudioPane& pane,
                                                            const QString& recordDate) {
    QList<std::pair<const AudioTextRow*, QString>> changed;
    for (const AudioTextRow& row : kAudioTextRows) {
        const QString& text = textOf(row, pane, recordDate);
        if (text != pane.shown.*row.field->audio.shown)
            changed.append({&row, text});
    }
    return changed;
}

QList<std::pair<const AudioTextRow*, QString>> presentTexts(const AudioDictionary& texts) {
    QList<std::pair<const AudioTextRow*, QString>> present;
    for (const AudioTextRow& row : kAudioTextRows)
        if (const auto text = texts.constFind(QString::fromUtf16(row.dictionaryKey));
            text != texts.cend())
            present.append({&row, *text});
    return present;
}

AVMetadataItem audioItem(const AudioTextRow& row, const QString& text) {
    const media::WrittenItem& item = row.written();
    return AVMetadataItem::make(QString::fromUtf16(item.keySpace), QString::fromUtf16(item.key),
                                QLatin1StringView(item.identifier), text);
}

/// Some texts stand twice in MPEG-4. It has no frame for the band: players know it as the album
/// artist, and the import finds it under a name of its own. Players look for a grouping in either
/// of two entries.
void appendTwin(QList<AVMetadataItem>& items, const QString& identifier, const QString& text) {
    if (identifier == QLatin1StringView(kBandIdentifier))
        items.append(platform::itemOf(QLatin1String("itlk/com.apple.iTunes.BAND"), text));
    else if (identifier == QLatin1StringView(kGroupIdentifier))
        items.append(platform::itemOf(QLatin1String("itsk/%A9grp"), text));
}

QList<AVMetadataItem> itemsOfTexts(const QList<std::pair<const AudioTextRow*, QString>>& texts) {
    QList<AVMetadataItem> items;
    for (const auto& [row, text] : texts) {
        items.append(audioItem(*row, text));
        appendTwin(items, QLatin1StringView(row->written().identifier), text);
    }
    return items;
}

/// New items first, then what none of them renews.
QList<AVMetadataItem> mergedWithSource(QList<AVMetadataItem> items,
                                       const QList<AVMetadataItem>& source) {
    QSet<QString> renewed;
    for (const AVMetadataItem& item : items)
        renewed.insert(item.effectiveIdentifier());
    for (const AVMetadataItem& item : source) {
        if (renewed.contains(item.effectiveIdentifier()))
            continue;
        items.append(item);
        appendTwin(items, item.effectiveIdentifier(), item.stringValue());
    }
    return items;
}

QMap<QString, QString> flacTexts(const QList<std::pair<const AudioTextRow*, QString>>& texts) {
    QMap<QString, QString> info;
    for (const auto& [row, text] : texts)
        if (row->flacKey)
            info.insert(QString::fromUtf16(row->flacKey), text);
    return info;
}

} // namespace

CoverPlan planCover(const media::AudioPane& pane, const media::IKImageItem& item) {
    const platform::EncodedImage& shown = pane.texts.audioArtImageView;
    if (shown.isNull())
        return {};
    if (shown == pane.shown.shownArtwork)
        return {item.fileImage, true};
    return {shown, false};
}

QList<Id3TextFrame> planMp3Save(const media::AudioPane& pane, const QString& recordDate) {
    QList<Id3TextFrame> frames;
    for (const int index : kMp3Order) {
        const AudioTextRow& row = kAudioTextRows.at(static_cast<std::size_t>(index));
        const QString& text = textOf(row, pane, recordDate);
        const bool isGivenDate = isRecordDate(row) && !recordDate.isNull();
        if (!text.isEmpty() || isGivenDate)
            frames.append({row.frame, text});
    }
    return frames;
}

QStringList framesLostInMp3(const QList<AVMetadataItem>& source, bool hasCover) {
    // What the pane shows is written from there, be it as it stands or changed.
    static const QSet<QString> kShown{
        QStringLiteral("TIT2"), QStringLiteral("TIT3"), QStringLiteral("TPE1"),
        QStringLiteral("TALB"), QStringLiteral("TRCK"), QStringLiteral("TCOM"),
        QStringLiteral("TRDA"), QStringLiteral("TYER"), QStringLiteral("TCOP"),
        QStringLiteral("TPUB"), QStringLiteral("TPE2"), QStringLiteral("COMM"),
        QStringLiteral("TEXT")};
    const bool hasPerformer = std::any_of(source.begin(), source.end(), [](const auto& item) {
        return item.effectiveIdentifier() == u"id3/TPE1";
    });
    QStringList lost;
    int images = 0;
    for (const AVMetadataItem& item : source) {
        const QString name = platform::itemName(item);
        const bool isStandIn = (name == u"TDRC" && item.stringValue().size() <= 4) ||
                               (name == u"TOPE" && !hasPerformer);
        const bool isLostImage = name == u"APIC" && ++images > (hasCover ? 1 : 0);
        const QString identifier = item.effectiveIdentifier();
        if (isLostImage || identifier.startsWith(u"itlk/") ||
            (identifier.startsWith(u"id3/") && name != u"APIC" && !isStandIn &&
             !kShown.contains(name) && !platform::isEncoderNote(item)))
            lost.append(name);
    }
    lost.removeDuplicates();
    return lost;
}

QList<Id3TextFrame> planMp3Removal(const media::AudioPane& pane) {
    QList<Id3TextFrame> frames = planMp3Save(pane);
    for (Id3TextFrame& frame : frames)
        frame.text = QStringLiteral("");
    return frames;
}

QList<Id3TextFrame> planMp3Reload(const AudioDictionary& texts) {
    QList<Id3TextFrame> frames;
    for (const int index : kMp3Order) {
        const AudioTextRow& row = kAudioTextRows.at(static_cast<std::size_t>(index));
        const QString text = texts.value(QString::fromUtf16(row.dictionaryKey));
        if (!text.isEmpty() && row.frame != platform::ID3FID_TRACKNUM_)
            frames.append({row.frame, text});
    }
    return frames;
}

QList<AVMetadataItem> planAudioSave(const media::AudioPane& pane,
                                    const platform::EncodedImage& cover,
                                    const QList<AVMetadataItem>& sourceMetadata,
                                    const QString& recordDate) {
    QList<AVMetadataItem> items = itemsOfTexts(changedTexts(pane, recordDate));
    if (!cover.isNull())
        items.append(AVMetadataItem::make(QString::fromUtf16(AVMetadataKeySpaceCommon),
                                          QString::fromUtf16(AVMetadataCommonKeyArtwork),
                                          QStringLiteral("common/artwork"), cover.bytes()));
    return mergedWithSource(items, sourceMetadata);
}

QList<AVMetadataItem> planAudioReload(const AudioDictionary& texts,
                                      const QList<AVMetadataItem>& sourceMetadata) {
    return mergedWithSource(itemsOfTexts(presentTexts(texts)), sourceMetadata);
}

QMap<QString, QString> planFlacSave(const media::AudioPane& pane, const QString& recordDate) {
    return flacTexts(changedTexts(pane, recordDate));
}

QMap<QString, QString> planFlacReload(const AudioDictionary& texts) {
    return flacTexts(presentTexts(texts));
}

} // namespace clipheave::metadata
