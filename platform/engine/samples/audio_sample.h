// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/samples/sample_stream.h"

namespace clipheave::platform {

/// Adds the audio stream of a demonstration file to the output, before its header is written.
/// NotSupported for an unknown encoder.
[[nodiscard]] Result<std::unique_ptr<SampleStream>> makeAudioSample(FileOutput& output,
                                                                    const SampleMedia& sample);

} // namespace clipheave::platform
