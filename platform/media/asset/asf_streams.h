// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_reader.h"

namespace clipheave::platform {

/// Which kinds of streams the header of an ASF file describes.
struct AsfStreams {
    bool audio = false, video = false;
};

/// Returns the streams of the header that begins at `start`, however long other objects in it are.
/// None where the header is damaged before them. Source: ASF Specification 01.20.03, 3.1, 3.3, 3.4,
/// 4.1 and 10.1.
[[nodiscard]] AsfStreams asfStreams(FileReader& reader, std::uint64_t start);

} // namespace clipheave::platform
