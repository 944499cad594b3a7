// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"
#include "platform/media/model/messages.h"

// The sentences of the engine; their words stand in the tables of the fronts. A comment names what
// fills the gaps. "file" is a name without its folder, "s" a number of seconds.
namespace clipheave::platform {

// Operations.
inline constexpr MessageCode kOpenContainer{"open-media-container"};
inline constexpr MessageCode kReadContainer{"read-media-container"};
inline constexpr MessageCode kReadSource{"read-source-media"};
inline constexpr MessageCode kReadStreams{"read-streams"};
inline constexpr MessageCode kReadExportPlan{"read-export-plan"};
inline constexpr MessageCode kReadFrame{"read-video-frame"};
inline constexpr MessageCode kGrabKeyframe{"grab-keyframe"};
inline constexpr MessageCode kMeasureAudio{"measure-audio"};
inline constexpr MessageCode kDecodeVideo{"decode-video"};
inline constexpr MessageCode kFilterVideo{"filter-video"};
inline constexpr MessageCode kEncodeVideo{"encode-video"};
inline constexpr MessageCode kEncodeAudio{"encode-audio"};
inline constexpr MessageCode kConvertAudio{"convert-audio"};
inline constexpr MessageCode kCopyStreams{"copy-streams"};
inline constexpr MessageCode kRunExport{"run-export"};
inline constexpr MessageCode kWriteExport{"write-export"};
inline constexpr MessageCode kCreateMediaFile{"create-media-file"};
inline constexpr MessageCode kBeginMediaFile{"begin-media-file"};
inline constexpr MessageCode kCompleteMediaFile{"complete-media-file"};
inline constexpr MessageCode kEncodeSample{"encode-sample"};
inline constexpr MessageCode kWriteSample{"write-sample"};

// What the libraries report.
inline constexpr MessageCode kDamagedOrUnknownData{"damaged-or-unknown-data"};
inline constexpr MessageCode kUnsupportedData{"unsupported-data"};
inline constexpr MessageCode kEndsTooEarly{"ends-too-early"};
inline constexpr MessageCode kWasStopped{"was-stopped"};
inline constexpr MessageCode kCannotBeProcessed{"cannot-be-processed"};
inline constexpr MessageCode kWrongProperties{"wrong-properties"};

// Containers, streams, codecs.
inline constexpr MessageCode kUnknownContainer{"unknown-media-container"};
inline constexpr MessageCode kStreamsUnreadable{"streams-unreadable"};
inline constexpr MessageCode kHeadersTooLong{"headers-too-long"};
inline constexpr MessageCode kNoStream{"no-stream"};
inline constexpr MessageCode kNoVideoDecoder{"no-video-decoder"}; ///< codec
inline constexpr MessageCode kNoAudioDecoder{"no-audio-decoder"}; ///< codec
inline constexpr MessageCode kUnknownVideoCodec{"unknown-video-codec"};
inline constexpr MessageCode kUnknownAudioCodec{"unknown-audio-codec"};
inline constexpr MessageCode kNoEncoder{"no-encoder"}; ///< encoder
inline constexpr MessageCode kNoMuxer{"no-muxer"};     ///< container, as libavformat names it
inline constexpr MessageCode kMovCannotHold{"mov-cannot-hold"};             ///< codecs
inline constexpr MessageCode kMp4CannotHold{"mp4-cannot-hold"};             ///< codecs
inline constexpr MessageCode kM4aCannotHold{"m4a-cannot-hold"};             ///< codecs
inline constexpr MessageCode kContainerCannotHold{"container-cannot-hold"}; ///< codecs
inline constexpr MessageCode kCannotHoldAsItIs{"cannot-hold-as-it-is"};     ///< codec
inline constexpr MessageCode kStreamsEmpty{"streams-empty"};
inline constexpr MessageCode kStreamsLeftOut{"streams-left-out"}; ///< "subtitle (subrip)", …
inline constexpr MessageCode kChaptersBeyondEnd{"chapters-beyond-end"}; ///< number

// Damage and ends.
inline constexpr MessageCode kDamagedVideoPackets{"damaged-video-packets"}; ///< file, number
inline constexpr MessageCode kDamagedAudioPackets{"damaged-audio-packets"}; ///< file, number
inline constexpr MessageCode kDamagedPackets{"damaged-packets"};            ///< number
inline constexpr MessageCode kFileBreaksOff{"file-breaks-off"};             ///< s
inline constexpr MessageCode kVideoBreaksOff{"video-breaks-off"};           ///< s
inline constexpr MessageCode kAudioBreaksOff{"audio-breaks-off"};           ///< s
inline constexpr MessageCode kVideoEndsEarly{"video-ends-early"};           ///< file, s
inline constexpr MessageCode kNoVideoDecoded{"no-video-decoded"};
inline constexpr MessageCode kNoAudioDecoded{"no-audio-decoded"};
inline constexpr MessageCode kNoVideoDecodedBecause{"no-video-decoded-because"}; ///< reason
inline constexpr MessageCode kNoAudioDecodedBecause{"no-audio-decoded-because"}; ///< reason
inline constexpr MessageCode kGapTooLong{"gap-too-long"};
inline constexpr MessageCode kNothingInRange{"nothing-in-range"};

// What an export changed.
inline constexpr MessageCode kBitDepthKept{"bit-depth-kept"};          ///< bits
inline constexpr MessageCode kBitDepthBecame10{"bit-depth-became-10"}; ///< bits
inline constexpr MessageCode kBitDepthBecame8{"bit-depth-became-8"};   ///< bits
inline constexpr MessageCode kHdrKept{"hdr-kept"};
inline constexpr MessageCode kHdrBecameSdr{"hdr-became-sdr"};
inline constexpr MessageCode kAudioLeftOut{"audio-left-out"};     ///< file, reason
inline constexpr MessageCode kAudioBecameAac{"audio-became-aac"}; ///< codec
inline constexpr MessageCode kSamplesBecame24Bits{"samples-became-24-bits"};
inline constexpr MessageCode kSamplesClipped{"samples-clipped"}; ///< number
inline constexpr MessageCode kSegmentStartsLater{"segment-starts-later"};

// Stream copies that cannot be made.
inline constexpr MessageCode kCannotSeekToStart{"cannot-seek-to-start"};
inline constexpr MessageCode kEditListTooComplex{"edit-list-too-complex"};
inline constexpr MessageCode kNothingToCopy{"nothing-to-copy"};
inline constexpr MessageCode kCodecChanges{"codec-changes"};
inline constexpr MessageCode kCopiedAudioSpeed{"copied-audio-speed"};
inline constexpr MessageCode kTargetIsSource{"target-is-source"};

// Plans that contradict themselves.
inline constexpr MessageCode kPlanIsEmpty{"plan-is-empty"};
inline constexpr MessageCode kM4aHoldsNoVideo{"m4a-holds-no-video"};
inline constexpr MessageCode kSegmentCount{"segment-count"};
inline constexpr MessageCode kSegmentTime{"segment-time"};
inline constexpr MessageCode kSegmentsOverlap{"segments-overlap"};
inline constexpr MessageCode kRotationCount{"rotation-count"};
inline constexpr MessageCode kRotationValue{"rotation-value"};
inline constexpr MessageCode kPlannedFrameSize{"planned-frame-size"};
inline constexpr MessageCode kPlannedFrameDuration{"planned-frame-duration"};
inline constexpr MessageCode kPlannedQuality{"planned-quality"};
inline constexpr MessageCode kPlannedAudio{"planned-audio"};
inline constexpr MessageCode kCopiedAudioVolume{"copied-audio-volume"};

// Frames and samples.
inline constexpr MessageCode kNoFrameSize{"no-frame-size"};
inline constexpr MessageCode kFrameSizeChanges{"frame-size-changes"}; ///< width, height of both
inline constexpr MessageCode kUnknownPixelFormat{"unknown-pixel-format"};
inline constexpr MessageCode kNoFrameDecoded{"no-frame-decoded"};
inline constexpr MessageCode kTimeOutOfRange{"time-out-of-range"};
inline constexpr MessageCode kNoFrameGiven{"no-frame-given"};
inline constexpr MessageCode kSampleWithoutFrame{"sample-without-frame"};
inline constexpr MessageCode kFrameWithoutTime{"frame-without-time"};
inline constexpr MessageCode kFrameNotLater{"frame-not-later"};
inline constexpr MessageCode kTooManyFramesWait{"too-many-frames-wait"};
inline constexpr MessageCode kVideoIsComplete{"video-is-complete"};
inline constexpr MessageCode kNoSampleRate{"no-sample-rate"};
inline constexpr MessageCode kTooManyChannels{"too-many-channels"}; ///< number
inline constexpr MessageCode kAudioLength{"audio-length"};

} // namespace clipheave::platform
