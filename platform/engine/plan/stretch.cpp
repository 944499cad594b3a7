// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/plan/stretch.h"

#include <cstdlib>

namespace clipheave::platform {

std::optional<Stretch> Stretch::of(CMTimeRange source, CMTimeRange target) {
    const auto from = ticksOf(source.start), length = ticksOf(source.duration);
    const auto to = ticksOf(target.start), lasting = ticksOf(target.duration);
    if (!from || !length || !to || !lasting || *length <= 0 || *lasting <= 0 || *to < 0)
        return std::nullopt;
    return Stretch{*from, *from + *length, *to, *to + *lasting};
}

Ticks Stretch::toTarget(Ticks source) const {
    const Ticks length = sourceEnd - sourceStart, lasting = targetEnd - targetStart;
    const Ticks offset = source - sourceStart;
    if (std::abs(length - lasting) <= kSliverTicks)
        return targetStart + offset;
    return targetStart + av_rescale(offset, lasting, length);
}

double Stretch::speed() const {
    const Ticks length = sourceEnd - sourceStart, lasting = targetEnd - targetStart;
    if (std::abs(length - lasting) <= kSliverTicks)
        return 1;
    return static_cast<double>(length) / static_cast<double>(lasting);
}

} // namespace clipheave::platform
