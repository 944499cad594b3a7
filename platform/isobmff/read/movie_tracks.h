// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/isobmff/box.h"
#include "platform/media/model/media_facts.h"

namespace clipheave::platform {

/// A track and what only the reader needs of it.
struct MovieTrack {
    AVAssetTrack track;
    std::uint32_t timescale = 0; ///< ticks per second of the media
    std::uint64_t duration = 0;  ///< ticks; 0 when unknown
    std::uint64_t samples = 0;   ///< in the movie header, none of the fragments
    std::uint32_t chapterOf = 0; ///< the track id that a chapter reference points to
};

struct TrackRequest {
    std::uint32_t movieTimescale = 0; ///< of `mvhd`
    bool quickTime = false;           ///< the brand allows every form of audio description
    bool withBitRate = false;         ///< sum up the sample sizes of an audio track
};
/// Facts of a `trak` box; `problem` is set when it is null and the box is damaged.
[[nodiscard]] MovieTrack readTrack(HeaderReader& reader, const Box& trak,
                                   const TrackRequest& request, Message& problem);

} // namespace clipheave::platform
