// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_system.h"

#include <optional>

namespace clipheave::platform {

/// The creation date that someone has stored for the file: in the file system's own attribute, in
/// "user.clipheave.crtime" (RFC 3339, UTC, nanoseconds) or in the attribute of the SMB server, in
/// this order.
[[nodiscard]] std::optional<timespec> storedCreationDate(const FileReference& file);
/// The stored date, else birth time, else modification time.
[[nodiscard]] timespec creationDate(const FileReference& file, const struct statx& status);
/// True when this program has stored a creation date with the file, as it does with its outputs
/// where the file system keeps extended attributes.
[[nodiscard]] bool bearsOwnCreationDate(const FileReference& file);
/// 0 or errno; ENOTSUP when the file system keeps no extended attributes.
int storeCreationDate(const FileReference& file, const timespec& date);

} // namespace clipheave::platform
