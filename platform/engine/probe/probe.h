// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/model/media_facts.h"

namespace clipheave::platform {

/// See MediaEngine::probe.
[[nodiscard]] Result<MediaFacts> probeFile(FileReader& reader);

} // namespace clipheave::platform
