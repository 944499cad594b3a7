// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/encode/frame_pacer.h"

#include <algorithm>

namespace clipheave::platform {

bool FramePacer::wants(Ticks start, Ticks end) const {
    // The first one always, even when it is shorter than a whole frame: a video has a frame.
    return !m_constant || !m_last ||
           ticksTo(end, m_timeBase) > std::max(ticksTo(start, m_timeBase), m_next);
}

int FramePacer::repeat(const AVFrame& frame, std::int64_t until, const Sink& sink) {
    const auto span = ticksOf(until - m_next, m_timeBase);
    if (!span || *span > kLongestFiller)
        return AVERROR(ERANGE);
    while (m_next < until) {
        StampedFrame stamped{Frame(av_frame_clone(&frame)), m_next++, 1};
        if (!stamped.frame)
            return AVERROR(ENOMEM);
        if (!sink(std::move(stamped)))
            return AVERROR_EXIT;
    }
    return 0;
}

int FramePacer::place(TimedFrame timed, const Sink& sink) {
    std::int64_t first = ticksTo(timed.start, m_timeBase);
    std::int64_t last = ticksTo(timed.end, m_timeBase);
    if (!m_constant) {
        first = std::max(first, m_next);
        m_next = first + 1;
        const std::int64_t duration = std::max<std::int64_t>(last - first, 1);
        return sink({std::move(timed.frame), first, duration}) ? 0 : AVERROR_EXIT;
    }
    if (m_last && first > m_next)
        if (const int code = repeat(*m_last, first, sink); code < 0)
            return code;
    if (!m_last) {
        m_next = std::max(m_next, first); // a video that begins late does so in the output
        last = std::max(last, m_next + 1);
    }
    if (last <= m_next)
        return 0;
    if (const int code = repeat(*timed.frame, last, sink); code < 0)
        return code;
    m_last = std::move(timed.frame);
    return 0;
}

} // namespace clipheave::platform
