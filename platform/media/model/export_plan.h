// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/model/cm_time.h"

#include <QList>
#include <QSize>
#include <QString>
#include <QStringList>

#include <array>
#include <optional>
#include <vector>

// An export as a value: which stretches of which files, how they are rotated and encoded, into
// what. Made from a composition and a preset, readable by tests, carried out by the media engine.
namespace clipheave::platform {

/// A stretch of one track of a file in the output. Times in the presentation time of the file, its
/// edit list applied, 0 being the start of the file's presentation.
struct ExportSegment {
    QString path;
    /// Position of the stream among the file's streams of this media type, attached pictures
    /// not counted, 0 being the first.
    int stream = 0;
    CMTimeRange source;
    /// Where it stands in the output. Another duration than the source's is a change of speed.
    CMTimeRange target;
};

enum class ExportMode {
    Copy,   ///< packets as they are; a scaled stretch gets stretched timestamps (video only)
    Encode, ///< H.264 or AAC
};

/// One video track of the output. A stretch that no segment covers is black.
struct ExportVideo {
    std::vector<ExportSegment> segments; ///< in time order, not overlapping
    ExportMode mode = ExportMode::Encode;
    /// Size of the encoded frame in square pixels, even; empty: that of the first segment's
    /// source as it is stored (with its sample aspect kept in the track).
    QSize size;
    /// Draws each source frame rotated clockwise by this many degrees (0, 90, 180, 270) before it
    /// is fitted into `size`; one value a segment, or one for all, or none for 0. Sources that do
    /// not fill `size` are centred on black.
    std::vector<int> rotations;
    /// Mirrors it left to right before that; counted like `rotations`.
    std::vector<bool> mirrored;
    /// Display matrix of the output track, {a b u c d v x y w}; identity: none.
    std::array<double, 9> preferredTransform{1, 0, 0, 0, 1, 0, 0, 0, 1};
    /// A constant frame duration; none keeps the timing of the source's frames.
    std::optional<CMTime> frameDuration;
    int crf = 18;             ///< constant quality of the encoder; unused when bitRate is set
    std::int64_t bitRate = 0; ///< bit/s, 0: by crf
};

/// One audio track of the output. A stretch that no segment covers is silent.
struct ExportAudio {
    std::vector<ExportSegment> segments;
    ExportMode mode = ExportMode::Encode;
    std::int64_t bitRate = 192000; ///< bit/s of the encoded audio
    int channels = 0;              ///< at most; 0: as many as the first source has
    double volume = 1;             ///< factor for all of it; other than 1 needs Encode
};

enum class ExportContainer { QuickTimeMovie, Mp4, M4A, M4V };

struct ExportPlan {
    std::optional<ExportVideo> video;
    std::optional<ExportAudio> audio;
    ExportContainer container = ExportContainer::Mp4;
    bool moovFirst = false;
    /// Header dates of the output's movie and tracks are those of this file; empty: none.
    QString headerDatesOf;
    /// The chapters of this file come along, as far as they begin before the end; empty: none. For
    /// an output that begins where the file does and keeps its pace.
    QString chaptersOf;
};

/// How many threads an export may use: the cores, divided among the exports that run.
struct ExportResources {
    int threads = 0; ///< 0: all cores
};

} // namespace clipheave::platform
