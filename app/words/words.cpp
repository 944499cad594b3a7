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
};

// platform/media
const Sentence kMediaWords[] = {
    {"load-media-engine", QT_TRANSLATE_NOOP("Words", "Load the media engine")},
    {"no-module-folder", QT_TRANSLATE_NOOP("Words", "The folder of the media engine is unknown")},
    {"no-such-module", QT_TRANSLATE_NOOP("Words", "%1 is missing")},
    {"unknown-loader-failure", QT_TRANSLATE_NOOP("Words", "The media engine cannot be loaded")},
    {"other-engine-abi",
     QT_TRANSLATE_NOOP("Words", "The media engine is of another version (%1, not %2)")},
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
    {"open-media-container", QT_TRANSLATE_NOOP("Words", "Open the media container")},
    {"read-media-container", QT_TRANSLATE_NOOP("Words", "Read the media container")},
    {"read-source-media", QT_TRANSLATE_NOOP("Words", "Read the source")},
    {"read-streams", QT_TRANSLATE_NOOP("Words", "Read the streams")},
    {"read-export-plan", QT_TRANSLATE_NOOP("Words", "Check the export plan")},
    {"read-video", QT_TRANSLATE_NOOP("Words", "Read the video")},
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
    {"write-video", QT_TRANSLATE_NOOP("Words", "Write the video")},
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
    {"no-video-track", QT_TRANSLATE_NOOP("Words", "There is no video track")},
    {"no-audio-track", QT_TRANSLATE_NOOP("Words", "There is no audio track")},
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
    {"frame-size-out-of-range",
     QT_TRANSLATE_NOOP("Words", "Frames of %1 x %2 pixels are not possible")},
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
    return platform::fillGaps(QCoreApplication::translate("Words", words), message.arguments());
}

} // namespace

void installWords() {
    platform::setWording(&wordsOf);
}

} // namespace clipheave::app
