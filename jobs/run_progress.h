// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <vector>

namespace clipheave::jobs {

/// How far the exports are that run now, in the order in which they were started.
struct RunProgress {
    struct Export {
        QString source;
        double done = 0; ///< 0 to 1
        int files = 1;   ///< how many of the run's files it stands for
    };
    std::vector<Export> exports;

    /// Returns how many files are done of all together: one that is half done counts 0.5.
    [[nodiscard]] double files() const;
    /// Returns the mean of all files, 0 to 1; -1 when nothing runs.
    [[nodiscard]] double mean() const;
};

} // namespace clipheave::jobs
