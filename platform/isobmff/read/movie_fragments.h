// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/isobmff/read/movie_tracks.h"

#include <vector>

namespace clipheave::platform {

/// What the movie header says about fragments.
struct FragmentDefaults {
    bool present = false;            ///< there is an `mvex`
    std::uint64_t movieDuration = 0; ///< of `mehd`, in the movie's timescale; 0 when absent
    struct Track {
        std::uint32_t trackID = 0;
        std::uint32_t sampleDuration = 0; ///< ticks
        std::uint32_t sampleSize = 0;     ///< bytes
    };
    std::vector<Track> tracks; ///< of `trex`
};
[[nodiscard]] FragmentDefaults readFragmentDefaults(HeaderReader& reader, const Box& mvex);

/// What the fragments add to the movie.
struct FragmentTotals {
    double seconds = 0; ///< end of the last fragment
    struct Track {
        std::uint32_t trackID = 0;
        double seconds = 0; ///< end of what was read; 0 when only an index was
        // Of the fragments that were read: the first, the last or all.
        double secondsRead = 0;
        std::uint64_t samples = 0;
        std::uint64_t bytes = 0;
    };
    std::vector<Track> tracks;
    Message problem;
};
/// Looks for the end of the fragments behind `moovEnd`: in the index at the front (`sidx`), in the
/// one at the end (`mfra`), and else by walking at most kMaxFragments headers.
[[nodiscard]] FragmentTotals readFragments(HeaderReader& reader, std::uint64_t moovEnd,
                                           const FragmentDefaults& defaults,
                                           const std::vector<MovieTrack>& tracks);
inline constexpr std::uint64_t kMaxFragments = 4096;

} // namespace clipheave::platform
