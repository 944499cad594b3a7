// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_reader.h"

namespace clipheave::platform {

/// Whether the video of a motion photo says where it was taken.
enum class VideoPlace {
    None,    ///< its movie box has no position
    Unknown, ///< its movie box cannot be read
    There,   ///< in its user data, its metadata or a track of positions
};

/// Returns where the boxes of an MP4 video that begins with `ftyp` at `begin` end, at most at
/// `end`; `begin` when no such video stands there.
[[nodiscard]] std::uint64_t endOfMotionVideo(FileReader& reader, std::uint64_t begin,
                                             std::uint64_t end);
/// Reads the movie box of the video in that range.
[[nodiscard]] VideoPlace placeOfMotionVideo(FileReader& reader, std::uint64_t begin,
                                            std::uint64_t end);

} // namespace clipheave::platform
