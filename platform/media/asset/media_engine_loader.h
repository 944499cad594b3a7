// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/model/media_engine.h"

// The steps of mediaEngine(), for tests.
namespace clipheave::platform {

/// Loads the module and returns its entry point. NotSupported with the loader's text when the
/// module or one of its libraries is missing.
[[nodiscard]] Result<MediaEngineEntry> findMediaEngine();

/// Starts the engine behind `entry` and lends it the log and the wording of this program.
/// NotSupported, with both numbers, when the module was built for another ABI than `abi`.
[[nodiscard]] Result<MediaEngine*> startMediaEngine(MediaEngineEntry entry,
                                                    int abi = kMediaEngineAbi);

} // namespace clipheave::platform
