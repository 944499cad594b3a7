// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>

// Where files of other programs hold a text of the record beside the identifiers that it is read
// from: 3GPP boxes, ©-codes of the user data, QuickTime keys, bare keys as FFmpeg writes them.
namespace clipheave::media {

/// Unused places are null.
using OtherIdentifiers = std::array<const char*, 5>;

inline constexpr OtherIdentifiers kOtherTitles{"uiso/titl", "udta/%A9nam", "uiso/%A9nam",
                                               "mdta/com.apple.quicktime.title", "mdta/title"};
inline constexpr OtherIdentifiers kOtherAlbums{"uiso/albm", "udta/%A9alb", "uiso/%A9alb",
                                               "mdta/com.apple.quicktime.album", "mdta/album"};
inline constexpr OtherIdentifiers kOtherArtists{"uiso/perf", "udta/%A9ART", "uiso/%A9ART",
                                                "mdta/com.apple.quicktime.artist", "mdta/artist"};
inline constexpr OtherIdentifiers kOtherDates{"common/creationDate", "caaf/info-recorded%20date",
                                              "udta/date", "udta/%A9day", "uiso/%A9day"};
inline constexpr OtherIdentifiers kOtherCopyrights{"uiso/cprt", "udta/%A9cpy", "uiso/%A9cpy",
                                                   "mdta/copyright"};
inline constexpr OtherIdentifiers kOtherDescriptions{"itsk/desc", "udta/%A9des", "uiso/%A9des",
                                                     "mdta/description"};
inline constexpr OtherIdentifiers kOtherMakes{"common/make", "udta/%A9mak", "uiso/%A9mak",
                                              "uiso/manu", "mdta/make"};
inline constexpr OtherIdentifiers kOtherModels{"common/model", "udta/%A9mod", "uiso/%A9mod",
                                               "uiso/modl", "mdta/model"};
inline constexpr OtherIdentifiers kOtherDirectors{"udta/%A9dir", "uiso/%A9dir", "mdta/director"};
inline constexpr OtherIdentifiers kOtherPerformers{"udta/%A9prf", "uiso/%A9prf", "mdta/performer"};
inline constexpr OtherIdentifiers kOtherProducers{"udta/%A9prd", "uiso/%A9prd", "mdta/producer"};
inline constexpr OtherIdentifiers kOtherPublishers{"udta/%A9pub", "uiso/%A9pub", "mdta/publisher"};

} // namespace clipheave::media
