// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/testkit/media.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

// The whole program through its command line.
namespace clitest {

/// Runs the program; `options` and `more` are those of testkit::words().
inline testkit::RunResult cli(const QByteArray& options, const QStringList& more = {}) {
    return testkit::run(QStringLiteral(CLIPHEAVE_CLI), testkit::words(options, more));
}

/// Returns what "list" prints with further options and paths.
inline QJsonArray listed(const QStringList& paths, const QByteArray& options = {}) {
    const testkit::RunResult result = cli("--json list " + options, paths);
    EXPECT_LE(result.exitCode, 1) << result.err;
    QJsonParseError error;
    QJsonArray items = QJsonDocument::fromJson(result.out, &error).array();
    EXPECT_EQ(error.error, QJsonParseError::NoError) << error.errorString();
    return items;
}
/// Returns the one item of a file.
inline QJsonObject listedFile(const QString& path, const QByteArray& options = {}) {
    return listed({path}, options).first().toObject();
}

/// The library that the program makes itself, once for all tests.
struct Library {
    testkit::TempDir dir;
    testkit::RunResult made = cli("--quiet demo %", {dir.path()});
};
inline const Library& library() {
    static const Library made;
    EXPECT_EQ(made.made.exitCode, 0) << made.made.err;
    return made;
}
/// Returns the path of a file or folder in it.
inline QString sample(const char* name = "") {
    return library().dir.path(name);
}

} // namespace clitest
