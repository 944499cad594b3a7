// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"

// What this layer says to users; the sentences stand in the tables of the fronts.
namespace clipheave::photo {

using platform::MessageCode;

inline constexpr MessageCode kStampDate{"stamp-date"};

inline constexpr MessageCode kNoPhotoItem{"no-photo-item"};

// Property lists.
inline constexpr MessageCode kNothingForList{"nothing-for-list"};
inline constexpr MessageCode kListOfAnother{"list-of-another-photo"}; ///< name of the photo
inline constexpr MessageCode kListIsNoDictionary{"list-is-no-dictionary"};
inline constexpr MessageCode kListHasNoPhotoKeys{"list-has-no-photo-keys"};
inline constexpr MessageCode kListKeysLeftOut{"list-keys-left-out"}; ///< names
inline constexpr MessageCode kListKeysOfImage{"list-keys-of-image"}; ///< names

} // namespace clipheave::photo
