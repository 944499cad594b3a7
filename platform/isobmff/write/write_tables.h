// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/isobmff/box.h"
#include "platform/isobmff/structural_user_data.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

// What the writer knows about codes and identifiers, each in one table.
namespace clipheave::platform {

/// Brands of the source that stay in the compatible list, because what they announce is carried
/// over with the samples and the fragments.
inline constexpr std::array kDecoderBrands{
    fourCc("iso2"), fourCc("iso3"), fourCc("iso4"), fourCc("iso5"), fourCc("iso6"),
    fourCc("iso7"), fourCc("iso8"), fourCc("iso9"), fourCc("isoa"), fourCc("isob"),
    fourCc("isoc"), fourCc("avc1"), fourCc("av01"), fourCc("hvc1"), fourCc("dby1"),
    fourCc("dash"), fourCc("cmfc"), fourCc("cmf2"), fourCc("mp71"),
};

/// Identifiers that say where something was recorded, beside the keys below.
inline constexpr std::array<std::string_view, 6> kLocationIdentifiers{
    "uiso/loci", "udta/loci", "uiso/%A9xyz", "udta/%A9xyz", "itsk/%A9xyz", "common/location"};
/// Position, its accuracy, name and date: all of them say where.
inline constexpr std::string_view kLocationKeys = "mdta/com.apple.quicktime.location.";
[[nodiscard]] constexpr bool isLocation(std::string_view identifier) {
    return identifier.starts_with(kLocationKeys) ||
           std::find(kLocationIdentifiers.begin(), kLocationIdentifiers.end(), identifier) !=
               kLocationIdentifiers.end();
}

/// Where a new item goes when its identifier is not that of a place in the file.
struct ItemTranslation {
    std::string_view identifier;
    std::string_view mp4;       ///< M4V, M4A and MP4; empty: dropped
    std::string_view quickTime; ///< QuickTime movie
};
inline constexpr std::array kTranslations{
    ItemTranslation{"common/title", "itsk/%A9nam", "itsk/%A9nam"},
    ItemTranslation{"common/artist", "itsk/%A9ART", "itsk/%A9ART"},
    ItemTranslation{"common/albumName", "itsk/%A9alb", "itsk/%A9alb"},
    ItemTranslation{"common/artwork", "itsk/covr", "itsk/covr"},
    ItemTranslation{"common/author", "itsk/%A9aut", "mdta/com.apple.quicktime.author"},
    ItemTranslation{"common/creator", "itsk/%A9wrt", "itsk/%A9wrt"},
    ItemTranslation{"common/publisher", "itsk/%A9pub", "mdta/com.apple.quicktime.publisher"},
    ItemTranslation{"common/copyrights", "itsk/cprt", "mdta/com.apple.quicktime.copyright"},
    ItemTranslation{"common/description", "itsk/%A9des", "mdta/com.apple.quicktime.description"},
    // A date of recording; ©day is the year.
    ItemTranslation{"common/creationDate", "uiso/date", "mdta/com.apple.quicktime.creationdate"},
    ItemTranslation{"common/type", "itsk/%A9gen", "mdta/com.apple.quicktime.genre"},
    ItemTranslation{"common/software", "itsk/%A9too", "mdta/com.apple.quicktime.software"},
    ItemTranslation{"common/make", "mdta/com.apple.quicktime.make",
                    "mdta/com.apple.quicktime.make"},
    ItemTranslation{"common/model", "mdta/com.apple.quicktime.model",
                    "mdta/com.apple.quicktime.model"},
    ItemTranslation{"common/location", "uiso/loci", "uiso/loci"},
    ItemTranslation{"mdta/com.apple.quicktime.director", "itsk/%A9dir",
                    "mdta/com.apple.quicktime.director"},
    ItemTranslation{"mdta/com.apple.quicktime.performer", "itsk/%A9prf",
                    "mdta/com.apple.quicktime.performer"},
    ItemTranslation{"mdta/com.apple.quicktime.producer", "itsk/%A9prd",
                    "mdta/com.apple.quicktime.producer"},
    ItemTranslation{"udta/date", "uiso/date", "uiso/date"},
    // Tags of audio files and of foreign containers that are written again in this family.
    ItemTranslation{"id3/TIT2", "itsk/%A9nam", "itsk/%A9nam"},
    ItemTranslation{"id3/TPE1", "itsk/%A9ART", "itsk/%A9ART"},
    ItemTranslation{"id3/TPE2", "itsk/aART", "itsk/aART"},
    ItemTranslation{"id3/TALB", "itsk/%A9alb", "itsk/%A9alb"},
    ItemTranslation{"id3/TCOM", "itsk/%A9wrt", "itsk/%A9wrt"},
    ItemTranslation{"id3/TCOP", "itsk/cprt", "itsk/cprt"},
    ItemTranslation{"id3/TYER", "itsk/%A9day", "itsk/%A9day"},
    ItemTranslation{"id3/TDRC", "itsk/%A9day", "itsk/%A9day"},
    ItemTranslation{"id3/TBPM", "itsk/tmpo", "itsk/tmpo"},
    ItemTranslation{"id3/TCMP", "itsk/cpil", "itsk/cpil"},
    ItemTranslation{"id3/TENC", "itsk/%A9enc", "itsk/%A9enc"},
    ItemTranslation{"id3/TRDA", "uiso/date", "uiso/date"},
    ItemTranslation{"id3/TPUB", "itsk/%A9pub", "itsk/%A9pub"},
    ItemTranslation{"id3/TCON", "itsk/%A9gen", "itsk/%A9gen"},
    ItemTranslation{"id3/TIT1", "itsk/grup", "itsk/grup"},
    ItemTranslation{"id3/TIT3", "itsk/%A9st3", "itsk/%A9st3"},
    ItemTranslation{"id3/TRCK", "itsk/trkn", "itsk/trkn"},
    ItemTranslation{"id3/TPOS", "itsk/disk", "itsk/disk"},
    ItemTranslation{"id3/COMM", "itsk/%A9cmt", "itsk/%A9cmt"},
    ItemTranslation{"id3/TEXT", "itsk/%A9lyr", "itsk/%A9lyr"}, // both are the record's lyricist
    ItemTranslation{"id3/USLT", "itsk/%A9lyr", "itsk/%A9lyr"},
    ItemTranslation{"id3/TOPE", "itsk/%A9ope", "itsk/%A9ope"},
    ItemTranslation{"id3/TPE3", "itsk/%A9con", "itsk/%A9con"},
    ItemTranslation{"id3/TSOT", "itsk/sonm", "itsk/sonm"},
    ItemTranslation{"id3/TSOP", "itsk/soar", "itsk/soar"},
    ItemTranslation{"id3/TSOA", "itsk/soal", "itsk/soal"},
    ItemTranslation{"id3/TSO2", "itsk/soaa", "itsk/soaa"},
    ItemTranslation{"id3/TSOC", "itsk/soco", "itsk/soco"},
    ItemTranslation{"id3/GRP1", "itsk/%A9grp", "itsk/%A9grp"},
    ItemTranslation{"id3/MVNM", "itsk/%A9mvn", "itsk/%A9mvn"},
    ItemTranslation{"id3/TPE4", "itlk/com.apple.iTunes.REMIXER", "itlk/com.apple.iTunes.REMIXER"},
    ItemTranslation{"id3/TSRC", "itlk/com.apple.iTunes.ISRC", "itlk/com.apple.iTunes.ISRC"},
    ItemTranslation{"id3/TLAN", "itlk/com.apple.iTunes.LANGUAGE", "itlk/com.apple.iTunes.LANGUAGE"},
    ItemTranslation{"id3/TMED", "itlk/com.apple.iTunes.MEDIA", "itlk/com.apple.iTunes.MEDIA"},
    ItemTranslation{"id3/TMOO", "itlk/com.apple.iTunes.MOOD", "itlk/com.apple.iTunes.MOOD"},
    ItemTranslation{"id3/TKEY", "itlk/com.apple.iTunes.initialkey",
                    "itlk/com.apple.iTunes.initialkey"},
    ItemTranslation{"id3/TOAL", "itlk/com.apple.iTunes.ORIGINALALBUM",
                    "itlk/com.apple.iTunes.ORIGINALALBUM"},
    ItemTranslation{"id3/TDOR", "itlk/com.apple.iTunes.ORIGINALDATE",
                    "itlk/com.apple.iTunes.ORIGINALDATE"},
    ItemTranslation{"id3/TORY", "itlk/com.apple.iTunes.ORIGINALYEAR",
                    "itlk/com.apple.iTunes.ORIGINALYEAR"},
    ItemTranslation{"id3/APIC", "itsk/covr", "itsk/covr"},
    ItemTranslation{"caaf/info-title", "itsk/%A9nam", "itsk/%A9nam"},
    ItemTranslation{"caaf/info-genre", "itsk/%A9gen", "itsk/%A9gen"},
    ItemTranslation{"caaf/info-artist", "itsk/%A9ART", "itsk/%A9ART"},
    ItemTranslation{"caaf/info-album", "itsk/%A9alb", "itsk/%A9alb"},
    ItemTranslation{"caaf/info-subtitle", "itsk/%A9st3", "itsk/%A9st3"},
    ItemTranslation{"caaf/info-lyricist", "itsk/%A9lyr", "itsk/%A9lyr"},
    ItemTranslation{"caaf/info-recorded%20date", "uiso/date", "uiso/date"},
    ItemTranslation{"caaf/info-year", "itsk/%A9day", "itsk/%A9day"},
    ItemTranslation{"caaf/info-comments", "itsk/%A9cmt", "itsk/%A9cmt"},
    ItemTranslation{"caaf/info-composer", "itsk/%A9wrt", "itsk/%A9wrt"},
    ItemTranslation{"caaf/info-copyright", "itsk/cprt", "itsk/cprt"},
    ItemTranslation{"caaf/info-track%20number", "itsk/trkn", "itsk/trkn"},
    ItemTranslation{"caaf/info-ISRC", "itlk/com.apple.iTunes.ISRC", "itlk/com.apple.iTunes.ISRC"},
};

/// What users and their programs add under names of their own; in this family an entry "----".
inline constexpr std::array<std::string_view, 3> kUserTexts{"id3/TXXX%3A", "id3/WXXX%3A",
                                                            "id3/COMM%3A"};
/// A name of comments and APE tags, in lower case, and the one by which players know it here.
/// Source: picard-docs.musicbrainz.org, "Tag mapping".
struct PlayerName {
    std::string_view name, known;
};
inline constexpr std::array kPlayerNames{
    PlayerName{"musicbrainz_trackid", "MusicBrainz Track Id"},
    PlayerName{"musicbrainz_releasetrackid", "MusicBrainz Release Track Id"},
    PlayerName{"musicbrainz_albumid", "MusicBrainz Album Id"},
    PlayerName{"musicbrainz_artistid", "MusicBrainz Artist Id"},
    PlayerName{"musicbrainz_albumartistid", "MusicBrainz Album Artist Id"},
    PlayerName{"musicbrainz_releasegroupid", "MusicBrainz Release Group Id"},
    PlayerName{"musicbrainz_workid", "MusicBrainz Work Id"},
    PlayerName{"musicbrainz_discid", "MusicBrainz Disc Id"},
    PlayerName{"musicbrainz_albumtype", "MusicBrainz Album Type"},
    PlayerName{"musicbrainz_albumstatus", "MusicBrainz Album Status"},
    PlayerName{"releasetype", "MusicBrainz Album Type"},
    PlayerName{"releasestatus", "MusicBrainz Album Status"},
    PlayerName{"releasecountry", "MusicBrainz Album Release Country"},
    PlayerName{"acoustid_id", "Acoustid Id"},
    PlayerName{"acoustid_fingerprint", "Acoustid Fingerprint"},
};

} // namespace clipheave::platform
