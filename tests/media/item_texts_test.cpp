// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/fields.h"
#include "media/item_texts.h"
#include "media/video_pane.h"

#include "media/metadata_walk.h"
#include "tests/testkit/items.h"
#include "tests/testkit/testkit.h"

namespace {

using namespace clipheave::media;
using clipheave::platform::AVMetadataItem;
using testkit::itemOf;

struct Position {
    QString signs;
    double latitude, longitude, altitude;
    friend bool operator==(const Position&, const Position&) = default;
    friend void PrintTo(const Position& p, std::ostream* out) {
        *out << p.signs << ' ' << p.latitude << ' ' << p.longitude << ' ' << p.altitude;
    }
};

Position positionOf(const char* text) {
    IKImageItem item;
    applyLocationText(item, QString::fromLatin1(text));
    return {item.latitudeFormat + item.longtitudeFormat + item.AtitudeFormat, item.filelatitude,
            item.filelongtitude, item.fileAtitude};
}

TEST(LocationText, NeedsThreeSignsForALongitude) {
    EXPECT_EQ(positionOf("+37.3349-122.0090+010.000/"), (Position{u"+-+"_s, 37.3349, 122.009, 10}));
    EXPECT_EQ(positionOf("-33.9+151.2-003.5/"), (Position{u"-+-"_s, 33.9, 151.2, 3.5}));
    EXPECT_EQ(positionOf("+48.8583+002.2945/"), (Position{u"++"_s, 48.8583, 0, 0}));
    EXPECT_EQ(positionOf("+31.2-121.4+"), (Position{u"+-+"_s, 31.2, 121.4, 0}));
    EXPECT_EQ(positionOf(""), (Position{{}, 0, 0, 0}));
    EXPECT_EQ(positionOf("nowhere"), (Position{{}, 0, 0, 0}));
}

TEST(LocationText, IsTakenWholeOrNotAtAll) {
    IKImageItem item;
    applyLocationText(item, u"+48.8583+002.2945/");
    applyLocationText(item, u"+63.4-019.1+012.3/");
    applyLocationText(item, u"-10.5+010.5/"); // gives no longitude
    EXPECT_EQ(item.latitudeFormat + item.longtitudeFormat, u"+-");
    EXPECT_EQ(item.filelatitude, 63.4);
    applyLocationText(item, u"-1.5+2.5+/");
    EXPECT_EQ(item.latitudeFormat + item.longtitudeFormat, u"-+");
    EXPECT_EQ(item.fileAtitude, 0);
}

TEST(LocationText, WithoutALongitudeLeavesItsFieldEmpty) {
    IKImageItem item;
    item.fileType = u"Movie"_s;
    applyLocationText(item, u"+48.8583+002.2945/");
    EXPECT_TRUE(ShowVideoViewWithItem(item).texts.mediaLongtitude.isEmpty());
    applyLocationText(item, u"+51.4778+000.0000+10/");
    EXPECT_EQ(ShowVideoViewWithItem(item).texts.mediaLongtitude, u"0");
}

QString dateOf(const char* text, SecondsCut cut = SecondsCut::TwoDigits) {
    IKImageItem item;
    applyShootDateText(item, QString::fromLatin1(text), cut);
    return item.shootDateStr +
           (item.shootDate.isValid() ? u" = "_s + item.shootDate.toString(Qt::ISODate) : QString());
}

TEST(ShootDateText, DropsZonesAndKeepsTheLocalClock) {
    const QString parsed = u"2019-05-04 10:11:12 = 2019-05-04T10:11:12"_s;
    EXPECT_EQ(dateOf("2019-05-04T10:11:12+0200"), parsed);
    EXPECT_EQ(dateOf("2019-05-04T10:11:12-0700"), parsed);
    EXPECT_EQ(dateOf("2019-05-04T10:11:12Z"), parsed);
    EXPECT_EQ(dateOf("2019-05-04 10:11:12.345"), parsed);
    EXPECT_EQ(dateOf("2019:05:04 10:11:12"), u"2019:05:04 10:11:12 = 2019-05-04T10:11:12");
    EXPECT_EQ(dateOf("2019"), u"2019");
    EXPECT_EQ(dateOf("May 2019+x"), u"May 2019");
    // The WAV reader leaves the seconds as they are, so this one does not parse.
    EXPECT_EQ(dateOf("2019-05-04T10:11:12Z", SecondsCut::AsTheyAre), u"2019-05-04 10:11:12Z");
}

TEST(MetadataWalk, TakesTheLastItemOfAField) {
    IKImageItem item;
    applyMetadata(item,
                  {itemOf("itsk/%A9des", "list"), itemOf("uiso/dscp", "box"),
                   itemOf("mdta/com.apple.quicktime.description", "key"),
                   itemOf("itsk/%A9xyz", "?"), itemOf("itsk/%A9nam", "")},
                  WalkTable::Video);
    EXPECT_EQ(item.fileDescription, u"key");
    EXPECT_TRUE(item.fileTitle.isNull());
}

TEST(MetadataWalk, ReadsLessOfAVideoInAFolder) {
    const QList<AVMetadataItem> metadata{
        itemOf("udta/%A9mak", "maker"), itemOf("udta/%A9mod", "model"),
        itemOf("uiso/dscp", "words"), itemOf("mdta/com.apple.proapps.manufacturer", "suite")};
    IKImageItem single, inFolder;
    applyMetadata(single, metadata, WalkTable::Video);
    applyMetadata(inFolder, metadata, WalkTable::VideoInFolder);
    EXPECT_EQ(single.fileMake, u"maker");
    EXPECT_EQ(single.fileModel, u"model");
    EXPECT_EQ(single.fileDescription, u"words");
    EXPECT_EQ(single.fileproducer, u"suite");
    EXPECT_TRUE(inFolder.fileMake.isNull() && inFolder.fileModel.isNull() &&
                inFolder.fileDescription.isNull() && inFolder.fileproducer.isNull());
}

TEST(MetadataWalk, PutsTheTrackNumberIntoTheAlbumArtist) {
    IKImageItem item;
    applyMetadata(item,
                  {itemOf(u"itsk/trkn"_s, QByteArray("\0\0\0\7\0\13\0\0", 8)),
                   itemOf("id3/TPE2", "band"), itemOf("caaf/info-title", "only AIFF")},
                  WalkTable::Audio);
    EXPECT_EQ(item.fileAlbumArist, u"7/11");
    EXPECT_EQ(item.fileBand, u"band");
    EXPECT_TRUE(item.fileTitle.isNull());
}

TEST(VideoPane, RemembersWhatItShowsAndFlagsWhatIsTyped) {
    IKImageItem item;
    item.fileTitle = u"t"_s;
    item.latitudeFormat = u"-"_s;
    item.filelatitude = 33.9;
    VideoPane pane = ShowVideoViewWithItem(item);
    EXPECT_EQ(pane.texts.mediaTitle, pane.shown.oldMovieTitle);
    EXPECT_FALSE(pane.texts.mediaAlumArtis.isNull()); // missing shows as empty
    EXPECT_EQ(pane.texts.mediaLatitude, u"-33.9");
    EXPECT_TRUE(pane.texts.mediaLongtitude.isEmpty());
    EXPECT_EQ(videoField(u"fileTitle"_s), videoField(u"title"_s));
    EXPECT_EQ(videoField(u"subtitle"_s), nullptr);
    typeIntoField(pane, *videoField(u"altitude"_s), u"5"_s);
    EXPECT_FALSE(pane.flags.basicInfoChange || pane.flags.cameraInfoChange ||
                 pane.flags.gpsInfoChange);
    typeIntoField(pane, *videoField(u"recorded"_s), u"x"_s);
    EXPECT_TRUE(pane.flags.cameraInfoChange && !pane.flags.basicInfoChange);
}

} // namespace
