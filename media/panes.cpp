// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/panes.h"

#include "platform/foundation/text.h"

namespace clipheave::media {

namespace {

constexpr bool ChangeFlags::*kNoGroup = nullptr;

constexpr VideoField kVideoFields[] = {
    {"title", "fileTitle", &PaneTexts::mediaTitle, &ChangeFlags::basicInfoChange},
    {"album", "fileAblumName", &PaneTexts::mediaAlumArtis, &ChangeFlags::basicInfoChange},
    {"artist", "fileArist", &PaneTexts::mediaArtist, &ChangeFlags::basicInfoChange},
    {"director", "fileDirector", &PaneTexts::mediaMake, &ChangeFlags::basicInfoChange},
    {"actors", "fileActor", &PaneTexts::mediaModel, &ChangeFlags::basicInfoChange},
    {"producer", "fileproducer", &PaneTexts::mediaProducer, &ChangeFlags::basicInfoChange},
    {"publisher", "filePublisher", &PaneTexts::mediaReleaseYear, &ChangeFlags::cameraInfoChange},
    {"copyright", "fileCopyright", &PaneTexts::mediaCopyright, &ChangeFlags::cameraInfoChange},
    {"keywords", "fileKeyWords", &PaneTexts::mediakeywords, &ChangeFlags::cameraInfoChange},
    {"description", "fileDescription", &PaneTexts::mediaSoftware, &ChangeFlags::cameraInfoChange},
    {"recorded", "shootDateStr", &PaneTexts::mediaShootDate, &ChangeFlags::cameraInfoChange},
    {"created", "fileCreateDateStr", &PaneTexts::mediaCreatedDate, &ChangeFlags::cameraInfoChange},
    {"latitude", "filelatitude", &PaneTexts::mediaLatitude, &ChangeFlags::gpsInfoChange},
    {"longitude", "filelongtitude", &PaneTexts::mediaLongtitude, &ChangeFlags::gpsInfoChange},
    {"altitude", "fileAtitude", &PaneTexts::mediaAatitude, kNoGroup},
};

/// A missing value shows as the empty text.
QString shown(const QString& value) {
    return value.isNull() ? QString(QLatin1String("")) : value;
}

QString signedText(const QString& sign, double value) {
    if (sign.isEmpty())
        return shown({});
    return platform::describeNumber(sign == u"-" ? -value : value);
}

} // namespace

VideoPane ShowVideoViewWithItem(const IKImageItem& item) {
    VideoPane pane;
    PaneTexts& texts = pane.texts;
    ShownTexts& memory = pane.shown;
    memory.oldMovieTitle = texts.mediaTitle = shown(item.fileTitle);
    memory.oldMovieAlbumArtist = texts.mediaAlumArtis = shown(item.fileAblumName);
    memory.oldMovieArtist = texts.mediaArtist = shown(item.fileArist);
    memory.oldMovieMake = texts.mediaMake = shown(item.fileDirector);
    memory.oldMovieModel = texts.mediaModel = shown(item.fileActor);
    memory.oldMovieProducer = texts.mediaProducer = shown(item.fileproducer);
    memory.oldMovieCreatedDate = texts.mediaCreatedDate = shown(item.fileCreateDateStr);
    memory.oldMovieShootDate = texts.mediaShootDate = shown(item.shootDateStr);
    memory.oldMoviePublisher = texts.mediaReleaseYear = shown(item.filePublisher);
    memory.oldMovieCopyright = texts.mediaCopyright = shown(item.fileCopyright);
    memory.oldMovieKeywords = texts.mediakeywords = shown(item.fileKeyWords);
    memory.oldMovieDescription = texts.mediaSoftware = shown(item.fileDescription);
    memory.shownLatitude = texts.mediaLatitude = signedText(item.latitudeFormat, item.filelatitude);
    memory.shownLongtitude = texts.mediaLongtitude =
        signedText(item.longtitudeFormat, item.filelongtitude);
    memory.shownAtitude = texts.mediaAatitude = signedText(item.AtitudeFormat, item.fileAtitude);
    memory.shownArtwork = texts.mediaImageView = item.fileImage;
    return pane;
}

const VideoField* videoField(const QString& name) {
    for (const VideoField& field : kVideoFields)
        if (name == QLatin1String(field.name) || name == QLatin1String(field.recordName))
            return &field;
    return nullptr;
}

void typeIntoField(VideoPane& pane, const VideoField& field, const QString& text) {
    pane.texts.*field.text = shown(text);
    if (field.group)
        pane.flags.*field.group = true;
}

} // namespace clipheave::media
