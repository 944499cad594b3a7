// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/image_item.h"
#include "media/metadata_walk.h"

namespace clipheave::media {

// One file each: path in, filled item out, the caller's alone. They share nothing and may run on
// any thread. A file that cannot be read in full still gives an item, with `problem` set; they fail
// only for what is not a regular file or does not exist.

/// Reads a video; `table` is Video or VideoInFolder.
[[nodiscard]] platform::Result<MutableItemPointer> readVideoItem(const QString& path,
                                                                 WalkTable table);
/// Reads an audio file that is not WAV, FLAC, AU or AIFF.
[[nodiscard]] platform::Result<MutableItemPointer>
readSomeMp3AudioFileWithFilePath(const QString& path);
/// Reads "wav", "flac" and "au", by their audio-file properties.
[[nodiscard]] platform::Result<MutableItemPointer>
readSomeWAVAudioFileWithFilePath(const QString& path);
/// Reads "aiff" and "aif".
[[nodiscard]] platform::Result<MutableItemPointer>
readSomeAiffAudioFileWithFilePath(const QString& path);
/// Reads a photo: file facts, pixel size, capture date, camera and position.
[[nodiscard]] platform::Result<MutableItemPointer> readPhotoItem(const QString& path);

} // namespace clipheave::media
