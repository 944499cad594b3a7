// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/heif_items.h"
#include "platform/image/heif_reader.h"
#include "platform/image/image_transcode.h"
#include "platform/image/tiff_representation.h"
#include "platform/isobmff/box.h"
#include "tests/testkit/media.h"

#include <QImage>

#include <chrono>

namespace clipheave::platform {

using testkit::be;
using testkit::box;
using testkit::fullBox;

namespace {

const QByteArray kTiff("II*\0\x08\0\0\0\0\0\0\0\0\0", 14);

QByteArray infe(int id, const char* type) {
    return box("infe", QByteArray("\x02\0\0\0", 4) + be(static_cast<quint64>(id), 2) + be(0, 2) +
                           QByteArray(type, 4) + '\0');
}

struct HeifParts {
    QByteArray transforms; ///< boxes of `ipco` behind `ispe`
    int transformCount = 0;
    quint64 exifOffset = 0, exifLength = 0;
    QByteArray trailer = be(6, 4) + QByteArray("Exif\0\0", 6) + kTiff;
};

/// ftyp, meta with a main image (item 1) and an Exif item (item 2), then the bytes of the latter.
QByteArray heif(HeifParts parts) {
    const auto build = [&parts](quint64 offset) {
        QByteArray associations =
            be(1, 4) + be(1, 2) + be(static_cast<quint64>(parts.transformCount) + 1, 1);
        for (int i = 0; i <= parts.transformCount; ++i)
            associations += be(0x80u + static_cast<quint64>(i) + 1, 1);
        const QByteArray iprp =
            box("iprp", box("ipco", fullBox("ispe", be(4032, 4) + be(3024, 4)) + parts.transforms) +
                            fullBox("ipma", associations));
        const QByteArray iloc =
            fullBox("iloc", be(0x4400, 2) + be(1, 2) + be(2, 2) + be(0, 2) + be(1, 2) +
                                be(offset, 4) + be(parts.exifLength, 4));
        const QByteArray meta =
            fullBox("meta", fullBox("pitm", be(1, 2)) +
                                fullBox("iinf", be(2, 2) + infe(1, "hvc1") + infe(2, "Exif")) +
                                iprp + iloc);
        return box("ftyp", "heic" + be(0, 4) + "mif1") + meta;
    };
    if (parts.exifLength == 0)
        parts.exifLength = static_cast<quint64>(parts.trailer.size());
    const quint64 start = static_cast<quint64>(build(0).size()) + 8;
    return build(parts.exifOffset == 0 ? start : parts.exifOffset) + box("mdat", parts.trailer);
}

Result<HeifFacts> readBytes(const QByteArray& bytes) {
    const testkit::TempDir dir;
    auto reader = FileReader::open(dir.write("p.heic", bytes));
    return readHeif(*reader);
}

} // namespace

TEST(Heif, SizeAndExifItem) {
    const QByteArray bytes = heif({});
    EXPECT_TRUE(isHeif(ByteView(bytes)));
    const auto facts = readBytes(bytes);
    ASSERT_TRUE(facts);
    EXPECT_EQ(facts->pixelSize, QSize(4032, 3024));
    EXPECT_EQ(facts->orientation, 1);
    EXPECT_EQ(facts->exif, kTiff);
    EXPECT_TRUE(facts->problem.isEmpty()) << facts->problem.text();
}

TEST(Heif, TransformsGiveTheOrientation) {
    const QByteArray irot1 = box("irot", be(1, 1)), irot3 = box("irot", be(3, 1));
    const QByteArray topBottom = box("imir", be(0, 1)), leftRight = box("imir", be(1, 1));
    const struct {
        QByteArray boxes;
        int count, expected;
    } cases[] = {{irot1, 1, 8},
                 {irot3, 1, 6},
                 {box("irot", be(2, 1)), 1, 3},
                 {leftRight, 1, 2},
                 {topBottom, 1, 4},
                 {leftRight + irot3, 2, 7},  // mirrored, then rotated clockwise
                 {irot3 + leftRight, 2, 5}}; // the other order is another image
    for (const auto& c : cases) {
        HeifParts parts;
        parts.transforms = c.boxes;
        parts.transformCount = c.count;
        const auto facts = readBytes(heif(parts));
        ASSERT_TRUE(facts);
        EXPECT_EQ(facts->orientation, c.expected) << c.boxes.toHex();
    }
}

TEST(Heif, HostileLocations) {
    HeifParts far;
    far.exifOffset = 0xFFFFFFF0;
    HeifParts huge;
    huge.exifLength = 0xFFFFFFFF;
    for (const HeifParts& parts : {far, huge}) {
        const auto facts = readBytes(heif(parts));
        ASSERT_TRUE(facts);
        EXPECT_TRUE(facts->exif.isNull());
        EXPECT_FALSE(facts->problem.isEmpty());
        EXPECT_EQ(facts->pixelSize, QSize(4032, 3024)) << "what can be read is read";
    }
    // Numbers of no bytes: neither the counts nor the bytes bound the loops.
    const QByteArray empty = be(2u << 24, 4) + be(0, 2) + be(0xFFFFFFFF, 4);
    QByteArray entries;
    for (int i = 0; i < 2000; ++i)
        entries += be(7, 4) + be(0, 2) + be(0, 2) + be(0xFFFF, 2);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(itemLocation(ByteView(empty + entries), 3));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(50));
}

