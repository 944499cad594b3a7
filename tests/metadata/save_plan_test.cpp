// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/fields.h"
#include "metadata/video_metadata.h"

#include "tests/testkit/testkit.h"

namespace {

using namespace clipheave;
using platform::AVMetadataItem;

AVMetadataItem item(const char* identifier, const char* value) {
    const QString id = QString::fromLatin1(identifier);
    const qsizetype slash = id.indexOf(u'/');
    return AVMetadataItem::make(id.left(slash), id.mid(slash + 1), id, QString::fromUtf8(value));
}

/// "identifier=value" a line.
QStringList linesOf(const jobs::MetadataPlan& plan) {
    QStringList lines;
    for (const AVMetadataItem& one : plan.metadata)
        lines.append(one.effectiveIdentifier() + u'=' + one.stringValue());
    return lines;
}

media::VideoPane paneOf(const media::IKImageItem& source,
                        std::initializer_list<std::pair<const char*, const char*>> typed) {
    media::VideoPane pane = media::ShowVideoViewWithItem(source);
    for (const auto& [name, text] : typed)
        media::typeIntoField(pane, *media::videoField(QString::fromLatin1(name)),
                             QString::fromUtf8(text));
    return pane;
}

const QString kM4V = QStringLiteral("com.apple.m4v-video");
const QString kMovie = QStringLiteral("com.apple.quicktime-movie");

TEST(SavePlan, WritesOnlyWhatDiffersAndKeepsTheRest) {
    media::IKImageItem source;
    source.fileTitle = QStringLiteral("old");
    source.fileArist = QStringLiteral("same");
    const QList<AVMetadataItem> metadata{item("itsk/%A9nam", "old"), item("itsk/%A9ART", "same"),
                                         item("itlk/com.apple.iTunes.X", "custom")};
    const auto plan = metadata::planVideoSave(
        paneOf(source,
               {{"title", "new"}, {"artist", "other"}, {"artist", "same"}, {"actors", "A"}}),
        metadata);
    EXPECT_EQ(linesOf(plan), (QStringList{QStringLiteral("itsk/%A9nam=new"),
                                          QStringLiteral("mdta/com.apple.quicktime.performer=A"),
                                          QStringLiteral("itsk/%A9ART=same"),
                                          QStringLiteral("itlk/com.apple.iTunes.X=custom")}));
    EXPECT_EQ(plan.outputFileType, kM4V);
}

TEST(SavePlan, AGroupWithoutItsFlagIsNotLookedAt) {
    media::VideoPane pane = media::ShowVideoViewWithItem({});
    pane.texts.mediaTitle = QStringLiteral("set by no edit");
    pane.texts.mediaCopyright = QStringLiteral("c");
    pane.flags.cameraInfoChange = true;
    EXPECT_EQ(linesOf(metadata::planVideoSave(pane, {})),
              QStringList{QStringLiteral("common/copyrights=c")});
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
    source.shootDateStr = QStringLiteral("2019-05-04 10:11:12");
    const auto pane = paneOf(source, {{"recorded", "2020:01:31 10:00:00"}});
    const QList<AVMetadataItem> both{item("uiso/date", "a"),
                                     item("mdta/com.apple.quicktime.creationdate", "b")};
    const auto movie = metadata::planVideoSave(pane, both);
    EXPECT_EQ(
        linesOf(movie),
        (QStringList{QStringLiteral("uiso/date=2020:01:31 10:00:00"),
                     QStringLiteral("mdta/com.apple.quicktime.creationdate=2020:01:31 10:00:00")}));
    EXPECT_EQ(movie.outputFileType, kMovie);
    const auto boxOnly = metadata::planVideoSave(pane, both.first(1));
    EXPECT_EQ(boxOnly.outputFileType, kM4V);
    EXPECT_EQ(linesOf(metadata::planVideoSave(pane, {})),
              QStringList{QStringLiteral("uiso/date=2020:01:31 10:00:00")});
    // Unchanged: the source's own items, whatever they are.
    EXPECT_EQ(metadata::planVideoSave(paneOf(source, {{"copyright", ""}}), both).outputFileType,
              kM4V);
}

TEST(SavePlan, LocationTextIsBuiltFromThePane) {
    EXPECT_EQ(metadata::locationText(QStringLiteral("31.2"), QStringLiteral("-121.4"), {}),
              u"+31.2-121.4+");
    EXPECT_EQ(metadata::locationText(QStringLiteral("-33.8688"), QStringLiteral("151.2093"),
                                     QStringLiteral("0")),
              u"-33.8688+151.2093+0");
    EXPECT_EQ(
        linesOf(metadata::planVideoSave(paneOf({}, {{"latitude", "1"}, {"longitude", "-2"}}), {})),
        QStringList{QStringLiteral("uiso/loci=+1-2+")});
    // Half a position is none, and an untouched one stays the source's own.
    EXPECT_TRUE(metadata::planVideoSave(paneOf({}, {{"latitude", "1"}}), {}).metadata.isEmpty());
    media::IKImageItem placed;
    placed.latitudeFormat = placed.longtitudeFormat = placed.AtitudeFormat = QStringLiteral("-");
    placed.filelatitude = placed.filelongtitude = placed.fileAtitude = 1.5;
    const auto untouched = metadata::planVideoSave(
        paneOf(placed, {{"title", "t"}}), {item("uiso/loci", "-01.5000-001.5000-001.500/")});
    EXPECT_EQ(linesOf(untouched),
              (QStringList{QStringLiteral("itsk/%A9nam=t"),
                           QStringLiteral("uiso/loci=-01.5000-001.5000-001.500/")}));
}

} // namespace
