// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/cli/cli_kit.h"

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

} // namespace
