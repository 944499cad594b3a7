// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"

// The sentences of this layer; their words stand in the tables of the fronts.
namespace clipheave::platform {

// Operations.
inline constexpr MessageCode kReadMovieHeader{"read-movie-header"};
inline constexpr MessageCode kRebuildMovieHeader{"rebuild-movie-header"};
inline constexpr MessageCode kLayOutFile{"lay-out-file"};
inline constexpr MessageCode kReadChunkOffsets{"read-chunk-offsets"};
inline constexpr MessageCode kMoveChunkOffsets{"move-chunk-offsets"};
inline constexpr MessageCode kMoveFileOffsets{"move-file-offsets"};
inline constexpr MessageCode kWriteMovieFile{"write-movie-file"};

// Reasons of the reader.
inline constexpr MessageCode kNotABox{"not-a-box"};           ///< offset
inline constexpr MessageCode kBoxBeyondEnd{"box-beyond-end"}; ///< type, offset
inline constexpr MessageCode kTooManyBoxes{"too-many-boxes"};
inline constexpr MessageCode kNoMovieHeader{"no-movie-header"};
inline constexpr MessageCode kMovieHeaderCompressed{"movie-header-compressed"};
inline constexpr MessageCode kNotAMovieFile{"not-a-movie-file"};
inline constexpr MessageCode kTooManyTracks{"too-many-tracks"};
inline constexpr MessageCode kTooManyFragments{"too-many-fragments"};
inline constexpr MessageCode kTooManyMetadataItems{"too-many-metadata-items"};
inline constexpr MessageCode kMetadataValueTooShort{"metadata-value-too-short"};
inline constexpr MessageCode kMetadataKeyUnknown{"metadata-key-unknown"};
inline constexpr MessageCode kMetadataKeysMissing{"metadata-keys-missing"};

// Reasons of the writer.
inline constexpr MessageCode kMovieHeaderDamaged{"movie-header-damaged"};
inline constexpr MessageCode kMovieHeaderCut{"movie-header-cut"};
inline constexpr MessageCode kMovieHeaderTooLarge{"movie-header-too-large"};
inline constexpr MessageCode kMovieHeaderHasGrown{"movie-header-has-grown"};
inline constexpr MessageCode kMovieHeaderPartCut{"movie-header-part-cut"}; ///< type
inline constexpr MessageCode kSamplesInSeveralFiles{"samples-in-several-files"};
inline constexpr MessageCode kOutputIsSource{"output-is-source"};
inline constexpr MessageCode kChunkTableTooShort{"chunk-table-too-short"};
inline constexpr MessageCode kChunkOutsidePayload{"chunk-outside-payload"};
inline constexpr MessageCode kBoxTooLarge{"box-too-large"}; ///< type
inline constexpr MessageCode kOffsetBeyondBox{"offset-beyond-box"};
inline constexpr MessageCode kOffsetOutsidePayload{"offset-outside-payload"};
inline constexpr MessageCode kNoSpaceForOffset{"no-space-for-offset"};
inline constexpr MessageCode kItemOutsidePayload{"item-outside-payload"};
inline constexpr MessageCode kNoSpaceForItemOffset{"no-space-for-item-offset"};
inline constexpr MessageCode kTooManyItemExtents{"too-many-item-extents"};
inline constexpr MessageCode kItemLocationsCut{"item-locations-cut"};
inline constexpr MessageCode kItemLocationWidthUnknown{"item-location-width-unknown"};
inline constexpr MessageCode kFragmentTableCut{"fragment-table-cut"};
inline constexpr MessageCode kFragmentHeaderTooShort{"fragment-header-too-short"};
inline constexpr MessageCode kNoSpaceInSegmentIndex{"no-space-in-segment-index"};

// Notes of the writer.
inline constexpr MessageCode kLocationKept{"location-kept"};
inline constexpr MessageCode kTimedMetadataKept{"timed-metadata-kept"}; ///< formats
inline constexpr MessageCode kArtworkFormatNotStored{"artwork-format-not-stored"};
inline constexpr MessageCode kValueNotStored{"value-not-stored"};           ///< key
inline constexpr MessageCode kTextTooLongToStore{"text-too-long-to-store"}; ///< key
inline constexpr MessageCode kLocationNotStored{"location-not-stored"};     ///< the value

} // namespace clipheave::platform
