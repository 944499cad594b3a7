// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/platform/formats/fixtures.h"

#include <bit>
#include <initializer_list>
#include <utility>

using namespace fixtures;
using namespace clipheave::platform;
using testkit::be;
using testkit::le;

namespace {

using Info = QMap<QString, QString>;

/// 8 kHz, mono, 16 bits.
QByteArray format() {
    return chunk("fmt ", le(1, 2) + le(1, 2) + le(8000, 4) + le(16000, 4) + le(2, 2) + le(16, 2));
}
QByteArray wave(const QByteArray& chunks) {
    return chunk("RIFF", "WAVE" + chunks);
}
QByteArray aiff(const QByteArray& chunks) {
    return chunk("FORM", "AIFF" + chunks, true);
}
/// 8 kHz (as an 80-bit float), two channels of 12 bits, 4000 samples.
QByteArray common() {
    return chunk(
        "COMM",
        be(2, 2) + be(4000, 4) + be(12, 2) + raw("\x40\x0B\xFA\x00\x00\x00\x00\x00\x00\x00"), true);
}
QByteArray cafChunk(const char* type, const QByteArray& body) {
    return type + be(static_cast<quint64>(body.size()), 8) + body;
}
Info info(std::initializer_list<std::pair<const char*, const char*>> pairs) {
    Info map;
    for (const auto& [key, text] : pairs)
        map.insert(QString::fromLatin1(key), QString::fromUtf8(text));
    return map;
}

} // namespace

TEST(Wave, PrefersInfoTextsAndFillsFromTheId3Chunk) {
    const QByteArray texts = "INFO" + chunk("INAM", raw("Tit\xE9l\x80\x00")) +
                             chunk("IART", "\xC3\xA9") + chunk("ICRD", "2001-02-03") +
                             chunk("ITRK", "4");
    const QByteArray tag =
        id3Tag(3, id3Text("TIT2", "Other") + id3Text("TALB", "Album") +
                      id3Frame("APIC", raw("\x00image/gif\x00\x03\x00") + gif()));
    const auto facts = read(readWave, wave(format() + chunk("data", QByteArray(8000, '\0')) +
                                           chunk("LIST", texts) + chunk("id3 ", tag)));
    ASSERT_TRUE(facts);
    EXPECT_EQ(facts->infoDictionary, info({{"title", "Titél€"},
                                           {"artist", "é"},
                                           {"album", "Album"},
                                           {"recorded date", "2001-02-03"},
                                           {"year", "2001"},
                                           {"track number", "4"}}));
    EXPECT_EQ(facts->durationSeconds, 0.5);
    EXPECT_EQ(facts->audioBitRate, 128000);
    EXPECT_EQ(facts->audioChannels, 1);
    EXPECT_EQ(facts->albumArtwork.size(), QSize(5, 3));
    EXPECT_EQ(facts->id3TagSize, static_cast<quint64>(tag.size()));
    EXPECT_TRUE(facts->problem.isEmpty());
}

TEST(Wave, ReadsSizesOf64BitsAndTheBroadcastDate) {
    QByteArray bext(602, '\0');
    bext.replace(320, 18, "2011:12:1310-09-08");
    const QByteArray ds64 = chunk("ds64", le(0, 8) + le(8000, 8) + le(4000, 8) + le(0, 4));
    const QByteArray file = "RF64" + raw("\xFF\xFF\xFF\xFF") + "WAVE" + ds64 + format() + "data" +
                            raw("\xFF\xFF\xFF\xFF") + QByteArray(8000, '\0') + chunk("bext", bext);
    const auto facts = read(readWave, file);
    ASSERT_TRUE(facts);
    EXPECT_EQ(facts->durationSeconds, 0.5);
    EXPECT_EQ(facts->infoDictionary, info({{"recorded date", "2011-12-13 10:09:08"}}));
}

TEST(Wave, SaysWhatADamagedFileLacks) {
    const auto cut =
        read(readWave, wave(format() + chunk("data", QByteArray(8000, '\0'))).left(4044));
    ASSERT_TRUE(cut);
    EXPECT_EQ(cut->durationSeconds, 0.25);
    EXPECT_FALSE(cut->problem.isEmpty());
    const auto interrupted =
        read(readWave, wave(format()) + raw("data\0\0\0\0") + QByteArray(8000, '\x80'));
    ASSERT_TRUE(interrupted);
    EXPECT_EQ(interrupted->durationSeconds, 0.5);
    const auto formless = read(readWave, wave(chunk("data", "ab")));
    EXPECT_TRUE(formless && formless->tracks.empty() && !formless->problem.isEmpty());
    EXPECT_EQ(read(readWave, "RIFFxxxxAVI ").error().code, ErrorCode::InvalidData);
}

