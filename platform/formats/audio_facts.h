// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/formats/byte_range.h"
#include "platform/media/model/media_facts.h"
#include "platform/media/model/tag_mapping.h"

namespace clipheave::platform {

/// What is known of the one audio track of a file. Zero is unknown.
struct AudioFacts {
    QString codec;
    double durationSeconds = 0;
    double bitRate = 0;    ///< bit/s
    double sampleRate = 0; ///< Hz
    int channels = 0;
};
/// Fills the audio facts and one "soun" track. Values that no audio has (not finite, negative, over
/// a century, over 10 MHz) are left out.
void setAudio(MediaFacts& facts, const AudioFacts& audio);

using InfoDictionary = QMap<QString, QString>;
/// The info dictionary of Vorbis comments or of texts under the names of FFmpeg; DATE is the
/// "recorded date", YEAR the "year", DESCRIPTION stands in for a missing COMMENT.
[[nodiscard]] InfoDictionary infoFromTags(const QList<NamedTag>& tags);
/// The items of what that dictionary has no key for; see itemsFromTags().
[[nodiscard]] QList<AVMetadataItem> itemsBesideInfo(const QList<NamedTag>& tags);
/// That of ID3 frames: TRDA gives "recorded date", TYER "year", and where it is missing the year of
/// TDRC, which ID3v2.4 has in its place.
[[nodiscard]] InfoDictionary infoFromId3(const QList<AVMetadataItem>& items);
/// For files where FFmpeg's "date" is the only date: its year becomes "year", and a date that is
/// nothing but a year is no "recorded date".
void addYearOfDate(InfoDictionary& info);
/// Adds those of `more` whose key `info` lacks. Empty texts count as lacking and are not added.
void addMissingInfo(InfoDictionary& info, const InfoDictionary& more);
/// Adds those of `more` whose identifier `items` lacks. In front, so that images stay last.
void addMissingItems(QList<AVMetadataItem>& items, const QList<AVMetadataItem>& more);
/// A chunk that only its own format has, as an item: "wave/bext", with the bytes of the chunk.
[[nodiscard]] AVMetadataItem chunkItem(const QString& keySpace, const QByteArray& id,
                                       const ByteRange& body);
/// One item a key: key space "caaf", "info-" + key.
[[nodiscard]] QList<AVMetadataItem> infoItems(const InfoDictionary& info);

} // namespace clipheave::platform
