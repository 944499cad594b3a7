// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/fields.h"
#include "metadata/messages.h"
#include "metadata/video_metadata.h"

#include "tests/testkit/items.h"
#include "tests/testkit/testkit.h"

#include <initializer_list>
#include <utility>

namespace {

using namespace clipheave;
using platform::AVMetadataItem;
using testkit::itemOf;

/// "identifier=text" of every item, separated by commas.
QString linesOf(const jobs::MetadataPlan& plan) {
    return testkit::itemTexts(plan.metadata).join(u", ");
}

media::VideoPane paneOf(const media::IKImageItem& source,
                        std::initializer_list<std::pair<const char*, const char*>> typed) {
    media::VideoPane pane = media::ShowVideoViewWithItem(source);
    for (const auto& [name, text] : typed)
        media::typeIntoField(pane, *media::videoField(QString::fromLatin1(name)),
                             QString::fromUtf8(text));
    return pane;
}

const QString kM4V = u"com.apple.m4v-video"_s;
const QString kMovie = u"com.apple.quicktime-movie"_s;

TEST(SavePlan, WritesOnlyWhatDiffersAndKeepsTheRest) {
    media::IKImageItem source;
    source.fileTitle = u"old"_s;
    source.fileArist = u"same"_s;
    const QList<AVMetadataItem> metadata{itemOf("itsk/%A9nam", "old"),
                                         itemOf("itsk/%A9ART", "same"),
                                         itemOf("itlk/com.apple.iTunes.X", "custom")};
    const auto plan = metadata::planVideoSave(
        paneOf(source,
               {{"title", "new"}, {"artist", "other"}, {"artist", "same"}, {"actors", "A"}}),
        metadata);
    EXPECT_EQ(linesOf(plan), u"itsk/%A9nam=new, mdta/com.apple.quicktime.performer=A, "
                             "itsk/%A9ART=same, itlk/com.apple.iTunes.X=custom");
    EXPECT_EQ(plan.outputFileType, kM4V);
}

TEST(SavePlan, AGroupWithoutItsFlagIsIgnored) {
    media::VideoPane pane = media::ShowVideoViewWithItem({});
    pane.texts.mediaTitle = u"set by no edit"_s;
    pane.texts.mediaCopyright = u"c"_s;
    pane.flags.cameraInfoChange = true;
    EXPECT_EQ(linesOf(metadata::planVideoSave(pane, {})), u"common/copyrights=c");
}

TEST(SavePlan, KeywordsAreRawBytes) {
    const auto plan = metadata::planVideoSave(paneOf({}, {{"keywords", "früh, spät"}}), {});
    ASSERT_EQ(plan.metadata.size(), 1);
    EXPECT_EQ(std::get<QByteArray>(plan.metadata[0].value), QByteArray("früh, spät"));
    EXPECT_EQ(plan.metadata[0].dataType, u"com.apple.metadata.datatype.raw-data");
    EXPECT_EQ(plan.metadata[0].extendedLanguageTag, u"und");
}

TEST(SavePlan, EveryDateItemOfTheSourceGetsTheText) {
    media::IKImageItem source;
    source.shootDateStr = u"2019-05-04 10:11:12"_s;
    const auto pane = paneOf(source, {{"recorded", "2020:01:31 10:00:00"}});
    const QList<AVMetadataItem> both{itemOf("uiso/date", "a"),
                                     itemOf("mdta/com.apple.quicktime.creationdate", "b")};
    const auto movie = metadata::planVideoSave(pane, both);
    EXPECT_EQ(linesOf(movie), u"uiso/date=2020:01:31 10:00:00, "
                              "mdta/com.apple.quicktime.creationdate=2020:01:31 10:00:00");
    EXPECT_EQ(movie.outputFileType, kMovie);
    const auto boxOnly = metadata::planVideoSave(pane, both.first(1));
    EXPECT_EQ(boxOnly.outputFileType, kM4V);
    EXPECT_EQ(linesOf(metadata::planVideoSave(pane, {})), u"uiso/date=2020:01:31 10:00:00");
    // Unchanged: the source's own items, whatever they are.
    EXPECT_EQ(metadata::planVideoSave(paneOf(source, {{"copyright", ""}}), both).outputFileType,
              kM4V);
}

TEST(SavePlan, LocationTextIsBuiltFromThePane) {
    EXPECT_EQ(metadata::locationText(u"31.2"_s, u"-121.4"_s, {}), u"+31.2-121.4+");
    EXPECT_EQ(metadata::locationText(u"-33.8688"_s, u"151.2093"_s, u"0"_s), u"-33.8688+151.2093+0");
    EXPECT_EQ(
        linesOf(metadata::planVideoSave(paneOf({}, {{"latitude", "1"}, {"longitude", "-2"}}), {})),
        u"uiso/loci=+1-2+");
    // Half a position is none, and an untouched one stays the source's own.
    EXPECT_TRUE(metadata::planVideoSave(paneOf({}, {{"latitude", "1"}}), {}).metadata.isEmpty());
    media::IKImageItem placed;
    placed.latitudeFormat = placed.longtitudeFormat = placed.AtitudeFormat = u"-"_s;
    placed.filelatitude = placed.filelongtitude = placed.fileAtitude = 1.5;
    const auto untouched = metadata::planVideoSave(
        paneOf(placed, {{"title", "t"}}), {itemOf("uiso/loci", "-01.5000-001.5000-001.500/")});
    EXPECT_EQ(linesOf(untouched), u"itsk/%A9nam=t, uiso/loci=-01.5000-001.5000-001.500/");
}

TEST(SavePlan, APositionIsANumberInRange) {
    const struct {
        const char *latitude, *longitude, *altitude, *text;
    } typed[] = {
        {"+31.2", "+121.4", "+5", "+31.2+121.4+5"},
        {"1e-5", "-1.5E2", "1e1", "+0.00001-150+10"},
        {" 63,4043 ", "\u22122,5", "-0,5", "+63.4043-2.5-0.5"},
        {"-90.", ".5", "", "-90+0.5+"},
        {"31.20", "007.5", "0", "+31.20+007.5+0"}, // as typed
    };
    for (const auto& [latitude, longitude, altitude, text] : typed) {
        const auto pane =
            paneOf({}, {{"latitude", latitude}, {"longitude", longitude}, {"altitude", altitude}});
        EXPECT_FALSE(metadata::savedPositionFault(pane)) << text;
        EXPECT_EQ(linesOf(metadata::planVideoSave(pane, {})),
                  u"uiso/loci="_s + QLatin1String(text));
    }
    for (const char* latitude : {"nan", "90.1", "--1", "1-2", "1.2.3", "5 N", "+", "1e999", "0x10"})
        EXPECT_EQ(
            metadata::savedPositionFault(paneOf({}, {{"latitude", latitude}, {"longitude", "1"}})),
            platform::Message(metadata::kLatitudeNotInRange, {QString::fromUtf8(latitude)}));
    media::IKImageItem tiny; // a position as stored is shown without an exponent
    tiny.latitudeFormat = tiny.longtitudeFormat = tiny.AtitudeFormat = u"+"_s;
    tiny.filelatitude = 1e-5;
    EXPECT_EQ(linesOf(metadata::planVideoSave(paneOf(tiny, {{"longitude", "7"}}), {})),
              u"uiso/loci=+0.00001+7+0");
    EXPECT_FALSE(metadata::dropsPosition(paneOf(tiny, {{"longitude", "7"}})));
    EXPECT_TRUE(metadata::dropsPosition(paneOf(tiny, {{"longitude", ""}})));
    EXPECT_TRUE(metadata::dropsPosition(paneOf({}, {{"altitude", "7"}})));
    tiny.filelatitude = 500; // nor is one refused that stays as it is
    EXPECT_FALSE(metadata::savedPositionFault(paneOf(tiny, {{"title", "t"}})));
}

} // namespace
