// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/fact_lines.h"
#include "photo/pane_texts.h"
#include "platform/foundation/result.h"

#include <QVariantMap>

namespace clipheave::photo {

/// What the photo pane shows of one photo.
struct ShownPhoto {
    PaneTexts texts;              ///< nothing changed
    QList<media::FactLine> facts; ///< as photoFacts() returns them
};

/// Reads the headers of the photo, a few milliseconds. The failure of CGImageSource otherwise: an
/// empty pane would take what the photo has away.
[[nodiscard]] platform::Result<ShownPhoto> shownPhoto(const media::IKImageItem& item);

/// The dates of a photo as texts; empty for one that it does not have.
struct PhotoDates {
    QString taken, digitised;  ///< DateTimeOriginal and DateTimeDigitized, as they stand there
    QString created, modified; ///< of the file, "yyyy:MM:dd HH:mm:ss" in local time
};
/// As shownPhoto().
[[nodiscard]] platform::Result<PhotoDates> photoDates(const media::IKImageItem& item);

/// Returns the nine facts of the photo pane in their fixed wording; the bare label for what the
/// photo does not have. `properties`: as CGImageSource gives them.
[[nodiscard]] QList<media::FactLine> photoFacts(const media::IKImageItem& item,
                                                const QVariantMap& properties);

} // namespace clipheave::photo
