// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/asset/media_file.h"

namespace clipheave::platform {

/// What the first bytes of a file say; those after ID3v2 tags at its start count.
struct SniffedFile {
    Container container = Container::Unknown;
    bool hasId3Prefix = false; ///< at least one ID3v2 tag stands first
    bool hasVideo = false;     ///< Ogg and ASF only: a video stream is announced
    bool hasAudio = true;      ///< ASF only: an audio stream is announced
};
/// Returns what a file is by its first bytes. Reads at most a few kilobytes;
/// of ASF the header of each object.
[[nodiscard]] SniffedFile sniffFile(FileReader& reader);

} // namespace clipheave::platform
