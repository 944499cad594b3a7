// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/audio_pane.h"

#include "media/fields.h"
#include "media/shown_text.h"

namespace clipheave::media {

AudioPane ShowAudioViewWithItem(const IKImageItem& item, const QString& videoPaneArtist) {
    AudioPane pane;
    for (const Field& field : kFields)
        if (field.audio.text)
            pane.shown.*field.audio.shown = pane.texts.*field.audio.text =
                                                shownText(item.*field.record);
    pane.texts.audioArtImageView = pane.shown.shownArtwork = item.fileImage;
    pane.shown.oldArtistStr = shownText(videoPaneArtist);
    return pane;
}

} // namespace clipheave::media
