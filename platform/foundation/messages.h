// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"

// The sentences of this layer; their words stand in the tables of the fronts.
namespace clipheave::platform {

// What an ErrorCode means to a user.
inline constexpr MessageCode kNotFound{"not-found"};
inline constexpr MessageCode kAccessDenied{"access-denied"};
inline constexpr MessageCode kNotSupported{"not-supported"};
inline constexpr MessageCode kDamagedFile{"damaged-file"};
inline constexpr MessageCode kFileEndsEarly{"file-ends-early"};
inline constexpr MessageCode kLimitExceeded{"limit-exceeded"};
inline constexpr MessageCode kNameTaken{"name-taken"};
inline constexpr MessageCode kDiskFull{"disk-full"};
inline constexpr MessageCode kCancelled{"cancelled"};

// Operations on files and folders.
inline constexpr MessageCode kOpenFile{"open-file"};
inline constexpr MessageCode kReadFile{"read-file"};
inline constexpr MessageCode kCreateFile{"create-file"};
inline constexpr MessageCode kReserveSpace{"reserve-space"};
inline constexpr MessageCode kWriteFile{"write-file"};
inline constexpr MessageCode kSaveFile{"save-file"};
inline constexpr MessageCode kCopyFile{"copy-file"};
inline constexpr MessageCode kCopyDates{"copy-dates"};
inline constexpr MessageCode kMoveItem{"move-item"};
inline constexpr MessageCode kMoveLink{"move-link"};
inline constexpr MessageCode kRemoveItem{"remove-item"};
inline constexpr MessageCode kReadAttributes{"read-attributes"};
inline constexpr MessageCode kSetDates{"set-dates"};
inline constexpr MessageCode kSetCreationDate{"set-creation-date"};
inline constexpr MessageCode kSetModificationDate{"set-modification-date"};
inline constexpr MessageCode kReadFolder{"read-folder"};
inline constexpr MessageCode kCreateFolder{"create-folder"};
inline constexpr MessageCode kSyncFolder{"sync-folder"};
inline constexpr MessageCode kWriteSettings{"write-settings"};

// Reasons.
inline constexpr MessageCode kNotARegularFile{"not-a-regular-file"};
inline constexpr MessageCode kNeitherFileNorLink{"neither-file-nor-link"};
inline constexpr MessageCode kEndsBeforeAnnouncedBytes{"ends-before-announced-bytes"};
inline constexpr MessageCode kSourceHasShrunk{"source-has-shrunk"};
inline constexpr MessageCode kFileHasChanged{"file-has-changed"};
inline constexpr MessageCode kOutOfMemory{"out-of-memory"};

} // namespace clipheave::platform
