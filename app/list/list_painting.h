// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/theme/theme.h"

#include <QBrush>
#include <QFontMetrics>
#include <QPixmap>
#include <QRectF>

namespace clipheave::app {

/// Returns the text shortened in its middle to `width` px, so that a file name keeps its extension
/// and some of what stands before it.
[[nodiscard]] QString elidedName(const QString& name, const QFontMetrics& metrics, int width);

/// Returns a brush that fills the frame with the middle of the image; a clip would leave ragged
/// corners. The image is not null.
[[nodiscard]] QBrush fillingBrush(const QPixmap& image, const QRectF& frame);

/// Returns the image of the file's kind (video, music, image, or a plain file), in the kind's
/// colour.
[[nodiscard]] QPixmap kindPixmap(const QString& path, int side, double devicePixelRatio);

} // namespace clipheave::app
