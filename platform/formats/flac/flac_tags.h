// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/model/encoded_image.h"

#include <QMap>

#include <functional>

namespace clipheave::platform {

/// What changes in the tags of a FLAC file.
struct FlacTagChanges {
    /// By the keys of the audio file's info dictionary ("title", "recorded date", …). An empty text
    /// takes the comment away. Keys that FLAC files have no comment for are left out.
    QMap<QString, QString> info;
    /// Replaces the front cover; null: it stays.
    EncodedImage image;
};

/// Writes `source` with changed tags as `target`, in one step, and returns notes. All other
/// comments and blocks stay byte for byte, and so does the audio, which the kernel copies. An ID3
/// tag in front of the file goes with any change, since it would show what the comments say no
/// longer; what it says moves into the comments first, and a note names the rest. InvalidData when
/// a block is damaged, LimitExceeded when a block would be over 16 MiB; `progress` (0 to 1) stops
/// it by returning false. Source: RFC 9639, section 8; xiph.org, Ogg Vorbis I comment field.
[[nodiscard]] Result<Notes> rewriteFlacTags(const QString& source, const QString& target,
                                            const FlacTagChanges& changes,
                                            const std::function<bool(double)>& progress);

} // namespace clipheave::platform
