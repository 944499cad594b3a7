// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"

// What this layer says to users; the sentences stand in the tables of the fronts.
namespace clipheave::metadata {

inline constexpr platform::MessageCode kNeitherVideoNorAudio{"neither-video-nor-audio"};
inline constexpr platform::MessageCode kTitleLeadsOut{"title-leads-out"};       ///< title
inline constexpr platform::MessageCode kTitleNamesFolder{"title-names-folder"}; ///< folder
inline constexpr platform::MessageCode kTitleGivenOut{"title-given-out"};       ///< path
inline constexpr platform::MessageCode kEmptyTitle{"empty-title"};
inline constexpr platform::MessageCode kNoAudioPane{"no-audio-pane"};
inline constexpr platform::MessageCode kCoverStoredAsGiven{"cover-stored-as-given"};
inline constexpr platform::MessageCode kCoverKeepsItsBytes{"cover-keeps-its-bytes"}; ///< reason
inline constexpr platform::MessageCode kCoverKept{"cover-kept"};
inline constexpr platform::MessageCode kCoverLeftOut{"cover-left-out"}; ///< reason
/// Another container than the name says: the codec.
inline constexpr platform::MessageCode kMpeg4UnderOldName{"mpeg4-under-old-name"};
inline constexpr platform::MessageCode kArtworkCopyNotWritten{"artwork-copy-not-written"};
inline constexpr platform::MessageCode kLatitudeNotInRange{"latitude-not-in-range"};   ///< text
inline constexpr platform::MessageCode kLongitudeNotInRange{"longitude-not-in-range"}; ///< text
inline constexpr platform::MessageCode kAltitudeNotInRange{"altitude-not-in-range"};   ///< text
inline constexpr platform::MessageCode kPositionIncomplete{"position-incomplete"};

// Fields that the file has no place for.
inline constexpr platform::MessageCode kKeywordsNotStored{"keywords-not-stored"};
inline constexpr platform::MessageCode kDescriptionNotStored{"description-not-stored"};
inline constexpr platform::MessageCode kTrackNotStored{"track-not-stored"};
inline constexpr platform::MessageCode kPublisherNotStored{"publisher-not-stored"};
inline constexpr platform::MessageCode kBandNotStored{"band-not-stored"};
inline constexpr platform::MessageCode kCreatedDateNotStored{"created-date-not-stored"};

} // namespace clipheave::metadata
