// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/media_import.h"
#include "photo/messages.h"
#include "photo/photo_lists.h"
#include "platform/foundation/file_manager.h"
#include "platform/plist/property_list.h"
#include "tests/testkit/media.h"

#include <QDateTime>
#include <QTimeZone>

namespace clipheave::photo {

namespace {

constexpr PhotoList kLists[] = {PhotoList::Tiff,       PhotoList::Exif,     PhotoList::ExifAndTiff,
                                PhotoList::ExifAndGps, PhotoList::Template, PhotoList::AllMetadata};

const QVariantMap kTiff{{u"Artist"_s, u"Ärtist"_s}, {u"Make"_s, u"M"_s}, {u"XResolution"_s, 72}};
const QVariantMap kExif{{u"DateTimeDigitized"_s, u"2019:05:04 10:11:12"_s},
                        {u"FNumber"_s, 2.8},
                        {u"ISOSpeedRatings"_s, QVariantList{200}},
                        {u"UserComment"_s, u"c"_s}};
const QVariantMap kGps{{u"GPSVersion"_s, u"2.2.0.0"_s},  {u"Latitude"_s, 33.5},
                       {u"LatitudeRef"_s, u"S"_s},       {u"Longitude"_s, 70.25},
                       {u"LongitudeRef"_s, u"W"_s},      {u"Altitude"_s, 10.0},
                       {u"AltitudeRef"_s, u"1"_s},       {u"TimeStamp"_s, u"09:32:02.500000"_s},
                       {u"DateStamp"_s, u"2019:05:04"_s}};
const QVariantMap kIptc{{u"Keywords"_s, QVariantList{u"a"_s, u"b, c"_s}},
                        {u"ObjectName"_s, u"t"_s}};

QVariantMap photoProperties() {
    QVariantMap exif = kExif, tiff = kTiff;
    exif.insert(u"PixelXDimension"_s, 64);
    tiff.insert(u"Orientation"_s, 6);
    return {{u"PixelWidth"_s, 64}, {u"Orientation"_s, 6}, {u"{TIFF}"_s, tiff},
            {u"{Exif}"_s, exif},   {u"{GPS}"_s, kGps},    {u"{IPTC}"_s, kIptc}};
}

/// The entries of these names.
QVariantMap only(const QVariantMap& map, const QStringList& names) {
    QVariantMap kept;
    for (const QString& name : names)
        kept.insert(name, map.value(name));
    return kept;
}

/// What a photo is to get from a list with one entry in a dictionary.
QVariant imported(const char* dictionary, const char* key, const QVariant& value) {
    const QString name = QString::fromLatin1(key), block = QString::fromLatin1(dictionary);
    const auto flat = propertiesFromPlist(QVariantMap{{name, value}});
    const auto inBlock = propertiesFromPlist(QVariantMap{{block, QVariantMap{{name, value}}}});
    EXPECT_EQ(flat.has_value(), inBlock.has_value()) << key;
    if (!flat || !inBlock)
        return {};
    EXPECT_EQ(flat->properties, inBlock->properties) << key;
    return flat->properties.value(block).toMap().value(name);
}

} // namespace

TEST(PhotoListContent, HoldsTheDictionariesFlatAndPositionsWithTheirSign) {
    const QVariantMap properties = photoProperties();
    const QVariantMap both = contentOf(PhotoList::ExifAndGps, properties);
    EXPECT_EQ(both.size(), kExif.size() + 1 + kGps.size());
    EXPECT_EQ(both.value(u"Latitude"_s), QVariant(-33.5));
    EXPECT_EQ(both.value(u"Longitude"_s), QVariant(-70.25));
    EXPECT_EQ(both.value(u"Altitude"_s), QVariant(-10.0));
    EXPECT_EQ(both.value(u"LatitudeRef"_s), QVariant(u"S"_s));
    EXPECT_EQ(contentOf(PhotoList::ExifAndTiff, properties).size(),
              kExif.size() + kTiff.size() + 2);
    EXPECT_EQ(contentOf(PhotoList::AllMetadata, properties).keys(), properties.keys());
    EXPECT_EQ(contentOf(PhotoList::Template, properties).keys().join(u' '),
              u"Altitude Artist DateStamp DateTimeDigitized Keywords Latitude LatitudeRef "
              "Longitude LongitudeRef Make ObjectName TimeStamp UserComment");
    EXPECT_TRUE(contentOf(PhotoList::Tiff, {{u"{Exif}"_s, kExif}}).isEmpty());
}

TEST(PhotoListContent, EveryListGivesBackWhatTheListHad) {
    const QVariantMap templateTiff = only(kTiff, {u"Artist"_s, u"Make"_s});
    const QVariantMap templateExif = only(kExif, {u"DateTimeDigitized"_s, u"UserComment"_s});
    const QVariantMap expected[] = {
        {{u"{TIFF}"_s, kTiff}},
        {{u"{Exif}"_s, kExif}},
        {{u"{TIFF}"_s, kTiff}, {u"{Exif}"_s, kExif}},
        {{u"{Exif}"_s, kExif}, {u"{GPS}"_s, kGps}},
        {{u"{TIFF}"_s, templateTiff},
         {u"{Exif}"_s, templateExif},
         {u"{GPS}"_s, kGps},
         {u"{IPTC}"_s, kIptc}},
        {{u"{TIFF}"_s, kTiff}, {u"{Exif}"_s, kExif}, {u"{GPS}"_s, kGps}, {u"{IPTC}"_s, kIptc}},
    };
    for (const PhotoList list : kLists) {
        const auto xml = platform::dataWithPropertyList(contentOf(list, photoProperties()));
        ASSERT_TRUE(xml) << xml.error().text();
        const auto read = propertiesFromPlist(platform::propertyListWithData(*xml).value());
        ASSERT_TRUE(read) << read.error().text();
        EXPECT_EQ(read->properties, expected[static_cast<int>(list)]) << fileNameOf(list);
    }
    const auto all = propertiesFromPlist(contentOf(PhotoList::AllMetadata, photoProperties()));
    EXPECT_EQ(all->notes, platform::Notes{platform::Message(kListKeysOfImage,
                                                            {u"Orientation, PixelXDimension"_s})});
}

TEST(PhotoListContent, ConvertsWhatHasAPlainMeaning) {
    const QDateTime date(QDate(2019, 5, 4), QTime(10, 11, 12), QTimeZone::utc());
    const struct {
        const char *dictionary, *key;
        QVariant value, expected;
    } cases[] = {
        {"{Exif}", "FNumber", u" 2.8 "_s, 2.8},
        {"{Exif}", "FNumber", u"f/2.8"_s, {}},
        {"{Exif}", "FNumber", QVariantList{4}, 4},
        {"{Exif}", "FNumber", qInf(), {}},
        {"{Exif}", "FNumber", QVariantMap{}, {}},
        {"{Exif}", "ISOSpeedRatings", u"200"_s, QVariantList{200}},
        {"{Exif}", "ISOSpeedRatings", QVariantList{100, u"x"_s}, {}},
        {"{Exif}", "DateTimeOriginal", date, u"2019:05:04 10:11:12"_s},
        {"{Exif}", "DateTimeOriginal", u"2019-05-04 10:11:12"_s, u"2019:05:04 10:11:12"_s},
        {"{Exif}", "DateTimeOriginal", u"2019:02:30 10:11:12"_s, {}},
        {"{Exif}", "UserComment", QByteArray("Gr\xC3\xBC\xC3\x9F"), u"Grüß"_s},
        {"{Exif}", "UserComment", QByteArray("\xFF\0"), {}},
        {"{TIFF}", "Artist", 7, u"7"_s},
        {"{TIFF}", "Artist", true, {}},
        {"{TIFF}", "Orientation", 6, {}},
        {"{GPS}", "DateStamp", date, u"2019:05:04"_s},
        {"{GPS}", "TimeStamp", date, u"10:11:12"_s},
        {"{GPS}", "TimeStamp", u"24:00:00"_s, {}},
        {"{GPS}", "Latitude", u"-33.5"_s, 33.5},
        {"{GPS}", "Latitude", 90.1, {}},
        {"{GPS}", "Longitude", -180, 180.0},
        {"{IPTC}", "Keywords", u"a, b"_s, QVariantList{u"a, b"_s}},
        {"{IPTC}", "Unknown", 1, {}},
    };
    for (const auto& [dictionary, key, value, expected] : cases)
        EXPECT_EQ(imported(dictionary, key, value), expected) << key << ' ' << value.toString();
}

TEST(PhotoListContent, SignsAndLettersBecomeAbsoluteNumbersWithLetters) {
    const auto place = [](const QVariantMap& list) {
        const QVariantMap gps = propertiesFromPlist(list)->properties.value(u"{GPS}"_s).toMap();
        QStringList texts;
        for (const QVariant& value : gps)
            texts += value.toString();
        return texts.join(u' ');
    };
    EXPECT_EQ(place({{u"Altitude"_s, -10}, {u"Latitude"_s, -1}, {u"LatitudeRef"_s, u"N"_s}}),
              u"10 1 2.2.0.0 1 S");
    EXPECT_EQ(place({{u"Altitude"_s, 10},
                     {u"AltitudeRef"_s, 1},
                     {u"Longitude"_s, 1},
                     {u"LongitudeRef"_s, u"W"_s}}),
              u"10 1 2.2.0.0 1 W");
    EXPECT_EQ(place({{u"Altitude"_s, 0}, {u"Latitude"_s, 0}, {u"Longitude"_s, 180}}),
              u"0 0 2.2.0.0 0 N 180 E");
}

TEST(PhotoListContent, RefusesListsWithoutUse) {
    EXPECT_EQ(propertiesFromPlist(QVariantList{1}).error().detail, kListIsNoDictionary);
    EXPECT_EQ(propertiesFromPlist(u"x"_s).error().detail, kListIsNoDictionary);
    EXPECT_EQ(propertiesFromPlist(QVariantMap{{u"Title"_s, u"t"_s}}).error().detail,
              kListHasNoPhotoKeys);
    const auto some =
        propertiesFromPlist(QVariantMap{{u"Make"_s, u"m"_s}, {u"Title"_s, 1}, {u"{GPS}"_s, 2}});
    EXPECT_EQ(some->notes,
              platform::Notes{platform::Message(kListKeysLeftOut, {u"Title, {GPS}"_s})});
}

namespace {

class PhotoListJobs : public testing::Test {
protected:
    void SetUp() override {
        SKIP_WITHOUT("exiftool");
        SKIP_WITHOUT("ffmpeg");
        for (const char* name : {"one/a.jpg", "two/a.jpg", "plain.png"})
            testkit::ffmpeg("-f lavfi -i testsrc2=s=16x16 -frames:v 1 -y", {m_dir.write(name, {})});
        testkit::exiftool(
            "-q -overwrite_original -Artist=First -n -GPSLatitude=-33.5 -GPSLatitudeRef=S",
            {m_dir.path("one/a.jpg")});
        testkit::exiftool("-q -overwrite_original -Artist=Second", {m_dir.path("two/a.jpg")});
        m_dir.write("text.jpg", "no photo");
        media::MediaImport import;
        for (const char* name : {"one/a.jpg", "two/a.jpg", "plain.png"})
            import.importPhotos({m_dir.path(name)});
        m_request = {import.localPhotoItemArray(), {m_dir.path("out"), false, {}}};
        ASSERT_EQ(m_request.items.size(), 3u);
    }
    using Export = void (PhotoLists::*)(const PhotoRequest& request);
    QStringList exported(Export write) { return outcomesOf(listOrder(write, m_request)); }
    /// The outcomes in the order of the items, each "status outputs notes".
    static QStringList outcomesOf(const jobs::RunOrder& order) {
        const auto run = jobs::Run::create(order, order.allItems());
        run->paths().protect(order.sources);
        run->perform();
        EXPECT_TRUE(run->waitForEnd(std::chrono::seconds(60)));
        QStringList all;
        for (const jobs::WriteOutcome& outcome : run->outcomes()) {
            QStringList names;
            for (const QString& output : outcome.outputs)
                names += output.section(u'/', -1);
            all += u"%1 %2 %3"_s.arg(static_cast<int>(outcome.status))
                       .arg(names.join(u' '), outcome.text());
        }
        return all;
    }
    QVariantMap written(const char* name) {
        return platform::propertyListWithContentsOfFile(m_dir.path("out") + u'/' +
                                                        QLatin1String(name))
            .value()
            .toMap();
    }

