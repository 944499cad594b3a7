// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/model/metadata_item.h"

#include <QLatin1String>
#include <QList>
#include <QString>

namespace clipheave::platform {

/// How the text of a tag becomes the value of an item.
enum class TagRule {
    Text,     ///< as it stands
    Year,     ///< the first four digits in a row; no item without them
    FullDate, ///< as it stands when it begins "YYYY-MM-DD", else no item
    Track,    ///< "n", or "n/m" when the number of tracks is known
    Disc,     ///< likewise, of the discs
};

/// One name of a tag, in lower case, and an item that it gives.
struct TagMapping {
    QLatin1String name;
    QLatin1String identifier;
    TagRule rule = TagRule::Text;
};

/// The names that Vorbis comments, APE, ASF, RIFF and libavformat use. A name may give several
/// items. Of several names for one identifier the first in this table wins. The identifiers are
/// those that the import reads in video and audio files alike, where there is one.
inline constexpr TagMapping kTagMappings[] = {
    {QLatin1String("title"), QLatin1String("id3/TIT2")},
    {QLatin1String("artist"), QLatin1String("id3/TPE1")},
    {QLatin1String("author"), QLatin1String("id3/TPE1")},
    {QLatin1String("album"), QLatin1String("id3/TALB")},
    {QLatin1String("wm/albumtitle"), QLatin1String("id3/TALB")},
    {QLatin1String("albumartist"), QLatin1String("id3/TPE2")},
    {QLatin1String("album_artist"), QLatin1String("id3/TPE2")},
    {QLatin1String("album artist"), QLatin1String("id3/TPE2")},
    {QLatin1String("wm/albumartist"), QLatin1String("id3/TPE2")},
    {QLatin1String("ensemble"), QLatin1String("id3/TPE2")},
    {QLatin1String("band"), QLatin1String("id3/TPE2")},
    {QLatin1String("composer"), QLatin1String("id3/TCOM")},
    {QLatin1String("wm/composer"), QLatin1String("id3/TCOM")},
    {QLatin1String("lyricist"), QLatin1String("id3/TEXT")},
    {QLatin1String("wm/writer"), QLatin1String("id3/TEXT")},
    {QLatin1String("writer"), QLatin1String("id3/TEXT")},
    {QLatin1String("subtitle"), QLatin1String("id3/TIT3")},
    {QLatin1String("wm/subtitle"), QLatin1String("id3/TIT3")},
    {QLatin1String("comment"), QLatin1String("id3/COMM")},
    {QLatin1String("comments"), QLatin1String("id3/COMM")},
    {QLatin1String("description"), QLatin1String("id3/COMM")},
    {QLatin1String("track"), QLatin1String("id3/TRCK"), TagRule::Track},
    {QLatin1String("tracknumber"), QLatin1String("id3/TRCK"), TagRule::Track},
    {QLatin1String("wm/tracknumber"), QLatin1String("id3/TRCK"), TagRule::Track},
    {QLatin1String("disc"), QLatin1String("id3/TPOS"), TagRule::Disc},
    {QLatin1String("discnumber"), QLatin1String("id3/TPOS"), TagRule::Disc},
    {QLatin1String("wm/partofset"), QLatin1String("id3/TPOS"), TagRule::Disc},
    {QLatin1String("date"), QLatin1String("id3/TYER"), TagRule::Year},
    {QLatin1String("year"), QLatin1String("id3/TYER"), TagRule::Year},
    {QLatin1String("wm/year"), QLatin1String("id3/TYER"), TagRule::Year},
    {QLatin1String("date_recorded"), QLatin1String("id3/TYER"), TagRule::Year},
    {QLatin1String("date_released"), QLatin1String("id3/TYER"), TagRule::Year},
    {QLatin1String("date"), QLatin1String("id3/TRDA"), TagRule::FullDate},
    {QLatin1String("record date"), QLatin1String("id3/TRDA"), TagRule::FullDate},
    {QLatin1String("date_recorded"), QLatin1String("id3/TRDA"), TagRule::FullDate},
    {QLatin1String("genre"), QLatin1String("id3/TCON")},
    {QLatin1String("wm/genre"), QLatin1String("id3/TCON")},
    {QLatin1String("isrc"), QLatin1String("id3/TSRC")},
    {QLatin1String("wm/isrc"), QLatin1String("id3/TSRC")},
    {QLatin1String("lyrics"), QLatin1String("id3/USLT")},
    {QLatin1String("unsyncedlyrics"), QLatin1String("id3/USLT")},
    {QLatin1String("wm/lyrics"), QLatin1String("id3/USLT")},
    {QLatin1String("grouping"), QLatin1String("id3/TIT1")},
    {QLatin1String("contentgroup"), QLatin1String("id3/TIT1")},
    {QLatin1String("wm/contentgroupdescription"), QLatin1String("id3/TIT1")},
    {QLatin1String("bpm"), QLatin1String("id3/TBPM")},
    {QLatin1String("tempo"), QLatin1String("id3/TBPM")},
    {QLatin1String("wm/beatsperminute"), QLatin1String("id3/TBPM")},
    {QLatin1String("compilation"), QLatin1String("id3/TCMP")},
    {QLatin1String("wm/iscompilation"), QLatin1String("id3/TCMP")},
    {QLatin1String("encoded-by"), QLatin1String("id3/TENC")},
    {QLatin1String("encoded_by"), QLatin1String("id3/TENC")},
    {QLatin1String("encodedby"), QLatin1String("id3/TENC")},
    {QLatin1String("wm/encodedby"), QLatin1String("id3/TENC")},
    {QLatin1String("conductor"), QLatin1String("id3/TPE3")},
    {QLatin1String("wm/conductor"), QLatin1String("id3/TPE3")},
    {QLatin1String("titlesort"), QLatin1String("id3/TSOT")},
    {QLatin1String("title-sort"), QLatin1String("id3/TSOT")},
    {QLatin1String("artistsort"), QLatin1String("id3/TSOP")},
    {QLatin1String("artist-sort"), QLatin1String("id3/TSOP")},
    {QLatin1String("albumsort"), QLatin1String("id3/TSOA")},
    {QLatin1String("album-sort"), QLatin1String("id3/TSOA")},
    {QLatin1String("albumartistsort"), QLatin1String("id3/TSO2")},
    {QLatin1String("composersort"), QLatin1String("id3/TSOC")},
    {QLatin1String("publisher"), QLatin1String("id3/TPUB")},
    {QLatin1String("wm/publisher"), QLatin1String("id3/TPUB")},
    {QLatin1String("organization"), QLatin1String("id3/TPUB")},
    {QLatin1String("label"), QLatin1String("id3/TPUB")},
    {QLatin1String("publisher"), QLatin1String("mdta/com.apple.quicktime.publisher")},
    {QLatin1String("wm/publisher"), QLatin1String("mdta/com.apple.quicktime.publisher")},
    {QLatin1String("organization"), QLatin1String("mdta/com.apple.quicktime.publisher")},
    {QLatin1String("label"), QLatin1String("mdta/com.apple.quicktime.publisher")},
    {QLatin1String("copyright"), QLatin1String("mdta/com.apple.quicktime.copyright")},
    {QLatin1String("description"), QLatin1String("mdta/com.apple.quicktime.description")},
    {QLatin1String("synopsis"), QLatin1String("mdta/com.apple.quicktime.description")},
    // Places of their own beside the description: iTunes has one for the longer text alone.
    {QLatin1String("synopsis"), QLatin1String("itsk/ldes")},
    {QLatin1String("summary"), QLatin1String("itlk/com.apple.iTunes.SUMMARY")},
    {QLatin1String("keywords"), QLatin1String("mdta/com.apple.quicktime.keywords")},
    {QLatin1String("director"), QLatin1String("mdta/com.apple.quicktime.director")},
    {QLatin1String("wm/director"), QLatin1String("mdta/com.apple.quicktime.director")},
    {QLatin1String("performer"), QLatin1String("mdta/com.apple.quicktime.performer")},
    {QLatin1String("actor"), QLatin1String("mdta/com.apple.quicktime.performer")},
    {QLatin1String("producer"), QLatin1String("mdta/com.apple.quicktime.producer")},
    {QLatin1String("wm/producer"), QLatin1String("mdta/com.apple.quicktime.producer")},
    {QLatin1String("location"), QLatin1String("mdta/com.apple.quicktime.location.ISO6709")},
    {QLatin1String("make"), QLatin1String("mdta/com.apple.quicktime.make")},
    {QLatin1String("model"), QLatin1String("mdta/com.apple.quicktime.model")},
};

/// One tag of a file under the name that the file gives it; letter case of names does not matter.
struct NamedTag {
    QString name;
    QString value;
};

/// Separates the values of a tag that stands several times. A slash would be read as part of a name
/// ("AC/DC").
inline constexpr QLatin1String kValueSeparator("; ");

/// The items of `tags` by kTagMappings, in table order; at most one an identifier. What gives
/// none of them is a user's text, "id3/TXXX%3ANAME" under its own name, in file order. Empty texts,
/// keys of QuickTime and what a program notes for itself (its name, counts, brands) give nothing.
[[nodiscard]] QList<AVMetadataItem> itemsFromTags(const QList<NamedTag>& tags);
/// The values of the tags of that name (lower case), joined; null when there is none.
[[nodiscard]] QString tagText(const QList<NamedTag>& tags, QLatin1String name);
/// "n" or "n/m" from the first of the track numbers and, when that has none, the number of tracks.
[[nodiscard]] QString trackText(const QList<NamedTag>& tags, const QString& numbers);
/// Likewise of discs.
[[nodiscard]] QString discText(const QList<NamedTag>& tags, const QString& numbers);
/// The first four digits in a row of a date; null when there are none.
[[nodiscard]] QString yearText(const QString& date);
/// An item whose key space and key come from the identifier ("id3/TIT2", "mdta/…").
[[nodiscard]] AVMetadataItem itemOf(QLatin1String identifier, const QString& text);
/// A text under a name that no table knows, as ID3 keeps it: "id3/TXXX%3ANAME".
[[nodiscard]] AVMetadataItem userTextItem(const QString& name, const QString& text);

} // namespace clipheave::platform
