// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/cli/cli_kit.h"

#include "platform/foundation/dates.h"
#include "platform/foundation/file_manager.h"

namespace {

using testkit::TempDir;

/// The items of a JSON array by the name of the file.
QMap<QString, QJsonObject> byName(const QJsonArray& items, const QString& path) {
    QMap<QString, QJsonObject> found;
    for (const auto& item : items)
        found[item.toObject()[path].toString().section(u'/', -1)] = item.toObject();
    return found;
}
QMap<QString, QJsonObject> planned(const QByteArray& options, const QStringList& more) {
    const auto run = clitest::cli("--json dates " + options + " --dry-run", more);
    return byName(QJsonDocument::fromJson(run.out).object()[u"items"_s].toArray(), u"source"_s);
}

QString modified(const QString& path) {
    const auto found =
        clipheave::platform::NSFileManager::defaultManager().attributesOfItemAtPath(path);
    return found ? clipheave::platform::formatDate(found->NSFileModificationDate,
                                                   clipheave::platform::DatePattern::Colon)
                 : QString();
}

TEST(Dates, WritesWhatItPlansIntoEachKindAndNothingElse) {
    const TempDir out;
    const QStringList library{clitest::sample()};
    const auto plan = planned("shift --hours 2 --seconds 15", library);
    const auto before = byName(clitest::listed(library), u"path"_s);
    const auto run = clitest::cli("--quiet --storage % dates shift --hours 2 --seconds 15",
                                  QStringList{out.path()} + library);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    const auto after = byName(clitest::listed({out.path()}), u"path"_s);
    EXPECT_EQ(after.size(), before.size()) << "every video and audio file, no photo";
    EXPECT_EQ(plan[u"reynisfjara-sunset.mov"_s][u"after"_s], u"2025:06:14 23:41:22"_s);
    for (const auto& [name, item] : after.asKeyValueRange()) {
        EXPECT_EQ(item[u"recorded"_s], plan[name][u"after"_s]) << name;
        for (const QString& field : {u"title"_s, u"artist"_s, u"album"_s, u"latitude"_s})
            // A CAF file's texts show only once they are those of an M4A file.
            if (before[name].contains(field)) {
                EXPECT_EQ(item[field].toString(), before[name][field].toString()) << name;
                EXPECT_EQ(item[field].toDouble(), before[name][field].toDouble()) << name;
            }
    }
}

TEST(Dates, SetsOneDateInUniversalTimeFileByFile) {
    const testkit::ZoneGuard zone("Asia/Kolkata");
    const TempDir in, out;
    const QStringList files{in.write("a.mp4", testkit::movie("One")),
                            in.write("b.txt.mp4", testkit::movie("Two"))};
    const QStringList date{u"2015-06-01 08:00:00"_s};
    const auto plan = planned("set % --step 2 --unit Minute", date + files);
    EXPECT_EQ(plan[u"a.mp4"_s][u"after"_s], u"2015:06:01 02:30:00"_s);
    EXPECT_EQ(plan[u"b.txt.mp4"_s][u"after"_s], u"2015:06:01 02:32:00"_s);
    const auto run = clitest::cli("--storage % dates set % --files --step 1 --unit Hour",
                                  QStringList{out.path()} + date + files);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(modified(out.path("a.mp4")), u"2015:06:01 08:00:00");
    EXPECT_EQ(modified(out.path("b.txt.mp4")), u"2015:06:01 09:00:00");
    EXPECT_EQ(TempDir::read(out.path("a.mp4")), TempDir::read(files[0])) << "a plain copy";
}

TEST(Dates, SaysWhatIsNoDateAndWritesItAllTheSame) {
    const TempDir in, out;
    const QString file = in.write("VID_20151205_100000.mp4", testkit::movie("One"));
    for (const char* wrong : {"2015", "2015:13:01 00:00:00", "2015/06/01 08:00:00"})
        EXPECT_EQ(clitest::cli("dates set % %", {QString::fromUtf8(wrong), file}).exitCode, 2);
    auto run = clitest::cli("--storage % dates from-name %", {out.path(), in.path()});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    const QString named = QString::fromUtf8(run.out).trimmed();
    EXPECT_EQ(clitest::listedFile(named)[u"recorded"_s], u"2015:12:05 10:00:00"_s);
    EXPECT_EQ(modified(named), u"2015:12:05 10:00:00");

    run = clitest::cli("--storage % dates shift %", {out.path("shifted"), named});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_THAT(run.err.toStdString(), testing::HasSubstr("No calendar has this date"));
    const QString shifted = out.path("shifted/VID_20151205_100000.mp4");
    EXPECT_EQ(clitest::listedFile(shifted)[u"recorded"_s], u"2016:00:05 10:00:00"_s);
    EXPECT_EQ(modified(shifted), modified(named)) << "the dates of the file stay";

    run = clitest::cli("--storage % dates from-name %",
                       {out.path(), in.write("clip.mp4", testkit::movie("Two"))});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.err.toStdString(), testing::HasSubstr("There is no date in its name"));
}

TEST(Dates, PhotosGetTheirDatesAndNamesFromTheFileAndTheCommandLine) {
    const TempDir out;
    const QString photo = clitest::sample("Photos/IMG_0412.jpg");
    const auto exif = [](const QString& path) {
        const auto read =
            testkit::run(u"exiftool"_s, {u"-s3"_s, u"-DateTimeOriginal"_s, u"-CreateDate"_s,
                                         u"-ModifyDate"_s, u"-UserComment"_s, u"-Artist"_s, path});
        return QString::fromUtf8(read.out).split(u'\n', Qt::SkipEmptyParts);
    };
    auto run = clitest::cli("--storage % dates copy name-to-comments %", {out.path("a"), photo});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(
        clitest::cli("--storage % photo dates --digitised % --taken % %",
                     {out.path("b"), u"2001-02-03 04:05:06"_s, u"2011:01:01 10:00:00"_s, photo})
            .exitCode,
        0);
    EXPECT_EQ(clitest::cli("--storage % dates copy created-to-camera %",
                           {out.path("c"), out.path("b/IMG_0412.jpg")})
                  .exitCode,
              0);
    EXPECT_EQ(modified(out.path("a/IMG_0412.jpg")), modified(photo));
    EXPECT_EQ(modified(out.path("b/IMG_0412.jpg")), u"2011:01:01 10:00:00");
    EXPECT_EQ(clitest::cli("photo dates --digitised 2001 %", {photo}).exitCode, 2);
    EXPECT_EQ(clitest::cli("photo dates --taken 2001 %", {photo}).exitCode, 2);
    if (!testkit::hasProgram(u"exiftool"_s))
        GTEST_SKIP();
    QStringList before = exif(photo);
    EXPECT_THAT(exif(out.path("a/IMG_0412.jpg")), testing::Contains(u"IMG_0412"_s));
    EXPECT_EQ(exif(out.path("a/IMG_0412.jpg")).last(), before.last()) << "the artist";
    EXPECT_EQ(exif(out.path("b/IMG_0412.jpg")).count(u"2001:02:03 04:05:06"_s), 3);
    EXPECT_EQ(exif(out.path("c/IMG_0412.jpg")).count(u"2011:01:01 10:00:00"_s), 3);
}

} // namespace
