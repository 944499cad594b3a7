// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"

// What this layer says to users; the sentences stand in the tables of the fronts.
namespace clipheave::video {

using platform::MessageCode;

inline constexpr MessageCode kReadFrames{"read-video-frames"};

inline constexpr MessageCode kNoVideoItem{"no-video-item"};
inline constexpr MessageCode kUnknownVideoKind{"unknown-video-kind"}; ///< extension
inline constexpr MessageCode kWithoutVideo{"source-without-video"};
inline constexpr MessageCode kWithoutTracks{"source-without-tracks"};
inline constexpr MessageCode kWithoutFrames{"video-without-frames"};

inline constexpr MessageCode kNothingToMerge{"nothing-to-merge"};

inline constexpr MessageCode kOlderOutputRemoved{"older-output-removed"};
inline constexpr MessageCode kReplacedOlderFile{"replaced-older-file"};
inline constexpr MessageCode kMergedInto{"merged-into"};           ///< name
inline constexpr MessageCode kFramesWritten{"frames-written"};     ///< count
inline constexpr MessageCode kFramesSkipped{"frames-not-decoded"}; ///< count

} // namespace clipheave::video
