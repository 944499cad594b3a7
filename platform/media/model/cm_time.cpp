// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/model/cm_time.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace clipheave::platform {

namespace {

__extension__ using Wide = __int128;

constexpr std::int64_t kLargestValue = std::numeric_limits<std::int64_t>::max();
/// Fine enough for scaled times: a microsecond.
constexpr std::int32_t kFineTimescale = 1'000'000;

std::int64_t clamped(double value) {
    if (std::isnan(value))
        return 0;
    // 2^63 as a double; a cast of what is not below it is undefined.
    constexpr double kLimit = 9223372036854775808.0;
    if (value >= kLimit)
        return kLargestValue;
    if (value < -kLimit)
        return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(value);
}

std::int64_t clamped(Wide value) {
    return static_cast<std::int64_t>(
        std::clamp(value, static_cast<Wide>(std::numeric_limits<std::int64_t>::min()),
                   static_cast<Wide>(kLargestValue)));
}

/// The smallest timescale that holds both exactly, where one of 32 bits does.
std::int32_t commonTimescale(CMTime a, CMTime b) {
    const std::int64_t common =
        std::lcm(static_cast<std::int64_t>(a.timescale), static_cast<std::int64_t>(b.timescale));
    return common <= std::numeric_limits<std::int32_t>::max() ? static_cast<std::int32_t>(common)
                                                              : kFineTimescale;
}

std::int64_t valueIn(CMTime time, std::int32_t timescale) {
    const Wide scaled = static_cast<Wide>(time.value) * timescale;
    const Wide half = time.timescale / 2;
    return clamped((scaled + (scaled < 0 ? -half : half)) / time.timescale);
}

bool isValid(CMTime time) {
    return time.timescale > 0;
}

} // namespace

CMTime CMTimeMakeWithSeconds(double seconds, std::int32_t timescale) {
    return {clamped(std::round(seconds * timescale)), timescale};
}

double CMTimeGetSeconds(CMTime time) {
    return isValid(time) ? static_cast<double>(time.value) / time.timescale
                         : std::numeric_limits<double>::quiet_NaN();
}

CMTime CMTimeMultiplyByFloat64(CMTime time, double factor) {
    if (!isValid(time))
        return time;
    const std::int32_t timescale = std::max(time.timescale, kFineTimescale);
    const double value = static_cast<double>(time.value) * timescale / time.timescale;
    return {clamped(std::round(value * factor)), timescale};
}

int CMTimeCompare(CMTime a, CMTime b) {
    const Wide left = static_cast<Wide>(a.value) * b.timescale;
    const Wide right = static_cast<Wide>(b.value) * a.timescale;
    return left < right ? -1 : left > right ? 1 : 0;
}

CMTime CMTimeAdd(CMTime a, CMTime b) {
    if (!isValid(a) || !isValid(b))
        return {0, 0};
    const std::int32_t timescale = commonTimescale(a, b);
    return {clamped(static_cast<Wide>(valueIn(a, timescale)) + valueIn(b, timescale)), timescale};
}

CMTime CMTimeSubtract(CMTime a, CMTime b) {
    return CMTimeAdd(
        a, {b.value == std::numeric_limits<std::int64_t>::min() ? kLargestValue : -b.value,
            b.timescale});
}

CMTime CMTimeRangeGetEnd(CMTimeRange range) {
    return CMTimeAdd(range.start, range.duration);
}

} // namespace clipheave::platform
