// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_reader.h"

#include <cstdint>
#include <optional>

namespace clipheave::platform {

/// What of a stream's decoded samples is heard. In samples of one channel.
struct AudioPadding {
    std::int64_t priming = 0;          ///< come first and are not heard
    std::optional<std::int64_t> heard; ///< come next; none: all that are there
};

/// Returns what the packet table of a CAF file says, which libavformat does not hand on. No padding
/// where the file is none, has no table, or one whose numbers contradict each other. Source: Apple
/// Core Audio Format Specification 1.0, "Packet Table Chunk".
[[nodiscard]] AudioPadding cafPadding(FileReader& reader);

} // namespace clipheave::platform
