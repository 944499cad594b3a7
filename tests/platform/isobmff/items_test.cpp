// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/platform/isobmff/movie_builder.h"

using namespace clipheave::platform;
using namespace testkit;
using testing::ElementsAre;

namespace {

QByteArray movieWith(const char* brand, const QByteArray& children) {
    return ftyp(brand) + box("moov", mvhd(0, 600) + children);
}
QString s(const char* text) {
    return QString::fromUtf8(text);
}

TEST(IsobmffItems, ComeAsListThenUserDataThenKeysWhateverTheFileOrder) {
    const TempDir dir;
    const QByteArray keyed = box("meta", fullBox("hdlr", be(0, 4) + "mdta" + QByteArray(13, '\0')) +
                                             keysBox({"com.apple.quicktime.make"}) +
                                             box("ilst", keyedEntry(1, dataBox(1, "Maker"))));
    const QByteArray udta =
        box("udta", box("\xA9swr", be(3, 2) + be(0x15C7, 2) + "abc") +
                        box("date", "2020-01-31T10:00:00Z") +
                        itunesMeta(box("\xA9nam", dataBox(1, "Title"))) + be(0, 4));
    EXPECT_THAT(itemTexts(read(dir, movieWith("qt  ", keyed + udta))),
                ElementsAre(s("itsk/%A9nam=Title"), s("udta/%A9swr=abc"),
                            s("uiso/date=2020-01-31T10:00:00Z"),
                            s("mdta/com.apple.quicktime.make=Maker")));
    // The same boxes in another brand; and without a file type it is QuickTime.
    EXPECT_THAT(itemTexts(read(dir, movieWith("mp42", udta))),
                ElementsAre(s("itsk/%A9nam=Title"), s("uiso/%A9swr=abc"),
                            s("uiso/date=2020-01-31T10:00:00Z")));
    const MediaFacts old = read(dir, box("moov", udta));
    EXPECT_EQ(old.container, Container::QuickTime);
    EXPECT_EQ(itemTexts(old)[1], s("udta/%A9swr=abc"));
    EXPECT_TRUE(old.problem.isEmpty()) << old.problem.text();
}

TEST(IsobmffItems, ITunesValuesHaveTheirTypes) {
    const TempDir dir;
    const QByteArray jpeg = QByteArray("\xFF\xD8\xFF\xE0", 4) + QByteArray(100, 'x');
    const QByteArray png = QByteArray("\x89PNG", 4) + QByteArray(5000, 'x');
    const QByteArray name = box("mean", be(0, 4) + "com.apple.iTunes") +
                            box("name", be(0, 4) + "My Tag") + dataBox(1, "a") + dataBox(1, "b");
    const QByteArray utf16 = QByteArray("\0A\0\xE9", 4);
    const QByteArray entries =
        box("\xA9wrt", dataBox(2, utf16)) + box("tmpo", dataBox(21, be(0xFFFE, 2))) +
        box("cpil", dataBox(0, be(1, 1))) + box("trkn", dataBox(0, be(0x30005, 6) + be(0, 2))) +
        box("covr", dataBox(13, jpeg) + dataBox(13, png)) + box("----", name);
    const MediaFacts facts = read(dir, movieWith("M4A ", box("udta", itunesMeta(entries))));
    ASSERT_EQ(facts.metadata.size(), 8);
    const auto& items = facts.metadata;
    EXPECT_EQ(items[0].stringValue(), s("Aé"));
    EXPECT_EQ(items[0].dataType, s("com.apple.metadata.datatype.UTF-16"));
    EXPECT_EQ(std::get<double>(items[1].value), -2);
    EXPECT_EQ(std::get<double>(items[2].value), 1);
    EXPECT_EQ(items[3].dataValue().size(), 8);
    EXPECT_EQ(trackNumberText(items[3]), s("3/5"));
    EXPECT_TRUE(items[3].stringValue().isNull());
    EXPECT_EQ(items[4].dataValue(), jpeg);
    // The bytes decide what an image is; a large one stays in the file, as does its box, which the
    // two images share.
    EXPECT_EQ(items[5].dataType, s("com.apple.metadata.datatype.PNG"));
    EXPECT_TRUE(std::holds_alternative<FileSlice>(items[5].value));
    EXPECT_EQ(items[5].dataValue(), png);
    EXPECT_EQ(items[4].source, items[5].source);
    EXPECT_TRUE(std::holds_alternative<FileSlice>(items[5].source->bytes));
    EXPECT_TRUE(std::holds_alternative<QByteArray>(items[3].source->bytes));
    EXPECT_EQ(items[5].source->load().value(), box("covr", dataBox(13, jpeg) + dataBox(13, png)));
    EXPECT_EQ(items[7].identifier, s("itlk/com.apple.iTunes.My%20Tag"));
    EXPECT_EQ(items[7].key, s("com.apple.iTunes.My Tag"));
    EXPECT_EQ(items[6].stringValue() + items[7].stringValue(), s("ab"));
}

TEST(IsobmffItems, KeysTakePlainAndFullBoxesEvenInsideUserData) {
    const TempDir dir;
    const QByteArray hdlr = fullBox("hdlr", be(0, 4) + "mdta" + QByteArray(13, '\0'));
    const quint32 german = 0x10B5; // "deu"
    const QByteArray content =
        hdlr + keysBox({"title", "com.android.capture.fps"}) +
        box("ilst", keyedEntry(2, dataBox(23, be(0x41F00000, 4))) +
                        keyedEntry(1, dataBox(1, "one") +
                                          dataBox(1, "eins", german | 'D' << 24 | 'E' << 16)));
    for (const QByteArray& meta : {box("meta", content), fullBox("meta", content)}) {
        const MediaFacts facts = read(dir, movieWith("mp42", box("udta", meta)));
        EXPECT_THAT(itemTexts(facts), ElementsAre(s("mdta/com.android.capture.fps=30"),
                                                  s("mdta/title=one"), s("mdta/title=eins")));
        EXPECT_EQ(facts.metadata.last().extendedLanguageTag, s("de-DE"));
    }
    // An index without a name is skipped, not taken for another.
    const MediaFacts damaged = read(
        dir, movieWith("qt  ", box("meta", hdlr + keysBox({"a"}) +
                                               box("ilst", keyedEntry(9, dataBox(1, "x")) +
                                                               keyedEntry(0, dataBox(1, "y")) +
                                                               keyedEntry(1, dataBox(1, "z"))))));
    EXPECT_THAT(itemTexts(damaged), ElementsAre(s("mdta/a=z")));
    EXPECT_FALSE(damaged.problem.isEmpty());
}

TEST(IsobmffItems, QuickTimeTextsHaveRecordsPerLanguage) {
    const TempDir dir;
    const QByteArray records = be(3, 2) + be(0, 2) + "Caf" + be(4, 2) + be(1, 2) + "Caf\x8E" +
                               be(5, 2) + be(0x10B5, 2) + "Caf\xC3\xA9" + be(6, 2) + be(0x55C4, 2) +
                               QByteArray("\xFE\xFF\0A\0B", 6) + be(5, 2) + be(0, 2) +
                               "Caf\xC3\xA9";
    const QByteArray udta =
        box("udta", box("\xA9nam", records) + box("\xA9xyz", "+12.5-003.25/") +
                        box("\xA9too", dataBox(1, "value box")) + box("Quux", be(0x01020304, 4)));
    const MediaFacts facts = read(dir, movieWith("qt  ", udta));
    EXPECT_THAT(itemTexts(facts),
                ElementsAre(s("udta/%A9nam=Caf"), s("udta/%A9nam=Café"), s("udta/%A9nam=Café"),
                            s("udta/%A9nam=AB"), s("udta/%A9nam=Café"),
                            s("udta/%A9xyz=+12.5-003.25/"), s("udta/%A9too=value box"),
                            s("udta/Quux=\x01\x02\x03\x04")));
    QStringList languages;
    for (qsizetype i = 0; i < 4; ++i)
        languages += facts.metadata[i].extendedLanguageTag;
    EXPECT_THAT(languages, ElementsAre(s("en"), s("fr"), s("de"), s("und")));
    // One box, emitted once: all its records share it.
    EXPECT_EQ(facts.metadata[0].source, facts.metadata[4].source);
    EXPECT_EQ(facts.metadata[0].source->load().value(), box("\xA9nam", records));
}

TEST(IsobmffItems, IsoUserDataIsReadBoxByBox) {
    const TempDir dir;
    const QByteArray en = be(0x15C7, 2);
    const QByteArray location = en + QByteArray("Home\0", 5) + be(0, 1) +
                                be(static_cast<quint32>(-74 * 65536 - 32768), 4) +
                                be(40 * 65536 + 16384, 4) + be(0, 4) + QByteArray("earth\0\0", 7);
    const QByteArray jpeg = QByteArray("\xFF\xD8\xFF\xE0", 4);
    const QByteArray udta = box(
        "udta",
        fullBox("titl", en + QByteArray("Title\0", 6)) +
            fullBox("dscp", en + QByteArray("\xFE\xFF\0D\0\0", 6)) +
            fullBox("albm", en + QByteArray("Album\0\x07", 7)) + fullBox("yrrc", be(2009, 2)) +
            fullBox("kywd", en + be(2, 1) + be(4, 1) + QByteArray("one\0", 4) + be(3, 1) + "two") +
            box("kywd", "bare, words") + fullBox("rtng", "aaaabbbb" + en + "PG") +
            fullBox("clsf", "aaaabb" + en + "X") + fullBox("urat", be(4, 4)) +
            fullBox("thmb", jpeg) + fullBox("loci", location) + box("manu", "Samsung") +
            fullBox("modl", en + "Canon") + box("chpl", be(0, 9)));
    const MediaFacts facts = read(dir, movieWith("qt  ", udta));
    EXPECT_THAT(itemTexts(facts),
                ElementsAre(s("uiso/titl=Title"), s("uiso/dscp=D"), s("uiso/albm=Album"),
                            s("uiso/yrrc=2009"), s("uiso/kywd=one, two"),
                            s("uiso/kywd=bare, words"), s("uiso/rtng=PG"), s("uiso/clsf=X"),
                            s("uiso/urat=4"), s("uiso/thmb="),
                            s("uiso/loci=+40.2500-074.5000+000.000/"), s("uiso/manu=Samsung"),
                            s("uiso/modl=Canon")));
    EXPECT_EQ(facts.metadata[0].extendedLanguageTag, s("en"));
    EXPECT_EQ(facts.metadata[9].dataValue(), jpeg);
}

TEST(IsobmffItems, IdentifiersEscapeBytes) {
    EXPECT_EQ(metadataIdentifier(s("itsk"), s("©nam")), s("itsk/%A9nam"));
    EXPECT_EQ(metadataIdentifier(s("udta"), s("@mak")), s("udta/%A9mak"));
    EXPECT_EQ(metadataIdentifier(s("org.id3"), s("TIT2")), s("id3/TIT2"));
    EXPECT_EQ(metadataIdentifier(s("comn"), s("title")), s("common/title"));
    EXPECT_EQ(metadataIdentifier(s("caaf"), s("info-track number")), s("caaf/info-track%20number"));
    EXPECT_EQ(metadataIdentifier(s("mdta"), s("a@é")), s("mdta/a%40%C3%A9"));
}

TEST(IsobmffItems, CommonIdentifiersAndTextsOfItems) {
    const auto common = [](const char* space, const char* key) {
        return AVMetadataItem::make(s(space), s(key), {}, s("x")).commonIdentifier();
    };
    EXPECT_EQ(common("itsk", "©nam"), s("common/title"));
    EXPECT_EQ(common("mdta", "com.apple.quicktime.make"), s("common/make"));
    EXPECT_EQ(common("org.id3", "TPE1"), s("common/artist"));
    EXPECT_EQ(common("uiso", "date"), s("common/creationDate"));
    EXPECT_EQ(common("udta", "©mak"), s("common/make"));
    EXPECT_TRUE(common("itsk", "©mak").isNull()); // the record company
    EXPECT_TRUE(common("org.id3", "TYER").isNull());
    const auto number = [](const AVMetadataItem::Value& value) {
        return trackNumberText(AVMetadataItem::make(s("itsk"), s("trkn"), {}, value));
    };
    EXPECT_EQ(number(be(7, 4) + be(0, 4)), s("7"));
    EXPECT_EQ(number(s("A4")), s("A4"));
    EXPECT_EQ(number(QByteArray("7/12")), s("7/12"));
    EXPECT_TRUE(number(QByteArray(8, '\0')).isNull());
    const auto text = [](const AVMetadataItem::Value& value) {
        return AVMetadataItem::make({}, {}, {}, value).stringValue();
    };
    EXPECT_EQ(text(QByteArray("a\0", 2)), s("a"));
    EXPECT_FALSE(text(QByteArray("")).isNull());
    EXPECT_TRUE(text(QByteArray("\xFF")).isNull());
    EXPECT_TRUE(text({}).isNull());
    EXPECT_EQ(text(44100.5), s("44100.5"));
}

} // namespace
