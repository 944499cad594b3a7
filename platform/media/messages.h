// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"

// What this layer says to users; the sentences stand in the tables of the fronts.
namespace clipheave::platform {

// Loading the media engine.
inline constexpr MessageCode kLoadMediaEngine{"load-media-engine"};
inline constexpr MessageCode kNoModuleFolder{"no-module-folder"};
inline constexpr MessageCode kNoSuchModule{"no-such-module"}; ///< path
inline constexpr MessageCode kUnknownLoaderFailure{"unknown-loader-failure"};
inline constexpr MessageCode kModuleNotLoadable{"module-not-loadable"};
/// Number of the module, number of the program.
inline constexpr MessageCode kOtherEngineAbi{"other-engine-abi"};

// Opening and reading.
inline constexpr MessageCode kOpenMediaFile{"open-media-file"};
inline constexpr MessageCode kReadMediaFile{"read-media-file"};
inline constexpr MessageCode kInsertTrack{"insert-track"};

// Reasons of the asset reader and writer.
inline constexpr MessageCode kOutputAfterStart{"output-after-start"};
inline constexpr MessageCode kInputAfterStart{"input-after-start"};
inline constexpr MessageCode kOneOutput{"one-output"};
inline constexpr MessageCode kOneInput{"one-input"};
inline constexpr MessageCode kBgraOnly{"bgra-only"};
inline constexpr MessageCode kH264Only{"h264-only"};
inline constexpr MessageCode kNotAVideoTrack{"not-a-video-track"};
inline constexpr MessageCode kStartedBefore{"started-before"};
inline constexpr MessageCode kNotStarted{"not-started"};
inline constexpr MessageCode kNoOutput{"no-output"};
inline constexpr MessageCode kNoInput{"no-input"};
inline constexpr MessageCode kFrameSizeNotWritten{"frame-size-not-written"};

// Reasons of compositions.
inline constexpr MessageCode kTrackOfOtherKind{"track-of-other-kind"};
inline constexpr MessageCode kTrackOfOtherFile{"track-of-other-file"};
inline constexpr MessageCode kNoDuration{"no-duration"};
inline constexpr MessageCode kNegativeTime{"negative-time"};

// Exports.
inline constexpr MessageCode kPlanExport{"plan-export"};
inline constexpr MessageCode kPrepareOutput{"prepare-output"};
inline constexpr MessageCode kUnknownPreset{"unknown-preset"};          ///< name
inline constexpr MessageCode kUnknownOutputType{"unknown-output-type"}; ///< type
inline constexpr MessageCode kNoTypeForName{"no-type-for-name"};        ///< file name
inline constexpr MessageCode kNoOutputPath{"no-output-path"};
inline constexpr MessageCode kOutputFolderGone{"output-folder-gone"};
inline constexpr MessageCode kOutputRemoved{"output-removed"};
inline constexpr MessageCode kRightAnglesOnly{"right-angles-only"};

// Notes of exports. Of an export that joins files, the forms with the file's name
// behind the count.
inline constexpr MessageCode kVideoTracksNotCarriedOver{"video-tracks-not-carried-over"}; ///< count
inline constexpr MessageCode kAudioTracksNotCarriedOver{"audio-tracks-not-carried-over"}; ///< count
inline constexpr MessageCode kDataTracksNotCarriedOver{"data-tracks-not-carried-over"};   ///< count
inline constexpr MessageCode kChaptersNotCarriedOver{"chapters-not-carried-over"};
inline constexpr MessageCode kVideoTracksOfFileNotCarriedOver{
    "video-tracks-of-file-not-carried-over"};
inline constexpr MessageCode kAudioTracksOfFileNotCarriedOver{
    "audio-tracks-of-file-not-carried-over"};
inline constexpr MessageCode kDataTracksOfFileNotCarriedOver{
    "data-tracks-of-file-not-carried-over"};
inline constexpr MessageCode kChaptersOfFileNotCarriedOver{
    "chapters-of-file-not-carried-over"};                            ///< file name
inline constexpr MessageCode kCodecsNotForMp4{"codecs-not-for-mp4"}; ///< names of the codecs

} // namespace clipheave::platform
