// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/commands.h"

namespace clipheave::cli {

// The commands that write the metadata of photos. Each returns an ExitStatus.

/// "remove".
int runPhotoRemove(const GlobalOptions& global, const PhotoOptions& options, Console& console);
/// "gps" and "change-gps".
int runPhotoPlace(const GlobalOptions& global, const PhotoOptions& options, Console& console);
/// "dates".
int runPhotoDates(const GlobalOptions& global, const PhotoOptions& options, Console& console);
/// "apply".
int runPhotoApply(const GlobalOptions& global, const PhotoOptions& options, Console& console);

} // namespace clipheave::cli
