// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/image_item.h"

#include <QStringView>

namespace clipheave::media {

/// Reads an ISO 6709 text ("+37.3349-122.0090+010.000/") into the position fields. Deliberate: the
/// longitude is stored only when a third sign follows, so a text without an altitude gives a
/// latitude and the longitude 0. A text with fewer numbers than the record has changes nothing, any
/// other takes the place of the whole position: numbers of two texts make a place that neither
/// states.
void applyLocationText(IKImageItem& item, QStringView location);
/// Returns whether the longitude of the item is known: such a text sets its sign and no number.
[[nodiscard]] bool hasLongitude(const IKImageItem& item);

/// How the seconds of a rebuilt date are taken.
enum class SecondsCut {
    TwoDigits, ///< video and MP3 readers: "12Z" becomes "12"
    AsTheyAre, ///< WAV reader
};
/// Reads a metadata date ("2019-05-04T10:11:12+0200") into `shootDateStr` and, when it parses,
/// `shootDate`. Deliberate: a zone is dropped and the local clock time kept.
void applyShootDateText(IKImageItem& item, const QString& value, SecondsCut cut);

/// Returns "yyyy:MM:dd HH:mm:ss", or the dash form when that gives nothing; null for an invalid
/// date.
[[nodiscard]] QString createdDateText(const QDateTime& date);

} // namespace clipheave::media
