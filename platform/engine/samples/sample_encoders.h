// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/samples/sample_stream.h"

namespace clipheave::platform {

/// Adds the video of a demonstration file. NotSupported for an unknown encoder.
[[nodiscard]] Result<std::unique_ptr<SampleStream>> makeVideoSample(FileOutput& output,
                                                                    const SampleMedia& sample);
/// Adds the audio of a demonstration file. NotSupported for an unknown encoder.
[[nodiscard]] Result<std::unique_ptr<SampleStream>> makeAudioSample(FileOutput& output,
                                                                    const SampleMedia& sample);

} // namespace clipheave::platform
