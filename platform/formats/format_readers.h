// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/model/media_facts.h"

namespace clipheave::platform {

// Readers of audio files, one a container. Each reads headers and tags, never the audio; a damaged
// file gives what could be read, with `problem` set; InvalidData when there is nothing at all.
[[nodiscard]] Result<MediaFacts> readMpegAudio(FileReader& reader);
[[nodiscard]] Result<MediaFacts> readFlac(FileReader& reader);
[[nodiscard]] Result<MediaFacts> readWave(FileReader& reader);
[[nodiscard]] Result<MediaFacts> readAiff(FileReader& reader);
[[nodiscard]] Result<MediaFacts> readCaf(FileReader& reader);
[[nodiscard]] Result<MediaFacts> readAu(FileReader& reader);
/// Whatever else the tag library opens: Ogg (Vorbis, Opus, Speex, FLAC), ASF/WMA, APE, WavPack,
/// Musepack, TrueAudio. NotSupported when it opens none of these. The bytes decide, the name helps.
[[nodiscard]] Result<MediaFacts> readTagged(FileReader& reader);

} // namespace clipheave::platform
