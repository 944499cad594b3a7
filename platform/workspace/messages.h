// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"

// The sentences of this layer; their words stand in the tables of the fronts.
namespace clipheave::platform {

// The system.
inline constexpr MessageCode kReadSystemVersion{"read-system-version"};

} // namespace clipheave::platform
