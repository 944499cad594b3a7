// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/cg_image_source.h"
#include "platform/image/messages.h"
#include "platform/image/sample_photo.h"
#include "platform/image/write/extended_xmp.h"
#include "platform/image/write/jpeg_segments.h"
#include "platform/image/write/photo_writer.h"
#include "platform/image/write/tag_encoding.h"
#include "platform/image/write/tiff_editor.h"
#include "platform/image/write/xmp_packet.h"
#include "tests/testkit/testkit.h"

#include <QFile>
#include <QImage>

#include <algorithm>
#include <limits>
#include <utility>

namespace clipheave::platform {

namespace {

QByteArray le16(int value) {
    return QByteArray(1, static_cast<char>(value)) + QByteArray(1, static_cast<char>(value >> 8));
}
QByteArray le32(int value) {
    return le16(value & 0xFFFF) + le16(value >> 16);
}
QByteArray big32(qsizetype value) {
    QByteArray bytes = le32(static_cast<int>(value));
    std::reverse(bytes.begin(), bytes.end());
    return bytes;
}
QByteArray entry(int tag, int type, int count, int value) {
    return le16(tag) + le16(type) + le32(count) + le32(value);
}

/// IFD0 with a make, an Exif directory without the offset of a next one, right behind which a maker
/// note stands, and a GPS directory.
QByteArray cameraBlock() {
    const QByteArray image = le16(3) + entry(0x010F, 2, 8, 108) + entry(0x8769, 4, 1, 50) +
                             entry(0x8825, 4, 1, 76) + le32(0);
    const QByteArray exif = le16(1) + entry(0x927C, 7, 12, 64);
    const QByteArray gps = le16(1) + entry(0x0002, 5, 3, 94) + le32(0);
    const QByteArray block = QByteArray("II*\0", 4) + le32(8) + image + exif + "MAKERNOTE-12" +
                             gps + QByteArray(14, '\x07') + "Kestrel" + '\0' +
                             QByteArray("OLDLATITUDE\0", 12);
    return block;
}

PhotoChange gpsChange() {
    return changeOf({{u"{GPS}"_s, QVariantMap{{u"Latitude"_s, 33.5},
                                              {u"LatitudeRef"_s, u"S"_s},
                                              {u"AltitudeRef"_s, u"1"_s},
                                              {u"GPSVersion"_s, u"2.2.0.0"_s},
                                              {u"TimeStamp"_s, u"01:02:03.500000"_s}}}});
}

QString samplePhoto(const testkit::TempDir& dir, const char* name) {
    SamplePhoto photo{{64, 48}, 1, "2025:06:14 21:36:20"};
    photo.make = "Kestrel";
    photo.artist = "Halla";
    photo.hasPosition = true;
    photo.latitude = 63.4041;
    photo.longitude = -19.0446;
    photo.orientation = 6;
    EXPECT_TRUE(writeSamplePhoto(photo, dir.path(name)));
    return dir.path(name);
}

QVariantMap propertiesOf(const QString& path) {
    const auto source = CGImageSource::createWithPath(path);
    EXPECT_TRUE(source) << path;
    return source ? source->properties() : QVariantMap();
}
QVariant valueIn(const QString& path, const char* block, const char* key) {
    return propertiesOf(path).value(QLatin1String(block)).toMap().value(QLatin1String(key));
}

/// Rewrites beside the source and returns the path.
QString rewritten(const QString& source, const QVariantMap& properties, bool everything = false) {
    const QString target = source + u".new."_s + source.section(u'.', -1);
    const auto notes =
        rewritePhoto({source, target, everything ? everyDictionaryRemoved() : properties});
    EXPECT_TRUE(notes) << (notes ? QString() : notes.error().text());
    if (notes) {
        EXPECT_THAT(*notes, testing::IsEmpty());
    }
    return target;
}

/// Puts a packet behind the first two bytes of a JPEG file.
void addPacket(const QString& path, const QByteArray& properties) {
    const QByteArray packet =
        "http://ns.adobe.com/xap/1.0/" + QByteArray(1, '\0') +
        "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF "
        "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description "
        "xmlns:exif='http://ns.adobe.com/exif/1.0/' xmlns:dc='http://purl.org/dc/elements/1.1/' " +
        properties + "</rdf:Description></rdf:RDF></x:xmpmeta>";
    QByteArray bytes = testkit::TempDir::read(path);
    bytes.insert(2, jpegSegment(kJpegApp1, packet).value());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

} // namespace

TEST(TiffEditor, LeavesEveryByteItIsNotAskedFor) {
    const QByteArray block = cameraBlock();
    auto editor = TiffEditor::open(TiffSource::ofBlock(block));
    ASSERT_TRUE(editor);
    editor->set(TiffDirectory::Kind::Exif, 0xA433, {2, 9, QByteArray("LensMake", 9)});
    const auto patch = editor->finish();
    ASSERT_TRUE(patch);
    const QByteArray changed = patch->applied(block);
    // The table moved away; the note, which begins where its next offset would stand, did not.
    EXPECT_EQ(changed.indexOf("MAKERNOTE-12"), block.indexOf("MAKERNOTE-12"));
    const auto structure = readTiffStructure(TiffSource::ofBlock(changed));
    ASSERT_TRUE(structure);
    const auto exif = structure->first(TiffDirectory::Kind::Exif);
    ASSERT_TRUE(exif);
    EXPECT_NE(structure->directories[*exif].find(0xA433), nullptr);
    EXPECT_NE(structure->directories[*exif].find(kMakerNote), nullptr);
    EXPECT_TRUE(structure->first(TiffDirectory::Kind::Gps));
}

TEST(TiffEditor, RemovesDirectoriesWithTheirValues) {
    PhotoChange change;
    change.dropsGps = true;
    const auto withoutGps = changedTiffBlock(cameraBlock(), change);
    ASSERT_TRUE(withoutGps);
    EXPECT_FALSE(withoutGps->contains(QByteArray(14, '\x07')));
    EXPECT_TRUE(withoutGps->contains("MAKERNOTE-12"));
    change.dropsExif = true;
    const auto compact = changedTiffBlock(cameraBlock(), change);
    ASSERT_TRUE(compact);
    EXPECT_FALSE(compact->contains("MAKER"));
    EXPECT_TRUE(compact->contains("Kestrel"));
    EXPECT_EQ(compact->size(), 8 + 2 + 12 + 4 + 8);
    change.dropsEverything = true;
    EXPECT_EQ(changedTiffBlock(cameraBlock(), change).value(), QByteArray());
}

TEST(TiffEditor, SortsPointersInAndFindsStrayedTags) {
    const QByteArray block = QByteArray("II*\0", 4) + le32(8) + le16(3) +
                             entry(0x010F, 2, 3, 0x4141) + entry(0x9209, 3, 1, 7) +
                             entry(0xC62F, 2, 3, 0x4242) + le32(0);
    PhotoChange change = gpsChange();
    change.dropsExif = true;
    const auto structure =
        readTiffStructure(TiffSource::ofBlock(changedTiffBlock(block, change).value()));
    ASSERT_TRUE(structure);
    std::vector<int> tags;
    for (const TiffEntry& entry : structure->directories.front().entries)
        tags.push_back(entry.tag);
    EXPECT_THAT(tags, testing::ElementsAre(0x010F, 0x8825, 0xC62F));
}

TEST(TiffEditor, SurvivesHostileStructures) {
    const QByteArray block = cameraBlock();
    PhotoChange change = gpsChange();
    change.dropsExif = true;
    for (qsizetype size = 0; size <= block.size(); ++size)
        static_cast<void>(changedTiffBlock(block.first(size), change));
    for (qsizetype at = 4; at < block.size(); ++at)
        for (const char value : {'\0', '\x08', '\x40', '\xFF'}) {
            QByteArray damaged = block;
            damaged[at] = value;
            const auto changed = changedTiffBlock(damaged, change);
            if (changed) {
                EXPECT_LT(changed->size(), 4096);
            }
        }
    QByteArray endless = QByteArray("II*\0", 4) + le32(8);
    for (int i = 0; i < 10'000; ++i)
        endless += le16(1) + entry(0x0100, 3, 1, i) + le32(8 + (i + 1) * 18);
    EXPECT_FALSE(TiffEditor::open(TiffSource::ofBlock(endless)));
}

TEST(TagEncoding, WritesFractionsThatReadBack) {
    for (const double value : {0.0, 0.008, 1.0 / 3, 6.3, 33.5, 4294967295.0}) {
        const auto fraction = fractionOf(value);
        ASSERT_TRUE(fraction) << value;
        EXPECT_NEAR(static_cast<double>(fraction->first) / fraction->second, value, value * 1e-8);
    }
    EXPECT_EQ(fractionOf(0.008), std::pair(1U, 125U));
    EXPECT_FALSE(fractionOf(-1));
    EXPECT_FALSE(fractionOf(5e9));
    EXPECT_FALSE(fractionOf(std::numeric_limits<double>::quiet_NaN()));
}

TEST(PhotoWriter, SetsAndRemovesBlocksInEveryFormat) {
    const testkit::TempDir dir;
    for (const char* name : {"a.jpg", "a.png", "a.tif"}) {
        SCOPED_TRACE(name);
        const QString source = samplePhoto(dir, name);
        const QImage pixels(source);
        const QString moved = rewritten(
            source, {{u"{GPS}"_s, QVariantMap{{u"Latitude"_s, 33.5},
                                              {u"LatitudeRef"_s, u"S"_s},
                                              {u"AltitudeRef"_s, u"1"_s},
                                              {u"Altitude"_s, 10}}},
                     {u"{IPTC}"_s, QVariantMap{{u"Keywords"_s, QStringList{u"ä"_s, u"b"_s}}}},
                     {u"{Exif}"_s, QVariantMap{{u"UserComment"_s, u"Ünï"_s}}}});
        EXPECT_EQ(valueIn(moved, "{GPS}", "Latitude"), 33.5);
        EXPECT_EQ(valueIn(moved, "{GPS}", "AltitudeRef"), u"1"_s);
        EXPECT_EQ(valueIn(moved, "{GPS}", "LongitudeRef"), u"W"_s) << "not named: it stays";
        EXPECT_EQ(valueIn(moved, "{Exif}", "UserComment"), u"Ünï"_s);
        EXPECT_EQ(valueIn(moved, "{TIFF}", "Artist"), u"Halla"_s);
        EXPECT_EQ(QImage(moved), pixels);
        const QString plain =
            rewritten(moved, {{u"{Exif}"_s, QVariant()}, {u"{GPS}"_s, QVariant()}});
        EXPECT_FALSE(propertiesOf(plain).contains(u"{Exif}"_s));
        EXPECT_FALSE(propertiesOf(plain).contains(u"{GPS}"_s));
        EXPECT_EQ(valueIn(plain, "{TIFF}", "Make"), u"Kestrel"_s);
        if (source.endsWith(u".tif"_s)) { // an older state that nothing leads to
            QFile file(moved);
            ASSERT_TRUE(file.open(QIODevice::Append));
            file.write("an older state by Halla");
        }
        const QString bare = rewritten(moved, {}, true);
        const QByteArray bytes = testkit::TempDir::read(bare);
        for (const char* text : {"Kestrel", "Halla", "2025:06:14"})
            EXPECT_FALSE(bytes.contains(text)) << text;
        EXPECT_EQ(valueIn(bare, "{TIFF}", "Orientation"), 6);
        EXPECT_EQ(QImage(bare), pixels);
    }
}

TEST(PhotoWriter, KeepsXmpInStepAndWhatIsBehindThePixels) {
    const testkit::TempDir dir;
    const QString source = samplePhoto(dir, "a.jpg");
    addPacket(source, "exif:GPSLatitude='63,24.2N' exif:verbatimLongitude='63,24' "
                      "dc:format='image/jpeg'><dc:creator><rdf:Seq>"
                      "<rdf:li>Old Name</rdf:li></rdf:Seq></dc:creator>");
    QFile file(source);
    ASSERT_TRUE(file.open(QIODevice::Append));
    file.write("TRAILER");
    file.close();
    const QByteArray without =
        testkit::TempDir::read(rewritten(source, {{u"{GPS}"_s, QVariant()}}));
    EXPECT_FALSE(without.contains("63,24"));
    EXPECT_TRUE(without.contains("Old Name"));
    EXPECT_TRUE(without.endsWith("TRAILER"));
    const QByteArray renamed = testkit::TempDir::read(
        rewritten(source, {{u"{TIFF}"_s, QVariantMap{{u"Artist"_s, u"New & Name"_s}}}}));
    EXPECT_FALSE(renamed.contains("Old Name"));
    EXPECT_TRUE(renamed.contains("<rdf:li>New &amp; Name</rdf:li>"));
    const QByteArray bare = testkit::TempDir::read(rewritten(source, {}, true));
    EXPECT_FALSE(bare.contains("adobe"));
    EXPECT_FALSE(bare.contains("TRAILER"));
}

TEST(PhotoWriter, EditsTheExtendedPartOfXmp) {
    const testkit::TempDir dir;
    const QString source = samplePhoto(dir, "a.jpg");
    const QByteArray start = "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF "
                             "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
                             "<rdf:Description xmlns:exif='http://ns.adobe.com/exif/1.0/' "
                             "exif:GPSLatitude='63,24.2N' xmlns:n='urn:n'";
    const QByteArray end = "</rdf:Description></rdf:RDF></x:xmpmeta>";
    for (const bool hasMore : {true, false}) {
        const QByteArray extended =
            start + ">" + (hasMore ? "<n:d>" + QByteArray(150'000, 'd') + "</n:d>" : "") + end;
        const QByteArray digest = digestOfXmp(extended);
        addPacket(source, "xmlns:xmpNote='http://ns.adobe.com/xmp/note/' "
                          "xmpNote:HasExtendedXMP='" +
                              digest + "' dc:format='image/jpeg'>");
        QByteArray bytes = testkit::TempDir::read(source);
        for (const QByteArray& payload : extendedXmpPayloads(extended)) // the last one first
            bytes.insert(2, jpegSegment(kJpegApp1, payload).value());
        dir.write("b.jpg", bytes);
        const QString moved = rewritten(dir.path("b.jpg"), {{u"{GPS}"_s, QVariant()}});
        auto reader = FileReader::open(moved);
        ASSERT_TRUE(reader);
        const auto image = readJpegImage(*reader, 0);
        ASSERT_TRUE(image);
        const auto packets = extendedXmpOf(*image);
        const QByteArray left = testkit::TempDir::read(moved);
        EXPECT_FALSE(left.contains("63,24"));
        EXPECT_FALSE(left.contains(digest));
        EXPECT_EQ(left.contains("HasExtendedXMP"), hasMore);
        ASSERT_EQ(packets.size(), hasMore ? 1U : 0U);
        if (hasMore) {
            EXPECT_EQ(packets[0].digest, digestOfXmp(packets[0].packet));
            EXPECT_TRUE(left.contains("HasExtendedXMP='" + packets[0].digest));
            EXPECT_TRUE(packets[0].packet.contains(QByteArray(150'000, 'd')));
        }
        samplePhoto(dir, "a.jpg");
    }
}

TEST(PhotoWriter, FindsImagesAndVideosWithoutAnIndex) {
    const testkit::TempDir dir;
    const QByteArray further = testkit::TempDir::read(samplePhoto(dir, "further.jpg"));
    const auto box = [](const QByteArray& type, const QByteArray& payload) {
        return QByteArray(3, '\0') + static_cast<char>(payload.size() + 8) + type + payload;
    };
    const auto photoWith = [&](const QByteArray& movie) {
        return dir.write("a.jpg", testkit::TempDir::read(samplePhoto(dir, "first.jpg")) + "GAP" +
                                      further + "Name" + box("ftyp", "mp42") + movie + "SEFT");
    };
    const QString source = photoWith(box("moov", "\xA9xyz+63.4-019.0/"));
    const qsizetype size =
        QFile(source).size() - testkit::TempDir::read(dir.path("first.jpg")).size();
    const QString target = dir.path("b.jpg");
    const auto notes = rewritePhoto({source, target, {{u"{GPS}"_s, QVariant()}}});
    ASSERT_TRUE(notes);
    EXPECT_EQ(*notes, Notes{kMotionVideoHoldsPlace});
    const QByteArray trailer = testkit::TempDir::read(target).last(size);
    EXPECT_TRUE(trailer.startsWith("GAP\xFF\xD8"));
    EXPECT_TRUE(trailer.endsWith("SEFT"));
    const QString second = dir.write("second.jpg", trailer.mid(3));
    EXPECT_FALSE(propertiesOf(second).contains(u"{GPS}"_s));
    EXPECT_EQ(valueIn(second, "{TIFF}", "Make"), u"Kestrel"_s);
    EXPECT_EQ(QImage(second), QImage(dir.path("further.jpg")));
    rewritten(photoWith(box("moov", "no place")), {{u"{GPS}"_s, QVariant()}}); // no note
    const auto none = rewritePhoto({photoWith({}), target, {{u"{GPS}"_s, QVariant()}}});
    ASSERT_TRUE(none);
    EXPECT_EQ(*none, Notes{kMotionVideoKept});
}

TEST(PhotoWriter, CarriesUnchangedValuesNowhere) {
    const testkit::TempDir dir;
    for (const char* name : {"a.jpg", "a.tif"}) {
        const QString source =
            rewritten(samplePhoto(dir, name),
                      {{u"{IPTC}"_s, QVariantMap{{u"Byline"_s, u"Someone"_s},
                                                 {u"Caption/Abstract"_s, u"C"_s},
                                                 {u"DateCreated"_s, u"2001-02-03"_s},
                                                 {u"TimeCreated"_s, u"04:05:06-07:00"_s}}}});
        EXPECT_TRUE(testkit::TempDir::read(source).contains("20010203")) << name;
        EXPECT_TRUE(testkit::TempDir::read(source).contains("040506-0700")) << name;
        const QString kept =
            rewritten(source, {{u"{TIFF}"_s, QVariantMap{{u"Artist"_s, u"Halla"_s},
                                                         {u"ImageDescription"_s, QString()}}},
                               {u"{Exif}"_s, QVariantMap{{u"LensModel"_s, u"L"_s}}}});
        EXPECT_EQ(propertiesOf(kept).value(u"{IPTC}"_s), propertiesOf(source).value(u"{IPTC}"_s));
        EXPECT_EQ(valueIn(kept, "{Exif}", "LensModel"), u"L"_s);
        const QString named =
            rewritten(source, {{u"{TIFF}"_s, QVariantMap{{u"Artist"_s, u"Other"_s}}}});
        EXPECT_EQ(valueIn(named, "{IPTC}", "Byline").toStringList(), QStringList{u"Other"_s});
    }
}

/// Puts a chunk behind the header of a PNG file.
void addTextChunk(const QString& path, const QByteArray& data) {
    constexpr qsizetype kBehindHeader = 33;
    QByteArray bytes = testkit::TempDir::read(path);
    QByteArray length = le32(static_cast<int>(data.size()));
    std::reverse(length.begin(), length.end());
    bytes.insert(kBehindHeader, length + "tEXt" + data + "CRC!");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

TEST(PhotoWriter, ReachesTheTextsOfPng) {
    const testkit::TempDir dir;
    const QByteArray packet = "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF "
                              "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
                              "<rdf:Description xmlns:exif='http://ns.adobe.com/exif/1.0/' "
                              "exif:GPSLatitude='63,24.2N' exif:Flash='0'/></rdf:RDF></x:xmpmeta>";
    const QByteArray sign("http://ns.adobe.com/xap/1.0/\0", 29);
    for (const auto& [name, bytes] : {std::pair("xmp", packet), std::pair("APP1", sign + packet)}) {
        const QString source = samplePhoto(dir, "a.png");
        addTextChunk(source, QByteArray("Raw profile type ") + name + '\0' + '\n' + name + "\n  " +
                                 QByteArray::number(bytes.size()) + '\n' + bytes.toHex() + '\n');
        const QByteArray left =
            testkit::TempDir::read(rewritten(source, {{u"{GPS}"_s, QVariant()}}));
        EXPECT_FALSE(left.contains(QByteArray("63,24.2N").toHex())) << name;
        EXPECT_TRUE(left.contains("exif:Flash")) << name;
        EXPECT_FALSE(left.contains("63,24.2N")) << name;
    }
    const QString source = samplePhoto(dir, "b.png");
    addTextChunk(source, QByteArray("Author\0Old Name", 15));
    addTextChunk(source, QByteArray("Software\0Old Name", 17));
    const QByteArray named = testkit::TempDir::read(
        rewritten(source, {{u"{TIFF}"_s, QVariantMap{{u"Artist"_s, u"日"_s}}}}));
    EXPECT_TRUE(named.contains("iTXtAuthor" + QByteArray(5, '\0') + "日"));
    EXPECT_EQ(named.count("Old Name"), 1) << "of another fact";
}

TEST(PhotoWriter, RenewsEveryCopyOfAFact) {
    const testkit::TempDir dir;
    const QString source =
        rewritten(samplePhoto(dir, "a.jpg"),
                  {{u"{IPTC}"_s, QVariantMap{{u"DigitalCreationDate"_s, u"2001-02-03"_s}}}});
    addPacket(source, "exif:GPSLatitude='63,24.2N' exif:GPSLongitude='19,2.6W' "
                      "dc:format='image/jpeg'>");
    QByteArray bytes = testkit::TempDir::read(source);
    bytes.insert(2, jpegSegment(kJpegApp1, QByteArray("Exif\0\0", 6) + cameraBlock()).value());
    const QByteArray changed = testkit::TempDir::read(rewritten(
        dir.write("b.jpg", bytes),
        {{u"{GPS}"_s, QVariantMap{{u"Latitude"_s, 33.5}, {u"LatitudeRef"_s, u"S"_s}}},
         {u"{TIFF}"_s, QVariantMap{{u"Make"_s, u"Other"_s}}},
         {u"{Exif}"_s, QVariantMap{{u"DateTimeDigitized"_s, u"2024:02:29 01:02:03"_s}}}}));
    EXPECT_FALSE(changed.contains("Kestrel")) << "of the second block";
    EXPECT_TRUE(changed.contains("33,30.000000S")) << "latitude alone";
    EXPECT_TRUE(changed.contains("19,2.6W"));
    EXPECT_TRUE(changed.contains("20240229"));
}

TEST(PhotoWriter, ReachesTheMetadataOfThumbnails) {
    const QByteArray jpeg =
        "\xFF\xD8" + jpegSegment(kJpegApp1, QByteArray("Exif\0\0", 6) + cameraBlock()).value() +
        QByteArray("\xFF\xDA\0\2PIXELS\xFF\xD9", 12);
    constexpr int kThumbnailAt = 8 + 6 + 18 + 6 + 24;
    const QByteArray block = QByteArray("II*\0", 4) + le32(8) + le16(1) + entry(0x0112, 3, 1, 6) +
                             le32(26) + QByteArray(6, '\0') + QByteArray(kThumbnailAt - 32, '\0') +
                             jpeg;
    QByteArray linked = block;
    linked.replace(26, 30,
                   le16(2) + entry(0x0201, 4, 1, kThumbnailAt) +
                       entry(0x0202, 4, 1, static_cast<int>(jpeg.size())) + le32(0));
    const auto changed = changedTiffBlock(linked, changeOf({{u"{GPS}"_s, QVariant()}}));
    ASSERT_TRUE(changed);
    EXPECT_FALSE(changed->contains("OLDLATITUDE"));
    EXPECT_TRUE(changed->contains("MAKERNOTE-12"));
    EXPECT_TRUE(changed->contains("PIXELS"));
}

TEST(PhotoWriter, EditsDocumentsOfPhotoshop) {
    const testkit::TempDir dir;
    const auto resource = [](const QByteArray& id, const QByteArray& data) {
        return "8BIM" + id + QByteArray(2, '\0') + big32(data.size()) + data +
               QByteArray(data.size() % 2, '\0');
    };
    const QByteArray block = cameraBlock(), rest = "LAYERS AND PIXELS";
    const auto document = [&](const QByteArray& resources) {
        return "8BPS" + QByteArray(22, '\1') + big32(3) + "CLR" + big32(resources.size()) +
               resources + rest;
    };
    const QByteArray name = resource("\x03\xF0", "Caption"), units = resource("\x03\xED", "UNIT");
    const QByteArray all = document(name + resource("\x04\x22", block) + units);
    const auto changed = [&](const QVariantMap& properties, bool everything = false) {
        return testkit::TempDir::read(rewritten(dir.write("a.psd", all), properties, everything));
    };
    EXPECT_EQ(changed({{u"{IPTC}"_s, QVariant()}}), all);
    const QByteArray without = changed({{u"{GPS}"_s, QVariant()}});
    EXPECT_FALSE(without.contains(QByteArray(14, '\x07')));
    EXPECT_TRUE(without.contains("Kestrel"));
    EXPECT_TRUE(without.contains(name));
    EXPECT_TRUE(without.endsWith(units + rest));
    EXPECT_EQ(changed({}, true), document(units));
    const QByteArray titled = changed({{u"{IPTC}"_s, QVariantMap{{u"ObjectName"_s, u"Title"_s}}}});
    EXPECT_TRUE(titled.contains(resource("\x04\x04", QByteArray("\x1C\2\5\0\5Title", 10))));
    const auto cut = rewritePhoto({dir.write("b.psd", all.first(40)), dir.path("c.psd"), {}});
    EXPECT_FALSE(cut);
}

TEST(PhotoWriter, EditsTheBoxesOfJpeg2000) {
    const testkit::TempDir dir;
    const auto box = [](const QByteArray& type, const QByteArray& payload) {
        return big32(payload.size() + 8) + type + payload;
    };
    const QByteArray start =
        box("jP  ", "\r\n\x87\n") + box("ftyp", "jp2 ") + box("jp2h", "HEADER");
    const QByteArray exif = box("uuid", "JpgTiffExif->JP2" + cameraBlock());
    const QByteArray geography =
        box("uuid", QByteArray::fromHex("b14bf8bd083d4b43a5ae8cd7d5a6ce03") + "PLACE");
    const QByteArray comment("\xFF\x64\0\6\0\1Me", 8), size("\xFF\x51\0\4SZ", 6);
    const QByteArray tiles = QByteArray("\xFF\x90\0\12TILES", 9);
    const QByteArray image = box("jp2c", "\xFF\x4F" + size + comment + tiles);
    const QByteArray all = start + exif + geography + image;
    const auto changed = [&](const QByteArray& bytes, const QVariantMap& properties,
                             bool everything = false) {
        return testkit::TempDir::read(rewritten(dir.write("a.jp2", bytes), properties, everything));
    };
    const QByteArray without = changed(all, {{u"{GPS}"_s, QVariant()}});
    EXPECT_TRUE(without.startsWith(start));
    EXPECT_TRUE(without.endsWith(image));
    EXPECT_TRUE(without.contains("Kestrel"));
    EXPECT_FALSE(without.contains("PLACE"));
    EXPECT_FALSE(without.contains(QByteArray(14, '\x07')));
    EXPECT_EQ(changed(all, {}, true), start + box("jp2c", "\xFF\x4F" + size + tiles));
    // A new block goes before a codestream that reaches to the end of the file.
    QByteArray open = start + image;
    open.replace(start.size(), 4, QByteArray(4, '\0'));
    const QByteArray added = changed(open, {{u"{TIFF}"_s, QVariantMap{{u"Artist"_s, u"Halla"_s}}}});
    EXPECT_TRUE(added.startsWith(start));
    EXPECT_TRUE(added.endsWith(open.mid(start.size())));
    EXPECT_LT(added.indexOf("Halla"), added.indexOf("jp2c"));
}

TEST(PhotoWriter, RemovesFromGifImagesAlone) {
    const testkit::TempDir dir;
    QByteArray magic(1, '\1');
    for (int value = 255; value >= 0; --value)
        magic += static_cast<char>(value);
    magic += '\0';
    const QByteArray head = "GIF89a" + QByteArray("\1\0\1\0\x80\0\0\0\0\0\xFF\xFF\xFF", 13);
    const QByteArray loops = "!\xFF\x0BNETSCAPE2.0" + QByteArray("\3\1\0\0\0", 5);
    const QByteArray packet = "!\xFF\x0BXMP DataXMP"
                              "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF "
                              "xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
                              "<rdf:Description xmlns:exif='http://ns.adobe.com/exif/1.0/' "
                              "exif:GPSLatitude='63,24.2N' exif:Flash='1'/></rdf:RDF></x:xmpmeta>" +
                              magic;
    const QByteArray comment("!\xFE\2Me\0", 6);
    const QByteArray image(",\0\0\0\0\1\0\1\0\0\2\2\x44\1\0;", 16);
    const QString source = dir.write("a.gif", head + loops + packet + comment + image + "TRAILER");
    const QByteArray without =
        testkit::TempDir::read(rewritten(source, {{u"{GPS}"_s, QVariant()}}));
    EXPECT_FALSE(without.contains("63,24"));
    EXPECT_TRUE(without.contains("exif:Flash"));
    EXPECT_TRUE(without.endsWith(magic + comment + image + "TRAILER"));
    EXPECT_EQ(testkit::TempDir::read(rewritten(source, {}, true)), head + loops + image);
    const auto set = rewritePhoto(
        {source, dir.path("b.gif"), {{u"{GPS}"_s, QVariantMap{{u"Latitude"_s, 1.5}}}}});
    ASSERT_FALSE(set);
    EXPECT_EQ(set.error().detail, Message(kGifHoldsNoTags));
}

TEST(PhotoWriter, NamesWhatItCannotWriteOrReach) {
    const testkit::TempDir dir;
    const auto png = rewritePhoto(
        {samplePhoto(dir, "a.png"),
         dir.path("b.png"),
         {{u"{IPTC}"_s, QVariantMap{{u"Urgency"_s, u"5"_s}, {u"City"_s, u"V\1ík"_s}}}}});
    ASSERT_TRUE(png);
    EXPECT_TRUE(textOf(*png).contains(u"Urgency"_s)) << textOf(*png);
    EXPECT_TRUE(testkit::TempDir::read(dir.path("b.png")).contains("<photoshop:City>Vík"));
    const QString motion = samplePhoto(dir, "a.jpg");
    addPacket(motion, "dc:format='image/jpeg' exif:MotionPhoto='1'>");
    const auto jpeg = rewritePhoto({motion, dir.path("b.jpg"), {{u"{GPS}"_s, QVariant()}}});
    ASSERT_TRUE(jpeg);
    EXPECT_EQ(jpeg->size(), 1);
}

TEST(PhotoWriter, LeavesNothingOfADamagedOrUnknownPhoto) {
    const testkit::TempDir dir;
    const QByteArray jpeg = testkit::TempDir::read(samplePhoto(dir, "a.jpg"));
    const QString target = dir.path("out.jpg");
    const QVariantMap properties{{u"{GPS}"_s, QVariant()}};
    for (const QByteArray& bytes : {QByteArray(), QByteArray("text"), jpeg.first(40),
                                    jpeg.first(jpeg.size() / 4).left(300)}) {
        const auto notes = rewritePhoto({dir.write("in.jpg", bytes), target, properties});
        ASSERT_FALSE(notes);
        EXPECT_FALSE(notes.error().text().contains(u"/proc"_s));
        EXPECT_FALSE(notes.error().text().contains(Message(kPhotoKindNotWritten).text()))
            << "that it is no photo";
        EXPECT_FALSE(dir.files().contains(u"out.jpg"_s));
    }
    const auto odd = rewritePhoto(
        {dir.path("a.jpg"),
         target,
         {{u"{TIFF}"_s, QVariantMap{{u"NoSuchTag"_s, 1}, {u"Orientation"_s, u"left"_s}}}}});
    ASSERT_TRUE(odd);
    EXPECT_TRUE(textOf(*odd).contains(u"NoSuchTag, Orientation"_s)) << textOf(*odd);
    EXPECT_EQ(valueIn(target, "{TIFF}", "Orientation"), 6);
}

} // namespace clipheave::platform
