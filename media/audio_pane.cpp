// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/audio_pane.h"

#include "platform/foundation/dates.h"

namespace clipheave::media {

namespace {

constexpr bool ChangeFlags::*kBasic = &ChangeFlags::basicInfoChange;
constexpr bool ChangeFlags::*kCamera = &ChangeFlags::cameraInfoChange;
constexpr bool ChangeFlags::*kNone = nullptr;

constexpr AudioField kAudioFields[kAudioFieldCount] = {
    {"titlelab", "Title", &AudioPaneTexts::titlelab, &AudioShownTexts::oldTitleStr, kBasic},
    {"subtitlelab", "Subtitle", &AudioPaneTexts::subtitlelab, &AudioShownTexts::oldSubtitleStr,
     kBasic},
    {"artistlab", "Artist", &AudioPaneTexts::artistlab, &AudioShownTexts::oldArtistStr, kBasic},
    {"abulmlab", "Album", &AudioPaneTexts::abulmlab, &AudioShownTexts::oldAlbumStr, kBasic},
    {"ablumAristlab", "Track", &AudioPaneTexts::ablumAristlab, &AudioShownTexts::oldAlbumArtistStr,
     kBasic},
    {"bandlab", "Band", &AudioPaneTexts::bandlab, &AudioShownTexts::oldBandStr, kCamera},
    {"composerlab", "Composer", &AudioPaneTexts::composerlab, &AudioShownTexts::oldComposerStr,
     kBasic},
    {"publishlab", "Publisher", &AudioPaneTexts::publishlab, &AudioShownTexts::oldPublisherStr,
     kCamera},
    {"releaseYearlab", "Year", &AudioPaneTexts::releaseYearlab, &AudioShownTexts::oldReleaseYearStr,
     kCamera},
    {"recordDatelab", "Recorded", &AudioPaneTexts::recordDatelab,
     &AudioShownTexts::oldRecordDateStr, kCamera},
    {"copyrightlab", "Copyright", &AudioPaneTexts::copyrightlab, &AudioShownTexts::oldCopyrightStr,
     kCamera},
    {"createdDatelab", "Created", &AudioPaneTexts::createdDatelab,
     &AudioShownTexts::oldCreateDateStr, kCamera},
    {"keywordslab", "Keywords", &AudioPaneTexts::keywordslab, &AudioShownTexts::oldKeywordStr,
     kNone},
    {"imageDescrilab", "Description", &AudioPaneTexts::imageDescrilab,
     &AudioShownTexts::oldImageDescStr, kNone},
    {"commentslab", "Comments", &AudioPaneTexts::commentslab, &AudioShownTexts::oldCommentStr,
     kCamera},
    {"lyricslab", "Lyrics", &AudioPaneTexts::lyricslab, &AudioShownTexts::oldLyricStr, kCamera},
};

constexpr VideoFormField kVideoFormFields[kVideoFormFieldCount] = {
    {"mediaTitle", "Title", &PaneTexts::mediaTitle, &ShownTexts::oldMovieTitle, kBasic},
    {"mediaAlumArtis", "Album", &PaneTexts::mediaAlumArtis, &ShownTexts::oldMovieAlbumArtist,
     kBasic},
    {"mediaArtist", "Artist", &PaneTexts::mediaArtist, &ShownTexts::oldMovieArtist, kBasic},
    {"mediaMake", "Director", &PaneTexts::mediaMake, &ShownTexts::oldMovieMake, kBasic},
    {"mediaModel", "Performer", &PaneTexts::mediaModel, &ShownTexts::oldMovieModel, kBasic},
    {"mediaProducer", "Producer", &PaneTexts::mediaProducer, &ShownTexts::oldMovieProducer, kBasic},
    {"mediaReleaseYear", "Publisher", &PaneTexts::mediaReleaseYear, &ShownTexts::oldMoviePublisher,
     kCamera},
    {"mediaCopyright", "Copyright", &PaneTexts::mediaCopyright, &ShownTexts::oldMovieCopyright,
     kCamera},
    {"mediakeywords", "Keywords", &PaneTexts::mediakeywords, &ShownTexts::oldMovieKeywords,
     kCamera},
    {"mediaSoftware", "Description", &PaneTexts::mediaSoftware, &ShownTexts::oldMovieDescription,
     kCamera},
    {"mediaShootDate", "Shot", &PaneTexts::mediaShootDate, &ShownTexts::oldMovieShootDate, kCamera},
    {"mediaCreatedDate", "Created", &PaneTexts::mediaCreatedDate, &ShownTexts::oldMovieCreatedDate,
     kCamera},
};

QString shownText(const QString& value) {
    return value.isNull() ? QString(QLatin1String("")) : value;
}

FactLine fact(const char16_t* label, const QString& value) {
    return {QString::fromUtf16(label), value.isEmpty() ? QString() : value};
}

} // namespace

AudioPane ShowAudioViewWithItem(const IKImageItem& item, const QString& videoPaneArtist) {
    AudioPane pane;
    AudioPaneTexts& texts = pane.texts;
    texts.titlelab = shownText(item.fileTitle);
    texts.subtitlelab = shownText(item.fileSubTitle);
    texts.abulmlab = shownText(item.fileAblumName);
    texts.artistlab = shownText(item.fileArist);
    texts.ablumAristlab = shownText(item.fileAlbumArist);
    texts.copyrightlab = shownText(item.fileCopyright);
    texts.releaseYearlab = shownText(item.fileReleasedYear);
    texts.commentslab = shownText(item.fileComments);
    texts.composerlab = shownText(item.fileComposer);
    texts.bandlab = shownText(item.fileBand);
    texts.publishlab = shownText(item.filePublisher);
    texts.recordDatelab = shownText(item.shootDateStr);
    texts.createdDatelab = shownText(item.fileCreateDateStr);
    texts.keywordslab = shownText(item.fileKeyWords);
    texts.imageDescrilab = shownText(item.fileDescription);
    texts.lyricslab = shownText(item.fileLyricist);
    texts.audioArtImageView = pane.shown.shownArtwork = item.fileImage;
    for (const AudioField& field : kAudioFields)
        pane.shown.*field.shown = texts.*field.text;
    pane.shown.oldArtistStr = shownText(videoPaneArtist);
    return pane;
}

const AudioField (&audioFields())[kAudioFieldCount] {
    return kAudioFields;
}
const VideoFormField (&videoFormFields())[kVideoFormFieldCount] {
    return kVideoFormFields;
}

QList<FactLine> audioFacts(const IKImageItem& item) {
    const QString modified =
        platform::formatDate(item.fileModifyDate, platform::DatePattern::Colon);
    return {fact(u"File Name: ", item.fileName),    fact(u"Kind: ", item.fileType),
            fact(u"Duration: ", item.fileduratStr), fact(u"File Size: ", item.fileSize),
            fact(u"Bitrate: ", item.fileBitRate),   fact(u"Sample Rate: ", item.fileSampleRate),
            fact(u"Channels: ", item.fileChannels), fact(u"Modified Date: ", modified),
            fact(u"Location: ", item.filePath)};
}

QList<FactLine> videoFacts(const IKImageItem& item) {
    const bool sized = item.filePixWidth > 0 && item.filepixHeigh > 0;
    const QString dimensions =
        sized ? QStringLiteral("%1 x %2").arg(item.filePixWidth).arg(item.filepixHeigh) : QString();
    return {fact(u"File Name: ", item.fileName),
            fact(u"Kind: ", item.fileType),
            fact(u"File Dimensions: ", dimensions),
            fact(u"Duration: ", item.fileduratStr),
            fact(u"File Size: ", item.fileSize),
            fact(u"Bitrate: ", item.fileBitRate),
            fact(u"Sample Rate: ", item.fileSampleRate),
            fact(u"Channels: ", item.fileChannels),
            fact(u"Record Date: ", item.shootDateStr),
            fact(u"Created Date: ", item.fileCreateDateStr),
            fact(u"Location: ", item.filePath)};
}

} // namespace clipheave::media
