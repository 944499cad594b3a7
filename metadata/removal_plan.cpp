// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/video_fields.h"

namespace clipheave::metadata {

namespace {

using platform::AVMetadataItem;

// Not QString(): a null value would mean no text at all.
QString emptyText() {
    return QStringLiteral("");
}

AVMetadataItem blankItem(const VideoTextRow& row) {
    if (row.key == kQuickTimeKeywords)
        return newMetadataItem(kKeySpaceISOUserData, u"keywords", k3GPKeywordsIdentifier,
                               emptyText());
    return newMetadataItem(row.keySpace, row.key, row.identifier, emptyText());
}

/// Strictly: a video on the equator or the meridian keeps its position too.
bool isNorthAndEast(const media::IKImageItem& item) {
    const auto isPositive = [](const QString& sign, double value) {
        return sign != u"-" && value > 0;
    };
    return isPositive(item.longtitudeFormat, item.filelongtitude) &&
           isPositive(item.latitudeFormat, item.filelatitude);
}

} // namespace

jobs::MetadataPlan planVideoRemoval(const media::IKImageItem& item) {
    jobs::MetadataPlan plan;
    for (const VideoTextRow& row : kVideoTextRows)
        if (!(item.*row.record).isEmpty())
            plan.metadata.append(blankItem(row));
    if (!item.shootDateStr.isEmpty())
        plan.metadata.append(
            newMetadataItem(kKeySpaceISOUserData, u"date", kISODateIdentifier, emptyText()));
    if (isNorthAndEast(item))
        plan.metadata.append(
            newMetadataItem(kKeySpaceISOUserData, u"loci", u"uiso/loci", emptyText()));
    if (!item.fileImage.isNull())
        plan.metadata.append(newMetadataItem(AVMetadataKeySpaceCommon, AVMetadataCommonKeyArtwork,
                                             u"common/artwork", QByteArray("")));
    plan.outputFileType = QString::fromUtf16(platform::AVFileTypeAppleM4V);
    return plan;
}

} // namespace clipheave::metadata
