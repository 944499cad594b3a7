// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"

// The sentences of this layer; their words stand in the tables of the fronts.
namespace clipheave::platform {

// Audio files.
inline constexpr MessageCode kOpenAudioFile{"open-audio-file"};
inline constexpr MessageCode kReadAudioFileProperty{"read-audio-file-property"};

} // namespace clipheave::platform
