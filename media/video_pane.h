// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/change_flags.h"
#include "media/image_item.h"

#include <QString>

namespace clipheave::media {

/// The texts of the video pane under the names of its fields, which were made for photos: see the
/// meaning at the right. A front fills them from its controls; writers never see a control.
struct PaneTexts {
    QString mediaTitle;
    QString mediaAlumArtis; ///< album
    QString mediaArtist;
    QString mediaMake;  ///< director
    QString mediaModel; ///< performer
    QString mediaProducer;
    QString mediaReleaseYear; ///< publisher
    QString mediaCopyright;
    QString mediakeywords;
    QString mediaSoftware; ///< description
    QString mediaShootDate;
    QString mediaCreatedDate;
    QString mediaLatitude;
    QString mediaLongtitude;
    QString mediaAatitude;
    platform::EncodedImage mediaImageView; ///< null: the placeholder "artworkimage"
};

/// What the video pane showed when the item was displayed. Deliberate pairing: the album stands in
/// the album-artist memory, director and performer in the make and model memories.
struct ShownTexts {
    QString oldMovieTitle;
    QString oldMovieAlbumArtist; ///< album
    QString oldMovieArtist;
    QString oldMovieMake;  ///< director
    QString oldMovieModel; ///< performer
    QString oldMovieProducer;
    QString oldMovieCreatedDate;
    QString oldMovieShootDate;
    QString oldMoviePublisher;
    QString oldMovieCopyright;
    QString oldMovieKeywords;
    QString oldMovieDescription;
    // The position and artwork have no memory of their own on the pane; these set an edit
    // apart from what the file holds already, so that a save leaves an untouched position and
    // cover as they are.
    QString shownLatitude, shownLongtitude, shownAtitude;
    platform::EncodedImage shownArtwork;
};

struct VideoPane {
    PaneTexts texts;
    ShownTexts shown;
    ChangeFlags flags;
};

/// Returns the pane as it shows `item`, nothing edited. A missing value shows as the empty text.
/// Deliberate: the position fields carry the sign of the sign fields, because a save builds the
/// location from these texts and a lost minus would move the video; a video without a position
/// shows empty fields, so that a save does not place it at 0, 0.
[[nodiscard]] VideoPane ShowVideoViewWithItem(const IKImageItem& item);

} // namespace clipheave::media
