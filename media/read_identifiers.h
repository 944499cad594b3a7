// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/field.h"

// The longer lists of identifiers that fill a field. User data of QuickTime stands in for newer
// places: its codes are written by old cameras and editors.
namespace clipheave::media::field_rows {

inline constexpr ReadIdentifiers kReadAsArtist{{{"id3/TPE1", kTagged},
                                                {"itsk/%A9ART", kTagged},
                                                {"id3/TOPE", kAudioFiles, true},
                                                {"itsk/%A9ope", kAudioFiles, true},
                                                {"caaf/info-artist", kAiffFiles}}};
inline constexpr ReadIdentifiers kReadAsKeywords{{{"mdta/com.apple.quicktime.keywords", kVideos},
                                                  {"udta/%A9key", kVideos},
                                                  {"uiso/%A9key", kVideos}}};
inline constexpr ReadIdentifiers kReadAsDirector{{{"mdta/com.apple.quicktime.director", kVideos},
                                                  {"itsk/%A9dir", kVideos},
                                                  {"udta/%A9dir", kVideos, true},
                                                  {"uiso/%A9dir", kVideos, true}}};
inline constexpr ReadIdentifiers kReadAsPerformer{{{"mdta/com.apple.quicktime.performer", kVideos},
                                                   {"itsk/%A9prf", kVideos},
                                                   {"udta/%A9prf", kVideos, true},
                                                   {"uiso/%A9prf", kVideos, true}}};
inline constexpr ReadIdentifiers kReadAsProducer{
    {{"mdta/com.apple.quicktime.producer", kVideos},
     {"itsk/%A9prd", kVideos},
     {"mdta/com.apple.proapps.manufacturer", kSingleVideos},
     {"udta/%A9prd", kVideos, true},
     {"uiso/%A9prd", kVideos, true}}};

} // namespace clipheave::media::field_rows
