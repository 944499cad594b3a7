// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_reader.h"

#include <QStringList>

namespace clipheave::platform {

/// Returns the names of what stands in the tags before and behind the audio, of MPEG or FLAC, and
/// gives no item: frames that are encrypted or damaged, "APIC" for a link to an image elsewhere or
/// for the other images of an APE tag without a front cover, keys of binary APE items, "Lyrics3".
/// Each once.
[[nodiscard]] QStringList hiddenMpegTags(FileReader& reader);

} // namespace clipheave::platform
