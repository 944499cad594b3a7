// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/cli/cli_kit.h"

#include <QDir>
#include <QFile>

namespace {

using clitest::cli;
using testkit::TempDir;

class RenameCommand : public testing::Test {
protected:
    RenameCommand() { qputenv("XDG_STATE_HOME", m_dir.path("state").toUtf8()); }
    ~RenameCommand() override { qunsetenv("XDG_STATE_HOME"); }

    QString video(const char* name, const char* title) {
        return m_dir.write(name, testkit::movie(title));
    }
    testkit::RunResult rename(const QByteArray& options, const QStringList& paths = {}) {
        return cli("--quiet --storage % rename " + options,
                   QStringList{m_dir.path("store")} + paths);
    }
    QJsonArray renamedAsJson(const QByteArray& options, const QStringList& paths) {
        m_result = rename("--json " + options, paths);
        return QJsonDocument::fromJson(m_result.out)["items"_L1].toArray();
    }
    [[nodiscard]] bool exists(const char* name) const { return QFile::exists(m_dir.path(name)); }

    TempDir m_dir;
    testkit::RunResult m_result;
};

TEST_F(RenameCommand, RenamesInTheOrderGivenAndTakesItBack) {
    const QString b = video("b.m4v", "One");
    const QString a = video("a.m4v", "Two");
    const auto dry = rename("--text Trip --number --dry-run", {b, a});
    const QByteArray dir = m_dir.path().toUtf8();
    EXPECT_EQ(dry.out, dir + "/b.m4v -> " + dir + "/Trip000001.m4v\n" + dir + "/a.m4v -> " + dir +
                           "/Trip000002.m4v\n");
    EXPECT_EQ(dry.exitCode, 0);
    EXPECT_TRUE(exists("a.m4v") && exists("b.m4v") && !exists("state") && !exists("store"));
    EXPECT_EQ(rename("--text Trip --number", {b, a}).out,
              dir + "/Trip000001.m4v\n" + dir + "/Trip000002.m4v\n");
    EXPECT_TRUE(exists("Trip000001.m4v") && exists("Trip000002.m4v") && !exists("a.m4v"));
    // Another process, another job; then both are taken back.
    const QString first = m_dir.path("Trip000001.m4v");
    EXPECT_EQ(rename("--template {Title}", {first}).out, dir + "/One.m4v\n");
    EXPECT_EQ(rename("--undo").out, dir + "/Trip000001.m4v\n");
    EXPECT_EQ(rename("--undo").exitCode, 0);
    EXPECT_TRUE(exists("a.m4v") && exists("b.m4v"));
    EXPECT_EQ(rename("--undo").exitCode, 3);
}

TEST_F(RenameCommand, TakesPhotosWhenAsked) {
    const QString photo =
        m_dir.write("p.jpg", TempDir::read(clitest::sample("Photos/IMG_0412.jpg")));
    EXPECT_EQ(rename("--text Trip --number", {photo}).exitCode, 3);
    EXPECT_EQ(rename("--text Trip --number --photos", {photo}).out,
              m_dir.path("Trip000001.jpg").toUtf8() + '\n');
    EXPECT_EQ(rename("--undo --photos").exitCode, 2);
    EXPECT_EQ(rename("--undo").exitCode, 0);
    EXPECT_TRUE(exists("p.jpg"));
}

TEST_F(RenameCommand, NotesWhatGotAnotherNameAndWhatStayed) {
    const QString a = video("a.m4v", "Same");
    const QString b = video("b.m4v", "Same");
    const QString c = video("store/Same 3.m4v", "Same");
    auto items = renamedAsJson("--template {Title} --dry-run", {a, b, c});
    ASSERT_EQ(items.size(), 3);
    EXPECT_EQ(items[1]["status"_L1].toString(), u"planned");
    EXPECT_EQ(items[1]["message"_L1].toString(), u"name exists");
    EXPECT_TRUE(exists("b.m4v"));
    m_dir.write("Same.m4v", "taken");
    m_dir.write("store/Same 1.m4v", "taken");
    items = renamedAsJson("--template {Title}", {a, b, c});
    EXPECT_EQ(m_result.exitCode, 1);
    EXPECT_EQ(items[0]["status"_L1].toString(), u"failed");
    EXPECT_TRUE(items[0]["outputs"_L1].toArray().isEmpty());
    EXPECT_EQ(items[1]["outputs"_L1].toArray(), QJsonArray{m_dir.path("store/Same 2.m4v")});
    EXPECT_EQ(items[2]["outputs"_L1].toArray(), QJsonArray{m_dir.path("store/Same.m4v")});
    EXPECT_EQ(TempDir::read(m_dir.path("Same.m4v")), "taken");
}

TEST_F(RenameCommand, WrongUsageTouchesNothing) {
    const QString a = video("a.m4v", "One");
    for (const char* wrong : {"", "--text x --template y", "--template y --date-format YYYY",
                              "--text y --date-format YYYY_MM_DD", "--undo"})
        EXPECT_EQ(rename(wrong, {a}).exitCode, 2) << wrong;
    EXPECT_EQ(rename("--text x").exitCode, 2) << "no file";
    EXPECT_TRUE(exists("a.m4v"));
    QDir().mkpath(m_dir.path("empty"));
    EXPECT_EQ(rename("--text x", {m_dir.path("empty")}).exitCode, 3);
}

} // namespace
