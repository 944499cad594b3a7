// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/atomic_file.h"
#include "platform/foundation/file_reader.h"

#include <functional>

namespace clipheave::platform {

/// The bytes of an MPEG audio file between its tags.
struct MpegAudio {
    std::uint64_t start = 0, end = 0; ///< offsets in the file
};

/// Leaves out every tag before and behind the audio: ID3v2 (several in a row, and v2.4 with a
/// footer at the end), ID3v1 with its "TAG+" block, Lyrics3 of both versions, APE of both versions
/// and MusicMatch. A tag counts only when its parts confirm each other, so that no audio is taken
/// for one. InvalidData when there is no audio between them, or when a tag's size is wrong (beyond
/// the file, or over audio): the file is not to be rewritten then.
[[nodiscard]] Result<MpegAudio> findMpegAudio(FileReader& reader);

/// Returns the offset where the tags behind the audio begin, by the same strict rules; the file's
/// size without any. Nothing before `from` is taken for a tag.
[[nodiscard]] std::uint64_t startOfTrailingTags(FileReader& reader, std::uint64_t from);

/// `source` without its tags, behind `tag`, as `target`, in one step. The audio is copied by the
/// kernel; `progress` (0 to 1) stops it by returning false. `attributes` travel along.
[[nodiscard]] Result<void>
replaceMpegTags(const QString& source, const QString& target, const QByteArray& tag,
                const std::function<bool(double)>& progress,
                AtomicFile::Attributes attributes = AtomicFile::Attributes::All);

} // namespace clipheave::platform
