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
};

// platform/media
const Sentence kMediaWords[] = {
    {"load-media-engine", "Load the media engine"},
    {"no-module-folder", "The folder of the media engine is unknown"},
    {"no-such-module", "%1 is missing"},
    {"unknown-loader-failure", "The media engine cannot be loaded"},
    {"other-engine-abi", "The media engine is of another version (%1, not %2)"},
};

// platform/image
const Sentence kImageWords[] = {
    {},
};

// platform/isobmff
const Sentence kIsobmffWords[] = {
    {},
};

// platform/formats
const Sentence kFormatsWords[] = {
    {},
};

// platform/engine
const Sentence kEngineWords[] = {
    {"open-media-container", "Open the media container"},
    {"read-media-container", "Read the media container"},
    {"read-source-media", "Read the source"},
    {"read-streams", "Read the streams"},
    {"read-export-plan", "Check the export plan"},
    {"read-video", "Read the video"},
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
    {"write-video", "Write the video"},
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
    {"unknown-media-container", "This is no audio or video container that can be read"},
    {"streams-unreadable", "The streams cannot be read"},
    {"headers-too-long", "The headers are too long to be read in full"},
    {"no-stream", "There is no stream"},
    {"no-video-track", "There is no video track"},
    {"no-audio-track", "There is no audio track"},
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
    {"damaged-video-packets", "%1: damaged video packets left out: %2"},
    {"damaged-audio-packets", "%1: damaged audio packets left out: %2"},
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
    {"nothing-in-range", "The sources have nothing in the time that is wanted"},
    {"bit-depth-kept", "%1 bits were kept (H.264 with 10 bits)"},
    {"bit-depth-became-10", "%1 bits became 10 (H.264 with 10 bits)"},
    {"bit-depth-became-8", "%1 bits became 8"},
    {"hdr-kept", "HDR was kept (H.264 with 10 bits)"},
    {"hdr-became-sdr", "HDR segments became SDR"},
    {"audio-left-out", "%1: audio left out: %2"},
    {"audio-became-aac", "The audio was transcoded to AAC: M4A does not hold %1"},
    {"samples-became-24-bits", "Samples are stored with 24 bits: M4A holds no more without loss"},
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
    {"rotation-value", "Frames are rotated by quarters only"},
    {"planned-frame-size", "The frame size is not even or too large"},
    {"planned-frame-duration", "The frame duration is out of range"},
    {"planned-quality", "The quality is out of range"},
    {"planned-audio", "The settings of the audio are out of range"},
    {"copied-audio-volume", "Copied audio keeps its volume"},
    {"no-frame-size", "The video has no frame size"},
    {"frame-size-out-of-range", "Frames of %1 x %2 pixels are not possible"},
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
    {},
};

// media
const Sentence kItemWords[] = {
    {},
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
    return platform::fillGaps(QString::fromUtf8(words), message.arguments());
}

} // namespace

void installWords() {
    platform::setWording(&wordsOf);
}

} // namespace clipheave::cli
