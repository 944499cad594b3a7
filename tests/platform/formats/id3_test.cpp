// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/platform/formats/fixtures.h"

using namespace fixtures;
using clipheave::platform::Container;
using clipheave::platform::ErrorCode;
using clipheave::platform::readMpegAudio;
using testing::Contains;
using testing::Not;
using testing::Pair;

namespace {

std::map<QString, QString> tagOf(const QByteArray& tag) {
    const auto facts = read(readMpegAudio, tag + mpegFrames(4));
    return facts ? walk(*facts) : std::map<QString, QString>();
}

auto has(const char* identifier, const char* text) {
    return Contains(Pair(QString::fromLatin1(identifier), QString::fromUtf8(text)));
}
auto lacks(const char* identifier) {
    return Not(Contains(Pair(QString::fromLatin1(identifier), testing::_)));
}

} // namespace

TEST(Id3, ReadsTextsOfEveryEncodingAndJoinsSeveralValues) {
    const auto items =
        tagOf(id3Tag(4, id3Text("TIT2", "Caf\xE9") +
                            id3Frame("TPE1", raw("\1\xFF\xFEt\0\x71\x67\0\0\xFE\xFF\0u\0v")) +
                            id3Frame("TALB", raw("\2\4\x10\4\x11\0\0")) +
                            id3Frame("TCOM", raw("\3\xE6\x9D\xB1\0AC/DC\0"))));
    EXPECT_THAT(items, has("id3/TIT2", "Café"));
    EXPECT_THAT(items, has("id3/TPE1", "t東; uv"));
    EXPECT_THAT(items, has("id3/TALB", "АБ"));
    EXPECT_THAT(items, has("id3/TCOM", "東; AC/DC"));
}

TEST(Id3, KeepsTheYearsOfBothVersionsApart) {
    const auto old = tagOf(
        id3Tag(3, id3Text("TYER", "1999") + id3Text("TRDA", "4th May") + id3Text("TDAT", "0405")));
    EXPECT_THAT(old, has("id3/TYER", "1999"));
    EXPECT_THAT(old, has("id3/TRDA", "4th May"));
    EXPECT_THAT(old, has("id3/TDAT", "0405"));
    EXPECT_THAT(old, lacks("id3/TDRC"));
    const auto fresh = tagOf(id3Tag(4, id3Text("TDRC", "1999-05-04")));
    EXPECT_THAT(fresh, has("id3/TDRC", "1999-05-04"));
    EXPECT_THAT(fresh, lacks("id3/TYER"));
}

TEST(Id3, GivesFramesOfVersion22TheirLaterNames) {
    const auto items =
        tagOf(id3Tag(2, oldId3Frame("TT2", raw("\0Song")) + oldId3Frame("TYE", raw("\0001985")) +
                            oldId3Frame("COM", raw("\0eng\0Fine")) +
                            oldId3Frame("PIC", raw("\0GIF\3\0") + gif())));
    EXPECT_THAT(items, has("id3/TIT2", "Song"));
    EXPECT_THAT(items, has("id3/TYER", "1985"));
    EXPECT_THAT(items, has("id3/COMM", "Fine"));
    EXPECT_THAT(items, has("id3/APIC", "<33 bytes>"));
}

TEST(Id3, ChoosesTheCommentForPeopleAndTheFrontCover) {
    const auto comment = [](const char* description, const char* text) {
        return id3Frame("COMM", raw("\0eng") + description + '\0' + text);
    };
    const auto items = tagOf(id3Tag(3, comment("", "wanted") + comment("iTunNORM", "000004F2") +
                                           comment("note", "other")));
    EXPECT_THAT(items, has("id3/COMM", "wanted"));
    EXPECT_THAT(items, has("id3/COMM%3AiTunNORM", "000004F2"));
    EXPECT_THAT(tagOf(id3Tag(3, comment("iTunNORM", "000004F2") + comment("note", "other"))),
                has("id3/COMM", "other"));
    EXPECT_THAT(tagOf(id3Tag(3, comment("iTunNORM", "000004F2"))), lacks("id3/COMM"));

    const auto image = [](char type, const QByteArray& bytes) {
        return id3Frame("APIC", raw("\x00image/gif\x00") + type + '\0' + bytes);
    };
    const auto covers = tagOf(id3Tag(3, image(4, gif()) + image(3, gif() + "front") +
                                            image(3, gif() + "second front") + image(0, gif())));
    EXPECT_THAT(covers, has("id3/APIC", "<38 bytes>"));
}

