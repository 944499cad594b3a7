// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/ffmpeg.h"

#include <QByteArray>

namespace clipheave::platform {

using FilterGraph = std::unique_ptr<AVFilterGraph, Releaser<avfilter_graph_free>>;

/// A filter graph with one input and one output.
struct LinearGraph {
    FilterGraph graph;
    AVFilterContext* source = nullptr;
    AVFilterContext* sink = nullptr;

    /// Rebuilds it from filters as libavfilter writes them. `kind`: "" for video, "a" for audio,
    /// as libavfilter names its ends.
    [[nodiscard]] int build(const QByteArray& kind, const QByteArray& sourceOptions,
                            const QByteArray& filters, int threads);
};

} // namespace clipheave::platform
