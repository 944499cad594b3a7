// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"

// The sentences of this layer; their words stand in the tables of the fronts.
namespace clipheave::platform {

// Operations.
inline constexpr MessageCode kReadMpegAudio{"read-mpeg-audio"};
inline constexpr MessageCode kReadFlac{"read-flac"};
inline constexpr MessageCode kReadWave{"read-wave"};
inline constexpr MessageCode kReadAiff{"read-aiff"};
inline constexpr MessageCode kReadCaf{"read-caf"};
inline constexpr MessageCode kReadAu{"read-au"};
inline constexpr MessageCode kReadTags{"read-tags"};
inline constexpr MessageCode kFindTags{"find-tags"};
inline constexpr MessageCode kBuildId3Tag{"build-id3-tag"};
inline constexpr MessageCode kWriteFlacTags{"write-flac-tags"};

// Reasons.
inline constexpr MessageCode kSignatureMissing{"signature-missing"};
inline constexpr MessageCode kEndsInsideChunk{"ends-inside-chunk"};
inline constexpr MessageCode kEndsInsideAudio{"ends-inside-audio"};
inline constexpr MessageCode kNoAiffCommonChunk{"no-aiff-common-chunk"};
inline constexpr MessageCode kNoCafDescription{"no-caf-description"};
inline constexpr MessageCode kNoWaveFormatChunk{"no-wave-format-chunk"};
inline constexpr MessageCode kFlacBlockDamaged{"flac-block-damaged"};
inline constexpr MessageCode kFlacBlockTooLarge{"flac-block-too-large"};
inline constexpr MessageCode kNoFlacStreamInfo{"no-flac-stream-info"};
inline constexpr MessageCode kNoFlacAudio{"no-flac-audio"};
inline constexpr MessageCode kFlacCommentsDamaged{"flac-comments-damaged"};
inline constexpr MessageCode kArtworkUnreadable{"artwork-unreadable"};
inline constexpr MessageCode kNoMpegFrame{"no-mpeg-frame"};
inline constexpr MessageCode kNoMpegFrameAndNoTag{"no-mpeg-frame-and-no-tag"};
inline constexpr MessageCode kLeadingTagDamaged{"leading-tag-damaged"};
inline constexpr MessageCode kLeadingTagBeyondFile{"leading-tag-beyond-file"};
inline constexpr MessageCode kLeadingTagCoversAudio{"leading-tag-covers-audio"};
inline constexpr MessageCode kApeTagBeyondFile{"ape-tag-beyond-file"};
inline constexpr MessageCode kTagTooLarge{"tag-too-large"};
inline constexpr MessageCode kNoTagFromLibrary{"no-tag-from-library"};
inline constexpr MessageCode kDurationUnknown{"duration-unknown"};

} // namespace clipheave::platform
