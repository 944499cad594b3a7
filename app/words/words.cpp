// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/words/words.h"

#include "platform/foundation/message.h"

#include <QCoreApplication>
#include <QHash>

#include <span>

namespace clipheave::app {

namespace {

/// The words of one code, with "%1" to "%9" for its arguments. A layer's rows stand in the order of
/// its messages.h.
struct Sentence {
    const char* id = nullptr;
    const char* words = nullptr;
};

// platform/foundation
const Sentence kFoundationWords[] = {
    {"not-found", QT_TRANSLATE_NOOP("Words", "The file was not found")},
    {"access-denied", QT_TRANSLATE_NOOP("Words", "Access is denied")},
    {"not-supported", QT_TRANSLATE_NOOP("Words", "This is not supported")},
    {"damaged-file", QT_TRANSLATE_NOOP("Words", "The file is damaged")},
    {"file-ends-early", QT_TRANSLATE_NOOP("Words", "The file ends too early")},
    {"limit-exceeded", QT_TRANSLATE_NOOP("Words", "A limit is exceeded")},
    {"name-taken", QT_TRANSLATE_NOOP("Words", "The name is taken")},
    {"disk-full", QT_TRANSLATE_NOOP("Words", "The disk is full")},
    {"cancelled", QT_TRANSLATE_NOOP("Words", "Cancelled")},
    {"open-file", QT_TRANSLATE_NOOP("Words", "Open the file")},
    {"read-file", QT_TRANSLATE_NOOP("Words", "Read the file")},
    {"create-file", QT_TRANSLATE_NOOP("Words", "Create the file")},
    {"reserve-space", QT_TRANSLATE_NOOP("Words", "Reserve space on the disk")},
    {"write-file", QT_TRANSLATE_NOOP("Words", "Write the file")},
    {"save-file", QT_TRANSLATE_NOOP("Words", "Save the file")},
    {"copy-file", QT_TRANSLATE_NOOP("Words", "Copy the file")},
    {"copy-dates", QT_TRANSLATE_NOOP("Words", "Copy the dates")},
    {"copy-permissions", QT_TRANSLATE_NOOP("Words", "Copy the permissions")},
    {"move-item", QT_TRANSLATE_NOOP("Words", "Move the file or folder")},
    {"move-link", QT_TRANSLATE_NOOP("Words", "Move the link")},
    {"remove-item", QT_TRANSLATE_NOOP("Words", "Remove the file or folder")},
    {"read-attributes", QT_TRANSLATE_NOOP("Words", "Read the attributes")},
    {"set-dates", QT_TRANSLATE_NOOP("Words", "Set the dates")},
    {"set-creation-date", QT_TRANSLATE_NOOP("Words", "Set the creation date")},
    {"set-modification-date", QT_TRANSLATE_NOOP("Words", "Set the modification date")},
    {"read-folder", QT_TRANSLATE_NOOP("Words", "Read the folder")},
    {"create-folder", QT_TRANSLATE_NOOP("Words", "Create the folder")},
    {"sync-folder", QT_TRANSLATE_NOOP("Words", "Make the folder durable")},
    {"write-settings", QT_TRANSLATE_NOOP("Words", "Write the settings")},
    {"not-a-regular-file", QT_TRANSLATE_NOOP("Words", "This is not a regular file")},
    {"neither-file-nor-link", QT_TRANSLATE_NOOP("Words", "This is neither a file nor a link")},
    {"ends-before-announced-bytes",
     QT_TRANSLATE_NOOP("Words", "The file ends before the bytes that it announces")},
    {"source-has-shrunk", QT_TRANSLATE_NOOP("Words", "The source has become shorter")},
    {"file-has-changed", QT_TRANSLATE_NOOP("Words", "The file was changed in the meantime")},
};

// platform/media
const Sentence kMediaWords[] = {
    {"load-media-engine", QT_TRANSLATE_NOOP("Words", "Load the media engine")},
    {"no-module-folder", QT_TRANSLATE_NOOP("Words", "The folder of the media engine is unknown")},
    {"no-such-module", QT_TRANSLATE_NOOP("Words", "%1 is missing")},
    {"unknown-loader-failure", QT_TRANSLATE_NOOP("Words", "The media engine cannot be loaded")},
    {"other-engine-abi",
     QT_TRANSLATE_NOOP("Words", "The media engine is of another version (%1, not %2)")},
    {"create-pixel-buffer", QT_TRANSLATE_NOOP("Words", "Create a pixel buffer")},
    {"frame-size-out-of-range",
     QT_TRANSLATE_NOOP("Words", "Frames of %1 x %2 pixels are not handled")},
    {"out-of-memory", QT_TRANSLATE_NOOP("Words", "There is not enough memory")},
    {"open-media-file", QT_TRANSLATE_NOOP("Words", "Open the media file")},
    {"read-media-file", QT_TRANSLATE_NOOP("Words", "Read the media file")},
    {"read-video", QT_TRANSLATE_NOOP("Words", "Read the video")},
    {"write-video", QT_TRANSLATE_NOOP("Words", "Write the video")},
    {"insert-track", QT_TRANSLATE_NOOP("Words", "Insert a track")},
    {"output-after-start", QT_TRANSLATE_NOOP("Words", "Outputs are added before the start")},
    {"input-after-start", QT_TRANSLATE_NOOP("Words", "Inputs are added before the start")},
    {"one-output", QT_TRANSLATE_NOOP("Words", "There is one output, which no other reader has")},
    {"one-input", QT_TRANSLATE_NOOP("Words", "There is one input, which no other writer has")},
    {"bgra-only", QT_TRANSLATE_NOOP("Words", "Frames are read as 32-bit BGRA")},
    {"h264-only", QT_TRANSLATE_NOOP("Words", "Only H.264 video is written")},
    {"not-a-video-track",
     QT_TRANSLATE_NOOP("Words", "The track is not a video track of this file")},
    {"started-before", QT_TRANSLATE_NOOP("Words", "It was started before")},
    {"not-started", QT_TRANSLATE_NOOP("Words", "It was not started")},
    {"no-output", QT_TRANSLATE_NOOP("Words", "It has no output")},
    {"no-input", QT_TRANSLATE_NOOP("Words", "It has no input")},
    {"frame-size-not-written", QT_TRANSLATE_NOOP("Words", "The frame size is out of range")},
    {"track-of-other-kind", QT_TRANSLATE_NOOP("Words", "The track is of another kind")},
    {"track-of-other-file", QT_TRANSLATE_NOOP("Words", "The track is not of this file")},
    {"no-duration", QT_TRANSLATE_NOOP("Words", "It has no duration")},
    {"negative-time", QT_TRANSLATE_NOOP("Words", "The time is negative")},
    {"export", QT_TRANSLATE_NOOP("Words", "Export")},
    {"plan-export", QT_TRANSLATE_NOOP("Words", "Plan the export")},
    {"prepare-output", QT_TRANSLATE_NOOP("Words", "Prepare the output")},
    {"unknown-preset", QT_TRANSLATE_NOOP("Words", "The preset \"%1\" is unknown")},
    {"unknown-output-type", QT_TRANSLATE_NOOP("Words", "The output type \"%1\" is unknown")},
    {"no-type-for-name",
     QT_TRANSLATE_NOOP("Words", "There is no file type for an output named \"%1\"")},
    {"no-output-path", QT_TRANSLATE_NOOP("Words", "There is no output path")},
    {"output-folder-gone", QT_TRANSLATE_NOOP("Words", "The output folder is gone")},
    {"output-removed", QT_TRANSLATE_NOOP("Words", "The output was removed while it was written")},
    {"right-angles-only", QT_TRANSLATE_NOOP("Words", "Only rotations by right angles are drawn")},
    {"no-audio-track", QT_TRANSLATE_NOOP("Words", "There is no audio track")},
    {"no-video-track", QT_TRANSLATE_NOOP("Words", "There is no video track")},
    {"video-tracks-not-carried-over",
     QT_TRANSLATE_NOOP("Words", "Not carried over: %1 more video track(s)")},
    {"audio-tracks-not-carried-over",
     QT_TRANSLATE_NOOP("Words", "Not carried over: %1 more audio track(s)")},
    {"data-tracks-not-carried-over",
     QT_TRANSLATE_NOOP("Words", "Not carried over: %1 track(s) of text or data")},
    {"chapters-not-carried-over", QT_TRANSLATE_NOOP("Words", "Not carried over: the chapters")},
    {"video-tracks-of-file-not-carried-over",
     QT_TRANSLATE_NOOP("Words", "Not carried over from %2: %1 more video track(s)")},
    {"audio-tracks-of-file-not-carried-over",
     QT_TRANSLATE_NOOP("Words", "Not carried over from %2: %1 more audio track(s)")},
    {"data-tracks-of-file-not-carried-over",
     QT_TRANSLATE_NOOP("Words", "Not carried over from %2: %1 track(s) of text or data")},
    {"chapters-of-file-not-carried-over",
     QT_TRANSLATE_NOOP("Words", "Not carried over from %1: the chapters")},
    {"codecs-not-for-mp4",
     QT_TRANSLATE_NOOP("Words", "%1 has no place in MP4 files: some players will not play it")},
};

// platform/image
const Sentence kImageWords[] = {
    {"read-image", QT_TRANSLATE_NOOP("Words", "Read the image")},
    {"read-photo", QT_TRANSLATE_NOOP("Words", "Read the photo")},
    {"read-photo-tags", QT_TRANSLATE_NOOP("Words", "Read the tags of the photo")},
    {"read-image-boxes", QT_TRANSLATE_NOOP("Words", "Read the boxes of the image")},
    {"encode-image", QT_TRANSLATE_NOOP("Words", "Encode the image")},
    {"convert-image", QT_TRANSLATE_NOOP("Words", "Convert the image")},
    {"create-tiff", QT_TRANSLATE_NOOP("Words", "Create the TIFF image")},
    {"write-gif", QT_TRANSLATE_NOOP("Words", "Write the GIF")},
    {"write-photo-tags", QT_TRANSLATE_NOOP("Words", "Write the tags of the photo")},
    {"too-many-pixels", QT_TRANSLATE_NOOP("Words", "The image has too many pixels")},
    {"image-file-too-large", QT_TRANSLATE_NOOP("Words", "The image file is larger than 64 MiB")},
    {"no-image", QT_TRANSLATE_NOOP("Words", "There is no image")},
    {"no-frames", QT_TRANSLATE_NOOP("Words", "There are no frames")},
    {"properties-out-of-range",
     QT_TRANSLATE_NOOP("Words", "The properties are out of range, or come too late")},
    {"frame-size-differs",
     QT_TRANSLATE_NOOP("Words", "The frame has another size, or one that is out of range")},
    {"one-frame-too-many", QT_TRANSLATE_NOOP("Words", "There is one frame more than announced")},
    {"no-primary-image", QT_TRANSLATE_NOOP("Words", "The file names no primary image")},
    {"exif-unreadable", QT_TRANSLATE_NOOP("Words", "The Exif item cannot be read")},
    {"image-header-too-long",
     QT_TRANSLATE_NOOP("Words", "The header of the image is longer than what is read")},
    {"no-image-header", QT_TRANSLATE_NOOP("Words", "There is no image header")},
    {"tags-need-too-much-memory", QT_TRANSLATE_NOOP("Words", "The tags need too much memory")},
};

// platform/isobmff
const Sentence kIsobmffWords[] = {
    {"read-movie-header", QT_TRANSLATE_NOOP("Words", "Read the movie header")},
    {"rebuild-movie-header", QT_TRANSLATE_NOOP("Words", "Rebuild the movie header")},
    {"lay-out-file", QT_TRANSLATE_NOOP("Words", "Lay out the file")},
    {"read-chunk-offsets", QT_TRANSLATE_NOOP("Words", "Read the chunk offsets")},
    {"move-chunk-offsets", QT_TRANSLATE_NOOP("Words", "Move the chunk offsets")},
    {"move-file-offsets", QT_TRANSLATE_NOOP("Words", "Move the file offsets")},
    {"write-movie-file", QT_TRANSLATE_NOOP("Words", "Write the file")},
    {"not-a-box", QT_TRANSLATE_NOOP("Words", "The bytes at offset %1 are not a box")},
    {"box-beyond-end",
     QT_TRANSLATE_NOOP("Words", "The box \"%1\" at offset %2 reaches beyond its end")},
    {"too-many-boxes", QT_TRANSLATE_NOOP("Words", "There are too many boxes")},
    {"no-movie-header", QT_TRANSLATE_NOOP("Words", "There is no movie header")},
    {"movie-header-compressed", QT_TRANSLATE_NOOP("Words", "The movie header is compressed")},
    {"not-a-movie-file",
     QT_TRANSLATE_NOOP("Words", "There is neither a file type nor a movie header")},
    {"too-many-tracks", QT_TRANSLATE_NOOP("Words", "There are too many tracks")},
    {"too-many-fragments", QT_TRANSLATE_NOOP("Words", "There are too many fragments")},
    {"too-many-metadata-items", QT_TRANSLATE_NOOP("Words", "There are too many metadata items")},
    {"metadata-value-too-short", QT_TRANSLATE_NOOP("Words", "A metadata value is too short")},
    {"metadata-key-unknown",
     QT_TRANSLATE_NOOP("Words", "A metadata item refers to a key that is not listed")},
    {"metadata-keys-missing", QT_TRANSLATE_NOOP("Words", "The metadata items have no keys")},
    {"movie-header-cut", QT_TRANSLATE_NOOP("Words", "The file ends within the movie header")},
    {"movie-header-too-large", QT_TRANSLATE_NOOP("Words", "The movie header is too large")},
    {"movie-header-has-grown", QT_TRANSLATE_NOOP("Words", "The movie header has become too large")},
    {"movie-header-part-cut",
     QT_TRANSLATE_NOOP("Words", "The box \"%1\" of the movie header is cut short")},
    {"samples-in-several-files",
     QT_TRANSLATE_NOOP("Words", "A track has samples in several files")},
    {"output-is-source", QT_TRANSLATE_NOOP("Words", "The output is the source itself")},
    {"chunk-table-too-short",
     QT_TRANSLATE_NOOP("Words", "The table of chunk offsets is shorter than its count")},
    {"chunk-outside-payload", QT_TRANSLATE_NOOP("Words", "A chunk lies outside the payload")},
    {"box-too-large", QT_TRANSLATE_NOOP("Words", "The box \"%1\" is too large")},
    {"offset-beyond-box", QT_TRANSLATE_NOOP("Words", "An offset stands beyond its box")},
    {"offset-outside-payload", QT_TRANSLATE_NOOP("Words", "An offset points outside the payload")},
    {"no-space-for-offset", QT_TRANSLATE_NOOP("Words", "An offset has no space for its new value")},
    {"item-outside-payload", QT_TRANSLATE_NOOP("Words", "An item lies outside the payload")},
    {"no-space-for-item-offset",
     QT_TRANSLATE_NOOP("Words", "The offset of an item has no space for its new value")},
    {"too-many-item-extents", QT_TRANSLATE_NOOP("Words", "There are too many item extents")},
    {"item-locations-cut", QT_TRANSLATE_NOOP("Words", "The item locations end too early")},
    {"item-location-width-unknown",
     QT_TRANSLATE_NOOP("Words", "The item locations have an unknown width")},
    {"fragment-table-cut", QT_TRANSLATE_NOOP("Words", "The fragment table ends too early")},
    {"fragment-header-too-short",
     QT_TRANSLATE_NOOP("Words", "A track fragment header is too short")},
    {"no-space-in-segment-index",
     QT_TRANSLATE_NOOP("Words", "The segment index has no space for its new values")},
    {"location-kept", QT_TRANSLATE_NOOP("Words", "Location kept")},
    {"artwork-format-not-stored",
     QT_TRANSLATE_NOOP("Words", "Artwork not stored: only JPEG, PNG, GIF and BMP can be")},
    {"value-not-stored", QT_TRANSLATE_NOOP("Words", "\"%1\" not stored: its value cannot be read")},
    {"text-too-long-to-store",
     QT_TRANSLATE_NOOP("Words", "\"%1\" not stored: the text is too long")},
    {"location-not-stored",
     QT_TRANSLATE_NOOP("Words", "Location not stored: \"%1\" is no position")},
};

// platform/formats
const Sentence kFormatsWords[] = {
    {"read-mpeg-audio", QT_TRANSLATE_NOOP("Words", "Read the MPEG audio")},
    {"read-flac", QT_TRANSLATE_NOOP("Words", "Read the FLAC file")},
    {"read-wave", QT_TRANSLATE_NOOP("Words", "Read the WAV file")},
    {"read-aiff", QT_TRANSLATE_NOOP("Words", "Read the AIFF file")},
    {"read-caf", QT_TRANSLATE_NOOP("Words", "Read the CAF file")},
    {"read-au", QT_TRANSLATE_NOOP("Words", "Read the AU file")},
    {"read-tags", QT_TRANSLATE_NOOP("Words", "Read the tags")},
    {"find-tags", QT_TRANSLATE_NOOP("Words", "Find the tags")},
    {"build-id3-tag", QT_TRANSLATE_NOOP("Words", "Build the ID3 tag")},
    {"write-flac-tags", QT_TRANSLATE_NOOP("Words", "Write the FLAC tags")},
    {"signature-missing", QT_TRANSLATE_NOOP("Words", "The signature of the format is missing")},
    {"ends-inside-chunk", QT_TRANSLATE_NOOP("Words", "The file ends inside a chunk")},
    {"ends-inside-audio",
     QT_TRANSLATE_NOOP("Words", "The file ends before the audio that it announces")},
    {"no-aiff-common-chunk", QT_TRANSLATE_NOOP("Words", "The AIFF file has no common chunk")},
    {"no-caf-description", QT_TRANSLATE_NOOP("Words", "The CAF file has no audio description")},
    {"no-wave-format-chunk", QT_TRANSLATE_NOOP("Words", "The WAV file has no format chunk")},
    {"flac-block-damaged",
     QT_TRANSLATE_NOOP("Words", "A metadata block of the FLAC file is damaged")},
    {"flac-block-too-large",
     QT_TRANSLATE_NOOP("Words", "A metadata block of the FLAC file would be over 16 MiB")},
    {"no-flac-stream-info", QT_TRANSLATE_NOOP("Words", "The FLAC file has no stream information")},
    {"no-flac-audio", QT_TRANSLATE_NOOP("Words", "No audio follows the metadata of the FLAC file")},
    {"flac-comments-damaged",
     QT_TRANSLATE_NOOP("Words", "The comments of the FLAC file are damaged")},
    {"artwork-unreadable", QT_TRANSLATE_NOOP("Words", "The artwork cannot be read")},
    {"no-mpeg-frame", QT_TRANSLATE_NOOP("Words", "There is no frame of MPEG audio")},
    {"no-mpeg-frame-and-no-tag",
     QT_TRANSLATE_NOOP("Words", "There is no frame of MPEG audio and no tag")},
    {"leading-tag-damaged", QT_TRANSLATE_NOOP("Words", "The tag at the start is damaged")},
    {"leading-tag-beyond-file",
     QT_TRANSLATE_NOOP("Words", "The tag at the start is larger than the file")},
    {"leading-tag-covers-audio",
     QT_TRANSLATE_NOOP("Words", "The tag at the start reaches into the audio")},
    {"ape-tag-beyond-file",
     QT_TRANSLATE_NOOP("Words", "The APE tag at the start is larger than the file")},
    {"tag-too-large", QT_TRANSLATE_NOOP("Words", "The tag would be larger than the format allows")},
    {"no-tag-from-library", QT_TRANSLATE_NOOP("Words", "The tag library returned no tag")},
    {"duration-unknown", QT_TRANSLATE_NOOP("Words", "The duration of the audio is not known")},
};

// platform/engine
const Sentence kEngineWords[] = {
    {"open-media-container", QT_TRANSLATE_NOOP("Words", "Open the media container")},
    {"read-media-container", QT_TRANSLATE_NOOP("Words", "Read the media container")},
    {"read-source-media", QT_TRANSLATE_NOOP("Words", "Read the source")},
    {"read-streams", QT_TRANSLATE_NOOP("Words", "Read the streams")},
    {"read-export-plan", QT_TRANSLATE_NOOP("Words", "Check the export plan")},
    {"read-video-frame", QT_TRANSLATE_NOOP("Words", "Read a frame of the video")},
    {"grab-keyframe", QT_TRANSLATE_NOOP("Words", "Make a thumbnail of the video")},
    {"measure-audio", QT_TRANSLATE_NOOP("Words", "Measure the audio")},
    {"decode-video", QT_TRANSLATE_NOOP("Words", "Decode the video")},
    {"filter-video", QT_TRANSLATE_NOOP("Words", "Filter the video")},
    {"encode-video", QT_TRANSLATE_NOOP("Words", "Encode the video")},
    {"encode-audio", QT_TRANSLATE_NOOP("Words", "Encode the audio")},
    {"convert-audio", QT_TRANSLATE_NOOP("Words", "Convert the audio")},
    {"copy-streams", QT_TRANSLATE_NOOP("Words", "Copy the streams")},
    {"run-export", QT_TRANSLATE_NOOP("Words", "Export")},
    {"write-export", QT_TRANSLATE_NOOP("Words", "Write the export")},
    {"create-media-file", QT_TRANSLATE_NOOP("Words", "Create the media file")},
    {"begin-media-file", QT_TRANSLATE_NOOP("Words", "Begin the media file")},
    {"complete-media-file", QT_TRANSLATE_NOOP("Words", "Complete the media file")},
    {"encode-sample", QT_TRANSLATE_NOOP("Words", "Encode the sample")},
    {"write-sample", QT_TRANSLATE_NOOP("Words", "Write the sample")},
    {"damaged-or-unknown-data",
     QT_TRANSLATE_NOOP("Words", "The data is damaged or of an unknown kind")},
    {"unsupported-data", QT_TRANSLATE_NOOP("Words", "This kind of data is not supported")},
    {"ends-too-early", QT_TRANSLATE_NOOP("Words", "The data ends too early")},
    {"was-stopped", QT_TRANSLATE_NOOP("Words", "It was stopped")},
    {"cannot-be-processed", QT_TRANSLATE_NOOP("Words", "The data cannot be processed")},
    {"wrong-properties", QT_TRANSLATE_NOOP("Words", "Properties of the data are missing or wrong")},
    {"unknown-media-container",
     QT_TRANSLATE_NOOP("Words", "This is no audio or video container that can be read")},
    {"streams-unreadable", QT_TRANSLATE_NOOP("Words", "The streams cannot be read")},
    {"headers-too-long", QT_TRANSLATE_NOOP("Words", "The headers are too long to be read in full")},
    {"no-stream", QT_TRANSLATE_NOOP("Words", "There is no stream")},
    {"no-video-decoder", QT_TRANSLATE_NOOP("Words", "There is no decoder for the video (%1)")},
    {"no-audio-decoder", QT_TRANSLATE_NOOP("Words", "There is no decoder for the audio (%1)")},
    {"unknown-video-codec",
     QT_TRANSLATE_NOOP("Words", "There is no decoder for the video (unknown codec)")},
    {"unknown-audio-codec",
     QT_TRANSLATE_NOOP("Words", "There is no decoder for the audio (unknown codec)")},
    {"no-encoder", QT_TRANSLATE_NOOP("Words", "The encoder %1 is missing")},
    {"no-muxer", QT_TRANSLATE_NOOP("Words", "There is no muxer for %1")},
    {"mov-cannot-hold", QT_TRANSLATE_NOOP("Words", "QuickTime movies cannot hold %1")},
    {"mp4-cannot-hold", QT_TRANSLATE_NOOP("Words", "MP4 files cannot hold %1")},
    {"m4a-cannot-hold", QT_TRANSLATE_NOOP("Words", "M4A and M4V files cannot hold %1")},
    {"container-cannot-hold", QT_TRANSLATE_NOOP("Words", "The container cannot hold %1")},
    {"cannot-hold-as-it-is",
     QT_TRANSLATE_NOOP("Words", "The container cannot hold this %1 stream as it is")},
    {"streams-empty", QT_TRANSLATE_NOOP("Words", "The streams are empty")},
    {"streams-left-out", QT_TRANSLATE_NOOP("Words", "Not carried over: %1")},
    {"damaged-video-packets", QT_TRANSLATE_NOOP("Words", "%1: damaged video packets left out: %2")},
    {"damaged-audio-packets", QT_TRANSLATE_NOOP("Words", "%1: damaged audio packets left out: %2")},
    {"damaged-packets", QT_TRANSLATE_NOOP("Words", "Damaged packets left out: %1")},
    {"file-breaks-off", QT_TRANSLATE_NOOP("Words", "The file breaks off at %1 s")},
    {"video-breaks-off", QT_TRANSLATE_NOOP("Words", "The video breaks off at %1 s")},
    {"audio-breaks-off", QT_TRANSLATE_NOOP("Words", "The audio breaks off at %1 s")},
    {"video-ends-early",
     QT_TRANSLATE_NOOP("Words", "%1: the video ends at %2 s, before the file does")},
    {"no-video-decoded", QT_TRANSLATE_NOOP("Words", "Nothing of the video can be decoded")},
    {"no-audio-decoded", QT_TRANSLATE_NOOP("Words", "Nothing of the audio can be decoded")},
    {"no-video-decoded-because",
     QT_TRANSLATE_NOOP("Words", "Nothing of the video can be decoded: %1")},
    {"no-audio-decoded-because",
     QT_TRANSLATE_NOOP("Words", "Nothing of the audio can be decoded: %1")},
    {"gap-too-long", QT_TRANSLATE_NOOP("Words", "There is a gap of more than half a day")},
    {"nothing-in-range",
     QT_TRANSLATE_NOOP("Words", "The sources have nothing in the time that is wanted")},
    {"bit-depth-kept", QT_TRANSLATE_NOOP("Words", "%1 bits were kept (H.264 with 10 bits)")},
    {"bit-depth-became-10", QT_TRANSLATE_NOOP("Words", "%1 bits became 10 (H.264 with 10 bits)")},
    {"bit-depth-became-8", QT_TRANSLATE_NOOP("Words", "%1 bits became 8")},
    {"hdr-kept", QT_TRANSLATE_NOOP("Words", "HDR was kept (H.264 with 10 bits)")},
    {"hdr-became-sdr", QT_TRANSLATE_NOOP("Words", "HDR segments became SDR")},
    {"audio-left-out", QT_TRANSLATE_NOOP("Words", "%1: audio left out: %2")},
    {"audio-became-aac",
     QT_TRANSLATE_NOOP("Words", "The audio was transcoded to AAC: M4A does not hold %1")},
    {"samples-became-24-bits",
     QT_TRANSLATE_NOOP("Words", "Samples are stored with 24 bits: M4A holds no more without loss")},
    {"segment-starts-later",
     QT_TRANSLATE_NOOP("Words", "A segment of the video starts later, at its next keyframe")},
    {"cannot-seek-to-start",
     QT_TRANSLATE_NOOP("Words", "The start of the segment cannot be reached")},
    {"edit-list-too-complex",
     QT_TRANSLATE_NOOP("Words",
                       "The edit list of the video has several segments, which cannot be copied")},
    {"nothing-to-copy", QT_TRANSLATE_NOOP("Words", "There is nothing to copy")},
    {"codec-changes", QT_TRANSLATE_NOOP("Words", "The codec is not that of the segment before")},
    {"copied-audio-speed", QT_TRANSLATE_NOOP("Words", "Copied audio keeps its speed")},
    {"target-is-source", QT_TRANSLATE_NOOP("Words", "The target is the source")},
    {"plan-is-empty", QT_TRANSLATE_NOOP("Words", "The plan has neither video nor audio")},
    {"m4a-holds-no-video", QT_TRANSLATE_NOOP("Words", "M4A holds no video")},
    {"segment-count", QT_TRANSLATE_NOOP("Words", "A track has no segment, or too many")},
    {"segment-time", QT_TRANSLATE_NOOP("Words", "A segment has no valid time")},
    {"segments-overlap", QT_TRANSLATE_NOOP("Words", "Segments overlap")},
    {"rotation-count", QT_TRANSLATE_NOOP("Words", "There must be as many rotations as segments")},
    {"rotation-value", QT_TRANSLATE_NOOP("Words", "Frames are rotated by quarters only")},
    {"planned-frame-size", QT_TRANSLATE_NOOP("Words", "The frame size is not even or too large")},
    {"planned-frame-duration", QT_TRANSLATE_NOOP("Words", "The frame duration is out of range")},
    {"planned-quality", QT_TRANSLATE_NOOP("Words", "The quality is out of range")},
    {"planned-audio", QT_TRANSLATE_NOOP("Words", "The settings of the audio are out of range")},
    {"copied-audio-volume", QT_TRANSLATE_NOOP("Words", "Copied audio keeps its volume")},
    {"no-frame-size", QT_TRANSLATE_NOOP("Words", "The video has no frame size")},
    {"frame-size-changes",
     QT_TRANSLATE_NOOP("Words", "A frame of %1 x %2 pixels does not fit a video of %3 x %4")},
    {"unknown-pixel-format", QT_TRANSLATE_NOOP("Words", "The pixel format is unknown")},
    {"no-frame-decoded", QT_TRANSLATE_NOOP("Words", "No frame can be decoded")},
    {"time-out-of-range", QT_TRANSLATE_NOOP("Words", "The time is beyond the end of the video")},
    {"no-frame-given", QT_TRANSLATE_NOOP("Words", "There was no frame")},
    {"sample-without-frame", QT_TRANSLATE_NOOP("Words", "A sample has no frame")},
    {"frame-without-time", QT_TRANSLATE_NOOP("Words", "A frame has no valid time")},
    {"frame-not-later", QT_TRANSLATE_NOOP("Words", "A frame is not later than the one before")},
    {"too-many-frames-wait", QT_TRANSLATE_NOOP("Words", "Too many frames wait")},
    {"video-is-complete", QT_TRANSLATE_NOOP("Words", "The video is complete")},
    {"no-sample-rate", QT_TRANSLATE_NOOP("Words", "The audio has no sample rate")},
    {"too-many-channels", QT_TRANSLATE_NOOP("Words", "M4A has no place for %1 channels")},
    {"audio-length", QT_TRANSLATE_NOOP("Words", "The audio is too long, or its length is unknown")},
};

// platform/audio, platform/index, platform/workspace, platform/player
const Sentence kServiceWords[] = {
    {"open-audio-file", QT_TRANSLATE_NOOP("Words", "Open the audio file")},
    {"read-audio-file-property", QT_TRANSLATE_NOOP("Words", "Read a property of the audio file")},
    {"read-system-version", QT_TRANSLATE_NOOP("Words", "Read the version of the system")},
};

// media
const Sentence kItemWords[] = {
    {"folder-leads-back", QT_TRANSLATE_NOOP("Words", "The folder leads back to itself")},
    {"folders-too-deep", QT_TRANSLATE_NOOP("Words", "The folders are nested too deep")},
    {"photo-not-wanted",
     QT_TRANSLATE_NOOP("Words", "This is a photo, not a video or an audio file")},
    {"not-video-or-audio", QT_TRANSLATE_NOOP("Words", "This is not a video or an audio file")},
    {"unknown-kind",
     QT_TRANSLATE_NOOP("Words", "\".%1\" is none of the known kinds of video and audio files")},
    {"not-for-audio-services",
     QT_TRANSLATE_NOOP("Words", "Audio file services do not open this file")},
};

// jobs
const Sentence kJobWords[] = {
    {},
};

// metadata
const Sentence kMetadataWords[] = {
    {},
};

// video
const Sentence kVideoWords[] = {
    {},
};

// batch
const Sentence kBatchWords[] = {
    {},
};

/// By code.
const QHash<QByteArrayView, const char*>& sentences() {
    static const QHash<QByteArrayView, const char*> words = [] {
        QHash<QByteArrayView, const char*> all;
        const std::span<const Sentence> sections[] = {
            kFoundationWords, kMediaWords, kImageWords, kIsobmffWords,  kFormatsWords, kEngineWords,
            kServiceWords,    kItemWords,  kJobWords,   kMetadataWords, kVideoWords,   kBatchWords};
        for (const auto& section : sections)
            for (const Sentence& sentence : section)
                if (sentence.id)
                    all.insert(sentence.id, sentence.words);
        return all;
    }();
    return words;
}

QString wordsOf(const platform::Message& message) {
    const char* words = sentences().value(message.code().id, message.code().id);
    return platform::fillGaps(QCoreApplication::translate("Words", words), message.arguments());
}

} // namespace

void installWords() {
    platform::setWording(&wordsOf);
}

} // namespace clipheave::app
