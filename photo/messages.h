// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"

// What this layer says to users; the sentences stand in the tables of the fronts.
namespace clipheave::photo {

using platform::MessageCode;

inline constexpr MessageCode kStampDate{"stamp-date"};

inline constexpr MessageCode kNoPhotoItem{"no-photo-item"};

} // namespace clipheave::photo
