// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/platform/writer/writer_kit.h"

#include <algorithm>

using namespace testkit;
using namespace writertest;

namespace {

const QString kOld = u"old"_s, kNew = u"new"_s;

/// A source with an old text under everything that feeds a field of the record.
HandMade fullSource(const QByteArray& brand) {
    HandMade media;
    media.brand = brand;
    QByteArray list;
    for (const char* code :
         {"\xA9nam", "\xA9pub", "cprt", "\251des", "\251dir", "\xA9prf", "\xA9prd", "\251day"})
        list += listText(code, "old");
    media.udta = listMeta(list) + fullBox("dscp", be(0x55C4, 2) + QByteArray("old\0", 4)) +
                 box("date", "2001-01-01") + locationBox(10.5, 20.5) +
                 quickTimeText("\xA9xyz", "+11.0000+022.0000/") + quickTimeText("\xA9key", "old") +
                 quickTimeText("\251dir", "old") + quickTimeText("\xA9prf", "old") +
                 quickTimeText("\xA9prd", "old");
    QList<QPair<QByteArray, QByteArray>> keys;
    for (const char* key : {"publisher", "copyright", "description", "director", "performer",
                            "producer", "keywords", "creationdate", "make"})
        keys << QPair<QByteArray, QByteArray>(QByteArray("com.apple.quicktime.") + key, "old");
    keys << QPair<QByteArray, QByteArray>("com.apple.quicktime.location.ISO6709",
                                          "+33.0000+044.0000+000.000/");
    keys << QPair<QByteArray, QByteArray>("com.apple.proapps.manufacturer", "old");
    media.meta = keysMeta(keys);
    return media;
}

struct FieldCase {
    const char* identifier; ///< as it is written
    QString readFrom;       ///< identifiers of the field, blank-separated
};
void PrintTo(const FieldCase& field, std::ostream* out) {
    *out << field.identifier;
}
class Fields : public testing::TestWithParam<FieldCase> {};

const QString kKeys = u"mdta/com.apple.quicktime."_s;
INSTANTIATE_TEST_SUITE_P(
    Writer, Fields,
    testing::Values(
        FieldCase{"itsk/%A9nam", u"itsk/%A9nam"_s},
        FieldCase{"common/publisher", kKeys + u"publisher itsk/%A9pub"_s},
        FieldCase{"common/copyrights", kKeys + u"copyright itsk/cprt"_s},
        FieldCase{"common/description", kKeys + u"description itsk/%A9des uiso/dscp"_s},
        FieldCase{"mdta/com.apple.quicktime.director",
                  kKeys + u"director itsk/%A9dir udta/%A9dir uiso/%A9dir"_s},
        FieldCase{"mdta/com.apple.quicktime.performer",
                  kKeys + u"performer itsk/%A9prf udta/%A9prf uiso/%A9prf"_s},
        FieldCase{
            "mdta/com.apple.quicktime.producer",
            kKeys +
                u"producer itsk/%A9prd udta/%A9prd uiso/%A9prd mdta/com.apple.proapps.manufacturer"_s},
        FieldCase{"mdta/com.apple.quicktime.keywords",
                  kKeys + u"keywords udta/%A9key uiso/%A9key"_s},
        FieldCase{"uiso/date", kKeys + u"creationdate uiso/date"_s},
        FieldCase{"udta/date", kKeys + u"creationdate uiso/date"_s},
        FieldCase{"common/creationDate", kKeys + u"creationdate uiso/date"_s}));

/// As Save does it: the new item, then the source's but its namesakes.
Items merged(const Items& news, const Items& source) {
    Items all = news;
    for (const AVMetadataItem& item : source) {
        const bool replaced = std::any_of(news.begin(), news.end(), [&](const auto& other) {
            return other.identifier == item.identifier;
        });
        if (!replaced)
            all << item;
    }
    return all;
}

TEST_P(Fields, ShowWhatWasTypedInEveryContainer) {
    for (const auto container : {OutputContainer::M4V, OutputContainer::M4A, OutputContainer::Mp4,
                                 OutputContainer::QuickTimeMovie}) {
        for (const QByteArray brand : {"qt  ", "isom"}) {
            const TempDir dir;
            const QString source = dir.write("s", fullSource(brand).bytes());
            const QString target = dir.path("t");
            const Items old = readItems(source);
            ASSERT_GE(old.size(), 22);
            for (const QString& text : {kNew, QString(""_L1)}) {
                const Items list = merged({newItem(GetParam().identifier, text)}, old);
                ASSERT_TRUE(write(source, target, list, container));
                const Items now = readItems(target);
                const QStringList readFrom = GetParam().readFrom.split(u' ');
                EXPECT_EQ(shown(now, readFrom), text);
                const auto others = std::count_if(old.begin(), old.end(), [&](const auto& item) {
                    return !readFrom.contains(item.identifier);
                });
                EXPECT_GE(now.size(), others) << "nothing else has gone";
                EXPECT_EQ(shown(now, {kKeys + u"make"_s}), kOld);
            }
        }
    }
}

TEST(Lists, UnchangedItemsComeAcrossByteForByte) {
    for (const QByteArray brand : {"qt  ", "isom"}) {
        const TempDir dir;
        HandMade media = fullSource(brand);
        media.beforeMedia = box("free", QByteArray(50, '\0')); // room for any `ftyp`
        media.udta += box("chpl", "chapters") + box("Xtra", "tags");
        // A free-form entry, two images in one entry, a number pair.
        media.udta.replace(
            0, media.udta.indexOf("dscp") - 4,
            listMeta(box("----", fullBox("mean", "com.apple.iTunes") + fullBox("name", "iTunNORM") +
                                     box("data", be(1, 4) + be(0, 4) + "0000")) +
                     box("covr",
                         box("data", be(13, 4) + be(0, 4) + QByteArray("\xFF\xD8\xFF\xE0 one")) +
                             box("data", be(13, 4) + be(0, 4) + QByteArray("\xFF\xD8\xFF two"))) +
                     box("trkn", box("data", be(0, 8) + be(0x0003'0009, 6) + be(0, 2)))));
        const QString source = dir.write("s", media.bytes());
        const QString target = dir.path("t");
        const auto container =
            brand == "qt  " ? OutputContainer::QuickTimeMovie : OutputContainer::M4V;
        ASSERT_TRUE(write(source, target, readItems(source), container));
        const QByteArray before = TempDir::read(source), after = TempDir::read(target);
        const auto sorted = [](const QByteArray& file, const char* path) {
            QList<QByteArray> boxes;
            for (const FoundBox& found : boxesIn(payloadAt(file, path)))
                boxes << found.type + found.payload;
            boxes.removeIf([](const QByteArray& one) { return one.startsWith("meta"); });
            std::sort(boxes.begin(), boxes.end());
            return boxes;
        };
        EXPECT_EQ(sorted(after, "moov/udta"), sorted(before, "moov/udta"));
        EXPECT_EQ(payloadAt(after, "moov/udta/meta/ilst"),
                  payloadAt(before, "moov/udta/meta/ilst"));
        EXPECT_EQ(payloadAt(after, "moov/meta/keys"), payloadAt(before, "moov/meta/keys"));
        EXPECT_EQ(payloadAt(after, "moov/meta/ilst"), payloadAt(before, "moov/meta/ilst"));
        // Nothing at all is touched without a list.
        ASSERT_TRUE(write(source, target, std::nullopt, container));
        EXPECT_TRUE(payloadAt(TempDir::read(target), "moov") == payloadAt(before, "moov"));
    }
}

/// A source that describes itself with "Secret" in every place that is no list of items.
HandMade describedSource() {
    HandMade media = fullSource("isom");
    media.udta += box("chpl", "chapters");
    const QByteArray xmp =
        box("uuid", QByteArray::fromHex("BE7ACFCB97A942E89C71999491E3AFAC") + "Secret");
    const QByteArray camera = box("uuid", QByteArray(16, 'C') + "Secret");
    const QByteArray nameless = box("meta", keysMeta({{"serial", "Secret"}}).mid(33));
    media.moreMoov = box("free", "Secret") + xmp + camera;
    media.trackMetadata =
        box("meta", keysMeta({{"com.apple.quicktime.camera.lens_model", "Secret"}})) + xmp +
        nameless + box("uuid", QByteArray::fromHex("FFCC8263F8554A938814587A02521FDD") + "sphere") +
        box("udta", quickTimeText("\xA9nam", "Secret") + box("Xtra", "Secret") +
                        box("free", "Secret") + box("hinf", "kept"));
    media.beforeMedia = xmp + camera + fullBox("meta", box("xml ", "Secret")) +
                        box("udta", box("name", "Secret")) + box("pnot", "Secret");
    media.afterAll = box("free", "Secret of an earlier edit") + "Secret";
    return media;
}

TEST(Lists, RemovalKeepsTheLocationUnlessItIsNamed) {
    const TempDir dir;
    const HandMade media = describedSource();
    const QString source = dir.write("s", media.bytes());
    const QString target = dir.path("t");
    const auto remove = [&](const Items& blanks, bool ofVideo) {
        PassthroughRequest request;
        request.source = source;
        request.target = target;
        request.metadata = blanks;
        request.removesMetadata = ofVideo;
        const auto outcome = writePassthrough(request);
        EXPECT_TRUE(outcome);
        const QByteArray bytes = TempDir::read(target);
        EXPECT_FALSE(bytes.contains("old") || bytes.contains("Secret") || bytes.contains("2001"));
        EXPECT_TRUE(bytes.contains("chapters"));
        EXPECT_TRUE(bytes.contains("sphere") && bytes.contains("kept"));
        EXPECT_FALSE(bytes.contains("a track's own name"));
        EXPECT_EQ(chunkHeads(bytes), chunkHeads(media.bytes()));
        return outcome ? outcome->notes : Notes();
    };
    for (const Items& list : {Items{newItem("itsk/%A9nam", {})}, Items{}}) {
        EXPECT_EQ(remove(list, true), Notes{kLocationKept});
        EXPECT_EQ(shown(readItems(target), {kKeys + u"location.ISO6709"_s}),
                  u"+33.0000+044.0000+000.000/");
        EXPECT_TRUE(TempDir::read(target).contains("loci"));
        EXPECT_TRUE(TempDir::read(target).contains("+11.0000+022.0000/"));
    }
    // An empty list that is no removal of a video leaves nothing at all.
    for (const Items& list : {Items{newItem("uiso/loci", {})}, Items{}}) {
        EXPECT_EQ(remove(list, !list.isEmpty()), Notes());
        const QByteArray bytes = TempDir::read(target);
        EXPECT_FALSE(bytes.contains("loci") || bytes.contains("ISO6709") || bytes.contains("xyz"));
        EXPECT_EQ(boxesIn(payloadAt(bytes, "moov/udta")).size(), 1);
    }
    // A list of another writer takes out what it blanks; what no list names stays.
    ASSERT_TRUE(write(source, target, Items{newItem("itsk/%A9nam", {})}));
    EXPECT_EQ(TempDir::read(target).count("Secret"), media.bytes().count("Secret"));
    // Save names it by carrying it: a new one takes the place of every other form.
    ASSERT_TRUE(
        write(source, target,
              merged({newItem("uiso/loci", u"+31.2304-121.4737+12.5"_s)}, readItems(source))));
    const Items now = readItems(target);
    EXPECT_EQ(shown(now, {u"uiso/loci"_s, kKeys + u"location.ISO6709"_s, u"uiso/%A9xyz"_s}),
              u"+31.2304-121.4737+012.500/");
    EXPECT_FALSE(TempDir::read(target).contains("ISO6709"));
}

TEST(Lists, SamplesInBoxesOfNoKnownKindSurviveARemoval) {
    const TempDir dir;
    HandMade media;
    media.udta = listMeta(listText("\xA9nam", "Secret"));
    QByteArray bytes = media.bytes();
    bytes.replace(bytes.indexOf("mdat"), 4, "abcd");
    const QByteArray cleared = rewritten(dir, bytes, Items{});
    EXPECT_EQ(chunkHeads(cleared), chunkHeads(media.bytes()));
    EXPECT_FALSE(cleared.contains("Secret"));
}

TEST(Lists, ARemovalTakesWhatFollowsTheBoxesWhateverItReadsLike) {
    const TempDir dir;
    HandMade media;
    for (const QByteArray& trailer :
         {QByteArray("Secret of a camera, as text"),
          "\xFF\xD8\xFF\xE0" + QByteArray("\0\x10JFIFSecret", 12), be(0, 4) + "Secret"}) {
        media.afterAll = trailer;
        const QByteArray saved = rewritten(dir, media.bytes(), Items{newItem("itsk/%A9nam", kNew)});
        EXPECT_TRUE(saved.endsWith(trailer));
        const QByteArray cleared = rewritten(dir, media.bytes(), Items{});
        EXPECT_FALSE(cleared.contains("Secret")) << trailer.constData();
        EXPECT_EQ(chunkHeads(cleared), chunkHeads(media.bytes()));
    }
}

TEST(Lists, ARemovalReachesHandlersAndSampleDescriptions) {
    const TempDir dir;
    HandMade media;
    const QByteArray free = box("free", "Secret"), needed = box("pasp", be(1, 4) + be(1, 4));
    media.moreMoov =
        box("abcd", "Secret") +
        box("trak",
            box("mdia",
                fullBox("hdlr", be(0, 4) + "vide" + QByteArray(12, '\0') + "Secret") +
                    box("minf",
                        box("stbl", fullBox("stsd", be(1, 4) + box("avc1", QByteArray(78, 'v') +
                                                                               free + needed)) +
                                        free + box("udta", "Secret")))));
    const QByteArray cleared = rewritten(dir, media.bytes(), Items{});
    EXPECT_FALSE(cleared.contains("Secret"));
    EXPECT_TRUE(cleared.contains(box("avc1", QByteArray(78, 'v') + needed)));
    EXPECT_EQ(chunkHeads(cleared), chunkHeads(media.bytes()));
}

TEST(Lists, ARemovalKnowsEveryFormOfASampleDescription) {
    const QByteArray free = box("free", "Secret"), needed = box("chan", be(0, 12));
    const auto audio = [](quint64 version, int more) {
        return be(1, 8) + be(version, 2) + QByteArray(18 + more, 'a');
    };
    const auto cleared = [](const char* handler, quint64 version, const QByteArray& entry) {
        const TempDir dir;
        HandMade media;
        const QByteArray stsd = box("stsd", be(version << 24, 4) + be(1, 4) + entry);
        media.moreMoov = box("trak", box("mdia", fullBox("hdlr", be(0, 4) + handler + be(0, 13)) +
                                                     box("minf", box("stbl", stsd))));
        return rewritten(dir, media.bytes(), Items{});
    };
    for (const auto& [version, head] : {std::pair(0, audio(1, 16)), std::pair(0, audio(2, 36)),
                                        std::pair(1, audio(1, 0)), std::pair(0, audio(0, 0))}) {
        const QByteArray after =
            cleared("soun", static_cast<quint64>(version), box("mp4a", head + free + needed));
        EXPECT_TRUE(after.contains(box("mp4a", head + needed))) << version << head.size();
    }
}

TEST(Lists, ARemovalSaysWhichTimedTracksStay) {
    const TempDir dir;
    HandMade media;
    media.moreMoov =
        box("trak",
            box("mdia",
                fullBox("hdlr", be(0, 4) + "meta" + QByteArray(13, '\0')) +
                    box("minf", box("stbl", fullBox("stsd", be(1, 4) + box("gpmd", be(0, 8)))))));
    PassthroughRequest request;
    request.source = dir.write("s", media.bytes());
    request.target = dir.path("t");
    request.metadata = Items{};
    request.removesMetadata = true;
    const auto outcome = writePassthrough(request);
    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->notes, Notes{Message(kTimedMetadataKept, {u"gpmd"_s})});
}

TEST(Lists, AreOursWhateverTheirHandlerSays) {
    const QByteArray entries = box("ilst", listText("\xA9nam", "old"));
    const QByteArray odd = fullBox("hdlr", be(0, 4) + "abcd" + QByteArray(13, '\0'));
    const auto keyed = [](QByteArray meta) {
        return meta.sliced(33); // behind its handler
    };
    const QByteArray keys = keysMeta({{"com.apple.quicktime.title", "old"}});
    for (const QByteArray& udta :
         {fullBox("meta", entries), box("meta", entries), fullBox("meta", odd + entries),
          box("meta", odd + entries), fullBox("meta", keyed(keys)), box("meta", keyed(keys))}) {
        const TempDir dir;
        HandMade media;
        media.udta = udta;
        const QString source = dir.write("s", media.bytes()), target = dir.path("t");
        const Items old = readItems(source);
        ASSERT_EQ(old.size(), 1);
        const QByteArray identifier = old[0].identifier.toLatin1();
        ASSERT_TRUE(write(source, target, merged({newItem(identifier, kNew)}, old)));
        const Items now = readItems(target);
        ASSERT_EQ(now.size(), 1);
        EXPECT_EQ(now[0].stringValue(), kNew);
        EXPECT_FALSE(TempDir::read(target).contains("old"));
    }
}

TEST(Lists, WhatStandsBesideAListComesAlong) {
    const TempDir dir;
    HandMade media;
    media.udta = fullBox("meta", box("ilst", listText("\xA9nam", "old")) + box("xml ", "<beside>") +
                                     fullBox("ID32", "beside"));
    const QString source = dir.write("s", media.bytes()), target = dir.path("t");
    // Where the list goes, too.
    for (const char* text : {"new", ""}) {
        ASSERT_TRUE(
            write(source, target, Items{newItem("itsk/%A9nam", QString::fromLatin1(text))}));
        EXPECT_EQ(TempDir::read(target).count("beside"), 2);
        EXPECT_FALSE(TempDir::read(target).contains("old"));
    }
    EXPECT_FALSE(rewritten(dir, media.bytes(), Items{}).contains("beside"));
}

TEST(Lists, AFileWithEntriesThatNobodyReadsIsNotSaved) {
    QByteArray lying = listText("\xA9nam", "old");
    lying[2] = 1; // 256 bytes more
    QByteArray lyingValue = listText("\xA9nam", "old");
    lyingValue[10] = 1;
    QByteArray lyingText = quickTimeText("\251ART", "old");
    lyingText[2] = 1;
    QByteArray unnamed = keysMeta({{"com.apple.quicktime.title", "old"}});
    unnamed[unnamed.indexOf("ilst") + 11] = 2; // of one key
    QByteArray flood;
    for (int i = 0; i < 12'000; ++i)
        flood += listText("\xA9nam", "old");
    const auto saved = [](const HandMade& media, const std::optional<Items>& list) {
        const TempDir dir;
        return rewritten(dir, media.bytes(), list);
    };
    for (const auto& [udta, meta] :
         {std::pair(listMeta(lying + listText("\251alb", "old")), QByteArray()),
          std::pair(listMeta(lyingValue + listText("\251alb", "old")), QByteArray()),
          std::pair(lyingText, QByteArray()), std::pair(listMeta(flood), QByteArray()),
          std::pair(QByteArray(), unnamed)}) {
        HandMade media;
        media.udta = udta;
        media.meta = meta;
        EXPECT_TRUE(saved(media, Items{newItem("itsk/%A9nam", kNew)}).isNull());
        EXPECT_FALSE(saved(media, std::nullopt).isNull());
        const QByteArray cleared = saved(media, Items{});
        EXPECT_TRUE(!cleared.isNull() && !cleared.contains("old"));
    }
}

TEST(Lists, SeveralInOneMetaAreReadAndCarried) {
    const QByteArray more = box("ilst", listText("\251ART", "artist"));
    const QByteArray twoLists = box("meta", listMeta(listText("\xA9nam", "old")).mid(8) + more);
    const QByteArray keyed = keysMeta({{"com.apple.quicktime.make", "make"}}) +
                             keysMeta({{"com.apple.quicktime.model", "model"}});
    const TempDir dir;
    HandMade media;
    media.udta = twoLists;
    media.meta = keyed;
    const QString source = dir.write("s", media.bytes()), target = dir.path("t");
    const Items old = readItems(source);
    ASSERT_EQ(old.size(), 4);
    ASSERT_TRUE(write(source, target, merged({newItem("itsk/%A9nam", kNew)}, old)));
    const Items now = readItems(target);
    EXPECT_EQ(now.size(), 4);
    EXPECT_EQ(shown(now, {u"itsk/%A9ART"_s}), u"artist");
    EXPECT_EQ(shown(now, {kKeys + u"make"_s}), u"make");
    EXPECT_EQ(shown(now, {kKeys + u"model"_s}), u"model");
}

TEST(Lists, PlacesKeepTheirNamesWhereTheyMove) {
    const QByteArray names[] = {QByteArray("Harbour\0", 8),
                                QByteArray("\xFE\xFF\0H\0a\1\0\0\0", 10)};
    QByteArray places, moved;
    for (const QByteArray& name : names) {
        const auto place = [&name](const QByteArray& numbers) {
            return fullBox("loci", be(0x15C7, 2) + name + '\2' + numbers +
                                       QByteArray("mars\0a note\0", 12));
        };
        places += place(be(0x10000, 4) + be(0x20000, 4) + be(0, 4));
        moved += place(be(0x30000, 4) + be(0x40000, 4) + be(0x50000, 4));
    }
    const TempDir dir;
    HandMade media;
    media.udta = places;
    const QByteArray target =
        rewritten(dir, media.bytes(), Items{newItem("uiso/loci", u"+4+3+5/"_s)});
    EXPECT_EQ(payloadAt(target, "moov/udta"), moved);
}

TEST(Rendering, OfNewItems) {
    const TempDir dir;
    const auto boxOf = [&](const AVMetadataItem& item, const char* path,
                           OutputContainer container = OutputContainer::M4V) {
        return payloadAt(rewritten(dir, HandMade().bytes(), Items{item}, container), path);
    };
    const auto text = [](const char* value) { return QString::fromUtf8(value); };
    const char* const trackPath = "moov/udta/meta/ilst/trkn/data";
    EXPECT_EQ(boxOf(newItem("itsk/trkn", text("3/12")), trackPath),
              be(0, 8) + be(0x0003'000C, 6) + be(0, 2));
    EXPECT_EQ(boxOf(newItem("itsk/trkn", text("A3")), trackPath), be(1, 4) + be(0, 4) + "A3");
    EXPECT_EQ(boxOf(newItem("uiso/date", text("2020:01:31 10:00:00")), "moov/udta/date"),
              "2020:01:31 10:00:00");
    EXPECT_EQ(boxOf(newItem("uiso/titl", text("T")), "moov/udta/titl"),
              be(0, 4) + be(0x55C4, 2) + QByteArray("T\0", 2));
    EXPECT_EQ(boxOf(newItem("udta/%A9mak", text("M")), "moov/udta/\xA9mak"),
              be(1, 2) + be(0x55C4, 2) + "M");
    const char* const lociPath = "moov/udta/loci";
    const auto position = [&](const char* value) {
        return boxOf(newItem("uiso/loci", text(value)), lociPath).mid(8, 12).toHex();
    };
    EXPECT_EQ(position("+31.5-121.25+"), "ff86c000001f800000000000");
    EXPECT_EQ(position("+31.5-121.25-2.5/"), "ff86c000001f8000fffd8000");
    EXPECT_EQ(position("+37,30.5N+122,25.1W+(null)"), "007a00000025000000000000");
    EXPECT_EQ(position("nowhere"), "");
    auto keywords = newItem("mdta/com.apple.quicktime.keywords", {});
    keywords.value = QByteArray("a, b");
    keywords.dataType = u"com.apple.metadata.datatype.raw-data"_s;
    EXPECT_TRUE(boxOf(keywords, "moov/meta/ilst").endsWith(be(0, 8) + "a, b"));
    EXPECT_EQ(boxOf(newItem("mdta/com.apple.quicktime.director", text("D")),
                    "moov/udta/meta/ilst/\251dir/data"),
              be(1, 4) + be(0, 4) + "D");
    EXPECT_TRUE(boxOf(newItem("common/publisher", text("P")), "moov/meta/keys",
                      OutputContainer::QuickTimeMovie)
                    .endsWith("com.apple.quicktime.publisher"));
    // An image format that has no code is refused and the old one stays.
    auto artwork = newItem("common/artwork", {});
    artwork.value = QByteArray("II*\0 tiff", 9);
    HandMade media;
    media.udta = listMeta(listText("covr", "\xFF\xD8\xFF old artwork"));
    const QString source = dir.write("s", media.bytes());
    const auto refused = write(source, dir.path("t"), merged({artwork}, readItems(source)));
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->notes.size(), 1);
    EXPECT_TRUE(TempDir::read(dir.path("t")).contains("old artwork"));
    artwork.value = QByteArray("\x89PNG new");
    ASSERT_TRUE(write(source, dir.path("t"), merged({artwork}, readItems(source))));
    EXPECT_EQ(payloadAt(TempDir::read(dir.path("t")), "moov/udta/meta/ilst/covr/data"),
              be(14, 4) + be(0, 4) + "\x89PNG new");
}

TEST(Rendering, WritesOneBoxForSeveralItemsOfOnePlace) {
    const TempDir dir;
    const QString date = u"2020:01:31 10:00:00"_s;
    auto nameless = newItem("uiso/date", date);
    nameless.identifier.clear(); // key space and key stand for it
    const Items list{nameless,
                     newItem("udta/date", date),
                     nameless,
                     newItem("itsk/%A9nam", kNew),
                     newItem("id3/TIT2", kOld),
                     newItem("id3/TALB", kOld),
                     newItem("id3/XXXX", kOld)};
    const QByteArray bytes = rewritten(dir, HandMade().bytes(), list);
    EXPECT_EQ(bytes.count("date"), 1);
    EXPECT_EQ(boxesIn(payloadAt(bytes, "moov/udta/meta/ilst")).size(), 2);
    EXPECT_EQ(bytes.count("old"), 1); // the album
    // Languages of a key stand side by side.
    auto english = newItem("mdta/com.apple.quicktime.title", kOld);
    english.extendedLanguageTag = u"en-US"_s;
    const QByteArray both =
        rewritten(dir, HandMade().bytes(),
                  Items{english, newItem("mdta/com.apple.quicktime.title", kNew), english});
    EXPECT_EQ(payloadAt(both, "moov/meta/keys").mid(4, 4), be(1, 4));
    const auto entries = boxesIn(payloadAt(both, "moov/meta/ilst"));
    ASSERT_EQ(entries.size(), 1);
    const auto values = boxesIn(entries[0].payload);
    ASSERT_EQ(values.size(), 2);
    EXPECT_EQ(values[0].payload, be(1, 4) + be(0x15C7, 4) + "old");
    EXPECT_EQ(values[1].payload, be(1, 4) + be(0, 4) + "new");
}

} // namespace
