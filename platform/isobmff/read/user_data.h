// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/isobmff/read/item_values.h"

namespace clipheave::platform {

/// Adds the items of the movie's `udta`, those of a `meta` inside it included.
void readUserData(ItemSink& sink, const Box& udta);

} // namespace clipheave::platform
