// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/testkit/testkit.h"

#include <QDirIterator>

/// Skips the running test where there are no real files.
#define SKIP_WITHOUT_CORPUS()                                                                      \
    if (testkit::corpus().isEmpty())                                                               \
    GTEST_SKIP() << "CLIPHEAVE_CORPUS is not set"

namespace testkit {

/// Paths of the real files below some of its folders whose names match any of `patterns`, sorted.
inline QStringList corpusFiles(const QStringList& folders, const QStringList& patterns = {}) {
    QStringList paths;
    for (const QString& folder : folders) {
        QDirIterator files(corpus() + u'/' + folder, patterns, QDir::Files,
                           QDirIterator::Subdirectories);
        while (files.hasNext())
            paths.append(files.next());
    }
    paths.sort();
    return paths;
}

} // namespace testkit
