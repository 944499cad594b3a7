// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/video_pane.h"

#include "media/fields.h"
#include "media/item_texts.h"
#include "media/shown_text.h"
#include "platform/foundation/text.h"

namespace clipheave::media {

namespace {

QString signedText(const QString& sign, double value) {
    if (sign.isEmpty())
        return shownText({});
    return platform::plainDecimals(sign == u"-" ? -value : value);
}

} // namespace

VideoPane ShowVideoViewWithItem(const IKImageItem& item) {
    VideoPane pane;
    PaneTexts& texts = pane.texts;
    ShownTexts& memory = pane.shown;
    texts.mediaLatitude = signedText(item.latitudeFormat, item.filelatitude);
    texts.mediaLongtitude =
        hasLongitude(item) ? signedText(item.longtitudeFormat, item.filelongtitude) : shownText({});
    texts.mediaAatitude = signedText(item.AtitudeFormat, item.fileAtitude);
    for (const Field& field : kFields) {
        if (!field.video.text)
            continue;
        QString& text = texts.*field.video.text;
        if (field.record)
            text = shownText(item.*field.record);
        memory.*field.video.shown = text;
    }
    memory.shownArtwork = texts.mediaImageView = item.fileImage;
    return pane;
}

} // namespace clipheave::media
