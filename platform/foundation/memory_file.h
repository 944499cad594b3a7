// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_reader.h"

namespace clipheave::platform {

/// Returns a reader of `bytes`, which lie in a file in memory without a name: for what reads files
/// alone. Its path() opens nothing once the reader is gone. Io when the system refuses, also where
/// /proc is not there.
[[nodiscard]] Result<FileReader> openMemoryFile(const QByteArray& bytes);

} // namespace clipheave::platform
