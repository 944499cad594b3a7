// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/image_item.h"
#include "media/metadata_walk.h"

namespace clipheave::media {

// One file each: path in, filled item out, the caller's alone. They share nothing and may run on
// any thread. A file that cannot be read in full still gives an item, with `problem` set; they fail
// only for what is no regular file or does not exist.

/// `table` is Video or VideoInFolder.
[[nodiscard]] platform::Result<MutableItemPointer> readVideoItem(const QString& path,
                                                                 WalkTable table);
/// All audio but WAV, FLAC, AU and AIFF.
[[nodiscard]] platform::Result<MutableItemPointer>
readSomeMp3AudioFileWithFilePath(const QString& path);
/// "wav", "flac", "au": by the audio-file properties.
[[nodiscard]] platform::Result<MutableItemPointer>
readSomeWAVAudioFileWithFilePath(const QString& path);
/// "aiff", "aif".
[[nodiscard]] platform::Result<MutableItemPointer>
readSomeAiffAudioFileWithFilePath(const QString& path);
/// A photo: file facts, pixel size, capture date, camera and position.
[[nodiscard]] platform::Result<MutableItemPointer> readPhotoItem(const QString& path);

} // namespace clipheave::media
