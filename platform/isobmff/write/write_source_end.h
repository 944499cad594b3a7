// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"
#include "platform/isobmff/write/write_layout.h"

namespace clipheave::platform {

/// Returns a note when samples of the movie lie beyond the end of the file, which was cut then: the
/// seconds of the shortest track that misses some, or without numbers for fragments. From the
/// sample tables alone; they are walked only where the top level or a last chunk gives reason to.
[[nodiscard]] Notes noteOnMissingSamples(const SourceFile& source);

} // namespace clipheave::platform
