// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "photo/photo_edits.h"

namespace clipheave::photo {

/// Returns the keys of a position alone: latitude, longitude and altitude with their letters.
[[nodiscard]] QVariantMap positionProperties(const PlaceTexts& place);

} // namespace clipheave::photo
