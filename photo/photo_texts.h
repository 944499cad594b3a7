// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "photo/photo_edits.h"

namespace clipheave::photo {

/// Returns the keys of a position alone: latitude, longitude and altitude with their letters.
[[nodiscard]] QVariantMap positionProperties(const PlaceTexts& place);
/// Returns the pane as the properties of a photo fill it, nothing changed.
[[nodiscard]] PaneTexts paneOfProperties(const QVariantMap& properties);

} // namespace clipheave::photo
