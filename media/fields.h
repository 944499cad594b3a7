// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/field.h"
#include "media/written_keys.h"

#include <algorithm>
#include <string_view>

// The fields of a media item, one row each: every other table about a field is made from these.
namespace clipheave::media {

namespace field_groups {
inline constexpr bool ChangeFlags::*kBasic = &ChangeFlags::basicInfoChange;
inline constexpr bool ChangeFlags::*kCamera = &ChangeFlags::cameraInfoChange;
inline constexpr bool ChangeFlags::*kPosition = &ChangeFlags::gpsInfoChange;
} // namespace field_groups

namespace field_rows {
using namespace field_groups;

/// In the order of the command line's lists and of the video pane, which is also the order in which
/// a save builds the items of a video. Sources of the identifiers: the key spaces of QuickTime
/// metadata, iTunes lists, ISO user data, ID3 frames and the info chunks of AIFF and CAF.
inline constexpr Field kRows[] = {
    {.name = "title",
     .recordName = "fileTitle",
     .record = &IKImageItem::fileTitle,
     .tagWord = "Title",
     .read = {{{"id3/TIT2", kVideos | kAudioFiles},
               {"itsk/%A9nam", kVideos | kAudioFiles},
               {"caaf/info-title", kAiffFiles}}},
     .infoKey = u"title",
     .video = {"mediaTitle", "Title", &PaneTexts::mediaTitle, &ShownTexts::oldMovieTitle, kBasic},
     .written = {kKeySpaceITunes, u"title", u"itsk/%A9nam"},
     .audio = {1, "titlelab", "Title", &AudioPaneTexts::titlelab, &AudioShownTexts::oldTitleStr,
               kBasic}},
    {.name = "subtitle",
     .recordName = "fileSubTitle",
     .record = &IKImageItem::fileSubTitle,
     .read = {{{"id3/TIT3", kAudioFiles}, {"itsk/%A9st3", kAudioFiles}}},
     .infoKey = u"subtitle",
     .audio = {2, "subtitlelab", "Subtitle", &AudioPaneTexts::subtitlelab,
               &AudioShownTexts::oldSubtitleStr, kBasic}},
    {.name = "album",
     .recordName = "fileAblumName",
     .record = &IKImageItem::fileAblumName,
     .read = {{{"id3/TALB", kVideos | kAudioFiles},
               {"itsk/%A9alb", kVideos | kAudioFiles},
               {"caaf/info-album", kAiffFiles}}},
     .infoKey = u"album",
     .video = {"mediaAlumArtis", "Album", &PaneTexts::mediaAlumArtis,
               &ShownTexts::oldMovieAlbumArtist, kBasic},
     .written = {kKeySpaceITunes, u"albumName", u"itsk/%A9alb"},
     .audio = {4, "abulmlab", "Album", &AudioPaneTexts::abulmlab, &AudioShownTexts::oldAlbumStr,
               kBasic}},
    {.name = "artist",
     .recordName = "fileArist",
     .record = &IKImageItem::fileArist,
     .tagWord = "Artist",
     .read = {{{"id3/TPE1", kVideos | kAudioFiles},
               {"itsk/%A9ART", kVideos | kAudioFiles},
               {"id3/TOPE", kAudioFiles},
               {"caaf/info-artist", kAiffFiles}}},
     .infoKey = u"artist",
     .video = {"mediaArtist", "Artist", &PaneTexts::mediaArtist, &ShownTexts::oldMovieArtist,
               kBasic},
     .written = {kKeySpaceITunes, u"artist", u"itsk/%A9ART"},
     .audio = {3, "artistlab", "Artist", &AudioPaneTexts::artistlab, &AudioShownTexts::oldArtistStr,
               kBasic}},
    // Deliberate: the track number stands in the album-artist field, where the pane shows it.
    {.name = "albumArtist",
     .recordName = "fileAlbumArist",
     .record = &IKImageItem::fileAlbumArist,
     .readAs = ReadAs::Track,
     .read = {{{"id3/TRCK", kAudioFiles},
               {"itsk/trkn", kAudioFiles},
               {"caaf/info-track%20number", kAiffFiles}}},
     .infoKey = u"track number",
     .audio = {5, "ablumAristlab", "Track", &AudioPaneTexts::ablumAristlab,
               &AudioShownTexts::oldAlbumArtistStr, kBasic}},
    {.name = "composer",
     .recordName = "fileComposer",
     .record = &IKImageItem::fileComposer,
     .read = {{{"id3/TCOM", kAudioFiles},
               {"itsk/%A9wrt", kAudioFiles},
               {"caaf/info-composer", kAiffFiles}}},
     .infoKey = u"composer",
     .audio = {7, "composerlab", "Composer", &AudioPaneTexts::composerlab,
               &AudioShownTexts::oldComposerStr, kBasic}},
    // The second identifier is the one that a save of an MPEG-4 audio file writes.
    {.name = "band",
     .recordName = "fileBand",
     .record = &IKImageItem::fileBand,
     .read = {{{"id3/TPE2", kAudioFiles}, {"itlk/com.apple.iTunes.BAND", kAudioFiles}}},
     .audio = {6, "bandlab", "Band", &AudioPaneTexts::bandlab, &AudioShownTexts::oldBandStr,
               kCamera}},
    {.name = "lyricist",
     .recordName = "fileLyricist",
     .record = &IKImageItem::fileLyricist,
     .read = {{{"id3/TEXT", kAudioFiles}, {"itsk/%A9lyr", kAudioFiles}}},
     .infoKey = u"lyricist",
     .audio = {16, "lyricslab", "Lyrics", &AudioPaneTexts::lyricslab, &AudioShownTexts::oldLyricStr,
               kCamera}},
    {.name = "director",
     .recordName = "fileDirector",
     .record = &IKImageItem::fileDirector,
     .read = {{{"mdta/com.apple.quicktime.director", kVideos}, {"itsk/%A9dir", kVideos}}},
     .video = {"mediaMake", "Director", &PaneTexts::mediaMake, &ShownTexts::oldMovieMake, kBasic},
     .written = {AVMetadataKeySpaceQuickTimeMetadata, AVMetadataQuickTimeMetadataKeyDirector,
                 u"mdta/com.apple.quicktime.director"}},
    {.name = "actors",
     .recordName = "fileActor",
     .record = &IKImageItem::fileActor,
     .read = {{{"mdta/com.apple.quicktime.performer", kVideos}, {"itsk/%A9prf", kVideos}}},
     .video = {"mediaModel", "Performer", &PaneTexts::mediaModel, &ShownTexts::oldMovieModel,
               kBasic},
     .written = {AVMetadataKeySpaceQuickTimeMetadata, AVMetadataQuickTimeMetadataKeyPerformer,
                 u"mdta/com.apple.quicktime.performer"}},
    {.name = "producer",
     .recordName = "fileproducer",
     .record = &IKImageItem::fileproducer,
     .read = {{{"mdta/com.apple.quicktime.producer", kVideos},
               {"itsk/%A9prd", kVideos},
               {"mdta/com.apple.proapps.manufacturer", kSingleVideos}}},
     .video = {"mediaProducer", "Producer", &PaneTexts::mediaProducer,
               &ShownTexts::oldMovieProducer, kBasic},
     .written = {AVMetadataKeySpaceQuickTimeMetadata, AVMetadataQuickTimeMetadataKeyProducer,
                 u"mdta/com.apple.quicktime.producer"}},
    {.name = "publisher",
     .recordName = "filePublisher",
     .record = &IKImageItem::filePublisher,
     .read = {{{"mdta/com.apple.quicktime.publisher", kVideos | kAudioFiles},
               {"itsk/%A9pub", kVideos | kAudioFiles},
               {"id3/TPUB", kAudioFiles}}},
     .video = {"mediaReleaseYear", "Publisher", &PaneTexts::mediaReleaseYear,
               &ShownTexts::oldMoviePublisher, kCamera},
     .written = {AVMetadataKeySpaceCommon, AVMetadataCommonKeyPublisher, u"common/publisher"},
     .audio = {8, "publishlab", "Publisher", &AudioPaneTexts::publishlab,
               &AudioShownTexts::oldPublisherStr, kCamera}},
    {.name = "copyright",
     .recordName = "fileCopyright",
     .record = &IKImageItem::fileCopyright,
     .tagWord = "Copyright",
     .read = {{{"mdta/com.apple.quicktime.copyright", kVideos | kAudioFiles},
               {"itsk/cprt", kVideos | kAudioFiles},
               {"id3/TCOP", kAudioFiles}}},
     .infoKey = u"copyright",
     .video = {"mediaCopyright", "Copyright", &PaneTexts::mediaCopyright,
               &ShownTexts::oldMovieCopyright, kCamera},
     .written = {AVMetadataKeySpaceCommon, AVMetadataCommonKeyCopyrights, u"common/copyrights"},
     .audio = {11, "copyrightlab", "Copyright", &AudioPaneTexts::copyrightlab,
               &AudioShownTexts::oldCopyrightStr, kCamera}},
    {.name = "keywords",
     .recordName = "fileKeyWords",
     .record = &IKImageItem::fileKeyWords,
     .tagWord = "Keywords",
     .readAs = ReadAs::Keywords,
     .read = {{{"mdta/com.apple.quicktime.keywords", kVideos}, {"udta/%A9key", kVideos}}},
     .video = {"mediakeywords", "Keywords", &PaneTexts::mediakeywords,
               &ShownTexts::oldMovieKeywords, kCamera},
     .written = {AVMetadataKeySpaceQuickTimeMetadata, kQuickTimeKeywords,
                 u"mdta/com.apple.quicktime.keywords"},
     .audio = {13, "keywordslab", "Keywords", &AudioPaneTexts::keywordslab,
               &AudioShownTexts::oldKeywordStr, nullptr}},
    {.name = "description",
     .recordName = "fileDescription",
     .record = &IKImageItem::fileDescription,
     .tagWord = "Description",
     .read = {{{"mdta/com.apple.quicktime.description", kVideos | kAudioFiles},
               {"itsk/%A9des", kVideos},
               {"uiso/dscp", kSingleVideos}}},
     .video = {"mediaSoftware", "Description", &PaneTexts::mediaSoftware,
               &ShownTexts::oldMovieDescription, kCamera},
     .written = {AVMetadataKeySpaceCommon, AVMetadataCommonKeyDescription, u"common/description"},
     .audio = {14, "imageDescrilab", "Description", &AudioPaneTexts::imageDescrilab,
               &AudioShownTexts::oldImageDescStr, nullptr}},
    {.name = "comments",
     .recordName = "fileComments",
     .record = &IKImageItem::fileComments,
     .read = {{{"id3/COMM", kAudioFiles},
               {"itsk/%A9cmt", kAudioFiles},
               {"caaf/info-comments", kAiffFiles}}},
     .infoKey = u"comments",
     .audio = {15, "commentslab", "Comments", &AudioPaneTexts::commentslab,
               &AudioShownTexts::oldCommentStr, kCamera}},
    {.name = "year",
     .recordName = "fileReleasedYear",
     .record = &IKImageItem::fileReleasedYear,
     .read = {{{"id3/TYER", kVideos | kAudioFiles},
               {"itsk/%A9day", kAudioFiles},
               {"caaf/info-year", kAiffFiles}}},
     .infoKey = u"year",
     .audio = {9, "releaseYearlab", "Year", &AudioPaneTexts::releaseYearlab,
               &AudioShownTexts::oldReleaseYearStr, kCamera}},
    {.name = "make",
     .recordName = "fileMake",
     .record = &IKImageItem::fileMake,
     .tagWord = "Camera Make",
     .read = {{{"mdta/com.apple.quicktime.make", kVideos}}}},
    {.name = "model",
     .recordName = "fileModel",
     .record = &IKImageItem::fileModel,
     .tagWord = "Camera Model",
     .read = {{{"mdta/com.apple.quicktime.model", kVideos}}}},
    {.name = "recorded",
     .recordName = "shootDateStr",
     .record = &IKImageItem::shootDateStr,
     .readAs = ReadAs::Date,
     .read = {{{"uiso/date", kVideos | kAudioFiles},
               {"mdta/com.apple.quicktime.creationdate", kVideos | kAudioFiles},
               {"id3/TRDA", kAudioFiles}}},
     .video = {"mediaShootDate", "Shot", &PaneTexts::mediaShootDate, &ShownTexts::oldMovieShootDate,
               kCamera},
     .audio = {10, "recordDatelab", "Recorded", &AudioPaneTexts::recordDatelab,
               &AudioShownTexts::oldRecordDateStr, kCamera}},
    {.name = "created",
     .recordName = "fileCreateDateStr",
     .record = &IKImageItem::fileCreateDateStr,
     .readAs = ReadAs::Date,
     .video = {"mediaCreatedDate", "Created", &PaneTexts::mediaCreatedDate,
               &ShownTexts::oldMovieCreatedDate, kCamera},
     .audio = {12, "createdDatelab", "Created", &AudioPaneTexts::createdDatelab,
               &AudioShownTexts::oldCreateDateStr, kCamera}},
    {.name = "latitude",
     .recordName = "filelatitude",
     .video = {nullptr, nullptr, &PaneTexts::mediaLatitude, &ShownTexts::shownLatitude, kPosition}},
    {.name = "longitude",
     .recordName = "filelongtitude",
     .video = {nullptr, nullptr, &PaneTexts::mediaLongtitude, &ShownTexts::shownLongtitude,
               kPosition}},
    {.name = "altitude",
     .recordName = "fileAtitude",
     .video = {nullptr, nullptr, &PaneTexts::mediaAatitude, &ShownTexts::shownAtitude, nullptr}},
};
} // namespace field_rows
inline constexpr const auto& kFields = field_rows::kRows;

/// Returns the field of this name of the command line; compiles for names in the table alone.
[[nodiscard]] consteval const Field& fieldNamed(std::string_view name) {
    for (const Field& field : kFields)
        if (field.name == name)
            return field;
    throw "no such field";
}

// What a field has decides which of the tables below it stands in.
[[nodiscard]] constexpr bool isOnVideoForm(const Field& field) {
    return field.video.objectName != nullptr;
}
[[nodiscard]] constexpr bool isOnAudioPane(const Field& field) {
    return field.audio.text != nullptr;
}
/// Returns true for a text that a file's tags hold, as opposed to its dates and position.
[[nodiscard]] constexpr bool isTag(const Field& field) {
    return field.record != nullptr && field.readAs != ReadAs::Date;
}
[[nodiscard]] constexpr bool isWrittenToVideos(const Field& field) {
    return field.written.identifier != nullptr;
}

/// Returns the part of each field that has it, in the order of the rows.
template <bool (*has)(const Field&), class Part> [[nodiscard]] consteval auto partsOf(Part part) {
    constexpr auto kCount = std::count_if(std::begin(kFields), std::end(kFields), has);
    std::array<decltype(part(kFields[0])), kCount> parts{};
    auto next = parts.begin();
    for (const Field& field : kFields)
        if (has(field))
            *next++ = part(field);
    return parts;
}

/// The fields of the video pane's form, left column then right.
inline constexpr auto kVideoFormFields =
    partsOf<isOnVideoForm>([](const Field& field) { return field.video; });

/// The fields of the audio pane in its order, row by row.
inline constexpr auto kAudioFields = [] {
    auto fields = partsOf<isOnAudioPane>([](const Field& field) { return field.audio; });
    std::sort(fields.begin(), fields.end(),
              [](const AudioField& a, const AudioField& b) { return a.place < b.place; });
    return fields;
}();

/// Returns the field of either name; null when the video pane has no such field.
[[nodiscard]] const Field* videoField(const QString& name);
/// Returns the field of either name; null when the audio pane has no such field.
[[nodiscard]] const Field* audioField(const QString& name);
/// Types `text` into a field of the video pane: sets the text and the flag of its group.
void typeIntoField(VideoPane& pane, const Field& field, const QString& text);

} // namespace clipheave::media
