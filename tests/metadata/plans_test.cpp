// SPDX-License-Identifier: GPL-3.0-or-later
#include "jobs/output_paths.h"
#include "metadata/video_plans.h"

#include "platform/foundation/creation_date.h"
#include "tests/metadata/write_fixture.h"
#include "tests/testkit/items.h"

#include <QFile>

#include <unistd.h>

namespace {

using namespace clipheave;
using platform::AVMetadataItem;
using testkit::itemOf;

/// "identifier=text" of every item, separated by commas.
QString shown(const jobs::MetadataPlan& plan) {
    return testkit::itemTexts(plan.metadata).join(u", ");
}

const QString kQuickTime = u"com.apple.quicktime-movie"_s;

TEST(RemovalPlan, BlanksWhatTheRecordHoldsInTheFixedOrder) {
    media::IKImageItem full;
    full.fileTitle = full.fileAblumName = full.fileArist = full.fileDirector = full.fileActor =
        full.fileproducer = full.filePublisher = full.fileCopyright = full.fileKeyWords =
            full.fileDescription = full.shootDateStr = u"x"_s;
    full.filelatitude = full.filelongtitude = 1;
    full.fileImage = platform::EncodedImage::fromBytes("GIF89a" + testkit::le(1, 2) +
                                                       testkit::le(1, 2) + QByteArray(20, 0));
    const auto plan = metadata::planVideoRemoval(full);
    EXPECT_EQ(shown(plan),
              u"itsk/%A9nam=, itsk/%A9alb=, itsk/%A9ART=, mdta/com.apple.quicktime.director=, "
              "mdta/com.apple.quicktime.performer=, mdta/com.apple.quicktime.producer=, "
              "common/publisher=, common/copyrights=, uiso/kywd=, common/description=, "
              "uiso/date=, uiso/loci=, common/artwork=");
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
    const QList<AVMetadataItem> source{itemOf("id3/TIT2", "a"), itemOf("uiso/date", "d"),
                                       itemOf("itsk/%A9ART", "b"), itemOf("itsk/%A9nam", "c"),
                                       itemOf("mdta/com.apple.quicktime.creationdate", "e")};
    const auto title = metadata::planVideoTitle(u"clip"_s, source);
    EXPECT_EQ(shown(title), u"itsk/%A9nam=clip, uiso/date=d, itsk/%A9ART=b, itsk/%A9nam=clip, "
                            "mdta/com.apple.quicktime.creationdate=e");
    EXPECT_EQ(title.outputFileType, kQuickTime);
    const auto date = metadata::planVideoDate(u"2020:01:31 10:00:00"_s, source);
    EXPECT_EQ(shown(date), u"id3/TIT2=a, uiso/date=2020:01:31 10:00:00, itsk/%A9ART=b, "
                           "itsk/%A9nam=c, uiso/date=2020:01:31 10:00:00");
    EXPECT_EQ(date.outputFileType, kQuickTime);
    EXPECT_EQ(shown(metadata::planVideoDate(u"t"_s, {})), u"uiso/date=t");
    EXPECT_EQ(metadata::planVideoTitle({}, source).metadata.size(), source.size());
    EXPECT_TRUE(shown(metadata::planVideoDate({}, source)).contains(u"uiso/date=d"));
}

jobs::WriteRequest requestFor(const QString& path, const QString& imported) {
    jobs::WriteRequest request = metadata::requestOf(path, u"/s/out"_s);
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
    EXPECT_EQ(jobs::flatOutputPath(requestFor(u"/m/lib/x.mp4"_s, u"/m"_s)), u"/s/out/x.mp4");
    const auto titled = [](const char* title) {
        auto request = requestFor(u"/m/lib/x.mp4"_s, u"/m"_s);
        request.item = media::changedCopy(
            *request.item, [title](auto& item) { item.fileTitle = QString::fromUtf8(title); });
        return jobs::titledOutputPath(request);
    };
    EXPECT_EQ(titled("Café 1.2"), u"/s/out/lib/Café 1.2.mp4");
    EXPECT_EQ(titled("a/b"), u"/s/out/lib/a/b.mp4");
    EXPECT_EQ(titled(".."), u"/s/out/lib/...mp4"); // a name, with its extension
    EXPECT_EQ(titled("a/../x"), QString());
    EXPECT_EQ(titled("../../etc/x"), QString());
    EXPECT_EQ(titled("a..b"), u"/s/out/lib/a..b.mp4");
}

TEST(OutputPathRules, ClaimsNeverMeetASourceOrAnotherOutput) {
    const testkit::TempDir dir;
    const QString source = dir.write("clip.mov", "x");
    const QString linked = dir.path("linked.mov");
    ASSERT_EQ(::symlink("clip.mov", linked.toUtf8().constData()), 0);
    const QString old = dir.write("old.mov", "x");
    jobs::OutputPaths paths;
    paths.protect({source, dir.path("gone")});
    const QString earlier = dir.write("clip 2.mov", "of an earlier run");
    if (platform::storeCreationDate(platform::FileReference::ofPath(earlier), {}) == 0) {
        EXPECT_EQ(paths.claimShared(source), earlier);
    }
    ASSERT_TRUE(QFile::remove(earlier));
    dir.write("clip 2.mov", "of the user");
    EXPECT_EQ(paths.claimShared(source), dir.path("clip 3.mov"));
    EXPECT_EQ(paths.claim(source), dir.path("clip 3.mov"));
    EXPECT_EQ(paths.claim(source), dir.path("clip 4.mov"));
    EXPECT_EQ(paths.claim(linked), dir.path("linked 2.mov"));
    EXPECT_EQ(paths.claim(old), old); // of an earlier run: replaced
    EXPECT_EQ(paths.claim(old), dir.path("old 2.mov"));
    const QString longest = dir.write(QString(84, QChar(0x4E2D)) + u".mp"_s, "x");
    paths.protect({longest});
    const QString stepped = paths.claim(longest).section(u'/', -1);
    EXPECT_LE(stepped.toUtf8().size(), 255);
    EXPECT_TRUE(stepped.endsWith(u" 2.mp"_s));
    EXPECT_FALSE(paths.claimExactly(old));
}

} // namespace
