// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"

// The sentences of this layer; their words stand in the tables of the fronts.
namespace clipheave::platform {

// Shared by the assets and the engine.
inline constexpr MessageCode kReadVideo{"read-video"};
inline constexpr MessageCode kWriteVideo{"write-video"};
inline constexpr MessageCode kNoVideoTrack{"no-video-track"};
inline constexpr MessageCode kNoAudioTrack{"no-audio-track"};
inline constexpr MessageCode kFrameSizeOutOfRange{"frame-size-out-of-range"}; ///< width, height
inline constexpr MessageCode kTagsNotCarriedOver{"tags-not-carried-over"};    ///< their names
inline constexpr MessageCode kEndsBeforeDuration{
    "ends-before-duration"}; ///< seconds: read, announced

// Pixel buffers.
inline constexpr MessageCode kCreatePixelBuffer{"create-pixel-buffer"};

} // namespace clipheave::platform
