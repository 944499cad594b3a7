// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "metadata/metadata_keys.h"
#include "metadata/video_plans.h"

// The text fields of a video, in the order in which every writer builds their items.
namespace clipheave::metadata {

/// One text field: where the pane shows it, where it was remembered, where the record holds it, and
/// what it is written as.
struct VideoTextRow {
    QString media::PaneTexts::*pane;
    QString media::ShownTexts::*old;
    QString media::IKImageItem::*record;
    bool media::ChangeFlags::*group;
    const char16_t* keySpace;
    const char16_t* key;
    const char16_t* identifier;
};

inline constexpr VideoTextRow kVideoTextRows[] = {
    {&media::PaneTexts::mediaTitle, &media::ShownTexts::oldMovieTitle,
     &media::IKImageItem::fileTitle, &media::ChangeFlags::basicInfoChange, kKeySpaceITunes,
     u"title", u"itsk/%A9nam"},
    {&media::PaneTexts::mediaAlumArtis, &media::ShownTexts::oldMovieAlbumArtist,
     &media::IKImageItem::fileAblumName, &media::ChangeFlags::basicInfoChange, kKeySpaceITunes,
     u"albumName", u"itsk/%A9alb"},
    {&media::PaneTexts::mediaArtist, &media::ShownTexts::oldMovieArtist,
     &media::IKImageItem::fileArist, &media::ChangeFlags::basicInfoChange, kKeySpaceITunes,
     u"artist", u"itsk/%A9ART"},
    {&media::PaneTexts::mediaMake, &media::ShownTexts::oldMovieMake,
     &media::IKImageItem::fileDirector, &media::ChangeFlags::basicInfoChange,
     AVMetadataKeySpaceQuickTimeMetadata, AVMetadataQuickTimeMetadataKeyDirector,
     u"mdta/com.apple.quicktime.director"},
    {&media::PaneTexts::mediaModel, &media::ShownTexts::oldMovieModel,
     &media::IKImageItem::fileActor, &media::ChangeFlags::basicInfoChange,
     AVMetadataKeySpaceQuickTimeMetadata, AVMetadataQuickTimeMetadataKeyPerformer,
     u"mdta/com.apple.quicktime.performer"},
    {&media::PaneTexts::mediaProducer, &media::ShownTexts::oldMovieProducer,
     &media::IKImageItem::fileproducer, &media::ChangeFlags::basicInfoChange,
     AVMetadataKeySpaceQuickTimeMetadata, AVMetadataQuickTimeMetadataKeyProducer,
     u"mdta/com.apple.quicktime.producer"},
    {&media::PaneTexts::mediaReleaseYear, &media::ShownTexts::oldMoviePublisher,
     &media::IKImageItem::filePublisher, &media::ChangeFlags::cameraInfoChange,
     AVMetadataKeySpaceCommon, AVMetadataCommonKeyPublisher, u"common/publisher"},
    {&media::PaneTexts::mediaCopyright, &media::ShownTexts::oldMovieCopyright,
     &media::IKImageItem::fileCopyright, &media::ChangeFlags::cameraInfoChange,
     AVMetadataKeySpaceCommon, AVMetadataCommonKeyCopyrights, u"common/copyrights"},
    {&media::PaneTexts::mediakeywords, &media::ShownTexts::oldMovieKeywords,
     &media::IKImageItem::fileKeyWords, &media::ChangeFlags::cameraInfoChange,
     AVMetadataKeySpaceQuickTimeMetadata, kQuickTimeKeywords, u"mdta/com.apple.quicktime.keywords"},
    {&media::PaneTexts::mediaSoftware, &media::ShownTexts::oldMovieDescription,
     &media::IKImageItem::fileDescription, &media::ChangeFlags::cameraInfoChange,
     AVMetadataKeySpaceCommon, AVMetadataCommonKeyDescription, u"common/description"},
};

/// An item of one of the tables' places.
[[nodiscard]] inline platform::AVMetadataItem
newMetadataItem(const char16_t* keySpace, const char16_t* key, const char16_t* identifier,
                platform::AVMetadataItem::Value value) {
    return platform::AVMetadataItem::make(QString::fromUtf16(keySpace), QString::fromUtf16(key),
                                          QString::fromUtf16(identifier), std::move(value));
}

/// The three identifiers under which a video may hold its shooting date.
[[nodiscard]] inline bool isDateIdentifier(const QString& identifier) {
    return identifier == kISODateIdentifier || identifier == kUserDataDateIdentifier ||
           identifier == kQuickTimeCreationDateIdentifier;
}

} // namespace clipheave::metadata
