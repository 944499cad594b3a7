// SPDX-License-Identifier: GPL-3.0-or-later
// Which identifier of a file fills which field of the record, from the tables and through an
// import.
#include "media/fields.h"
#include "media/media_import.h"
#include "media/metadata_walk.h"
#include "tests/testkit/items.h"
#include "tests/testkit/media.h"

#include <map>
#include <set>
#include <string_view>
#include <utility>

namespace {

using namespace clipheave::media;
using testkit::be;

/// "fileTitle" and its like of the fields that hold a text, separated by blanks.
QString filledFields(const IKImageItem& item) {
    QStringList filled;
    for (const Field& field : kFields)
        if (field.record && !(item.*field.record).isNull())
            filled.append(QLatin1String(field.names.record));
    return filled.join(u' ');
}

constexpr std::pair<char, WalkTable> kTables[] = {{'S', WalkTable::Video},
                                                  {'F', WalkTable::VideoInFolder},
                                                  {'A', WalkTable::Audio},
                                                  {'I', WalkTable::AiffAudio}};

constexpr struct {
    const char* tables; ///< a single video, one in a folder, audio, AIFF
    const char* field;
    const char* identifiers;
} kReadRows[] = {
    {"SFAI", "fileAblumName", "id3/TALB itsk/%A9alb"},
    {"SFAI", "fileArist", "id3/TPE1 itsk/%A9ART"},
    {"SFAI", "fileTitle", "id3/TIT2 itsk/%A9nam"},
    {"SFAI", "filePublisher", "mdta/com.apple.quicktime.publisher itsk/%A9pub"},
    {"SFAI", "fileCopyright", "mdta/com.apple.quicktime.copyright itsk/cprt"},
    {"SFAI", "fileDescription", "mdta/com.apple.quicktime.description"},
    {"SFAI", "fileReleasedYear", "id3/TYER"},
    {"SFAI", "shootDateStr", "uiso/date mdta/com.apple.quicktime.creationdate"},
    {"SF", "fileMake", "mdta/com.apple.quicktime.make"},
    {"SF", "fileModel", "mdta/com.apple.quicktime.model"},
    {"SF", "fileKeyWords", "mdta/com.apple.quicktime.keywords udta/%A9key uiso/%A9key"},
    {"SF", "fileDescription", "itsk/%A9des"},
    {"SF", "fileDirector", "mdta/com.apple.quicktime.director itsk/%A9dir"},
    {"SF", "fileActor", "mdta/com.apple.quicktime.performer itsk/%A9prf"},
    {"SF", "fileproducer", "mdta/com.apple.quicktime.producer itsk/%A9prd"},
    {"S", "fileDescription", "uiso/dscp"},
    {"S", "fileproducer", "mdta/com.apple.proapps.manufacturer"},
    {"S", "fileMake", "udta/%A9mak uiso/%A9mak"},
    {"S", "fileModel", "udta/%A9mod uiso/%A9mod"},
    {"AI", "fileArist", "id3/TOPE"},
    {"AI", "fileReleasedYear", "itsk/%A9day"},
    {"AI", "filePublisher", "id3/TPUB"},
    {"AI", "fileCopyright", "id3/TCOP"},
    {"AI", "fileComments", "id3/COMM itsk/%A9cmt"},
    {"AI", "fileSubTitle", "id3/TIT3 itsk/%A9st3"},
    {"AI", "fileBand", "id3/TPE2 itlk/com.apple.iTunes.BAND"},
    {"AI", "fileLyricist", "id3/TEXT itsk/%A9lyr"},
    {"AI", "fileComposer", "id3/TCOM itsk/%A9wrt"},
    {"AI", "fileAlbumArist", "id3/TRCK itsk/trkn"},
    {"AI", "shootDateStr", "id3/TRDA"},
    {"I", "fileAblumName", "caaf/info-album"},
    {"I", "fileArist", "caaf/info-artist"},
    {"I", "fileTitle", "caaf/info-title"},
    {"I", "fileReleasedYear", "caaf/info-year"},
    {"I", "fileComments", "caaf/info-comments"},
    {"I", "fileComposer", "caaf/info-composer"},
    {"I", "fileAlbumArist", "caaf/info-track%20number"},
};

TEST(MetadataWalk, FillsTheFieldOfEachIdentifierInItsTablesAlone) {
    for (const auto& row : kReadRows)
        for (const QString& identifier : QString::fromLatin1(row.identifiers).split(u' '))
            for (const auto& [letter, table] : kTables) {
                IKImageItem item;
                applyMetadata(item, {testkit::itemOf(identifier, u"7"_s)}, table);
                const bool isIn = QLatin1String(row.tables).contains(QLatin1Char(letter));
                EXPECT_EQ(filledFields(item), QLatin1String(isIn ? row.field : ""))
                    << identifier << ' ' << letter;
            }
}

TEST(MetadataWalk, StandInsAndPlacesOfEveryKind) {
    const auto artist = testkit::itemOf(u"id3/TPE1"_s, u"artist"_s);
    const auto original = testkit::itemOf(u"id3/TOPE"_s, u"original"_s);
    for (const auto& list : {QList{artist, original}, QList{original, artist}}) {
        IKImageItem item;
        applyMetadata(item, list, WalkTable::Audio);
        EXPECT_EQ(item.fileArist, u"artist");
    }
    const auto year = testkit::itemOf(u"id3/TYER"_s, u"1999"_s);
    const auto date = testkit::itemOf(u"id3/TDRC"_s, u"2004-05-06T07:08"_s);
    for (const auto& list : {QList{year, date}, QList{date, year}, QList{date}}) {
        IKImageItem item;
        applyMetadata(item, list, WalkTable::Audio);
        EXPECT_EQ(item.fileReleasedYear, list.size() == 1 ? u"2004" : u"1999");
    }
    for (const char* identifier : {"uiso/loci", "uiso/%A9xyz", "udta/%A9xyz", "itsk/%A9xyz"}) {
        IKImageItem item;
        applyMetadata(
            item, {testkit::itemOf(QString::fromLatin1(identifier), u"+10.5-020.25+000.000/"_s)},
            WalkTable::VideoInFolder);
        EXPECT_EQ(item.filelatitude, 10.5) << identifier;
        EXPECT_EQ(item.longtitudeFormat, u"-") << identifier;
    }
}

// A new value must replace what would be read for the same field, whichever identifier that has.
TEST(Fields, AreReplacedUnderEveryIdentifierOfTheirs) {
    std::map<std::string_view, int> fields;
    for (const auto& [identifier, field] : kFieldIdentifiers)
        EXPECT_EQ(fields.try_emplace(identifier, field).first->second, field) << identifier;
    const std::string_view kOneField[][3] = {
        {"common/publisher", "mdta/com.apple.quicktime.publisher", "itsk/%A9pub"},
        {"mdta/com.apple.quicktime.keywords", "udta/%A9key", "uiso/%A9key"},
        {"mdta/com.apple.quicktime.director", "itsk/%A9dir", "itsk/%A9dir"},
        {"uiso/date", "udta/date", "common/creationDate"},
        {"id3/TYER", "itsk/%A9day", "itsk/%A9day"},
        {"itsk/%A9nam", "uiso/titl", "mdta/com.apple.quicktime.title"},
        {"itsk/%A9ART", "uiso/perf", "id3/TPE1"},
        {"common/make", "uiso/manu", "mdta/com.apple.quicktime.make"}};
    std::set<int> numbers;
    for (const auto& [one, other, third] : kOneField) {
        EXPECT_EQ(fields[one], fields[other]) << one;
        EXPECT_EQ(fields[one], fields[third]) << one;
        numbers.insert(fields[one]);
    }
    EXPECT_EQ(numbers.size(), std::size(kOneField));
    EXPECT_FALSE(numbers.contains(0));
    EXPECT_FALSE(fields.contains("id3/TOPE")) << "the original artist stays beside the artist";
}

TEST(MediaImport, ReadsAVideoInAFolderByTheNarrowerTable) {
    const QByteArray dscp = testkit::fullBox("dscp", be(0x55C4, 2) + QByteArray("words", 6));
    const QByteArray mvhd =
        testkit::fullBox("mvhd", be(0, 8) + be(1000, 4) + be(1000, 4) + QByteArray(80, '\0'));
    const testkit::TempDir dir;
    const QString path =
        dir.write("in/a.mp4", testkit::box("ftyp", "M4V " + be(1, 4) + "M4V ") +
                                  testkit::box("moov", mvhd + testkit::box("udta", dscp)));
    MediaImport import;
    import.importMediaItemsThreader({path, dir.path("in")});
    ASSERT_EQ(import.localPhotoItemArray().size(), 2u);
    EXPECT_EQ(import.localPhotoItemArray()[0]->fileDescription, u"words");
    EXPECT_TRUE(import.localPhotoItemArray()[1]->fileDescription.isNull());
}

/// An MP3 that is nothing but a tag, of version 2.2 or 2.3, with the frame's own name as each text.
QByteArray taggedMp3(const QStringList& frames) {
    const bool isOld = frames.front().size() == 3;
    QByteArray body;
    for (const QString& name : frames) {
        const QByteArray id = name.toLatin1();
        const QByteArray text =
            (id.startsWith("COM") ? testkit::raw("\0eng\0") : testkit::raw("\0")) +
            (id.startsWith("TR") ? QByteArray("7") : id);
        body += isOld ? testkit::oldId3Frame(id, text) : testkit::id3Frame(id, text);
    }
    return testkit::id3Tag(isOld ? 2 : 3, body);
}

TEST(MediaImport, ReadsTheFramesOfBothVersionsIntoTheirFields) {
    constexpr std::pair<const char*, const char*> kFrames[] = {
        {"TT2", "TIT2"}, {"TT3", "TIT3"}, {"TAL", "TALB"}, {"TP1", "TPE1"},
        {"TP2", "TPE2"}, {"TCM", "TCOM"}, {"TXT", "TEXT"}, {"TPB", "TPUB"},
        {"TCR", "TCOP"}, {"COM", "COMM"}, {"TYE", "TYER"}, {"TRK", "TRCK"}};
    const auto textsOf = [](const QString& path) {
        MediaImport import;
        import.importMediaItemsThreader({path});
        QStringList texts;
        for (const auto& item : import.localPhotoItemArray())
            for (const char* name :
                 {"title", "subtitle", "album", "artist", "band", "composer", "lyricist",
                  "publisher", "copyright", "comments", "year", "albumArtist"})
                texts.append((*item).*audioField(QLatin1String(name))->record);
        return texts;
    };
    QStringList old, later;
    for (const auto& [before, after] : kFrames) {
        old.append(QLatin1String(before));
        later.append(QLatin1String(after));
    }
    const testkit::TempDir dir;
    for (QStringList frames : {old, later}) {
        const auto read = textsOf(dir.write("a.mp3", taggedMp3(frames)));
        frames.back() = u'7'; // the track number
        EXPECT_EQ(read, frames);
    }
}

} // namespace
