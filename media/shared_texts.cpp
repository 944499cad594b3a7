// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/shared_texts.h"

namespace clipheave::media {

namespace {

/// Texts that repeat are few; what has gathered beyond that is forgotten.
constexpr qsizetype kMostSharedTexts = 4096;
/// Longer texts, lyrics or descriptions, are of one file.
constexpr qsizetype kLongestSharedText = 256;

/// The fields that files of one folder have in common; a path, a name or a title is a file's own.
constexpr QString IKImageItem::*kSharedFields[] = {
    &IKImageItem::fileType,         &IKImageItem::fileSize,          &IKImageItem::shootDateStr,
    &IKImageItem::fileduratStr,     &IKImageItem::fileCreateDateStr, &IKImageItem::fileReleasedYear,
    &IKImageItem::fileAblumName,    &IKImageItem::fileArist,         &IKImageItem::fileCopyright,
    &IKImageItem::fileMake,         &IKImageItem::fileModel,         &IKImageItem::fileKeyWords,
    &IKImageItem::filePublisher,    &IKImageItem::fileDescription,   &IKImageItem::fileBitRate,
    &IKImageItem::fileSampleRate,   &IKImageItem::fileChannels,      &IKImageItem::latitudeFormat,
    &IKImageItem::longtitudeFormat, &IKImageItem::AtitudeFormat,     &IKImageItem::fileComments,
    &IKImageItem::fileSubTitle,     &IKImageItem::fileBand,          &IKImageItem::fileComposer,
    &IKImageItem::fileLyricist,     &IKImageItem::fileAlbumArist,    &IKImageItem::fileDirector,
    &IKImageItem::fileActor,        &IKImageItem::fileproducer};

} // namespace

void SharedTexts::shareTextsOf(IKImageItem& item) {
    for (QString IKImageItem::*field : kSharedFields)
        share(item.*field);
    for (platform::AVMetadataItem& tag : item.fileMetaArray) {
        for (QString* text :
             {&tag.keySpace, &tag.key, &tag.identifier, &tag.dataType, &tag.extendedLanguageTag})
            share(*text);
        if (auto* value = std::get_if<QString>(&tag.value))
            share(*value);
    }
    item.fileMetaArray.squeeze();
}

void SharedTexts::share(QString& text) {
    if (text.isEmpty() || text.size() > kLongestSharedText) // null and empty differ
        return;
    if (m_texts.size() >= kMostSharedTexts)
        m_texts.clear();
    text = *m_texts.insert(text);
}

} // namespace clipheave::media
