// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/convert/linear_graph.h"

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

} // namespace clipheave::platform