TEST(Id3, LeavesLargeImagesInTheFile) {
    const QByteArray large = gif() + QByteArray(100'000, 'x');
    const QByteArray body = raw("\x00image/gif\x00\x03\x00") + large;
    const QByteArray tag = id3Tag(3, "APIC" + testkit::be(static_cast<quint64>(body.size()), 4) +
                                         raw("\x00\x00") + body);
    const testkit::TempDir folder;
    auto reader = FileReader::open(folder.write("a.mp3", tag + mpegFrames(10)));
    const auto facts = readMpegAudio(*reader);
    ASSERT_TRUE(facts && !facts->metadata.isEmpty());
    EXPECT_TRUE(
        std::holds_alternative<clipheave::platform::FileSlice>(facts->metadata.last().value));
    EXPECT_EQ(facts->metadata.last().dataValue(), large);
    EXPECT_LE(reader->bytesFetched(), 80'000u);
    EXPECT_NEAR(facts->durationSeconds, 10 * 417 / 16000.0, 1e-6);
}

TEST(Id3, UndoesTransformationsOfTagAndFrame) {
    const QByteArray sync = raw("\1\377\0\376A\0"); // a text mark with a zero put behind FF
    EXPECT_THAT(tagOf(id3Tag(3, "TIT2" + raw("\x00\x00\x00\x05\x00\x00") + sync, 0x80)),
                has("id3/TIT2", "A"));
    EXPECT_THAT(tagOf(id3Tag(4, id3Frame("TIT2", sync, 0x02))), has("id3/TIT2", "A"));
    // The flag without the work, as some writers leave it.
    EXPECT_THAT(tagOf(id3Tag(4, id3Frame("TIT2", raw("\1\377\376A\0"), 0x02))),
                has("id3/TIT2", "A"));
    EXPECT_THAT(tagOf(id3Tag(4, id3Frame("PRIV", raw("\xFF\xE0\xFF\x00z"), 0x02))),
                has("id3/PRIV", "<5 bytes>"));
    const QByteArray packed = qCompress(raw("\x00Packed")).mid(4);
    EXPECT_THAT(tagOf(id3Tag(4, id3Frame("TIT2", syncSafe(7) + packed, 0x09))),
                has("id3/TIT2", "Packed"));
    EXPECT_THAT(tagOf(id3Tag(3, id3Frame("TIT2", testkit::be(7, 4) + packed, 0x80))),
                has("id3/TIT2", "Packed"));
    EXPECT_THAT(tagOf(id3Tag(4, id3Frame("TIT2", raw("G\x00Grouped"), 0x40))),
                has("id3/TIT2", "Grouped"));
    EXPECT_THAT(tagOf(id3Tag(4, id3Frame("TIT2", raw("E\x00secret"), 0x04))), lacks("id3/TIT2"));
    const QByteArray title = id3Text("TIT2", "Title");
    EXPECT_THAT(tagOf(id3Tag(3, raw("\x00\x00\x00\x06\x00\x00\x00\x00\x00\x00") + title, 0x40)),
                has("id3/TIT2", "Title"));
    EXPECT_THAT(tagOf(id3Tag(4, raw("\x00\x00\x00\x06\x01\x00") + title, 0x40)),
                has("id3/TIT2", "Title"));
}

TEST(Id3, ReadsFrameSizesThatWereWrittenWrongly) {
    const QByteArray text = '\0' + QByteArray(256, 'x');
    // 257 as a plain number where four times seven bits are meant.
    const QByteArray plain = "TIT2" + testkit::be(257, 4) + raw("\x00\x00") + text;
    EXPECT_EQ(tagOf(id3Tag(4, plain + id3Text("TPE1", "A")))[u"id3/TPE1"_s], u"A");
    const QByteArray safe = "TIT2" + syncSafe(257) + raw("\x00\x00") + text;
    EXPECT_EQ(tagOf(id3Tag(4, safe + id3Text("TPE1", "A")))[u"id3/TPE1"_s], u"A");
    EXPECT_THAT(tagOf(id3Tag(4, id3Frame("TT2 ", raw("\x00Old id")))), has("id3/TIT2", "Old id"));
}

TEST(Id3, TakesTheLastOfRepeatedFrames) {
    EXPECT_THAT(
        tagOf(id3Tag(3, id3Text("TIT2", "First") + id3Text("TPE1", "A") + id3Text("TIT2", "Last"))),
        has("id3/TIT2", "Last"));
}

TEST(Id3, FillsGapsFromApeThenFromVersion1) {
    QByteArray v1 = "TAG" + QByteArray("Old title").leftJustified(30, '\0') +
                    QByteArray("Old artist").leftJustified(30, '\0') +
                    QByteArray("Old album").leftJustified(30, '\0') + "1977" +
                    QByteArray("Old comment").leftJustified(28, '\0') + raw("\x00\x07\x11");
    const QByteArray item =
        testkit::le(10, 4) + testkit::le(0, 4) + raw("Artist\x00") + "Ape artist";
    QByteArray footer = "APETAGEX" + testkit::le(2000, 4) +
                        testkit::le(static_cast<quint64>(item.size()) + 32, 4) + testkit::le(1, 4) +
                        QByteArray(12, '\0');
    const auto facts = read(readMpegAudio, id3Tag(3, id3Text("TIT2", "New title")) + mpegFrames(5) +
                                               item + footer + v1);
    ASSERT_TRUE(facts);
    const auto items = walk(*facts);
    EXPECT_THAT(items, has("id3/TIT2", "New title"));
    EXPECT_THAT(items, has("id3/TPE1", "Ape artist"));
    EXPECT_THAT(items, has("id3/TALB", "Old album"));
    EXPECT_THAT(items, has("id3/TYER", "1977"));
    EXPECT_THAT(items, has("id3/TRCK", "7"));
    EXPECT_NEAR(facts->durationSeconds, 5 * 417 / 16000.0, 1e-6) << "tags are no audio";
}

TEST(MpegAudio, TakesTheFirstOfTwoTagsAndFindsTheAudioBehindThem) {
    const auto facts =
        read(readMpegAudio, id3Tag(3, id3Text("TIT2", "A")) + id3Tag(3, id3Text("TIT2", "B")) +
                                QByteArray(1000, '\0') + mpegFrames(8));
    ASSERT_TRUE(facts);
    EXPECT_THAT(walk(*facts), has("id3/TIT2", "A"));
    EXPECT_EQ(facts->audioSampleRate, 44100);
    EXPECT_EQ(facts->id3TagSize, 22u);
    EXPECT_TRUE(facts->problem.isEmpty());
}

TEST(MpegAudio, LeavesOtherAudioBehindATagToTheEngine) {
    const auto facts = read(readMpegAudio, id3Tag(3, id3Text("TIT2", "A")) +
                                               raw("\xFF\xF1\x50\x80") + QByteArray(500, '\0'));
    ASSERT_TRUE(facts);
    EXPECT_EQ(facts->container, Container::Other);
    EXPECT_EQ(facts->durationSeconds, 0);
    EXPECT_TRUE(facts->problem.isEmpty());
    EXPECT_THAT(walk(*facts), has("id3/TIT2", "A"));
    EXPECT_EQ(read(readMpegAudio, QByteArray(5000, 'x')).error().code, ErrorCode::InvalidData);
}
