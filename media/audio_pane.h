// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/change_flags.h"
#include "media/image_item.h"

#include <QString>

namespace clipheave::media {

/// The texts of the audio pane under the names of its fields.
struct AudioPaneTexts {
    QString titlelab;
    QString subtitlelab;
    QString artistlab;
    QString abulmlab;
    QString ablumAristlab; ///< Deliberate: carries the track number
    QString bandlab;
    QString composerlab;
    QString publishlab;
    QString releaseYearlab;
    QString recordDatelab;
    QString copyrightlab;
    QString createdDatelab;
    QString keywordslab;
    QString imageDescrilab; ///< description
    QString commentslab;
    QString lyricslab;                        ///< lyricist
    platform::EncodedImage audioArtImageView; ///< null: the placeholder "artworkimage"
};

/// What the audio pane showed when the item was displayed.
struct AudioShownTexts {
    QString oldTitleStr;
    QString oldSubtitleStr;
    QString oldAlbumStr;
    /// Deliberate: what the video pane's artist field holds, not the audio pane's own; an artist
    /// that was not touched therefore counts as changed and is written again.
    QString oldArtistStr;
    QString oldAlbumArtistStr;
    QString oldCopyrightStr;
    QString oldReleaseYearStr;
    QString oldCommentStr;
    QString oldComposerStr;
    QString oldBandStr;
    QString oldLyricStr;
    QString oldPublisherStr;
    QString oldRecordDateStr;
    QString oldCreateDateStr;
    QString oldKeywordStr;
    QString oldImageDescStr;
    /// Distinguishes a cover that was put into the pane from the one that the file holds.
    platform::EncodedImage shownArtwork;
};

struct AudioPane {
    AudioPaneTexts texts;
    AudioShownTexts shown;
    ChangeFlags flags;
};

/// Returns the pane as it shows `item`; `videoPaneArtist` is the text of the video pane's artist
/// field.
[[nodiscard]] AudioPane ShowAudioViewWithItem(const IKImageItem& item,
                                              const QString& videoPaneArtist);

} // namespace clipheave::media
