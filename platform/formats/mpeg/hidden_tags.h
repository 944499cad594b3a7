// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_reader.h"

#include <QStringList>

namespace clipheave::platform {

/// Returns the names of what stands in the tags of an MPEG audio file and gives no item: frames
/// that are encrypted or damaged, "APIC" for a link to an image elsewhere, "Lyrics3". Each once.
[[nodiscard]] QStringList hiddenMpegTags(FileReader& reader);

} // namespace clipheave::platform
