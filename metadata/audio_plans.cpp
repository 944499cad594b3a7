// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/audio_plans.h"

#include "metadata/metadata_keys.h"

#include <QSet>

#include <array>

namespace clipheave::metadata {

namespace {

using media::AudioPaneTexts;
using media::AudioShownTexts;
using platform::AVMetadataItem;
using platform::Id3TextFrame;

constexpr char16_t kKeySpaceId3[] = u"org.id3";
constexpr char16_t kBandIdentifier[] = u"id3/TPE2";

/// One text field of the audio pane and where each writer puts it; null: nowhere.
struct AudioTextRow {
    QString AudioPaneTexts::*pane;
    QString AudioShownTexts::*old;
    platform::ID3_WrittenFrame frame;
    const char16_t* keySpace;
    const char16_t* key;
    const char16_t* identifier;
    const char16_t* flacKey;
    const char16_t* dictionaryKey;
};

// In the order in which every writer builds them.
constexpr std::array<AudioTextRow, 13> kAudioTextRows{{
    {&AudioPaneTexts::titlelab, &AudioShownTexts::oldTitleStr, platform::ID3FID_TITLE_,
     kKeySpaceITunes, u"title", u"itsk/%A9nam", u"title", u"Title"},
    {&AudioPaneTexts::subtitlelab, &AudioShownTexts::oldSubtitleStr, platform::ID3FID_SUBTITLE_,
     kKeySpaceITunes, u"title", u"itsk/%A9st3", u"subtitle", u"Subtitle"},
    {&AudioPaneTexts::abulmlab, &AudioShownTexts::oldAlbumStr, platform::ID3FID_ALBUM_,
     kKeySpaceITunes, u"albumName", u"itsk/%A9alb", u"album", u"Album"},
    {&AudioPaneTexts::artistlab, &AudioShownTexts::oldArtistStr, platform::ID3FID_LEADARTIST_,
     kKeySpaceITunes, u"artist", u"itsk/%A9ART", u"artist", u"Artist"},
    {&AudioPaneTexts::ablumAristlab, &AudioShownTexts::oldAlbumArtistStr,
     platform::ID3FID_TRACKNUM_, kKeySpaceITunes, u"trkn", u"itsk/trkn", nullptr, u"Track Number"},
    {&AudioPaneTexts::composerlab, &AudioShownTexts::oldComposerStr, platform::ID3FID_COMPOSER_,
     kKeySpaceITunes, u"\u00A9wrt", u"itsk/%A9wrt", u"composer", u"Composer"},
    {&AudioPaneTexts::recordDatelab, &AudioShownTexts::oldRecordDateStr,
     platform::ID3FID_RECORDINGDATES_, AVMetadataKeySpaceCommon, u"creationDate",
     u"common/creationDate", u"recorded date", u"Record Date"},
    {&AudioPaneTexts::releaseYearlab, &AudioShownTexts::oldReleaseYearStr, platform::ID3FID_YEAR_,
     kKeySpaceITunes, u"\u00A9day", u"itsk/%A9day", u"year", u"Release Year"},
    {&AudioPaneTexts::copyrightlab, &AudioShownTexts::oldCopyrightStr, platform::ID3FID_COPYRIGHT_,
     AVMetadataKeySpaceCommon, AVMetadataCommonKeyCopyrights, u"common/copyrights", u"copyright",
     u"Copyright"},
    {&AudioPaneTexts::publishlab, &AudioShownTexts::oldPublisherStr, platform::ID3FID_PUBLISHER_,
     AVMetadataKeySpaceCommon, AVMetadataCommonKeyPublisher, u"common/publisher", nullptr,
     u"Publisher"},
    {&AudioPaneTexts::bandlab, &AudioShownTexts::oldBandStr, platform::ID3FID_BAND_, kKeySpaceId3,
     u"TPE2", kBandIdentifier, nullptr, u"Band"},
    {&AudioPaneTexts::commentslab, &AudioShownTexts::oldCommentStr, platform::ID3FID_COMMENT_,
     kKeySpaceITunes, u"\u00A9cmt", u"itsk/%A9cmt", u"comments", u"Comments"},
    {&AudioPaneTexts::lyricslab, &AudioShownTexts::oldLyricStr, platform::ID3FID_LYRICIST_,
     kKeySpaceITunes, u"\u00A9lyr", u"itsk/%A9lyr", u"lyricist", u"Lyrics"},
}};
constexpr int kMp3Order[] = {0, 1, 3, 2, 4, 5, 6, 7, 8, 9, 10, 11, 12}; // artist before album

bool isRecordDate(const AudioTextRow& row) {
    return row.frame == platform::ID3FID_RECORDINGDATES_;
}

/// What the pane says, or the date that a writer of dates puts in its place.
const QString& textOf(const AudioTextRow& row, const media::AudioPane& pane,
                      const QString& recordDate) {
    return isRecordDate(row) && !recordDate.isNull() ? recordDate : pane.texts.*row.pane;
}

/// The changed fields of the pane: row and text.
QList<std::pair<const AudioTextRow*, QString>> changedTexts(const media::AudioPane& pane,
                                                            const QString& recordDate) {
    QList<std::pair<const AudioTextRow*, QString>> changed;
    for (const AudioTextRow& row : kAudioTextRows) {
        const QString& text = textOf(row, pane, recordDate);
        if (text != pane.shown.*row.old)
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
    return AVMetadataItem::make(QString::fromUtf16(row.keySpace), QString::fromUtf16(row.key),
                                QString::fromUtf16(row.identifier), text);
}

/// MPEG-4 has no frame for the band: players know it as the album artist, and the import finds it
/// under a name of its own.
AVMetadataItem bandByName(const QString& text) {
    return AVMetadataItem::make(QStringLiteral("itlk"), QStringLiteral("com.apple.iTunes.BAND"),
                                QStringLiteral("itlk/com.apple.iTunes.BAND"), text);
}

QList<AVMetadataItem> itemsOfTexts(const QList<std::pair<const AudioTextRow*, QString>>& texts) {
    QList<AVMetadataItem> items;
    for (const auto& [row, text] : texts) {
        items.append(audioItem(*row, text));
        if (row->identifier == kBandIdentifier)
            items.append(bandByName(text));
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
        if (item.effectiveIdentifier() == kBandIdentifier)
            items.append(bandByName(item.stringValue()));
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
