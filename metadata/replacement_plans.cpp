// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/video_fields.h"

#include <functional>

namespace clipheave::metadata {

namespace {

using platform::AVMetadataItem;

/// The source's items with `fresh` in the place of each one that `isReplaced` names; behind them
/// when there was none. A null text changes nothing.
QList<AVMetadataItem> replaced(const QList<AVMetadataItem>& source, const AVMetadataItem& fresh,
                               const std::function<bool(const QString& identifier)>& isReplaced) {
    if (fresh.stringValue().isNull())
        return source;
    QList<AVMetadataItem> items;
    bool found = false;
    for (const AVMetadataItem& item : source) {
        const bool here = isReplaced(item.effectiveIdentifier());
        items.append(here ? fresh : item);
        found = found || here;
    }
    if (!found)
        items.append(fresh);
    return items;
}

// Both writers make QuickTime movies, whatever the source was.
jobs::MetadataPlan quickTimePlan(QList<AVMetadataItem> items) {
    return {std::move(items), QString::fromUtf16(platform::AVFileTypeQuickTimeMovie)};
}

} // namespace

jobs::MetadataPlan planVideoTitle(const QString& title,
                                  const QList<AVMetadataItem>& sourceMetadata) {
    const AVMetadataItem fresh =
        newMetadataItem(kKeySpaceITunes, u"title", kITunesTitleIdentifier, title);
    return quickTimePlan(replaced(sourceMetadata, fresh, [](const QString& identifier) {
        return identifier == kITunesTitleIdentifier || identifier == kID3TitleIdentifier;
    }));
}

jobs::MetadataPlan planVideoDate(const QString& dateText,
                                 const QList<AVMetadataItem>& sourceMetadata) {
    const AVMetadataItem fresh =
        newMetadataItem(kKeySpaceISOUserData, u"date", kISODateIdentifier, dateText);
    return quickTimePlan(replaced(sourceMetadata, fresh, &isDateIdentifier));
}

jobs::MetadataPlan planVideoDateItems(const QString& dateText,
                                      const QList<AVMetadataItem>& sourceMetadata) {
    QList<AVMetadataItem> items;
    for (const AVMetadataItem& item : sourceMetadata)
        if (!isDateIdentifier(item.effectiveIdentifier()))
            items.append(item);
    // "udta/date" is the same box as "uiso/date".
    items.append(newMetadataItem(kKeySpaceISOUserData, u"date", kISODateIdentifier, dateText));
    items.append(newMetadataItem(media::AVMetadataKeySpaceQuickTimeMetadata,
                                 u"com.apple.quicktime.creationdate",
                                 kQuickTimeCreationDateIdentifier, dateText));
    return quickTimePlan(items);
}

} // namespace clipheave::metadata
