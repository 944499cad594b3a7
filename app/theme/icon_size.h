// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSize>
#include <QtGlobal>

// What differs between releases 6.7 and 6.8 of Qt: in what a QIcon asks its engine for a pixmap.
namespace clipheave::app {

/// Returns in device px the size that QIcon hands to QIconEngine::scaledPixmap with `scale`.
/// Source: the documentation of QIcon::pixmap, "Prior to Qt 6.8".
[[nodiscard]] inline QSize devicePixelsOf(const QSize& size, [[maybe_unused]] qreal scale) {
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    return (QSizeF(size) * scale).toSize();
#else
    return size;
#endif
}

} // namespace clipheave::app
