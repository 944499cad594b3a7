// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/convert/frame_filter.h"

#include <tuple>

namespace clipheave::platform {

DecodedFormat FrameFilter::formatOf(const AVFrame& frame, AVRational aspect) const {
    DecodedFormat format;
    format.width = frame.width;
    format.height = frame.height;
    format.pixels = frame.format;
    format.aspect = aspect.num > 0 && aspect.den > 0 ? aspect : AVRational{1, 1};
    format.colours = coloursOf(frame, m_stream);
    format.deinterlace = m_anyFields && !m_output.interlaced;
    return format;
}

/// Draws an HDR frame for a common screen, as small as the output needs it: mapping is costly.
/// Fields keep their lines, as they are woven into frames afterwards.
int FrameFilter::toneMap(Frame& frame, DecodedFormat& format) {
    const QSize size = format.deinterlace ? QSize(format.width, format.height)
                                          : fittedSize(format, m_output, m_orientation);
    if (!m_painter || m_painter->size() != size)
        m_painter.emplace(m_stream, size, m_threads);
    Frame painted(av_frame_alloc());
    if (!painted)
        return AVERROR(ENOMEM);
    painted->format = AV_PIX_FMT_RGB32;
    painted->width = size.width();
    painted->height = size.height();
    // The painter needs room for a row behind the last one.
    if (av_frame_get_buffer(painted.get(), FramePainter::kRowAlignment) < 0)
        return AVERROR(ENOMEM);
    if (!m_painter->paint(*frame, painted->data[0], painted->linesize[0]))
        return AVERROR(EINVAL);
    setFields(*painted, isInterlaced(*frame), isTopFieldFirst(*frame));
    if (size != QSize(format.width, format.height))
        format.aspect = storedAspect(m_output, m_orientation);
    format.width = size.width();
    format.height = size.height();
    format.pixels = AV_PIX_FMT_RGB32;
    format.colours = sdrColours();
    frame = std::move(painted);
    return 0;
}

int FrameFilter::start(const DecodedFormat& input) {
    m_input = input;
    m_times.clear();
    const QByteArray options =
        "video_size=" + QByteArray::number(input.width) + 'x' + QByteArray::number(input.height) +
        ":pix_fmt=" + QByteArray::number(input.pixels) +
        ":time_base=1/1000:pixel_aspect=" + QByteArray::number(input.aspect.num) + '/' +
        QByteArray::number(input.aspect.den);
    return m_graph.build({}, options, filtersFor(input, m_output, m_orientation), m_threads);
}

int FrameFilter::push(TimedFrame timed, AVRational aspect, const Sink& sink) {
    normalizeRange(*timed.frame);
    m_anyFields = m_anyFields || isInterlaced(*timed.frame);
    DecodedFormat input = formatOf(*timed.frame, aspect);
    if (isHdr(input.colours.transfer) && !isHdr(m_output.transfer))
        if (const int code = toneMap(timed.frame, input); code < 0)
            return code;
    if (!m_graph.graph || m_input != input) {
        int code = finish(sink);
        if (code >= 0)
            code = start(input);
        if (code < 0)
            return code;
    }
    AVFrame& frame = *timed.frame;
    frame.pts = timed.start / (kTicksPerSecond / 1000);
    frame.sample_aspect_ratio = input.aspect;
    m_times.emplace_back(timed.start, timed.end);
    const int code = av_buffersrc_add_frame(m_graph.source, &frame);
    return code < 0 ? code : pull(sink);
}

void FrameFilter::mark(AVFrame& frame) const {
    frame.sample_aspect_ratio = m_output.aspect;
    frame.pict_type = AV_PICTURE_TYPE_NONE; // the encoder decides
    setNoKeyframe(frame);
    setFields(frame, m_output.interlaced, m_output.interlaced && m_output.topFieldFirst);
}

int FrameFilter::pull(const Sink& sink) {
    for (;;) {
        TimedFrame timed{Frame(av_frame_alloc())};
        if (!timed.frame)
            return AVERROR(ENOMEM);
        const int code = av_buffersink_get_frame(m_graph.sink, timed.frame.get());
        if (code == AVERROR(EAGAIN) || code == AVERROR_EOF)
            return 0;
        if (code < 0)
            return code;
        if (m_times.empty())
            return AVERROR_BUG;
        if (timed.frame->width != m_output.width || timed.frame->height != m_output.height)
            timed.frame = centredOnBlack(*timed.frame, m_output);
        if (!timed.frame)
            return AVERROR(ENOMEM);
        std::tie(timed.start, timed.end) = m_times.front();
        m_times.pop_front();
        mark(*timed.frame);
        if (!sink(std::move(timed)))
            return AVERROR_EXIT;
    }
}

int FrameFilter::finish(const Sink& sink) {
    if (!m_graph.graph)
        return 0;
    int code = av_buffersrc_add_frame(m_graph.source, nullptr);
    if (code >= 0)
        code = pull(sink);
    m_graph.graph.reset();
    return code;
}

} // namespace clipheave::platform
