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

} // namespace clipheave::platform
