// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/cli/cli_kit.h"

#include <QFile>
#include <QPoint>
#include <QRect>

#include <cmath>
#include <filesystem>

namespace {

using testkit::TempDir;

TEST(PhotoStamp, TakesTitlesAndStampsWhatTheBrowserTakes) {
    const TempDir dir;
    const auto stamp = [&](const QByteArray& options, const QStringList& more = {}) {
        return clitest::cli("--quiet --json --storage % photo stamp " + options,
                            QStringList{dir.path("out")} + more +
                                QStringList{clitest::sample("Photos")});
    };
    EXPECT_EQ(stamp("--position %", {u"lower left corner"_s}).exitCode, 2);
    EXPECT_EQ(stamp("--layout", {u"YYYY"_s}).exitCode, 2);
    EXPECT_EQ(stamp("--color red").exitCode, 2);
    EXPECT_EQ(stamp("--font-size 0").exitCode, 2);
    EXPECT_EQ(clitest::cli("photo stamp %", {dir.path()}).exitCode, 3);
    EXPECT_EQ(clitest::cli("photo remove all % %",
                           {dir.write("a.txt", "x"), clitest::sample("Harbour/old-camera.avi")})
                  .exitCode,
              3);

    const auto done =
        stamp("--font-size 40 --color #FF0000 --position %", {u"Upper left corner"_s});
    EXPECT_EQ(done.exitCode, 0) << done.err;
    const QJsonArray items = QJsonDocument::fromJson(done.out).object().value(u"items").toArray();
    EXPECT_EQ(items.size(), dir.files("out").size());
    EXPECT_TRUE(dir.files("out").contains(u"IMG_0412_date.jpg"_s));
}

TEST(Photo, ApplyNeverWritesHalfAPosition) {
    const TempDir out;
    const QString photo = clitest::sample("Photos/IMG_0412.jpg");
    ASSERT_EQ(clitest::cli("--storage % photo remove gps %", {out.path(), photo}).exitCode, 0);
    const QString bare = out.path("NoGPS_IMG_0412.jpg");
    const testkit::RunResult half =
        clitest::cli("--storage % photo apply --set latitude=5 %", {out.path("half"), bare});
    EXPECT_EQ(half.exitCode, 1);
    EXPECT_THAT(half.err.toStdString(), testing::HasSubstr("Each value cannot be empty."));
    EXPECT_THAT(out.files("half"), testing::IsEmpty());
    const testkit::RunResult moved =
        clitest::cli("--storage % photo apply --set latitude=5 %", {out.path("moved"), photo});
    EXPECT_EQ(moved.exitCode, 0) << moved.err;
    const QJsonObject before = clitest::listedFile(photo, "--photos");
    const QJsonObject after = clitest::listedFile(out.path("moved/IMG_0412.jpg"), "--photos");
    EXPECT_EQ(after[u"latitude"_s].toDouble(), 5);
    EXPECT_NEAR(after[u"longitude"_s].toDouble(), before[u"longitude"_s].toDouble(), 1e-5);
    EXPECT_EQ(after[u"make"_s], before[u"make"_s]);
}

TEST(Photo, NotesThatTheDiskTookTwoNamesForOne) {
    const QString photo = clitest::sample("Photos/IMG_0412.jpg");
    const struct {
        const char *command, *output, *other;
    } cases[] = {{"change-gps 1 2 3", "noExif_IMG_0412.jpg", "NoExif_IMG_0412.jpg"},
                 {"remove exif", "NoExif_IMG_0412.jpg", "noExif_IMG_0412.jpg"}};
    for (const auto& [command, output, other] : cases) {
        const TempDir out;
        const QString older = out.write(QLatin1String(other), "older");
        // One file under both names, as on a disk that ignores case.
        std::filesystem::create_hard_link(older.toStdString(), out.path(output).toStdString());
        const auto done =
            clitest::cli(QByteArray("--storage % photo ") + command + " %", {out.path(), photo});
        EXPECT_EQ(done.exitCode, 0) << done.err;
        EXPECT_THAT((done.out + done.err).toStdString(),
                    testing::HasSubstr(std::string("names for one: ") + other + " was replaced"));
    }
}

/// One photo in each format that a position is written into.
QStringList photosOfEveryFormat(const TempDir& dir) {
    const QString first = dir.path("a.jpg");
    QFile::copy(clitest::sample("Photos/IMG_0412.jpg"), first);
    QStringList photos{first};
    for (const char* name : {"a.png", "a.tif", "a.webp"}) {
        photos += dir.path(name);
        testkit::ffmpeg("-i % %", {first, photos.last()});
    }
    photos += dir.path("a.dng");
    QFile::copy(photos[2], photos.last());
    testkit::exiftool("-q -overwrite_original -DNGVersion=1.4.0.0 -UniqueCameraModel=U",
                      {photos.last()});
    return photos;
}

/// What exiv2 reads of a tag, "33/1 30/1 0/1" as a number.
double exiv2Number(const QString& path, const char* tag) {
    const QByteArray text =
        testkit::run(u"exiv2"_s, {u"-K"_s, QLatin1String(tag), u"-Pv"_s, path}).out.trimmed();
    double number = 0, unit = 1;
    for (const QByteArray& part : text.split(' ')) {
        const QList<QByteArray> fraction = part.split('/');
        number += fraction.first().toDouble() / fraction.last().toDouble() / unit;
        unit *= 60;
    }
    return number;
}

TEST(Photo, PlacesAreReadByOtherPrograms) {
    SKIP_WITHOUT("exiftool");
    SKIP_WITHOUT("exiv2");
    const TempDir dir;
    const QStringList photos = photosOfEveryFormat(dir);
    const struct {
        const char *latitude, *longitude, *altitude, *letters;
    } cases[] = {{"-33.5", "151.25", "-10", "S E 1"},
                 {"0", "0", "0", "N E 0"},
                 {"90", "180", "8848.86", "N E 0"},
                 {"-90", "-180", "-413.2", "S W 1"},
                 {"0.000001", "-0.0000005", "0.001", "N W 0"},
                 {"63.40413", "-19.04461", "1.5", "N W 0"}};
    for (const auto& [latitude, longitude, altitude, letters] : cases) {
        const QStringList place{QLatin1String(latitude), QLatin1String(longitude),
                                QLatin1String(altitude)};
        SCOPED_TRACE(place.join(u' ').toStdString());
        const auto saved =
            clitest::cli("--storage % photo gps --date 2024:02:29 --time 01:02:03.5 --",
                         QStringList{dir.path("gps")} + place + photos);
        EXPECT_EQ(saved.exitCode, 0) << saved.err;
        const auto applied =
            clitest::cli("--storage % photo apply --set % --set % --set % --set "
                         "gpsDate=2024:02:29 --set "
                         "gpsTime=01:02:03",
                         QStringList{dir.path("apply"), u"latitude="_s + place[0],
                                     u"longitude="_s + place[1], u"altitude="_s + place[2]} +
                             photos);
        EXPECT_EQ(applied.exitCode, 0) << applied.err;
        for (const char* folder : {"gps", "apply"}) {
            const QByteArray seconds = folder[0] == 'g' ? "01:02:03.5" : "01:02:03";
            for (const QString& photo : photos) {
                const QString path = dir.path(folder) + u'/' + photo.section(u'/', -1);
                SCOPED_TRACE(path.toStdString());
                const QList<QByteArray> read =
                    testkit::exiftool("-n -s3 -GPS:GPSLatitude -GPS:GPSLongitude -GPS:GPSAltitude "
                                      "-GPS:GPSLatitudeRef -GPS:GPSLongitudeRef "
                                      "-GPS:GPSAltitudeRef -GPSVersionID -GPSSpeed -GPSSpeedRef "
                                      "-GPSTrack -GPSTrackRef -GPSTimeStamp -GPSDateStamp",
                                      {path})
                        .split('\n');
                ASSERT_EQ(read.size(), 13);
                EXPECT_EQ(read.sliced(3).join(' '),
                          QByteArray(letters) + " 2 2 0 0 0 K 0 T " + seconds + " 2024:02:29");
                const auto near = [&](int row, const char* tag, const char* typed, double slack) {
                    const double wanted =
                        std::abs(static_cast<float>(QByteArray(typed).toDouble()));
                    EXPECT_NEAR(read[row].toDouble(), wanted, slack) << tag;
                    EXPECT_NEAR(exiv2Number(path, tag), wanted, slack) << tag;
                };
                near(0, "Exif.GPSInfo.GPSLatitude", latitude, 2e-8);
                near(1, "Exif.GPSInfo.GPSLongitude", longitude, 2e-8);
                near(2, "Exif.GPSInfo.GPSAltitude", altitude, 1e-3);
            }
        }
    }
}

/// The frame of what is lighter than the threshold, "WxH+X+Y", as ImageMagick
/// finds it.
QRect inkOf(const QString& path) {
    const QByteArray text =
        testkit::run(u"convert"_s, {path, u"-colorspace"_s, u"Gray"_s, u"-threshold"_s, u"70%"_s,
                                    u"-format"_s, u"%@"_s, u"info:"_s})
            .out;
    const QList<QByteArray> parts = QByteArray(text).replace('x', ' ').replace('+', ' ').split(' ');
    EXPECT_EQ(parts.size(), 4) << text.toStdString();
    return parts.size() == 4
               ? QRect(parts[2].toInt(), parts[3].toInt(), parts[0].toInt(), parts[1].toInt())
               : QRect();
}

TEST(PhotoStamp, StandsWhereAnotherProgramDrawsIt) {
    SKIP_WITHOUT("exiftool");
    if (!testkit::run(u"convert"_s, {u"-version"_s}).out.contains("ImageMagick"))
        GTEST_SKIP() << "needs ImageMagick";
    const TempDir dir;
    const QString photo = dir.path("a.jpg");
    const QStringList font{u"-font"_s, u"DejaVu-Sans"_s, u"-pointsize"_s, u"60"_s};
    EXPECT_EQ(
        testkit::run(u"convert"_s, {u"-size"_s, u"1200x600"_s, u"xc:gray40"_s, photo}).exitCode, 0);
    testkit::exiftool("-q -overwrite_original -DateTimeOriginal=2025:06:14_21:36:20", {photo});
    const struct {
        const char *layout, *text;
    } layouts[] = {{"MM/DD/YYYY HH:MM", "06/14/2025 21:36:20"},
                   {"DD/MM/YYYY HH:MM", "14/06/2025 21:36:20"},
                   {"YYYY/MM/DD HH:MM", "2025/06/14 21:36:20"}};
    for (const auto& [layout, text] : layouts) {
        const QList<QByteArray> size =
            testkit::run(u"convert"_s, font + QStringList{u"label:"_s + QLatin1String(text),
                                                          u"-format"_s, u"%w %h"_s, u"info:"_s})
                .out.split(' ');
        const int right = 1200 - size[0].toInt() - 20, below = 600 - 2 * size[1].toInt() - 30;
        const struct {
            const char* corner;
            QPoint place; ///< of the text's upper left
        } corners[] = {{"Upper left corner", {50, 10}},
                       {"Upper right corner", {right, 10}},
                       {"Lower left corner", {50, below}},
                       {"Lower right corner", {right, below}}};
        for (const auto& [corner, place] : corners) {
            const auto done = clitest::cli("--storage % photo stamp --font % --font-size 60 "
                                           "--color #FFFFFF --layout % "
                                           "--position %",
                                           {dir.path("out"), u"DejaVu Sans"_s,
                                            QLatin1String(layout), QLatin1String(corner), photo});
            EXPECT_EQ(done.exitCode, 0) << done.err;
            EXPECT_EQ(testkit::run(u"convert"_s,
                                   QStringList{u"-size"_s, u"1200x600"_s, u"xc:gray40"_s} + font +
                                       QStringList{u"-fill"_s, u"white"_s, u"-gravity"_s,
                                                   u"NorthWest"_s, u"-annotate"_s,
                                                   u"+%1+%2"_s.arg(place.x()).arg(place.y()),
                                                   QLatin1String(text), dir.path("drawn.png")})
                          .exitCode,
                      0);
            const QRect wanted = inkOf(dir.path("drawn.png"));
            const QRect found = inkOf(dir.path("out/a_date.jpg"));
            const QPoint off = found.center() - wanted.center();
            EXPECT_LE(std::abs(off.x()), 6) << corner << text;
            // Below, the text's height counts twice; programs round it differently.
            EXPECT_LE(std::abs(off.y()), 5) << corner << text;
            EXPECT_LE(
                (QPoint(found.width(), found.height()) - QPoint(wanted.width(), wanted.height()))
                    .manhattanLength(),
                8)
                << corner << text;
        }
    }
}

TEST(Photo, ApplyTakesWhatCamerasWriteAndKeepsWhatIsNotTyped) {
    const TempDir dir;
    const QString photo = clitest::sample("Photos/IMG_0412.jpg");
    const auto apply = [&](const QString& value, const QString& path) {
        return clitest::cli("--storage % photo apply --set % %", {dir.path("out"), value, path});
    };
    EXPECT_EQ(apply(u"cameraDate=99999:01:01 10:00:00"_s, photo).exitCode, 2);
    EXPECT_EQ(apply(u"cameraDate=24:01:01 10:00:00"_s, photo).exitCode, 2);
    EXPECT_EQ(apply(u"cameraDate=2023:02:29 10:00:00"_s, photo).exitCode, 2);
    EXPECT_EQ(apply(u"cameraDate=0000:00:00 00:00:00"_s, photo).exitCode, 0);
    const QString unset = dir.path("out/IMG_0412.jpg");
    EXPECT_EQ(
        clitest::cli("--storage % photo apply --set make=M %", {dir.path("made"), unset}).exitCode,
        0);
    const QString list = dir.write("list.plist", "<?xml version=\"1.0\"?><plist><dict><key>Keywords"
                                                 "</key><array><string>Vik, Iceland</string>"
                                                 "</array></dict></plist>");
    ASSERT_EQ(
        clitest::cli("--storage % photo import % %", {dir.path("list"), list, photo}).exitCode, 0);
    EXPECT_EQ(apply(u"title=T"_s, dir.path("list/IMG_0412.jpg")).exitCode, 0);
    EXPECT_TRUE(TempDir::read(unset).contains("Vik, Iceland")) << "a comma splits what is typed";
}

} // namespace
