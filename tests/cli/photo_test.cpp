// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/cli/cli_kit.h"

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

} // namespace
