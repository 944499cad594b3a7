// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/convert/frame_filter.h"

#include <tuple>

namespace clipheave::platform {

namespace {

using FilterEnds = std::unique_ptr<AVFilterInOut, Releaser<avfilter_inout_free>>;

int namedEnd(FilterEnds& ends, const char* name, AVFilterContext* filter) {
    ends.reset(avfilter_inout_alloc());
    if (!ends)
        return AVERROR(ENOMEM);
    ends->name = av_strdup(name);
    ends->filter_ctx = filter;
    return ends->name != nullptr ? 0 : AVERROR(ENOMEM);
}

} // namespace

int LinearGraph::build(const QByteArray& kind, const QByteArray& sourceOptions,
                       const QByteArray& filters, int threads) {
    graph.reset(avfilter_graph_alloc());
    if (!graph)
        return AVERROR(ENOMEM);
    graph->nb_threads = threads;
    const AVFilter* from = avfilter_get_by_name((kind + "buffer").constData());
    const AVFilter* to = avfilter_get_by_name((kind + "buffersink").constData());
    int code = avfilter_graph_create_filter(&source, from, "in", sourceOptions.constData(), nullptr,
                                            graph.get());
    if (code >= 0)
        code = avfilter_graph_create_filter(&sink, to, "out", nullptr, nullptr, graph.get());
    FilterEnds inputs, outputs;
    if (code >= 0)
        code = namedEnd(outputs, "in", source);
    if (code >= 0)
        code = namedEnd(inputs, "out", sink);
    if (code < 0)
        return code;
    AVFilterInOut *in = inputs.release(), *out = outputs.release();
    code = avfilter_graph_parse_ptr(graph.get(), filters.constData(), &in, &out, nullptr);
    inputs.reset(in);
    outputs.reset(out);
    return code < 0 ? code : avfilter_graph_config(graph.get(), nullptr);
}

FrameShape FrameFilter::shapeOf(const AVFrame& frame, AVRational aspect) const {
    FrameShape shape;
    shape.width = frame.width;
    shape.height = frame.height;
    shape.format = frame.format;
    shape.aspect = aspect.num > 0 && aspect.den > 0 ? aspect : AVRational{1, 1};
    shape.range = frame.color_range;
    shape.matrix = frame.colorspace;
    shape.transfer = frame.color_trc;
    // Once a segment has shown fields they are expected again.
    shape.deinterlace = m_shape.deinterlace || (!m_look.interlaced && frame.interlaced_frame != 0);
    return shape;
}

int FrameFilter::start(const FrameShape& shape) {
    m_shape = shape;
    m_times.clear();
    const QByteArray options =
        "video_size=" + QByteArray::number(shape.width) + 'x' + QByteArray::number(shape.height) +
        ":pix_fmt=" + QByteArray::number(shape.format) +
        ":time_base=1/1000:pixel_aspect=" + QByteArray::number(shape.aspect.num) + '/' +
        QByteArray::number(shape.aspect.den);
    return m_graph.build({}, options, filtersFor(shape, m_look, m_turn, m_mirrored), m_threads);
}

int FrameFilter::push(TimedFrame videoFrame, AVRational aspect, const Sink& sink) {
    normalizeRange(*videoFrame.frame);
    const FrameShape shape = shapeOf(*videoFrame.frame, aspect);
    if (!m_graph.graph || !(shape == m_shape)) {
        int code = finish(sink);
        if (code >= 0)
            code = start(shape);
        if (code < 0)
            return code;
    }
    AVFrame& frame = *videoFrame.frame;
    frame.pts = videoFrame.start / (kTicksPerSecond / 1000);
    frame.sample_aspect_ratio = shape.aspect;
    m_times.emplace_back(videoFrame.start, videoFrame.end);
    const int code = av_buffersrc_add_frame(m_graph.source, &frame);
    return code < 0 ? code : pull(sink);
}

void FrameFilter::mark(AVFrame& frame) const {
    frame.sample_aspect_ratio = m_look.aspect;
    frame.pict_type = AV_PICTURE_TYPE_NONE; // the encoder decides
    frame.key_frame = 0;
    frame.interlaced_frame = m_look.interlaced ? 1 : 0;
    frame.top_field_first = m_look.interlaced && m_look.topFieldFirst ? 1 : 0;
}

int FrameFilter::pull(const Sink& sink) {
    for (;;) {
        TimedFrame videoFrame{Frame(av_frame_alloc())};
        if (!videoFrame.frame)
            return AVERROR(ENOMEM);
        const int code = av_buffersink_get_frame(m_graph.sink, videoFrame.frame.get());
        if (code == AVERROR(EAGAIN) || code == AVERROR_EOF)
            return 0;
        if (code < 0)
            return code;
        if (m_times.empty())
            return AVERROR_BUG;
        if (videoFrame.frame->width != m_look.width || videoFrame.frame->height != m_look.height)
            videoFrame.frame = centredOnBlack(*videoFrame.frame, m_look);
        if (!videoFrame.frame)
            return AVERROR(ENOMEM);
        std::tie(videoFrame.start, videoFrame.end) = m_times.front();
        m_times.pop_front();
        mark(*videoFrame.frame);
        if (!sink(std::move(videoFrame)))
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
