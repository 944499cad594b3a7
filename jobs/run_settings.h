// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace clipheave::jobs {

/// What a command takes from the controller besides its items, captured once at the click.
struct RunSettings {
    QString storagelocation; ///< the output folder
    /// As the import left them; the mirrored output path needs both.
    bool bImportLocalFolder = false;
    QString bImportLocalPath;
};

} // namespace clipheave::jobs
