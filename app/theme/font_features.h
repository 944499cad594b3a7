// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFont>
#include <QtGlobal>

// What differs between releases 6.6 and 6.7 of Qt: features of a font can be chosen.
namespace clipheave::app {

/// Gives all digits one width and switches contextual forms off, so that columns of numbers stand
/// still. Before Qt 6.7 the font's own digits stay, which have one width in most.
inline void alignDigits([[maybe_unused]] QFont& font) {
#if QT_VERSION >= QT_VERSION_CHECK(6, 7, 0)
    font.setFeature("tnum", 1);
    font.setFeature("calt", 0);
#endif
}

} // namespace clipheave::app
