// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/isobmff/read/item_values.h"

namespace clipheave::platform {

/// Adds the items of a `meta` box of the movie: the `ilst` of iTunes ("itsk", "itlk"), or with
/// `keys` the QuickTime metadata ("mdta"). Plain and FullBox forms are taken.
void readMetaItems(ItemSink& sink, const Box& meta);

/// Adds the items of the movie's `udta`, those of a `meta` inside it included.
void readUserData(ItemSink& sink, const Box& udta);

/// The ISO and 3GPP codes, which are "uiso" whatever the brand says.
[[nodiscard]] bool isIsoUserData(std::uint32_t type);

} // namespace clipheave::platform
