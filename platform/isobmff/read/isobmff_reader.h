// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/model/media_facts.h"

namespace clipheave::platform {

/// Facts and metadata items of an ISO base media / QuickTime file. Reads `ftyp`, `moov` (and what
/// of `moof`/`mfra`/`sidx` the duration of a fragmented file needs), never the payload. A damaged
/// file gives what stood before the damage, with `problem` set; InvalidData when there is nothing
/// at all.
[[nodiscard]] Result<MediaFacts> readIsobmff(FileReader& reader);

} // namespace clipheave::platform
