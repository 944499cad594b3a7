// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/metadata_keys.h"
#include "metadata/video_metadata.h"

#include <QSet>

namespace clipheave::metadata {

namespace {

using media::ChangeFlags;
using media::PaneTexts;
using media::ShownTexts;
using platform::AVMetadataItem;

/// One text field of the pane: where it is shown, where it was remembered, what it is written as.
struct TextRow {
    QString PaneTexts::*pane;
    QString ShownTexts::*old;
    bool ChangeFlags::*group;
    const char16_t* keySpace;
    const char16_t* key;
    const char16_t* identifier;
};

// In the order in which a save builds the items.
constexpr TextRow kTextRows[] = {
    {&PaneTexts::mediaTitle, &ShownTexts::oldMovieTitle, &ChangeFlags::basicInfoChange,
     kKeySpaceITunes, u"title", u"itsk/%A9nam"},
    {&PaneTexts::mediaAlumArtis, &ShownTexts::oldMovieAlbumArtist, &ChangeFlags::basicInfoChange,
     kKeySpaceITunes, u"albumName", u"itsk/%A9alb"},
    {&PaneTexts::mediaArtist, &ShownTexts::oldMovieArtist, &ChangeFlags::basicInfoChange,
     kKeySpaceITunes, u"artist", u"itsk/%A9ART"},
    {&PaneTexts::mediaMake, &ShownTexts::oldMovieMake, &ChangeFlags::basicInfoChange,
     AVMetadataKeySpaceQuickTimeMetadata, AVMetadataQuickTimeMetadataKeyDirector,
     u"mdta/com.apple.quicktime.director"},
    {&PaneTexts::mediaModel, &ShownTexts::oldMovieModel, &ChangeFlags::basicInfoChange,
     AVMetadataKeySpaceQuickTimeMetadata, AVMetadataQuickTimeMetadataKeyPerformer,
     u"mdta/com.apple.quicktime.performer"},
    {&PaneTexts::mediaProducer, &ShownTexts::oldMovieProducer, &ChangeFlags::basicInfoChange,
     AVMetadataKeySpaceQuickTimeMetadata, AVMetadataQuickTimeMetadataKeyProducer,
     u"mdta/com.apple.quicktime.producer"},
    {&PaneTexts::mediaReleaseYear, &ShownTexts::oldMoviePublisher, &ChangeFlags::cameraInfoChange,
     AVMetadataKeySpaceCommon, AVMetadataCommonKeyPublisher, u"common/publisher"},
    {&PaneTexts::mediaCopyright, &ShownTexts::oldMovieCopyright, &ChangeFlags::cameraInfoChange,
     AVMetadataKeySpaceCommon, AVMetadataCommonKeyCopyrights, u"common/copyrights"},
    {&PaneTexts::mediakeywords, &ShownTexts::oldMovieKeywords, &ChangeFlags::cameraInfoChange,
     AVMetadataKeySpaceQuickTimeMetadata, kQuickTimeKeywords, u"mdta/com.apple.quicktime.keywords"},
    {&PaneTexts::mediaSoftware, &ShownTexts::oldMovieDescription, &ChangeFlags::cameraInfoChange,
     AVMetadataKeySpaceCommon, AVMetadataCommonKeyDescription, u"common/description"},
};

AVMetadataItem newItem(const char16_t* keySpace, const char16_t* key, const char16_t* identifier,
                       AVMetadataItem::Value value) {
    return AVMetadataItem::make(QString::fromUtf16(keySpace), QString::fromUtf16(key),
                                QString::fromUtf16(identifier), std::move(value));
}

AVMetadataItem itemOf(const TextRow& row, const QString& text) {
    if (row.key != kQuickTimeKeywords)
        return newItem(row.keySpace, row.key, row.identifier, text);
    AVMetadataItem item = newItem(row.keySpace, row.key, row.identifier, text.toUtf8());
    item.dataType = QString::fromUtf16(kRawDataType);
    item.extendedLanguageTag = QStringLiteral("und");
    return item;
}

void appendTexts(const media::VideoPane& pane, QList<AVMetadataItem>& items) {
    for (const TextRow& row : kTextRows) {
        const QString& text = pane.texts.*row.pane;
        if (pane.flags.*row.group && text != pane.shown.*row.old)
            items.append(itemOf(row, text));
    }
}

bool isDateIdentifier(const QString& identifier) {
    return identifier == kISODateIdentifier || identifier == kUserDataDateIdentifier ||
           identifier == kQuickTimeCreationDateIdentifier;
}

/// Every date item of the source gets the new text; a source without one gets "uiso/date".
/// Answers whether the output must be a QuickTime movie.
bool appendDates(const media::VideoPane& pane, const QList<AVMetadataItem>& source,
                 QList<AVMetadataItem>& items) {
    const QString& text = pane.texts.mediaShootDate;
    if (!pane.flags.cameraInfoChange || text == pane.shown.oldMovieShootDate)
        return false;
    bool replaced = false;
    bool quickTime = false;
    for (const AVMetadataItem& old : source) {
        const QString identifier = old.effectiveIdentifier();
        if (!isDateIdentifier(identifier))
            continue;
        items.append(AVMetadataItem::make(old.keySpace, old.key, identifier, text));
        replaced = true;
        quickTime = quickTime || identifier == kQuickTimeCreationDateIdentifier;
    }
    if (!replaced)
        items.append(newItem(kKeySpaceISOUserData, u"date", kISODateIdentifier, text));
    return quickTime;
}

/// A position that was not touched is carried over with the source's own item, which may be more
/// precise and hold a place name.
void appendLocation(const media::VideoPane& pane, QList<AVMetadataItem>& items) {
    const PaneTexts& texts = pane.texts;
    if (texts.mediaLatitude.isEmpty() || texts.mediaLongtitude.isEmpty())
        return;
    if (texts.mediaLatitude == pane.shown.shownLatitude &&
        texts.mediaLongtitude == pane.shown.shownLongtitude &&
        texts.mediaAatitude == pane.shown.shownAtitude)
        return;
    items.append(
        newItem(kKeySpaceISOUserData, u"loci", u"uiso/loci",
                locationText(texts.mediaLatitude, texts.mediaLongtitude, texts.mediaAatitude)));
}

void appendArtwork(const media::VideoPane& pane, QList<AVMetadataItem>& items) {
    const platform::EncodedPicture& picture = pane.texts.mediaImageView;
    if (picture.isNull() || picture == pane.shown.shownArtwork)
        return;
    items.append(newItem(AVMetadataKeySpaceCommon, AVMetadataCommonKeyArtwork, u"common/artwork",
                         picture.bytes()));
}

} // namespace

QString locationText(const QString& latitude, const QString& longitude, const QString& altitude) {
    QString text;
    for (const QString& piece : {latitude, longitude, altitude})
        text += piece.contains(u'-') ? piece : u'+' + piece;
    return text;
}

SavePlan planVideoSave(const media::VideoPane& pane, const QList<AVMetadataItem>& sourceMetadata) {
    SavePlan plan;
    appendTexts(pane, plan.metadata);
    const bool quickTime = appendDates(pane, sourceMetadata, plan.metadata);
    appendLocation(pane, plan.metadata);
    appendArtwork(pane, plan.metadata);

    QSet<QString> renewed;
    for (const AVMetadataItem& item : plan.metadata)
        renewed.insert(item.effectiveIdentifier());
    for (const AVMetadataItem& item : sourceMetadata)
        if (!renewed.contains(item.effectiveIdentifier()))
            plan.metadata.append(item);
    plan.outputFileType = QString::fromUtf16(quickTime ? platform::AVFileTypeQuickTimeMovie
                                                       : platform::AVFileTypeAppleM4V);
    return plan;
}

} // namespace clipheave::metadata
