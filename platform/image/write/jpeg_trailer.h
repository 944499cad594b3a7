// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/image/write/mp_index.h"

#include <vector>

namespace clipheave::platform {

/// What stands behind the first image of a JPEG file.
struct JpegTrailer {
    std::vector<ByteSpan> images; ///< further images: in order, apart from each other
    std::vector<ByteSpan> videos; ///< of motion photos, in order
    bool isSearched = true;       ///< false: there may be more, the search has its limits
};

/// Returns the further images and the videos from `begin` on: those that the multi-picture index
/// names (in order), and those that stand there without one, as gain maps, portraits with depth and
/// motion photos of many cameras have them.
[[nodiscard]] JpegTrailer jpegTrailer(FileReader& reader, std::uint64_t begin,
                                      const std::vector<ByteSpan>& indexed);

} // namespace clipheave::platform