    testkit::TempDir m_dir;
    PhotoRequest m_request;
};

} // namespace

TEST_F(PhotoListJobs, TheLastPhotoWinsTheOneFile) {
    const auto outcomes = exported(&PhotoLists::ExportTiffInfoToPlist);
    EXPECT_EQ(outcomes, (QStringList{u"0  list of another photo: a.jpg"_s,
                                     u"0 ExportTiffInfo.plist "_s, u"3  nothing for list"_s}));
    EXPECT_EQ(written("ExportTiffInfo.plist").value(u"Artist"_s), QVariant(u"Second"_s));
    exported(&PhotoLists::ExportExifandGPSInfoToPlist);
    EXPECT_EQ(written("ExportExifandGPSInfo.plist").value(u"Latitude"_s), QVariant(-33.5));
}

TEST_F(PhotoListJobs, PhotosOfOneNameGetAFileEach) {
    const auto outcomes = exported(&PhotoLists::WriteSelectedItemsExifDataToPlist);
    EXPECT_EQ(outcomes,
              (QStringList{u"0 a.jpg.plist "_s, u"0 a.jpg 2.plist "_s, u"0 plain.png.plist "_s}));
    EXPECT_EQ(written("a.jpg 2.plist").value(u"{TIFF}"_s).toMap().value(u"Artist"_s),
              QVariant(u"Second"_s));
}

TEST_F(PhotoListJobs, ImportWritesCopiesWithTheDatesOfThePhotos) {
    const auto rewrite = [](const QString& source, const QString& target,
                            const QVariantMap& properties) -> platform::Result<platform::Notes> {
        EXPECT_EQ(properties, (QVariantMap{{u"{TIFF}"_s, QVariantMap{{u"Artist"_s, u"New"_s}}}}));
        const auto copied = platform::NSFileManager::defaultManager().copyItem(
            source, target, platform::NSFileManager::IfExists::Replace);
        return copied ? platform::Notes()
                      : platform::Result<platform::Notes>(tl::unexpected(copied.error()));
    };
    const QDateTime date = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    const auto& files = platform::NSFileManager::defaultManager();
    ASSERT_TRUE(files.setAttributes(m_request.items[1]->filePath, date, date));
    const auto importing = [&](const QString& plist) {
        return outcomesOf(importOrder(plist, rewrite, m_request));
    };
    const QString plist = m_dir.write(
        "a.plist",
        "<plist><dict><key>Artist</key><string>New</string><key>x</key><true/></dict></plist>");
    EXPECT_EQ(importing(plist), (QStringList{u"0 a.jpg list keys left out: x"_s, u"0 a 2.jpg "_s,
                                             u"0 plain.png "_s}));
    EXPECT_EQ(files.attributesOfItemAtPath(m_dir.path("out/a 2.jpg"))->NSFileModificationDate,
              date);
    const QString array = m_dir.write("b.plist", "<plist><array/></plist>");
    for (const QString& outcome : importing(array))
        EXPECT_THAT(outcome.toStdString(), testing::StartsWith("1  list is no dictionary"));
}

} // namespace clipheave::photo
