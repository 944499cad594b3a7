// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"

// What this layer says to users; the sentences stand in the tables of the fronts.
namespace clipheave::platform {

// Loading the media engine.
inline constexpr MessageCode kLoadMediaEngine{"load-media-engine"};
inline constexpr MessageCode kNoModuleFolder{"no-module-folder"};
inline constexpr MessageCode kNoSuchModule{"no-such-module"}; ///< path
inline constexpr MessageCode kUnknownLoaderFailure{"unknown-loader-failure"};
/// Number of the module, number of the program.
inline constexpr MessageCode kOtherEngineAbi{"other-engine-abi"};

} // namespace clipheave::platform