TEST(Heif, EveryCutEnds) {
    const QByteArray whole = heif({});
    for (qsizetype length = 0; length < whole.size(); ++length) {
        const QByteArray part = whole.left(length);
        const auto facts = readBytes(part);
        if (facts && facts->exif == kTiff) {
            EXPECT_GE(length, whole.size() - 1);
        }
    }
}

TEST(Heif, CanonRawTags) {
    const QByteArray uuid("\x85\xC0\xB6\x87\x82\x0F\x11\xE0\x81\x11\xF4\xCE\x46\x2B\x6A\x48", 16);
    const QByteArray bytes =
        box("ftyp", "crx " + be(1, 4)) +
        box("moov",
            box("uuid", uuid + box("CMT1", "main") + box("CMT2", "photo") + box("CMT4", "gps")) +
                box("trak",
                    fullBox("tkhd", QByteArray(72, '\0') + be(160u << 16, 4) + be(120u << 16, 4))));
    const auto facts = readBytes(bytes);
    ASSERT_TRUE(facts);
    EXPECT_EQ(facts->mainTags, "main");
    EXPECT_EQ(facts->photoTags, "photo");
    EXPECT_EQ(facts->gpsTags, "gps");
    EXPECT_TRUE(facts->pixelSize.isEmpty()) << "the track is a part of the raw image";
}

/// A still of one colour, as a phone stores it: one key frame of HEVC.
QByteArray redPhoto(const testkit::TempDir& dir) {
    const QString video = dir.path("red.mp4");
    testkit::ffmpeg("-f lavfi -i color=red:s=64x48 -frames:v 1 -c:v libx265 -pix_fmt yuv420p",
                    {video});
    const QByteArray bytes = testkit::TempDir::read(video);
    const auto bodyOf = [&bytes](const char* type) {
        const qsizetype at = bytes.indexOf(type);
        const auto size = ByteView(bytes).be32(static_cast<std::uint64_t>(at) - 4).value_or(8);
        return bytes.mid(at + 4, static_cast<qsizetype>(size) - 8);
    };
    const QByteArray frame = bodyOf("mdat");
    const auto build = [&](quint64 offset) {
        const QByteArray properties =
            box("ipco", fullBox("ispe", be(64, 4) + be(48, 4)) + box("hvcC", bodyOf("hvcC")));
        const QByteArray iloc = be(0x4400, 2) + be(1, 2) + be(1, 2) + be(0, 2) + be(1, 2) +
                                be(offset, 4) + be(static_cast<quint64>(frame.size()), 4);
        return box("ftyp", "heic" + be(0, 4) + "mif1heic") +
               fullBox("meta", fullBox("hdlr", be(0, 4) + "pict" + QByteArray(13, '\0')) +
                                   fullBox("pitm", be(1, 2)) + fullBox("iloc", iloc) +
                                   fullBox("iinf", be(1, 2) + infe(1, "hvc1")) +
                                   box("iprp", properties +
                                                   fullBox("ipma", be(1, 4) + be(1, 2) + be(2, 1) +
                                                                       be(0x81, 1) + be(0x82, 1))));
    };
    return build(static_cast<quint64>(build(0).size()) + 8) + box("mdat", frame);
}

TEST(Heif, IsAnArtworkThatBecomesJpeg) {
    SKIP_WITHOUT("ffmpeg");
    const testkit::TempDir dir;
    const QByteArray bytes = redPhoto(dir);
    const EncodedImage cover = EncodedImage::fromBytes(bytes);
    EXPECT_EQ(cover.format(), u"heif");
    EXPECT_EQ(cover.size(), QSize(64, 48));
    const auto artwork = imageForArtwork(dir.write("a.heic", bytes));
    if (!artwork && artwork.error().code == ErrorCode::NotSupported)
        GTEST_SKIP() << "needs libheif";
    ASSERT_TRUE(artwork) << artwork.error().text();
    EXPECT_EQ(artwork->format(), u"jpeg");
    const QImage image = QImage::fromData(artwork->bytes());
    EXPECT_EQ(image.size(), QSize(64, 48));
    EXPECT_GT(image.pixelColor(32, 24).red(), 200);
    EXPECT_LT(image.pixelColor(32, 24).blue(), 60);
    EXPECT_EQ(artworkForItemList(cover)->format(), u"jpeg");
    EXPECT_EQ(TIFFRepresentation(cover)->format(), u"tiff");
    EXPECT_FALSE(imageForArtwork(dir.write("cut.heic", bytes.chopped(bytes.size() / 2))));
}

} // namespace clipheave::platform