TEST(Aiff, GivesItsTextsAndThenItsId3Frames) {
    const QByteArray comments =
        be(2, 2) + be(0, 4) + be(0, 2) + be(5, 2) + "Hello" + '\0' + be(0, 8);
    const auto facts = read(
        readAiff,
        aiff(common() + chunk("NAME", "Caf\x8E", true) + chunk("AUTH", "Me", true) +
             chunk("(c) ", raw("1991\x00"), true) + chunk("COMT", comments, true) +
             chunk("SSND", QByteArray(16008, '\0'), true) +
             chunk("ID3 ", id3Tag(3, id3Text("TIT2", "Tag") + id3Text("TYER", "1990")), true)));
    ASSERT_TRUE(facts);
    EXPECT_EQ(facts->infoDictionary, info({{"title", "Café"},
                                           {"artist", "Me"},
                                           {"copyright", "1991"},
                                           {"comments", "Hello"},
                                           {"year", "1990"}}));
    const auto items = walk(*facts);
    EXPECT_EQ(items.at(u"caaf/info-title"_s), u"Café");
    EXPECT_EQ(items.at(u"id3/TIT2"_s), u"Tag");
    EXPECT_EQ(facts->metadata.last().keySpace, u"org.id3");
    EXPECT_EQ(facts->durationSeconds, 0.5);
    EXPECT_EQ(facts->audioBitRate, 2 * 16 * 8000) << "12 bits are stored in two bytes";
}

TEST(Caf, ReadsOwnAndForeignKeysOfItsInfoChunk) {
    const QByteArray description = be(std::bit_cast<quint64>(8000.0), 8) + "lpcm" + be(2, 4) +
                                   be(2, 4) + be(1, 4) + be(1, 4) + be(16, 4);
    const QByteArray texts =
        be(4, 4) + raw("title\0Tit\xC3\xA9l\0track number\0007\0date\0002019\0comment\0Hi\0");
    const QByteArray start = raw("caff\0\1\0\0") + cafChunk("desc", description);
    const auto facts = read(readCaf, start + cafChunk("info", texts) + "data" + be(~0ull, 8) +
                                         QByteArray(8004, '\0'));
    ASSERT_TRUE(facts);
    EXPECT_EQ(
        facts->infoDictionary,
        info({{"title", "Titél"}, {"track number", "7"}, {"year", "2019"}, {"comments", "Hi"}}));
    EXPECT_EQ(walk(*facts).at(u"caaf/info-track%20number"_s), u"7");
    EXPECT_EQ(facts->durationSeconds, 0.5);
    const auto packets =
        read(readCaf, start + cafChunk("pakt", be(10, 8) + be(2000, 8) + be(0, 8)) +
                          cafChunk("data", QByteArray(8004, '\0')));
    EXPECT_EQ(packets->durationSeconds, 0.25) << "priming and remainder do not count";
}

TEST(Au, ReadsNamedLinesAndPlainAnnotations) {
    const auto audio = [](const QByteArray& annotation, quint64 size) {
        const auto start = static_cast<quint64>(24 + annotation.size());
        return ".snd" + be(start, 4) + be(size, 4) + be(3, 4) + be(8000, 4) + be(1, 4) +
               annotation + QByteArray(8000, '\0');
    };
    const auto named = read(readAu, audio(raw("Title=A=B\nArtist=C\nTrack=3\n\0\0"), 0xFFFFFFFF));
    ASSERT_TRUE(named);
    EXPECT_EQ(named->infoDictionary,
              info({{"title", "A=B"}, {"artist", "C"}, {"track number", "3"}}));
    EXPECT_EQ(named->durationSeconds, 0.5);
    const auto plain = read(readAu, audio("recorded at home", 16000));
    EXPECT_EQ(plain->infoDictionary, info({{"comments", "recorded at home"}}));
    EXPECT_FALSE(plain->problem.isEmpty());
}

TEST(Flac, SeparatesDatesAndTakesTheFrontCover) {
    const auto image = [](quint64 type, const QByteArray& bytes) {
        return be(type, 4) + be(9, 4) + "image/gif" + be(0, 4) + QByteArray(16, '\0') +
               be(static_cast<quint64>(bytes.size()), 4) + bytes;
    };
    // 44100 Hz, stereo, 16 bits, 22050 samples.
    const QByteArray streamInfo =
        QByteArray(10, '\0') + raw("\x0A\xC4\x42\xF0\x00\x00\x56\x22") + QByteArray(16, '\0');
    const QByteArray comment = vorbisComments(
        {"Title=One", "TITLE=Two", "date=2019-01-02", "TRACKNUMBER=3", "TotalTracks=9"});
    const QByteArray file = "fLaC" + flacBlock(0, streamInfo) + flacBlock(4, comment) +
                            flacBlock(6, image(4, gif() + "back")) +
                            flacBlock(6, image(3, gif()), true) + QByteArray(1000, '\0');
    const auto facts = read(readFlac, id3Tag(3, id3Text("TALB", "From ID3")) + file);
    ASSERT_TRUE(facts);
    EXPECT_EQ(facts->infoDictionary, info({{"title", "One; Two"},
                                           {"recorded date", "2019-01-02"},
                                           {"track number", "3/9"},
                                           {"album", "From ID3"}}));
    EXPECT_EQ(facts->durationSeconds, 0.5);
    EXPECT_EQ(facts->audioBitRate, 16000);
    EXPECT_EQ(facts->albumArtwork.bytes(), gif());
    const auto items = walk(*facts);
    EXPECT_EQ(items.at(u"id3/TYER"_s), u"2019");
    EXPECT_EQ(items.at(u"id3/TRDA"_s), u"2019-01-02");
    const auto cut = read(readFlac, file.left(80));
    EXPECT_TRUE(cut && cut->durationSeconds == 0.5 && !cut->problem.isEmpty());
}
