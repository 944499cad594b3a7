// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/cli/cli_kit.h"

#include <QDir>

namespace {

using clitest::cli;
using testkit::TempDir;

class RenameCommand : public testing::Test {
protected:
    RenameCommand() { qputenv("XDG_STATE_HOME", m_dir.path(QStringLiteral("state")).toUtf8()); }
    ~RenameCommand() override { qunsetenv("XDG_STATE_HOME"); }

    QString video(const char* name, const char* title) {
        return m_dir.write(QLatin1String(name), testkit::movie(title));
    }
    testkit::RunResult rename(const QStringList& arguments) {
        return cli(QStringList{QStringLiteral("--quiet"), QStringLiteral("--storage"),
                               m_dir.path(QStringLiteral("store")), QStringLiteral("rename")} +
                   arguments);
    }
    QJsonArray renamedAsJson(const QStringList& arguments) {
        m_result = rename(arguments + QStringList{QStringLiteral("--json")});
        return QJsonDocument::fromJson(m_result.out)[QLatin1String("items")].toArray();
    }
    [[nodiscard]] bool exists(const char* name) const {
        return QFile::exists(m_dir.path(QLatin1String(name)));
    }

    TempDir m_dir;
    testkit::RunResult m_result;
};

TEST_F(RenameCommand, RenamesInTheOrderGivenAndTakesItBack) {
    const QString b = video("b.m4v", "One");
    const QString a = video("a.m4v", "Two");
    const QStringList numbered{QStringLiteral("--text"), QStringLiteral("Trip"),
                               QStringLiteral("--number"), b, a};
    const auto dry = rename(numbered + QStringList{QStringLiteral("--dry-run")});
    const QByteArray dir = m_dir.path().toUtf8();
    EXPECT_EQ(dry.out, dir + "/b.m4v -> " + dir + "/Trip000001.m4v\n" + dir + "/a.m4v -> " + dir +
                           "/Trip000002.m4v\n");
    EXPECT_EQ(dry.exitCode, 0);
    EXPECT_TRUE(exists("a.m4v") && exists("b.m4v") && !exists("state") && !exists("store"));
    EXPECT_EQ(rename(numbered).out, dir + "/Trip000001.m4v\n" + dir + "/Trip000002.m4v\n");
    EXPECT_TRUE(exists("Trip000001.m4v") && exists("Trip000002.m4v") && !exists("a.m4v"));
    // Another process, another job; then both are taken back.
    const QString first = m_dir.path(QStringLiteral("Trip000001.m4v"));
    EXPECT_EQ(rename({QStringLiteral("--template"), QStringLiteral("{Title}"), first}).out,
              dir + "/One.m4v\n");
    EXPECT_EQ(rename({QStringLiteral("--undo")}).out, dir + "/Trip000001.m4v\n");
    EXPECT_EQ(rename({QStringLiteral("--undo")}).exitCode, 0);
    EXPECT_TRUE(exists("a.m4v") && exists("b.m4v"));
    EXPECT_EQ(rename({QStringLiteral("--undo")}).exitCode, 3);
}

TEST_F(RenameCommand, TellsWhatEvadedAndWhatStayed) {
    const QString a = video("a.m4v", "Same");
    const QString b = video("b.m4v", "Same");
    const QString c = video("store/Same 3.m4v", "Same");
    const QStringList all{QStringLiteral("--template"), QStringLiteral("{Title}"), a, b, c};
    auto items = renamedAsJson(all + QStringList{QStringLiteral("--dry-run")});
    ASSERT_EQ(items.size(), 3);
    EXPECT_EQ(items[1][QLatin1String("status")].toString(), u"planned");
    EXPECT_EQ(items[1][QLatin1String("message")].toString(), u"name exists");
    EXPECT_TRUE(exists("b.m4v"));
    m_dir.write(QStringLiteral("Same.m4v"), "taken");
    m_dir.write(QStringLiteral("store/Same 1.m4v"), "taken");
    items = renamedAsJson(all);
    EXPECT_EQ(m_result.exitCode, 1);
    EXPECT_EQ(items[0][QLatin1String("status")].toString(), u"failed");
    EXPECT_TRUE(items[0][QLatin1String("outputs")].toArray().isEmpty());
    EXPECT_EQ(items[1][QLatin1String("outputs")].toArray(),
              QJsonArray{m_dir.path(QStringLiteral("store/Same 2.m4v"))});
    EXPECT_EQ(items[2][QLatin1String("outputs")].toArray(),
              QJsonArray{m_dir.path(QStringLiteral("store/Same.m4v"))});
    EXPECT_EQ(TempDir::read(m_dir.path(QStringLiteral("Same.m4v"))), "taken");
}

TEST_F(RenameCommand, WrongUsageTouchesNothing) {
    const QString a = video("a.m4v", "One");
    for (const QStringList& wrong :
         {QStringList{a},
          {QStringLiteral("--text"), QStringLiteral("x")},
          {QStringLiteral("--text"), QStringLiteral("x"), QStringLiteral("--template"),
           QStringLiteral("y"), a},
          {QStringLiteral("--template"), QStringLiteral("y"), QStringLiteral("--date-format"),
           QStringLiteral("YYYY"), a},
          {QStringLiteral("--text"), QStringLiteral("y"), QStringLiteral("--date-format"),
           QStringLiteral("YYYY_MM_DD"), a},
          {QStringLiteral("--undo"), a}})
        EXPECT_EQ(rename(wrong).exitCode, 2) << wrong.join(u' ').toStdString();
    EXPECT_TRUE(exists("a.m4v"));
    QDir().mkpath(m_dir.path(QStringLiteral("empty")));
    EXPECT_EQ(
        rename({QStringLiteral("--text"), QStringLiteral("x"), m_dir.path(QStringLiteral("empty"))})
            .exitCode,
        3);
}

} // namespace
