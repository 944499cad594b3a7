// SPDX-License-Identifier: GPL-3.0-or-later
#include "jobs/run_progress.h"

namespace clipheave::jobs {

double RunProgress::files() const {
    double sum = 0;
    for (const Export& running : exports)
        sum += running.done * running.files;
    return sum;
}

double RunProgress::mean() const {
    int all = 0;
    for (const Export& running : exports)
        all += running.files;
    return all > 0 ? files() / all : -1;
}

} // namespace clipheave::jobs
