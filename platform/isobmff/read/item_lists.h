// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/isobmff/read/item_values.h"

namespace clipheave::platform {

/// Adds the items of a `meta` box of the movie: the `ilst` of iTunes ("itsk", "itlk"), or with
/// `keys` the QuickTime metadata ("mdta"). Plain and FullBox forms are taken.
void readMetaItems(ItemSink& sink, const Box& meta);

} // namespace clipheave::platform
