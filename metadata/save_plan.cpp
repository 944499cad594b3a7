// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/position_text.h"
#include "metadata/messages.h"
#include "metadata/video_fields.h"

#include <QSet>

#include <tuple>
#include <utility>

namespace clipheave::metadata {

namespace {

using media::PaneTexts;
using media::PositionPart;
using platform::AVMetadataItem;

AVMetadataItem itemOf(const VideoTextRow& row, const QString& text) {
    if (row.key != kQuickTimeKeywords)
        return newMetadataItem(row.keySpace, row.key, row.identifier, text);
    AVMetadataItem item = newMetadataItem(row.keySpace, row.key, row.identifier, text.toUtf8());
    item.dataType = QString::fromUtf16(kRawDataType);
    item.extendedLanguageTag = QStringLiteral("und");
    return item;
}

void appendTexts(const media::VideoPane& pane, QList<AVMetadataItem>& items) {
    for (const VideoTextRow& row : kVideoTextRows) {
        const QString& text = pane.texts.*row.pane;
        if (pane.flags.*row.group && text != pane.shown.*row.old)
            items.append(itemOf(row, text));
    }
}

/// Every date item of the source gets the new text; a source without one gets "uiso/date".
/// Returns whether the output must be a QuickTime movie.
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
        items.append(newMetadataItem(kKeySpaceISOUserData, u"date", kISODateIdentifier, text));
    return quickTime;
}

bool hasWholePosition(const PaneTexts& texts) {
    return !texts.mediaLatitude.isEmpty() && !texts.mediaLongtitude.isEmpty();
}

bool changesPosition(const media::VideoPane& pane) {
    const PaneTexts& texts = pane.texts;
    return texts.mediaLatitude != pane.shown.shownLatitude ||
           texts.mediaLongtitude != pane.shown.shownLongtitude ||
           texts.mediaAatitude != pane.shown.shownAtitude;
}

bool writesPosition(const media::VideoPane& pane) {
    return hasWholePosition(pane.texts) && changesPosition(pane);
}

/// A position that was not touched is carried over with the source's own item, which may be more
/// precise and hold a place name.
void appendLocation(const media::VideoPane& pane, QList<AVMetadataItem>& items) {
    const PaneTexts& texts = pane.texts;
    if (!writesPosition(pane))
        return;
    items.append(newMetadataItem(
        kKeySpaceISOUserData, u"loci", u"uiso/loci",
        locationText(texts.mediaLatitude, texts.mediaLongtitude, texts.mediaAatitude)));
}

void appendArtwork(const media::VideoPane& pane, QList<AVMetadataItem>& items) {
    const platform::EncodedImage& image = pane.texts.mediaImageView;
    if (image.isNull() || image == pane.shown.shownArtwork)
        return;
    items.append(newMetadataItem(AVMetadataKeySpaceCommon, AVMetadataCommonKeyArtwork,
                                 u"common/artwork", image.bytes()));
}

} // namespace

std::optional<platform::Message> positionFault(const PaneTexts& texts) {
    for (const auto& [text, part, fault] : {
             std::tuple(&PaneTexts::mediaLatitude, PositionPart::Latitude, kLatitudeNotInRange),
             std::tuple(&PaneTexts::mediaLongtitude, PositionPart::Longitude, kLongitudeNotInRange),
             std::tuple(&PaneTexts::mediaAatitude, PositionPart::Altitude, kAltitudeNotInRange),
         }) {
        const QString& typed = texts.*text;
        if (!typed.isEmpty() && !media::positionNumber(typed, part))
            return platform::Message(fault, {typed});
    }
    return std::nullopt;
}

std::optional<platform::Message> savedPositionFault(const media::VideoPane& pane) {
    return writesPosition(pane) ? positionFault(pane.texts) : std::nullopt;
}

bool dropsPosition(const media::VideoPane& pane) {
    return changesPosition(pane) && !hasWholePosition(pane.texts);
}

QString locationText(const QString& latitude, const QString& longitude, const QString& altitude) {
    QString text;
    for (const auto& [typed, part] : {std::pair(latitude, PositionPart::Latitude),
                                      std::pair(longitude, PositionPart::Longitude),
                                      std::pair(altitude, PositionPart::Altitude)}) {
        const QString number = media::positionNumber(typed, part).value_or(typed);
        text += number.contains(u'-') ? number : u'+' + number;
    }
    return text;
}

jobs::MetadataPlan planVideoSave(const media::VideoPane& pane,
                                 const QList<AVMetadataItem>& sourceMetadata) {
    jobs::MetadataPlan plan;
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
