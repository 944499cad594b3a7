// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "photo/photo_edits.h"

namespace clipheave::photo {

/// Returns the keys of a position alone: latitude, longitude and altitude with their letters.
[[nodiscard]] QVariantMap positionProperties(const PlaceTexts& place);
/// Returns the pane as the properties of a photo fill it, nothing changed.
[[nodiscard]] PaneTexts paneOfProperties(const QVariantMap& properties);
/// Returns what the pane writes without the keywords, where the photo fills the field with the same
/// text: one of them may hold a comma, at which typed ones are split.
[[nodiscard]] QVariantMap withoutOwnKeywords(QVariantMap properties, const QString& typed,
                                             const QString& photo);

} // namespace clipheave::photo
