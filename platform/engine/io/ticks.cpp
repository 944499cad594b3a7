// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/io/ticks.h"

#include <numeric>

namespace clipheave::platform {

namespace {

constexpr std::int64_t kMostUnits = 360'000;
constexpr AVRational kCommonBase{1, 90'000}; ///< where the times have no finer one in common

} // namespace

std::optional<Ticks> ticksOf(std::int64_t timestamp, AVRational base) {
    if (timestamp == kNoTimestamp || base.num <= 0 || base.den <= 0)
        return std::nullopt;
    const Ticks ticks = av_rescale_q(timestamp, base, kTickBase); // INT64_MIN beyond its range
    if (ticks < -kFarthestTicks || ticks > kFarthestTicks)
        return std::nullopt;
    return ticks;
}

std::optional<Ticks> ticksOf(CMTime time) {
    return ticksOf(time.value, {1, time.timescale});
}

std::int64_t ticksTo(Ticks time, AVRational base) {
    return av_rescale_q(time, kTickBase, base);
}

std::int64_t ticksToUnits(Ticks time, std::int64_t unitsPerSecond) {
    return av_rescale(time, unitsPerSecond, kTicksPerSecond);
}

double ticksToSeconds(Ticks time) {
    return static_cast<double>(time) / static_cast<double>(kTicksPerSecond);
}

QString secondsText(Ticks time) {
    return QString::number(ticksToSeconds(time), 'f', 1);
}

AVRational wholeTimeBase(const std::vector<std::int64_t>& units, std::int64_t least) {
    std::int64_t common = 1;
    for (const std::int64_t each : units) {
        if (each <= 0 || each > kMostUnits)
            return kCommonBase;
        common = std::lcm(common, each);
        if (common > kMostUnits)
            return kCommonBase;
    }
    while (common < least)
        common *= 2;
    return {1, static_cast<int>(common)};
}

} // namespace clipheave::platform
