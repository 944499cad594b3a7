// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/audio_fields.h"

namespace clipheave::cli {

namespace {

using media::AudioPaneTexts;

constexpr AudioFieldName kAudioFieldNames[] = {
    {"title", "fileTitle", &AudioPaneTexts::titlelab},
    {"subtitle", "fileSubTitle", &AudioPaneTexts::subtitlelab},
    {"album", "fileAblumName", &AudioPaneTexts::abulmlab},
    {"artist", "fileArist", &AudioPaneTexts::artistlab},
    // Deliberate: the track number, as in the list.
    {"albumArtist", "fileAlbumArist", &AudioPaneTexts::ablumAristlab},
    {"composer", "fileComposer", &AudioPaneTexts::composerlab},
    {"band", "fileBand", &AudioPaneTexts::bandlab},
    {"lyricist", "fileLyricist", &AudioPaneTexts::lyricslab},
    {"publisher", "filePublisher", &AudioPaneTexts::publishlab},
    {"copyright", "fileCopyright", &AudioPaneTexts::copyrightlab},
    {"keywords", "fileKeyWords", &AudioPaneTexts::keywordslab},
    {"description", "fileDescription", &AudioPaneTexts::imageDescrilab},
    {"comments", "fileComments", &AudioPaneTexts::commentslab},
    {"year", "fileReleasedYear", &AudioPaneTexts::releaseYearlab},
    {"recorded", "shootDateStr", &AudioPaneTexts::recordDatelab},
    {"created", "fileCreateDateStr", &AudioPaneTexts::createdDatelab},
};

} // namespace

const AudioFieldName* audioField(const QString& name) {
    for (const AudioFieldName& field : kAudioFieldNames)
        if (name == QLatin1String(field.name) || name == QLatin1String(field.recordName))
            return &field;
    return nullptr;
}

} // namespace clipheave::cli
