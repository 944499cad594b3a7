// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/heif_items.h"
#include "platform/image/heif_reader.h"
#include "platform/image/write/heif_structure.h"
#include "platform/image/write/photo_writer.h"
#include "platform/isobmff/box.h"
#include "tests/platform/image/heif_files.h"
#include "tests/testkit/testkit.h"

#include <chrono>

namespace clipheave::platform {

using testkit::be;
using testkit::box;
using testkit::fullBox;
using testkit::HeifFile;

namespace {

const QByteArray kImageBytes = "IMAGE-" + QByteArray(200, '\x5A');
const QByteArray kAuxBytes = "GAINMAP-" + QByteArray(50, '\x3C');

/// IFD0 with a make and a position of one tag, in an Exif item.
QByteArray exifItem() {
    const auto entry = [](quint64 tag, quint64 type, quint64 count, const QByteArray& value) {
        return be(tag, 2) + be(type, 2) + be(count, 4) + value;
    };
    const QByteArray image =
        be(2, 2) + entry(0x010F, 2, 8, be(56, 4)) + entry(0x8825, 4, 1, be(38, 4)) + be(0, 4);
    const QByteArray gps = be(1, 2) + entry(0x001D, 2, 11, be(64, 4)) + be(0, 4);
    return be(6, 4) + QByteArray("Exif\0\0", 6) + QByteArray("MM\0*", 4) + be(8, 4) + image + gps +
           QByteArray("Kestrel\0", 8) + QByteArray("2025:06:14\0", 11);
}

QByteArray xmpItem() {
    return "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF "
           "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description "
           "xmlns:exif='http://ns.adobe.com/exif/1.0/' exif:GPSLatitude='63,24.2N' "
           "xmlns:n='urn:n' n:d='kept'/></rdf:RDF></x:xmpmeta>";
}

const QByteArray kXmpTail("\0application/rdf+xml\0", 21);

HeifFile phonePhoto() {
    HeifFile file;
    file.items = {{1, "hvc1", kImageBytes, 0, "Main" + QByteArray(1, '\0')},
                  {2, "Exif", exifItem(), 1},
                  {3, "hvc1", kAuxBytes},
                  {4, "mime", xmpItem(), 1, kXmpTail}};
    file.properties = fullBox("ispe", be(64, 4) + be(48, 4)) + box("irot", be(3, 1)) +
                      fullBox("udes", QByteArray("en\0Granny\0\0\0", 12));
    file.propertyCount = 3;
    return file;
}

QVariantMap longerTags() {
    return {{u"{GPS}"_s, QVariantMap{{u"Latitude"_s, 33.5},
                                     {u"LatitudeRef"_s, u"S"_s},
                                     {u"Longitude"_s, 151.25},
                                     {u"LongitudeRef"_s, u"E"_s}}},
            {u"{TIFF}"_s, QVariantMap{{u"Artist"_s, QString(300, u'n')}}},
            {u"{IPTC}"_s, QVariantMap{{u"ObjectName"_s, u"Tïtle"_s}}}};
}

class HeifWriter : public testing::Test {
protected:
    Result<Notes> write(const QByteArray& bytes, const QVariantMap& properties,
                        bool everything = false) {
        m_source = m_dir.write("a.heic", bytes);
        return rewritePhoto({m_source, m_dir.path("b.heic"), properties, everything});
    }
    /// Returns the new file, empty when it was refused.
    QByteArray written(const QByteArray& bytes, const QVariantMap& properties,
                       bool everything = false) {
        const auto notes = write(bytes, properties, everything);
        EXPECT_TRUE(notes) << (notes ? QString() : notes.error().text());
        return notes ? testkit::TempDir::read(m_dir.path("b.heic")) : QByteArray();
    }
    /// The bytes of an item as the reader of photos finds them.
    static QByteArray itemBytes(const QByteArray& file, std::uint32_t id) {
        ByteView meta;
        BoxWalker boxes(file);
        while (const auto found = boxes.next())
            if (found->type == fourCc("meta"))
                meta = boxes.payload(*found);
        const auto place = itemLocation(findPayload(meta.sub(4), {fourCc("iloc")}), id);
        if (!place || place->extents.size() != 1)
            return {};
        const HeifExtent& extent = place->extents[0];
        const ByteView whole = place->constructionMethod == 1
                                   ? findPayload(meta.sub(4), {fourCc("idat")})
                                   : ByteView(file);
        return whole.sub(extent.offset, extent.length).toByteArray();
    }
    HeifFacts facts(const QByteArray& file) {
        auto reader = FileReader::open(m_dir.write("c.heic", file));
        const auto read = readHeif(*reader);
        EXPECT_TRUE(read);
        return read ? *read : HeifFacts();
    }

