// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"

#include <QString>

#include <functional>

namespace clipheave::cli {

/// Writes the sample library into `folder` (made when missing) and returns the number of files:
/// drawn videos with QuickTime keys, iTunes tags, 3GPP boxes and positions; tones in every audio
/// format that the import reads; photos with camera, date and position. Files that are there are
/// replaced. `written` is called after each file. At most 20 MB.
[[nodiscard]] platform::Result<int>
writeDemoLibrary(const QString& folder, const std::function<void(const QString& path)>& written);

} // namespace clipheave::cli
