// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/words.h"

#include "platform/foundation/message.h"

#include <QHash>

#include <span>

namespace clipheave::cli {

namespace {

/// The words of one code, with "%1" to "%9" for its arguments. A layer's rows stand in the order of
/// its messages.h.
struct Sentence {
    const char* id = nullptr;
    const char* words = nullptr;
};

// platform/foundation
const Sentence kFoundationWords[] = {
    {"not-found", "The file was not found"},
    {"access-denied", "Access is denied"},
    {"not-supported", "This is not supported"},
    {"damaged-file", "The file is damaged"},
    {"file-ends-early", "The file ends too early"},
    {"limit-exceeded", "A limit is exceeded"},
    {"name-taken", "The name is taken"},
    {"disk-full", "The disk is full"},
    {"cancelled", "Cancelled"},
    {"open-file", "Open the file"},
    {"read-file", "Read the file"},
    {"create-file", "Create the file"},
    {"reserve-space", "Reserve space on the disk"},
    {"write-file", "Write the file"},
    {"save-file", "Save the file"},
    {"copy-file", "Copy the file"},
    {"copy-dates", "Copy the dates"},
    {"move-item", "Move the file or folder"},
    {"move-link", "Move the link"},
    {"remove-item", "Remove the file or folder"},
    {"read-attributes", "Read the attributes"},
    {"set-dates", "Set the dates"},
    {"set-creation-date", "Set the creation date"},
    {"set-modification-date", "Set the modification date"},
    {"read-folder", "Read the folder"},
    {"create-folder", "Create the folder"},
    {"sync-folder", "Make the folder durable"},
    {"write-settings", "Write the settings"},
    {"not-a-regular-file", "This is not a regular file"},
    {"neither-file-nor-link", "This is neither a file nor a link"},
    {"ends-before-announced-bytes", "The file ends before the bytes that it announces"},
    {"source-has-shrunk", "The source has become shorter"},
    {"file-has-changed", "The file was changed in the meantime"},
    {"out-of-memory", "There is not enough memory"},
};

// platform/media
const Sentence kMediaWords[] = {
    {"load-media-engine", "Load the media engine"},
    {"no-module-folder", "The folder of the media engine is unknown"},
    {"no-such-module", "%1 is missing"},
    {"unknown-loader-failure", "The media engine cannot be loaded"},
    {"module-not-loadable", "The media engine cannot be loaded: %1"},
    {"other-engine-abi", "The media engine is of another version (%1, not %2)"},
    {"create-pixel-buffer", "Create a pixel buffer"},
    {"frame-size-out-of-range", "Frames of %1 x %2 pixels are not handled"},
    {"open-media-file", "Open the media file"},
    {"read-media-file", "Read the media file"},
    {"read-video", "Read the video"},
    {"write-video", "Write the video"},
    {"insert-track", "Insert a track"},
    {"output-after-start", "Outputs are added before the start"},
    {"input-after-start", "Inputs are added before the start"},
    {"one-output", "There is one output, which no other reader has"},
    {"one-input", "There is one input, which no other writer has"},
    {"bgra-only", "Frames are read as 32-bit BGRA"},
    {"h264-only", "Only H.264 video is written"},
    {"not-a-video-track", "The track is not a video track of this file"},
    {"started-before", "It was started before"},
    {"not-started", "It was not started"},
    {"no-output", "It has no output"},
    {"no-input", "It has no input"},
    {"frame-size-not-written", "The frame size is out of range"},
    {"track-of-other-kind", "The track is of another kind"},
    {"track-of-other-file", "The track is not of this file"},
    {"no-duration", "It has no duration"},
    {"negative-time", "The time is negative"},
    {"plan-export", "Plan the export"},
    {"prepare-output", "Prepare the output"},
    {"unknown-preset", "The preset \"%1\" is unknown"},
    {"unknown-output-type", "The output type \"%1\" is unknown"},
    {"no-type-for-name", "There is no file type for an output named \"%1\""},
    {"no-output-path", "There is no output path"},
    {"output-folder-gone", "The output folder is gone"},
    {"output-removed", "The output was removed while it was written"},
    {"right-angles-only", "Only rotations by right angles are drawn"},
    {"no-audio-track", "There is no audio track"},
    {"no-video-track", "There is no video track"},
    {"video-tracks-not-carried-over", "Not carried over: %1 more video track(s)"},
    {"audio-tracks-not-carried-over", "Not carried over: %1 more audio track(s)"},
    {"data-tracks-not-carried-over", "Not carried over: %1 track(s) of text or data"},
    {"chapters-not-carried-over", "Not carried over: the chapters"},
    {"video-tracks-of-file-not-carried-over", "Not carried over from %2: %1 more video track(s)"},
    {"audio-tracks-of-file-not-carried-over", "Not carried over from %2: %1 more audio track(s)"},
    {"data-tracks-of-file-not-carried-over",
     "Not carried over from %2: %1 track(s) of text or data"},
    {"chapters-of-file-not-carried-over", "Not carried over from %1: the chapters"},
    {"codecs-not-for-mp4", "%1 has no place in MP4 files: some players will not play it"},
};

// platform/image
const Sentence kImageWords[] = {
    {"read-image", "Read the image"},
    {"read-photo", "Read the photo"},
    {"read-photo-tags", "Read the tags of the photo"},
    {"read-image-boxes", "Read the boxes of the image"},
    {"encode-image", "Encode the image"},
    {"convert-image", "Convert the image"},
    {"create-tiff", "Create the TIFF image"},
    {"write-gif", "Write the GIF"},
    {"write-photo-tags", "Write the tags of the photo"},
    {"photo-tags-left-out", "%1 could not be carried over"},
    {"too-many-pixels", "The image has too many pixels"},
    {"image-file-too-large", "The image file is larger than 64 MiB"},
    {"no-image-decoder", "Images of this format cannot be decoded"},
    {"heif-library-missing", "The library that decodes HEIC images is missing"},
    {"no-image", "There is no image"},
    {"no-frames", "There are no frames"},
    {"properties-out-of-range", "The properties are out of range, or come too late"},
    {"frame-size-differs", "The frame has another size, or one that is out of range"},
    {"one-frame-too-many", "There is one frame more than announced"},
    {"no-primary-image", "The file names no primary image"},
    {"exif-unreadable", "The Exif item cannot be read"},
    {"image-header-too-long", "The header of the image is longer than what is read"},
    {"no-image-header", "There is no image header"},
    {"tags-need-too-much-memory", "The tags need too much memory"},
    {"same-name-here", "The disk takes the names for one: %1 was replaced"},
    {"value-empty", "Each value cannot be empty."},
    {"photo-latitude-not-in-range", "\"%1\" is no latitude from -90 to 90"},
    {"photo-longitude-not-in-range", "\"%1\" is no longitude from -180 to 180"},
    {"photo-altitude-not-in-range", "\"%1\" is no altitude in metres"},
    {"no-date-stamp", "\"%1\" is no date like 2025:06:14"},
    {"no-time-stamp", "\"%1\" is no time like 21:36:20"},
    {"no-camera-date", "\"%1\" is no date like 2025:06:14 21:36:20"},
    {"photo-has-no-date", "The photo has no date, and none was given"},
    {"too-many-directories", "The photo has too many lists of tags"},
    {"iptc-unreadable", "The IPTC data cannot be read"},
    {"xmp-unreadable", "The XMP data cannot be read"},
    {"jpeg-broken", "The JPEG image is cut or damaged"},
    {"png-broken", "The PNG image is cut or damaged"},
    {"webp-broken", "The WebP image is cut or damaged"},
    {"heif-broken", "The HEIF image is cut or damaged"},
    {"metadata-shared", "The metadata shares its bytes with another part of the photo"},
    {"psd-broken", "The Photoshop document is cut or damaged"},
    {"jp2-broken", "The JPEG 2000 image is cut or damaged"},
    {"gif-broken", "The GIF image is cut or damaged"},
    {"gif-holds-no-tags", "A GIF image has no place for these fields"},
    {"photo-too-large", "The photo is too large for its format"},
    {"block-too-large", "The metadata is too large for a JPEG image"},
    {"photo-kind-not-written", "Metadata cannot be written into photos of this kind without loss"},
    {"raw-needs-exif", "A raw photo cannot be developed without its EXIF data"},
    {"unreadable-xmp-removed", "XMP data that cannot be read was removed"},
    {"unreadable-xmp-kept", "XMP data that cannot be read was kept"},
    {"further-image-kept", "A further image in the file keeps its own metadata"},
    {"properties-not-written", "Not written: %1"},
    {"thermal-data-kept", "The thermal data is kept and may hold a position"},
    {"motion-video-kept", "The video in the photo keeps its own metadata"},
    {"motion-video-holds-place", "The video in the photo keeps its own position"},
};

// platform/isobmff
const Sentence kIsobmffWords[] = {
    {"read-movie-header", "Read the movie header"},
    {"rebuild-movie-header", "Rebuild the movie header"},
    {"lay-out-file", "Lay out the file"},
    {"read-chunk-offsets", "Read the chunk offsets"},
    {"move-chunk-offsets", "Move the chunk offsets"},
    {"move-file-offsets", "Move the file offsets"},
    {"write-movie-file", "Write the file"},
    {"not-a-box", "The bytes at offset %1 are not a box"},
    {"box-beyond-end", "The box \"%1\" at offset %2 reaches beyond its end"},
    {"too-many-boxes", "There are too many boxes"},
    {"no-movie-header", "There is no movie header"},
    {"movie-header-compressed", "The movie header is compressed"},
    {"not-a-movie-file", "There is neither a file type nor a movie header"},
    {"too-many-tracks", "There are too many tracks"},
    {"too-many-fragments", "There are too many fragments"},
    {"too-many-metadata-items", "There are too many metadata items"},
    {"metadata-value-too-short", "A metadata value is too short"},
    {"metadata-key-unknown", "A metadata item refers to a key that is not listed"},
    {"metadata-keys-missing", "The metadata items have no keys"},
    {"movie-header-damaged", "The movie header is damaged"},
    {"movie-header-cut", "The file ends within the movie header"},
    {"movie-header-too-large", "The movie header is too large"},
    {"movie-header-has-grown", "The movie header has become too large"},
    {"movie-header-part-cut", "The box \"%1\" of the movie header is cut short"},
    {"samples-in-several-files", "A track has samples in several files"},
    {"output-is-source", "The output is the source itself"},
    {"chunk-table-too-short", "The table of chunk offsets is shorter than its count"},
    {"chunk-outside-payload", "A chunk lies outside the payload"},
    {"box-too-large", "The box \"%1\" is too large"},
    {"offset-beyond-box", "An offset stands beyond its box"},
    {"offset-outside-payload", "An offset points outside the payload"},
    {"no-space-for-offset", "An offset has no space for its new value"},
    {"item-outside-payload", "An item lies outside the payload"},
    {"no-space-for-item-offset", "The offset of an item has no space for its new value"},
    {"too-many-item-extents", "There are too many item extents"},
    {"item-locations-cut", "The item locations end too early"},
    {"item-location-width-unknown", "The item locations have an unknown width"},
    {"fragment-table-cut", "The fragment table ends too early"},
    {"fragment-header-too-short", "A track fragment header is too short"},
    {"no-space-in-segment-index", "The segment index has no space for its new values"},
    {"location-kept", "Location kept"},
    {"timed-metadata-kept", "Timed metadata (%1) kept; it may hold positions"},
    {"artwork-format-not-stored", "Artwork not stored: only JPEG, PNG, GIF and BMP can be"},
    {"value-not-stored", "\"%1\" not stored: its value cannot be read"},
    {"text-too-long-to-store", "\"%1\" not stored: the text is too long"},
    {"location-not-stored", "Location not stored: \"%1\" is not a position"},
};

// platform/formats
const Sentence kFormatsWords[] = {
    {"read-mpeg-audio", "Read the MPEG audio"},
    {"read-flac", "Read the FLAC file"},
    {"read-wave", "Read the WAV file"},
    {"read-aiff", "Read the AIFF file"},
    {"read-caf", "Read the CAF file"},
    {"read-au", "Read the AU file"},
    {"read-tags", "Read the tags"},
    {"find-tags", "Find the tags"},
    {"build-id3-tag", "Build the ID3 tag"},
    {"write-flac-tags", "Write the FLAC tags"},
    {"signature-missing", "The signature of the format is missing"},
    {"ends-inside-chunk", "The file ends inside a chunk"},
    {"ends-inside-audio", "The file ends before the audio that it announces"},
    {"no-aiff-common-chunk", "The AIFF file has no common chunk"},
    {"no-caf-description", "The CAF file has no audio description"},
    {"no-wave-format-chunk", "The WAV file has no format chunk"},
    {"flac-block-damaged", "A metadata block of the FLAC file is damaged"},
    {"flac-block-too-large", "A metadata block of the FLAC file would be over 16 MiB"},
    {"no-flac-stream-info", "The FLAC file has no stream information"},
    {"no-flac-audio", "No audio follows the metadata of the FLAC file"},
    {"flac-comments-damaged", "The comments of the FLAC file are damaged"},
    {"artwork-unreadable", "The artwork cannot be read"},
    {"no-mpeg-frame", "There is no frame of MPEG audio"},
    {"no-mpeg-frame-and-no-tag", "There is no frame of MPEG audio and no tag"},
    {"leading-tag-damaged", "The tag at the start is damaged"},
    {"leading-tag-beyond-file", "The tag at the start is larger than the file"},
    {"leading-tag-covers-audio", "The tag at the start reaches into the audio"},
    {"ape-tag-beyond-file", "The APE tag at the start is larger than the file"},
    {"tag-too-large", "The tag would be larger than the format allows"},
    {"no-tag-from-library", "The tag library returned no tag"},
    {"duration-unknown", "The duration of the audio is not known"},
    {"tags-not-carried-over", "Not carried over: %1"},
};

// platform/engine
const Sentence kEngineWords[] = {
    {"open-media-container", "Open the media container"},
    {"read-media-container", "Read the media container"},
    {"read-source-media", "Read the source"},
    {"read-streams", "Read the streams"},
    {"read-export-plan", "Check the export plan"},
    {"read-video-frame", "Read a frame of the video"},
    {"grab-keyframe", "Make a thumbnail of the video"},
    {"measure-audio", "Measure the audio"},
    {"decode-video", "Decode the video"},
    {"filter-video", "Filter the video"},
    {"encode-video", "Encode the video"},
    {"encode-audio", "Encode the audio"},
    {"convert-audio", "Convert the audio"},
    {"copy-streams", "Copy the streams"},
    {"run-export", "Export"},
    {"write-export", "Write the export"},
    {"create-media-file", "Create the media file"},
    {"begin-media-file", "Begin the media file"},
    {"complete-media-file", "Complete the media file"},
    {"encode-sample", "Encode the sample"},
    {"write-sample", "Write the sample"},
    {"damaged-or-unknown-data", "The data is damaged or of an unknown kind"},
    {"unsupported-data", "This kind of data is not supported"},
    {"ends-too-early", "The data ends too early"},
    {"was-stopped", "It was stopped"},
    {"cannot-be-processed", "The data cannot be processed"},
    {"wrong-properties", "Properties of the data are missing or wrong"},
    {"unknown-media-container", "This is not an audio or video file that can be read"},
    {"streams-unreadable", "The streams cannot be read"},
    {"headers-too-long", "The headers are too long to be read in full"},
    {"no-stream", "There is no stream"},
    {"no-video-decoder", "There is no decoder for the video (%1)"},
    {"no-audio-decoder", "There is no decoder for the audio (%1)"},
    {"unknown-video-codec", "There is no decoder for the video (unknown codec)"},
    {"unknown-audio-codec", "There is no decoder for the audio (unknown codec)"},
    {"no-encoder", "The encoder %1 is missing"},
    {"no-muxer", "There is no muxer for %1"},
    {"mov-cannot-hold", "QuickTime movies cannot hold %1"},
    {"mp4-cannot-hold", "MP4 files cannot hold %1"},
    {"m4a-cannot-hold", "M4A and M4V files cannot hold %1"},
    {"container-cannot-hold", "The container cannot hold %1"},
    {"cannot-hold-as-it-is", "The container cannot hold this %1 stream as it is"},
    {"streams-empty", "The streams are empty"},
    {"streams-left-out", "Not carried over: %1"},
    {"chapters-beyond-end", "Chapters behind the end, not carried over: %1"},
    {"damaged-video-packets", "%1: damaged video packets left out: %2"},
    {"damaged-audio-packets", "%1: damaged audio packets left out: %2"},
    {"ends-before-duration", "The file ends after %1 of the %2 seconds that its header announces"},
    {"damaged-packets", "Damaged packets left out: %1"},
    {"file-breaks-off", "The file breaks off at %1 s"},
    {"video-breaks-off", "The video breaks off at %1 s"},
    {"audio-breaks-off", "The audio breaks off at %1 s"},
    {"video-ends-early", "%1: the video ends at %2 s, before the file does"},
    {"no-video-decoded", "Nothing of the video can be decoded"},
    {"no-audio-decoded", "Nothing of the audio can be decoded"},
    {"no-video-decoded-because", "Nothing of the video can be decoded: %1"},
    {"no-audio-decoded-because", "Nothing of the audio can be decoded: %1"},
    {"gap-too-long", "There is a gap of more than half a day"},
    {"nothing-in-range", "The sources have nothing in the wanted time range"},
    {"bit-depth-kept", "%1 bits were kept (H.264 with 10 bits)"},
    {"bit-depth-became-10", "%1 bits became 10 (H.264 with 10 bits)"},
    {"bit-depth-became-8", "%1 bits became 8"},
    {"hdr-kept", "HDR was kept (H.264 with 10 bits)"},
    {"hdr-became-sdr", "HDR segments became SDR"},
    {"audio-left-out", "%1: audio left out: %2"},
    {"audio-became-aac", "The audio was transcoded to AAC: M4A does not hold %1"},
    {"samples-became-24-bits", "Samples are stored with 24 bits: M4A holds no more without loss"},
    {"samples-clipped", "Samples above full scale, clipped: %1"},
    {"segment-starts-later", "A segment of the video starts later, at its next keyframe"},
    {"cannot-seek-to-start", "The start of the segment cannot be reached"},
    {"edit-list-too-complex",
     "The edit list of the video has several segments, which cannot be copied"},
    {"nothing-to-copy", "There is nothing to copy"},
    {"codec-changes", "The codec is not that of the segment before"},
    {"copied-audio-speed", "Copied audio keeps its speed"},
    {"target-is-source", "The target is the source"},
    {"plan-is-empty", "The plan has neither video nor audio"},
    {"m4a-holds-no-video", "M4A holds no video"},
    {"segment-count", "A track has no segment, or too many"},
    {"segment-time", "A segment has no valid time"},
    {"segments-overlap", "Segments overlap"},
    {"rotation-count", "There must be as many rotations as segments"},
    {"rotation-value", "Frames are rotated by multiples of 90 degrees only"},
    {"planned-frame-size", "The frame size is not even or too large"},
    {"planned-frame-duration", "The frame duration is out of range"},
    {"planned-quality", "The quality is out of range"},
    {"planned-audio", "The settings of the audio are out of range"},
    {"copied-audio-volume", "Copied audio keeps its volume"},
    {"no-frame-size", "The video has no frame size"},
    {"frame-size-changes", "A frame of %1 x %2 pixels does not fit a video of %3 x %4"},
    {"unknown-pixel-format", "The pixel format is unknown"},
    {"no-frame-decoded", "No frame can be decoded"},
    {"time-out-of-range", "The time is beyond the end of the video"},
    {"no-frame-given", "There was no frame"},
    {"sample-without-frame", "A sample has no frame"},
    {"frame-without-time", "A frame has no valid time"},
    {"frame-not-later", "A frame is not later than the one before"},
    {"too-many-frames-wait", "Too many frames wait"},
    {"video-is-complete", "The video is complete"},
    {"no-sample-rate", "The audio has no sample rate"},
    {"too-many-channels", "M4A has no place for %1 channels"},
    {"audio-length", "The audio is too long, or its length is unknown"},
};

// platform/audio, platform/index, platform/workspace, platform/player
const Sentence kServiceWords[] = {
    {"open-audio-file", "Open the audio file"},
    {"read-audio-file-property", "Read a property of the audio file"},
    {"read-system-version", "Read the version of the system"},
};

// platform/plist
const Sentence kPlistWords[] = {
    {"read-property-list", "Read the property list"},
    {"write-property-list", "Write the property list"},
    {"no-property-list", "This is not a property list"},
    {"property-list-too-large", "The property list is too large"},
    {"property-list-too-deep", "The property list is nested over %1 levels deep"},
    {"property-list-holds-itself", "The property list holds itself"},
    {"property-list-declares", "The property list declares entities of its own"},
    {"no-property-list-value", "A property list cannot hold this value (%1)"},
};

// media
const Sentence kItemWords[] = {
    {"folder-leads-back", "The folder leads back to itself"},
    {"folders-too-deep", "The folders are nested too deep"},
    {"photo-not-wanted", "This is a photo, not a video or an audio file"},
    {"not-video-or-audio", "This is not a video or an audio file"},
    {"unknown-kind", "\".%1\" is none of the known kinds of video and audio files"},
    {"not-for-audio-services", "Audio file services do not open this file"},
};

// jobs
const Sentence kJobWords[] = {
    {"no-outcome", "The work was given up without a result"},
    {"outcome-dropped", "A second outcome was dropped: %1"},
    {"date-beyond-file-system", "The file system cannot store the date %1"},
    {"creation-date-not-stored", "Creation date not stored here"},
    {"copied-unchanged", "Copied unchanged"},
};

// metadata
const Sentence kMetadataWords[] = {
    {"neither-video-nor-audio", "This is neither a video nor an audio file"},
    {"title-leads-out", "The title \"%1\" would lead out of the output folder"},
    {"title-names-folder", "The title names a folder that is not there: %1"},
    {"title-given-out", "Another file of this run has that title: %1"},
    {"empty-title", "The title is empty, and so is the name"},
    {"no-audio-pane", "No audio pane was given"},
    {"cover-stored-as-given", "The cover is stored as it was given: as TIFF it is over 16 MiB"},
    {"cover-keeps-its-bytes", "The cover is stored as it was, not as TIFF: %1"},
    {"mpeg4-under-old-name", "The file holds %1 in MPEG-4 under its old name"},
    {"cover-kept", "The cover was kept"},
    {"cover-left-out", "The cover is left out: %1"},
    {"artwork-copy-not-written", "The temporary copy of the artwork could not be written"},
    {"latitude-not-in-range", "The latitude is a number from -90 to 90, not \"%1\""},
    {"longitude-not-in-range", "The longitude is a number from -180 to 180, not \"%1\""},
    {"altitude-not-in-range",
     "The altitude is a number of metres from -32768 to 32767, not \"%1\""},
    {"position-incomplete", "The position stays as it was: it needs a latitude and a longitude"},
    {"keywords-not-stored", "Keywords not stored: the file has no place for them"},
    {"description-not-stored", "Description not stored: the file has no place for it"},
    {"track-not-stored", "Track not stored: the file has no place for it"},
    {"publisher-not-stored", "Publisher not stored: the file has no place for it"},
    {"band-not-stored", "Band not stored: the file has no place for it"},
    {"created-date-not-stored", "Created date not stored: the file has no place for it"},
};

// video
const Sentence kVideoWords[] = {
    {"read-video-frames", "Read frames"},
    {"no-video-item", "This is not a video"},
    {"unknown-video-kind", "\".%1\" is none of the known kinds of video"},
    {"source-without-video", "There is no video track"},
    {"source-without-tracks", "There is neither a video nor an audio track"},
    {"video-without-frames", "No frame could be decoded"},
    {"nothing-to-merge", "There is nothing to merge"},
    {"older-output-removed", "An older output was removed"},
    {"replaced-older-file", "Replaced an older file"},
    {"merged-into", "In %1"},
    {"frames-written", "%1 image(s)"},
    {"frames-not-decoded", "%1 frame(s) could not be decoded"},
};

// photo
const Sentence kPhotoWords[] = {
    {"stamp-date", "Draw the date"},
    {"no-photo-item", "This is not a photo"},
    {"nothing-for-list", "The photo has nothing for this list"},
    {"list-of-another-photo", "The list holds the last photo, %1"},
    {"list-is-no-dictionary", "The list is no dictionary"},
    {"list-has-no-photo-keys", "The list has no key that a photo takes"},
    {"list-keys-left-out", "Left out of the list: %1"},
    {"list-keys-of-image", "Kept as each photo has it: %1"},
};

// batch
const Sentence kBatchWords[] = {
    {"name-exists", "name exists"},
    {"no-title", "no title"},
    {"empty-name", "empty name"},
    {"name-too-long", "name too long"},
    {"file-missing", "file missing"},
    {"no-such-folder", "no such folder"},
    {"no-file-name", "not a file name"},
    {"original-stays", "the original stays too: %1"},
    {"new-name-stays", "the new name stays too: %1"},
    {"old-name-taken", "the old name has been taken since"},
    {"another-file", "not the same file any more"},
    {"file-gone", "the file is not there any more"},
    {"folder-gone", "the folder is not there"},
    {"changed-copy-stays", "a copy with other contents stays"},
    {"create-journal", "Create the journal"},
    {"open-journal", "Open the journal"},
    {"write-journal", "Write the journal"},
    {"undo-rename", "Undo the rename"},
    {"journal-half-line", "Half a line remains in the journal of a rename"},
    {"journal-not-removed", "The journal of a rename could not be removed"},
    {"nothing-to-undo", "There is no rename to undo"},
    {"rename-running", "Another rename is still running"},
    {"not-for-this-kind", "This is not done to files of this kind"},
    {"no-date-in-text", "Its date is no date and is written as it stands"},
    {"no-calendar-date", "No calendar has this date; the dates of the file stay"},
    {"no-date-in-name", "There is no date in its name"},
    {"camera-date-missing", "It has no camera date"},
};

/// By code.
const QHash<QByteArrayView, const char*>& sentences() {
    static const QHash<QByteArrayView, const char*> words = [] {
        QHash<QByteArrayView, const char*> all;
        const std::span<const Sentence> sections[] = {
            kFoundationWords, kMediaWords,   kImageWords, kIsobmffWords, kFormatsWords,
            kEngineWords,     kServiceWords, kPlistWords, kItemWords,    kJobWords,
            kMetadataWords,   kVideoWords,   kPhotoWords, kBatchWords};
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
    return platform::fillGaps(QString::fromUtf8(words), message.arguments());
}

} // namespace

void installWords() {
    platform::setWording(&wordsOf);
}

} // namespace clipheave::cli
