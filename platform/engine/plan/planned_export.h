// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/output_track.h"
#include "platform/engine/io/stream_source.h"
#include "platform/engine/plan/orientation.h"
#include "platform/engine/plan/stretch.h"
#include "platform/media/model/export_plan.h"

namespace clipheave::platform {

/// What the headers of a source stream say.
struct SourceFacts {
    CodecParameters parameters;
    AVRational timeBase{1, 1};
    AVRational frameRate{0, 1};
    AVRational aspect{1, 1};  ///< of a sample, never 0
    std::optional<Ticks> end; ///< in presentation time
    QByteArray language;
    std::vector<OutputTrack::SideData> sideData;
};

struct PlannedSegment {
    QString path;
    int stream = 0;
    Stretch stretch;
    Orientation orientation;
    std::shared_ptr<const SourceFacts> facts;
    /// The first segment's source, still open from the reading of its facts.
    std::unique_ptr<StreamSource> opened;
};

/// An export whose plan is valid and whose sources are there.
struct PlannedExport {
    std::vector<PlannedSegment> video, audio; ///< empty: no such track
    QByteArray creationTime;                  ///< as libavformat writes it, empty: none
    Notes notes;
    Ticks end = 0;
};

/// Returns the source of a segment, opened unless it is still open.
[[nodiscard]] Result<std::unique_ptr<StreamSource>> openSegment(PlannedSegment& segment,
                                                                AVMediaType type);

/// Returns how many threads an export has, at least one.
[[nodiscard]] int threadsOf(const ExportResources& resources);

} // namespace clipheave::platform
