// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/caf_padding.h"
#include "platform/engine/io/file_input.h"
#include "platform/foundation/result.h"

#include <functional>

namespace clipheave::platform {

/// Copies one audio stream of `input`, whose codec M4A holds, into a file of its own at `target`.
/// Packets follow each other to the sample where the source has no gap; an edit list hides the
/// padding. Returns notes. Cancelled when `progress` (0 to 1) returns false; InvalidData when most
/// packets are damaged or there are none.
[[nodiscard]] Result<Notes> copyAudio(FileInput& input, AVStream& stream,
                                      const AudioPadding& padding, const QString& target,
                                      const std::function<bool(double)>& progress);

} // namespace clipheave::platform
