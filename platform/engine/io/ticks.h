// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/ffmpeg.h"
#include "platform/media/model/cm_time.h"

#include <optional>
#include <vector>

namespace clipheave::platform {

/// A time or duration in a unit in which the usual frame and sample rates are whole numbers.
using Ticks = std::int64_t;
inline constexpr Ticks kTicksPerSecond = 705'600'000;
inline constexpr AVRational kTickBase{1, 705'600'000};
/// Times beyond ten years are damage; with the bound sums and differences cannot overflow.
inline constexpr Ticks kFarthestTicks = kTicksPerSecond * 86400 * 3653;
/// Stretches shorter than this are rounding, not frames or gaps: a millisecond.
inline constexpr Ticks kSliverTicks = kTicksPerSecond / 1000;
/// The longest stretch that is filled with black, silence or one repeated frame: half a day.
/// Timestamps that ask for more are damage, and would keep the encoder busy for days.
inline constexpr Ticks kLongestFiller = kTicksPerSecond * 3600 * 12;

/// Returns nothing for an invalid time, a missing timestamp and times beyond kFarthestTicks.
[[nodiscard]] std::optional<Ticks> ticksOf(CMTime time);
[[nodiscard]] std::optional<Ticks> ticksOf(std::int64_t timestamp, AVRational base);
[[nodiscard]] std::int64_t ticksTo(Ticks time, AVRational base); ///< to the nearest
[[nodiscard]] std::int64_t ticksToUnits(Ticks time, std::int64_t unitsPerSecond);
[[nodiscard]] double ticksToSeconds(Ticks time);
/// Returns seconds with one digit behind the point, "12.3".
[[nodiscard]] QString secondsText(Ticks time);

/// Units in a second of an output video's time base, at least.
inline constexpr std::int64_t kLeastVideoUnits = 12'000;
/// Returns a time base in which all of these are whole, each given by its units in a second, and as
/// fine as `least`; 1/90000 where that would be too fine.
[[nodiscard]] AVRational wholeTimeBase(const std::vector<std::int64_t>& units, std::int64_t least);

} // namespace clipheave::platform
