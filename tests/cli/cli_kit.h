// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/testkit/media.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

// The whole program through its command line.
namespace clitest {

inline testkit::RunResult cli(const QStringList& arguments) {
    return testkit::run(QStringLiteral(CLIPHEAVE_CLI), arguments);
}

inline QJsonArray listed(const QStringList& arguments) {
    const testkit::RunResult result =
        cli(QStringList{QStringLiteral("--json"), QStringLiteral("list")} + arguments);
    EXPECT_LE(result.exitCode, 1) << result.err.toStdString();
    QJsonParseError error;
    const QJsonArray items = QJsonDocument::fromJson(result.out, &error).array();
    EXPECT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString();
    return items;
}

} // namespace clitest
