// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_reader.h"

#include <functional>

namespace clipheave::platform {

/// The bytes of an MPEG audio file between its tags.
struct MpegSound {
    std::uint64_t start = 0, end = 0; ///< offsets in the file
};

/// Leaves out every tag before and behind the sound: ID3v2 (several in a row, and v2.4 with a
/// footer at the end), ID3v1 with its "TAG+" block, Lyrics3 of both versions, APE of both versions
/// and MusicMatch. A tag counts only when its parts confirm each other, so that no sound is taken
/// for one. InvalidData when there is no sound between them, or when a tag's size is a lie (beyond
/// the file, or over sound): the file is not to be rewritten then.
[[nodiscard]] Result<MpegSound> findMpegSound(FileReader& reader);

/// `source` without its tags, behind `tag`, as `target`, in one step. The sound is copied by the
/// kernel; `progress` (0 to 1) stops it by answering false.
[[nodiscard]] Result<void> replaceMpegTags(const QString& source, const QString& target,
                                           const QByteArray& tag,
                                           const std::function<bool(double)>& progress);

} // namespace clipheave::platform
