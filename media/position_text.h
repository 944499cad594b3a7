// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringView>

#include <optional>

namespace clipheave::media {

/// Which number of a position a text stands for.
enum class PositionPart {
    Latitude,  ///< degrees, -90 to 90
    Longitude, ///< degrees, -180 to 180
    Altitude,  ///< metres, -32768 to 32767: what a "loci" box can hold (3GPP TS 26.244, 8.10)
};

/// Returns the typed number in plain decimals, without a "+" ("-33.8688"). Blanks around it, a
/// comma as the decimal sign, the sign U+2212 and an exponent are understood; digits stay as they
/// were typed otherwise. Nothing for a text that is no number in the range of `part`, an empty one
/// too.
[[nodiscard]] std::optional<QString> positionNumber(QStringView typed, PositionPart part);

} // namespace clipheave::media
