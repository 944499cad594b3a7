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

/// Fields of a media record that are read from several identifiers. A new value replaces what was
/// carried over for the same field, else an older text would win when the file is read again.
enum class RecordField : std::uint8_t {
    None,
    Publisher,
    Copyright,
    Description,
    Director,
    Performer,
    Producer,
    Keywords,
    Date,
    Year,
    Location,
    Make,
    Model,
};
struct RecordFieldName {
    std::string_view identifier;
    RecordField field;
};
inline constexpr std::array kRecordFields{
    RecordFieldName{"common/publisher", RecordField::Publisher},
    RecordFieldName{"itsk/%A9pub", RecordField::Publisher},
    RecordFieldName{"mdta/com.apple.quicktime.publisher", RecordField::Publisher},
    RecordFieldName{"id3/TPUB", RecordField::Publisher},
    RecordFieldName{"common/copyrights", RecordField::Copyright},
    RecordFieldName{"itsk/cprt", RecordField::Copyright},
    RecordFieldName{"mdta/com.apple.quicktime.copyright", RecordField::Copyright},
    RecordFieldName{"id3/TCOP", RecordField::Copyright},
    RecordFieldName{"common/description", RecordField::Description},
    RecordFieldName{"itsk/%A9des", RecordField::Description},
    RecordFieldName{"mdta/com.apple.quicktime.description", RecordField::Description},
    RecordFieldName{"uiso/dscp", RecordField::Description},
    RecordFieldName{"mdta/com.apple.quicktime.director", RecordField::Director},
    RecordFieldName{"itsk/%A9dir", RecordField::Director},
    RecordFieldName{"mdta/com.apple.quicktime.performer", RecordField::Performer},
    RecordFieldName{"itsk/%A9prf", RecordField::Performer},
    RecordFieldName{"mdta/com.apple.quicktime.producer", RecordField::Producer},
    RecordFieldName{"itsk/%A9prd", RecordField::Producer},
    RecordFieldName{"mdta/com.apple.proapps.manufacturer", RecordField::Producer},
    RecordFieldName{"mdta/com.apple.quicktime.keywords", RecordField::Keywords},
    RecordFieldName{"udta/%A9key", RecordField::Keywords},
    RecordFieldName{"uiso/%A9key", RecordField::Keywords},
    RecordFieldName{"common/creationDate", RecordField::Date},
    RecordFieldName{"uiso/date", RecordField::Date},
    RecordFieldName{"id3/TRDA", RecordField::Date},
    RecordFieldName{"caaf/info-recorded%20date", RecordField::Date},
    RecordFieldName{"udta/date", RecordField::Date},
    RecordFieldName{"mdta/com.apple.quicktime.creationdate", RecordField::Date},
    RecordFieldName{"itsk/%A9day", RecordField::Year},
    RecordFieldName{"id3/TYER", RecordField::Year},
    RecordFieldName{"uiso/loci", RecordField::Location},
    RecordFieldName{"udta/loci", RecordField::Location},
    RecordFieldName{"uiso/%A9xyz", RecordField::Location},
    RecordFieldName{"udta/%A9xyz", RecordField::Location},
    RecordFieldName{"common/location", RecordField::Location},
    RecordFieldName{"mdta/com.apple.quicktime.make", RecordField::Make},
    RecordFieldName{"common/make", RecordField::Make},
    RecordFieldName{"udta/%A9mak", RecordField::Make},
    RecordFieldName{"uiso/manu", RecordField::Make},
    RecordFieldName{"mdta/com.apple.quicktime.model", RecordField::Model},
    RecordFieldName{"common/model", RecordField::Model},
    RecordFieldName{"udta/%A9mod", RecordField::Model},
    RecordFieldName{"uiso/modl", RecordField::Model},
};
/// Position, its accuracy, name and date: all of them say where.
inline constexpr std::string_view kLocationKeys = "mdta/com.apple.quicktime.location.";
[[nodiscard]] constexpr RecordField recordField(std::string_view identifier) {
    if (identifier.starts_with(kLocationKeys))
        return RecordField::Location;
    for (const RecordFieldName& name : kRecordFields)
        if (name.identifier == identifier)
            return name.field;
    return RecordField::None;
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
    ItemTranslation{"id3/APIC", "itsk/covr", "itsk/covr"},
    ItemTranslation{"caaf/info-title", "itsk/%A9nam", "itsk/%A9nam"},
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
};

} // namespace clipheave::platform
