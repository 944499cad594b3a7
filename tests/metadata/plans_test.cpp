// SPDX-License-Identifier: GPL-3.0-or-later
#include "jobs/output_paths.h"
#include "metadata/video_plans.h"

#include "tests/testkit/testkit.h"

#include <unistd.h>

namespace {

using namespace clipheave;
using platform::AVMetadataItem;

AVMetadataItem sourceItem(const char* identifier, const char* value) {
    const QString id = QString::fromLatin1(identifier);
    const qsizetype slash = id.indexOf(u'/');
    return AVMetadataItem::make(id.left(slash), id.mid(slash + 1), id, QString::fromUtf8(value));
}

QStringList shown(const jobs::MetadataPlan& plan) {
    QStringList lines;
    for (const AVMetadataItem& one : plan.metadata)
        lines.append(one.effectiveIdentifier() + u'=' + one.stringValue());
    return lines;
}

const QString kQuickTime = QStringLiteral("com.apple.quicktime-movie");

TEST(RemovalPlan, BlanksWhatTheRecordHoldsInTheFixedOrder) {
    media::IKImageItem full;
    full.fileTitle = full.fileAblumName = full.fileArist = full.fileDirector = full.fileActor =
        full.fileproducer = full.filePublisher = full.fileCopyright = full.fileKeyWords =
            full.fileDescription = full.shootDateStr = QStringLiteral("x");
    full.filelatitude = full.filelongtitude = 1;
    full.fileImage = platform::EncodedImage::fromBytes("GIF89a" + testkit::le(1, 2) +
                                                       testkit::le(1, 2) + QByteArray(20, 0));
    const auto plan = metadata::planVideoRemoval(full);
    EXPECT_EQ(shown(plan),
              (QStringList{QStringLiteral("itsk/%A9nam="), QStringLiteral("itsk/%A9alb="),
                           QStringLiteral("itsk/%A9ART="),
                           QStringLiteral("mdta/com.apple.quicktime.director="),
                           QStringLiteral("mdta/com.apple.quicktime.performer="),
                           QStringLiteral("mdta/com.apple.quicktime.producer="),
                           QStringLiteral("common/publisher="),
                           QStringLiteral("common/copyrights="), QStringLiteral("uiso/kywd="),
                           QStringLiteral("common/description="), QStringLiteral("uiso/date="),
                           QStringLiteral("uiso/loci="), QStringLiteral("common/artwork=")}));
    EXPECT_EQ(plan.outputFileType, u"com.apple.m4v-video");
    EXPECT_TRUE(metadata::planVideoRemoval({}).metadata.isEmpty());
}

TEST(RemovalPlan, OnlyPositionsNorthAndEastAreBlanked) {
    const auto blanks = [](const char* latitudeSign, double latitude, const char* longitudeSign,
                           double longitude) {
        media::IKImageItem item;
        item.latitudeFormat = QString::fromLatin1(latitudeSign);
        item.longtitudeFormat = QString::fromLatin1(longitudeSign);
        item.filelatitude = latitude;
        item.filelongtitude = longitude;
        return !metadata::planVideoRemoval(item).metadata.isEmpty();
    };
    EXPECT_TRUE(blanks("+", 31.2, "+", 121.4));
    EXPECT_FALSE(blanks("-", 33.9, "+", 151.2));
    EXPECT_FALSE(blanks("+", 63.4, "-", 19));
    EXPECT_FALSE(blanks("+", 0, "+", 10));
    EXPECT_FALSE(blanks("+", 10, "+", 0));
}

TEST(ReplacementPlans, PutTheTextInThePlaceOfEveryOldOne) {
    const QList<AVMetadataItem> source{
        sourceItem("id3/TIT2", "a"), sourceItem("uiso/date", "d"), sourceItem("itsk/%A9ART", "b"),
        sourceItem("itsk/%A9nam", "c"), sourceItem("mdta/com.apple.quicktime.creationdate", "e")};
    const auto title = metadata::planVideoTitle(QStringLiteral("clip"), source);
    EXPECT_EQ(shown(title),
              (QStringList{QStringLiteral("itsk/%A9nam=clip"), QStringLiteral("uiso/date=d"),
                           QStringLiteral("itsk/%A9ART=b"), QStringLiteral("itsk/%A9nam=clip"),
                           QStringLiteral("mdta/com.apple.quicktime.creationdate=e")}));
    EXPECT_EQ(title.outputFileType, kQuickTime);
    const auto date = metadata::planVideoDate(QStringLiteral("2020:01:31 10:00:00"), source);
    const QString dateLine = QStringLiteral("uiso/date=2020:01:31 10:00:00");
    EXPECT_EQ(shown(date),
              (QStringList{QStringLiteral("id3/TIT2=a"), dateLine, QStringLiteral("itsk/%A9ART=b"),
                           QStringLiteral("itsk/%A9nam=c"), dateLine}));
    EXPECT_EQ(date.outputFileType, kQuickTime);
    EXPECT_EQ(shown(metadata::planVideoDate(QStringLiteral("t"), {})),
              QStringList{QStringLiteral("uiso/date=t")});
    EXPECT_EQ(shown(metadata::planVideoTitle({}, source)).size(), source.size());
    EXPECT_TRUE(shown(metadata::planVideoDate({}, source)).contains(QStringLiteral("uiso/date=d")));
}

jobs::WriteRequest requestFor(const QString& path, const QString& imported) {
    jobs::WriteRequest request;
    request.item = media::changedCopy({}, [&path](auto& item) {
        item.filePath = path;
        item.fileName = path.section(u'/', -1);
    });
    request.settings.storagelocation = QStringLiteral("/s/out");
    request.settings.bImportLocalFolder = !imported.isNull();
    request.settings.bImportLocalPath = imported;
    return request;
}

TEST(OutputPathRules, MirrorTheImportedFolderAndStayInside) {
    const auto mirrored = [](const char* path, const char* imported) {
        return jobs::mirroredOutputPath(
            requestFor(QString::fromUtf8(path), QString::fromUtf8(imported)));
    };
    EXPECT_EQ(mirrored("/m/lib/a/x.mp4", "/m"), u"/s/out/lib/a/x.mp4");
    EXPECT_EQ(mirrored("/m/lib/m/y/x.mp4", "/m"), u"/s/out/lib/y/x.mp4"); // every occurrence
    EXPECT_EQ(mirrored("/m/lib/a/x.mp4", nullptr), u"/s/out/x.mp4");
    EXPECT_EQ(mirrored("/other/x.mp4", "/m"), u"/s/out/other/x.mp4");
    EXPECT_EQ(mirrored("/lib/x.mp4", "/"), u"/s/out/lib/x.mp4");
    EXPECT_EQ(mirrored("/m/../../x.mp4", "/m"), u"/s/out/x.mp4");
    EXPECT_EQ(
        jobs::flatOutputPath(requestFor(QStringLiteral("/m/lib/x.mp4"), QStringLiteral("/m"))),
        u"/s/out/x.mp4");
    const auto titled = [](const char* title) {
        auto request = requestFor(QStringLiteral("/m/lib/x.mp4"), QStringLiteral("/m"));
        request.item = media::changedCopy(
            *request.item, [title](auto& item) { item.fileTitle = QString::fromUtf8(title); });
        return jobs::titledOutputPath(request);
    };
    EXPECT_EQ(titled("Café 1.2"), u"/s/out/lib/Café 1.2.mp4");
    EXPECT_EQ(titled("a/b"), u"/s/out/lib/a/b.mp4");
    EXPECT_EQ(titled(".."), QString());
    EXPECT_EQ(titled("../../etc/x"), QString());
    EXPECT_EQ(titled("a..b"), u"/s/out/lib/a..b.mp4");
}

TEST(OutputPathRules, ClaimsNeverMeetASourceOrAnotherOutput) {
    const testkit::TempDir dir;
    const QString source = dir.write(QStringLiteral("clip.mov"), "x");
    const QString linked = dir.path(QStringLiteral("linked.mov"));
    ASSERT_EQ(::symlink("clip.mov", linked.toUtf8().constData()), 0);
    const QString old = dir.write(QStringLiteral("old.mov"), "x");
    jobs::OutputPaths paths;
    paths.protect({source, dir.path(QStringLiteral("gone"))});
    EXPECT_EQ(paths.claim(source), dir.path(QStringLiteral("clip 2.mov")));
    EXPECT_EQ(paths.claim(source), dir.path(QStringLiteral("clip 3.mov")));
    EXPECT_EQ(paths.claim(linked), dir.path(QStringLiteral("linked 2.mov")));
    EXPECT_EQ(paths.claim(old), old); // of an earlier run: replaced
    EXPECT_EQ(paths.claim(old), dir.path(QStringLiteral("old 2.mov")));
    const QString longest = dir.write(QString(84, QChar(0x4E2D)) + QStringLiteral(".mp"), "x");
    paths.protect({longest});
    const QString stepped = paths.claim(longest).section(u'/', -1);
    EXPECT_LE(stepped.toUtf8().size(), 255);
    EXPECT_TRUE(stepped.endsWith(QStringLiteral(" 2.mp")));
    EXPECT_FALSE(paths.claimExactly(old));
}

} // namespace