    testkit::TempDir m_dir;
    QString m_source;
};

/// A sequence with one chunk, which begins where the image does.
QByteArray sequence(quint64 chunk) {
    return box(
        "moov",
        box("trak",
            box("mdia", box("minf", box("stbl", fullBox("stco", be(1, 4) + be(chunk, 4)))))));
}

} // namespace

TEST_F(HeifWriter, KeepsImagesInEveryLayout) {
    std::vector<HeifFile> files(8, phonePhoto());
    files[1].locationVersion = 0;
    files[2].locationVersion = 2;
    files[2].hasBase = true;
    files[3].metaLast = true;
    files[4].behindMeta = box("free", QByteArray(100, '\0'));
    files[5].mdatHead = be(0, 4) + "mdat";
    files[6].items[1].method = 1;
    files[7].items = {files[7].items[0], files[7].items[2]}; // no metadata yet
    for (std::size_t i = 0; i < files.size(); ++i) {
        SCOPED_TRACE(i);
        if (i != 5)
            files[i].end = box("mpvd", "VIDEO");
        const QByteArray file = written(files[i].build(), longerTags());
        EXPECT_EQ(itemBytes(file, 1), kImageBytes);
        EXPECT_EQ(itemBytes(file, 3), kAuxBytes);
        EXPECT_EQ(file.endsWith(box("mpvd", "VIDEO")), i != 5) << "players count from the end";
        EXPECT_TRUE(facts(file).exif.contains(QByteArray(300, 'n')));
        EXPECT_EQ(facts(file).exif.contains("Kestrel"), i != 7) << "not named: it stays";
        EXPECT_EQ(facts(file).orientation, 6);
        EXPECT_TRUE(file.contains("T\xC3\xAFtle")) << "IPTC stands in XMP";
        EXPECT_FALSE(file.contains("63,24")) << "an old place stays nowhere";
        const QByteArray again = written(file, longerTags());
        EXPECT_EQ(again.size(), file.size()) << "the second time it fits its place";
    }
}

TEST_F(HeifWriter, LetsTheChunksOfASequenceFollow) {
    HeifFile file = phonePhoto();
    file.behindMeta = sequence(0);
    const auto at = static_cast<quint64>(file.build().indexOf(kImageBytes));
    file.behindMeta = sequence(at);
    file.items.pop_back(); // a new item makes `meta` grow
    const QByteArray plain = file.build();
    file.behindMeta = sequence(static_cast<quint64>(plain.indexOf(kImageBytes)));
    const QByteArray moved = written(file.build(), longerTags());
    const qsizetype stco = moved.indexOf("stco");
    EXPECT_NE(moved.indexOf(kImageBytes), plain.indexOf(kImageBytes));
    EXPECT_EQ(ByteView(moved).be32(static_cast<std::uint64_t>(stco) + 12),
              moved.indexOf(kImageBytes));
}

TEST_F(HeifWriter, RemovesBlocksFromEveryItemAndClearsTheirBytes) {
    HeifFile file = phonePhoto();
    file.items.push_back({5, "Exif", exifItem(), 3});
    const QByteArray source = file.build();
    const QByteArray placeless = written(source, {{u"{GPS}"_s, QVariant()}});
    EXPECT_EQ(placeless.size(), source.size());
    for (const char* text : {"2025:06:14", "63,24"})
        EXPECT_FALSE(placeless.contains(text)) << text;
    EXPECT_EQ(placeless.count("Kestrel"), 2);
    EXPECT_TRUE(itemBytes(placeless, 4).contains("n:d"));
    const auto isImage = [&](const QByteArray& bytes) {
        return itemBytes(bytes, 1) == kImageBytes;
    };
    EXPECT_TRUE(isImage(placeless));
    EXPECT_EQ(written(placeless, {{u"{GPS}"_s, QVariant()}}), placeless);
}

TEST_F(HeifWriter, LeavesNothingPersonal) {
    HeifFile file = phonePhoto();
    file.items.push_back({6, "hvc1", "THUMBNAIL-OF-OLD"});
    file.unused = "LEFTOVER";
    file.behindMeta = box("free", "SECRET-IN-FREE") + box("uuid", QByteArray(16, 'u') + "SERIAL");
    file.end = box("mpvd", "VIDEO") + "TRAILER";
    QByteArray source = file.build();
    source.replace("cdsc" + be(4, 2), "thmb" + be(6, 2)); // of the packet
    const QByteArray bare = written(source, {}, true);
    for (const char* text : {"Kestrel", "2025", "63,24", "Main", "Granny", "THUMBNAIL", "LEFTOVER",
                             "SECRET", "SERIAL", "VIDEO", "TRAILER", "rdf"})
        EXPECT_FALSE(bare.contains(text)) << text;
    EXPECT_EQ(itemBytes(bare, 1), kImageBytes);
    EXPECT_EQ(itemBytes(bare, 3), kAuxBytes);
    EXPECT_EQ(facts(bare).orientation, 6);
    EXPECT_EQ(facts(bare).pixelSize, QSize(64, 48));
}

TEST_F(HeifWriter, RefusesWhatItCannotKeep) {
    const QVariantMap gps{{u"{GPS}"_s, QVariant()}};
    HeifFile shared = phonePhoto();
    QByteArray overlapping = shared.build();
    const QByteArray place = be(static_cast<quint64>(overlapping.indexOf(exifItem())), 4);
    overlapping.replace(be(static_cast<quint64>(overlapping.indexOf(kAuxBytes)), 4), place);
    const auto refused = write(overlapping, gps);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().code, ErrorCode::NotSupported);
    QByteArray overHeads = phonePhoto().build(); // clearing would take the boxes
    overHeads.replace(place, be(0, 4));
    EXPECT_FALSE(write(overHeads, gps, true));
    HeifFile endless = phonePhoto();
    endless.locationVersion = 2;
    QByteArray counts = endless.build();
    const qsizetype count = counts.indexOf("iloc") + 10;
    counts.replace(count - 2, 6, QByteArray(2, '\0') + QByteArray(4, '\xFF'));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(write(counts, gps));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
    EXPECT_FALSE(write(box("ftyp", "mif3" + be(0, 4)) + box("mini", "bits"), gps));
    EXPECT_TRUE(testkit::TempDir::read(m_dir.path("b.heic")).isEmpty()) << "no output";
}

TEST_F(HeifWriter, SurvivesEveryCutAndFlippedByte) {
    const QByteArray whole = phonePhoto().build();
    for (qsizetype size = 0; size < whole.size(); size += 11)
        EXPECT_FALSE(write(whole.first(size), longerTags())) << size;
    for (qsizetype at = 0; at < whole.indexOf(kImageBytes); at += 2) {
        QByteArray damaged = whole;
        damaged[at] = static_cast<char>(damaged[at] ^ 0xFF);
        if (write(damaged, longerTags())) {
            EXPECT_TRUE(testkit::TempDir::read(m_dir.path("b.heic")).contains(kImageBytes)) << at;
        }
    }
}

} // namespace clipheave::platform
