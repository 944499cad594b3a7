// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <optional>

namespace clipheave::platform {

/// Distinguishes one file from all others, whatever its name; stays through renames. The birth time
/// separates it from a later file that was given the same inode.
struct FileIdentity {
    std::uint64_t device = 0, inode = 0;
    std::int64_t bornSeconds = 0; ///< since the epoch; 0 with 0 ns: not known
    std::uint32_t bornNanoseconds = 0;

    [[nodiscard]] bool isKnown() const { return inode != 0; }
    /// False when either is unknown. Device numbers count only where no birth time is known: they
    /// may change when a disk is mounted again.
    [[nodiscard]] bool isSameAs(const FileIdentity& other) const;
};

/// Of the item itself: a link is not followed. Unknown when there is none.
[[nodiscard]] FileIdentity identityOfItem(const QString& path);

struct MoveOutcome {
    bool copied = false;             ///< to another file system: the file is a new one there
    std::optional<Error> sourceKept; ///< the copy is complete, but the source could not be removed
};

/// NSFileManager::moveItem() for those who must know what becomes of the file. Never replaces
/// (AlreadyExists). A link is moved as a link. Across file systems a complete and durable copy
/// appears under the new name in one step, with extended attributes, permissions and dates, before
/// the source is removed; folders are NotSupported there. `beforeCopyAppears` gets the identity of
/// that copy and forbids it by a failure. A source that changes while it is copied stays
/// (InvalidData).
[[nodiscard]] Result<MoveOutcome>
moveItemWithOutcome(const QString& from, const QString& to,
                    const std::function<Result<void>(const FileIdentity&)>& beforeCopyAppears);

} // namespace clipheave::platform
