// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>
#include <cstdint>

namespace clipheave::platform {

/// A rational time: `value` / `timescale` seconds. A timescale of 0 is an invalid time.
struct CMTime {
    std::int64_t value = 0;
    std::int32_t timescale = 1;
};
inline constexpr CMTime kCMTimeZero{0, 1};

[[nodiscard]] constexpr CMTime CMTimeMake(std::int64_t value, std::int32_t timescale) {
    return {value, timescale};
}
/// Rounded to the nearest unit; times beyond the range are cut to it.
[[nodiscard]] CMTime CMTimeMakeWithSeconds(double seconds, std::int32_t timescale);
[[nodiscard]] double CMTimeGetSeconds(CMTime time); ///< NaN for an invalid time
/// Keeps the timescale where it is fine enough (microseconds), else takes a finer one.
[[nodiscard]] CMTime CMTimeMultiplyByFloat64(CMTime time, double factor);
/// -1, 0, 1; exact, also between timescales.
[[nodiscard]] int CMTimeCompare(CMTime a, CMTime b);
[[nodiscard]] CMTime CMTimeAdd(CMTime a, CMTime b);
[[nodiscard]] CMTime CMTimeSubtract(CMTime a, CMTime b);

struct CMTimeRange {
    CMTime start, duration;
};
[[nodiscard]] constexpr CMTimeRange CMTimeRangeMake(CMTime start, CMTime duration) {
    return {start, duration};
}
[[nodiscard]] CMTime CMTimeRangeGetEnd(CMTimeRange range);

} // namespace clipheave::platform
