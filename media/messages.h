// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"

// The sentences of this layer; their words stand in the tables of the fronts.
namespace clipheave::media {

using platform::MessageCode;

// Why a path gave no item.
inline constexpr MessageCode kFolderLoops{"folder-leads-back"};
inline constexpr MessageCode kFoldersTooDeep{"folders-too-deep"};
inline constexpr MessageCode kPhotoNotWanted{"photo-not-wanted"};
inline constexpr MessageCode kNotMedia{"not-video-or-audio"};
/// The extension, without its dot.
inline constexpr MessageCode kUnknownKind{"unknown-kind"};

// Why an item is there in part only.
inline constexpr MessageCode kNotForAudioServices{"not-for-audio-services"};

} // namespace clipheave::media
