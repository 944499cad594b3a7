// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/io/export_source.h"
#include "platform/engine/plan/export_lanes.h"
#include "platform/media/model/export_plan.h"

namespace clipheave::platform {

/// What the headers of a source stream tell.
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
    int turn = 0;          ///< degrees clockwise
    bool mirrored = false; ///< left to right, before that
    std::shared_ptr<const SourceFacts> facts;
    /// The first segment's source, still open from the reading of its facts.
    std::unique_ptr<ExportSource> opened;
};

/// An export whose plan is valid and whose sources are there.
struct PlannedExport {
    std::vector<PlannedSegment> video, audio; ///< empty: no such track
    QByteArray creationTime;                  ///< as libavformat writes it, empty: none
    Notes notes;
    Ticks end = 0;
};

/// InvalidArgument for a plan that contradicts itself, NotSupported when a source lacks the stream
/// or there is no decoder for it.
[[nodiscard]] Result<PlannedExport> readExportPlan(const ExportPlan& plan);

/// The date in the movie header of a file; empty when there is none.
[[nodiscard]] QByteArray creationTimeOf(const QString& path);

/// The source of a segment, opened unless it is still open.
[[nodiscard]] Result<std::unique_ptr<ExportSource>> openSegment(PlannedSegment& segment,
                                                                AVMediaType type);

} // namespace clipheave::platform
