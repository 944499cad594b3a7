// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"

// What this layer says to users; the sentences stand in the tables of the fronts.
namespace clipheave::photo {

using platform::MessageCode;

inline constexpr MessageCode kStampDate{"stamp-date"};

inline constexpr MessageCode kNoPhotoItem{"no-photo-item"};
inline constexpr MessageCode kSameNameHere{"same-name-here"}; ///< the other output's name

// Why the texts of a sheet or pane cannot be written; the text.
inline constexpr MessageCode kValueEmpty{"value-empty"}; ///< the fixed text of the alert
inline constexpr MessageCode kPhotoLatitudeNotInRange{"photo-latitude-not-in-range"};
inline constexpr MessageCode kPhotoLongitudeNotInRange{"photo-longitude-not-in-range"};
inline constexpr MessageCode kPhotoAltitudeNotInRange{"photo-altitude-not-in-range"};
inline constexpr MessageCode kNoDateStamp{"no-date-stamp"};
inline constexpr MessageCode kNoTimeStamp{"no-time-stamp"};
inline constexpr MessageCode kNoCameraDate{"no-camera-date"};
inline constexpr MessageCode kPhotoHasNoDate{"photo-has-no-date"}; ///< and none was given

// Property lists.
inline constexpr MessageCode kNothingForList{"nothing-for-list"};
inline constexpr MessageCode kListOfAnother{"list-of-another-photo"}; ///< name of the photo
inline constexpr MessageCode kListIsNoDictionary{"list-is-no-dictionary"};
inline constexpr MessageCode kListHasNoPhotoKeys{"list-has-no-photo-keys"};
inline constexpr MessageCode kListKeysLeftOut{"list-keys-left-out"}; ///< names
inline constexpr MessageCode kListKeysOfImage{"list-keys-of-image"}; ///< names

} // namespace clipheave::photo
