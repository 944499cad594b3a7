// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/log.h"
#include "platform/media/model/cm_sample_buffer.h"
#include "platform/media/model/export_plan.h"
#include "platform/media/model/media_engine_abi.h"
#include "platform/media/model/media_facts.h"

#include <QByteArray>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

namespace clipheave::platform {

/// What a demonstration file is made of. Sizes in pixels, durations in seconds.
struct SampleMedia {
    QString
        container; ///< libavformat muxer name: "mp4", "mov", "matroska", "mp3", "flac", "wav", …
    QString videoCodec; ///< encoder name, empty: no video
    QString audioCodec; ///< encoder name, empty: no audio
    QSize size{320, 180};
    double seconds = 2;
    int frameRate = 24;
    int sampleRate = 44100;
    int channels = 2;
    int pattern = 0;       ///< chooses among the drawn scenes and tones
    bool moovFirst = true; ///< ISO base media only
    double rotation = 0;   ///< degrees clockwise in the display matrix
    /// Tags under libavformat's names ("title", "artist", …), written as the muxer does.
    QMap<QString, QString> tags;
};

/// A decoded frame. Each pixel is four bytes, 0xffRRGGBB in the machine's order, rows without
/// gaps.
struct RawFrame {
    int width = 0, height = 0;
    QByteArray rgb32;
};

/// Frames of a video at exact times, upright as the display matrix says. One thread at a time.
class FrameSource {
public:
    virtual ~FrameSource() = default;
    /// The frame that is shown at `time`: the last one that begins at or before it (the first frame
    /// of the video for times before that). Times in rising order are decoded in one pass.
    /// InvalidArgument beyond the end, InvalidData when the frame cannot be decoded.
    [[nodiscard]] virtual Result<RawFrame> frameAt(CMTime time) = 0;
    /// When the frame begins that was given last; invalid before the first.
    [[nodiscard]] virtual CMTime shownTime() const = 0;
    /// Returns the size of the frames in square pixels, upright.
    [[nodiscard]] virtual QSize size() const = 0;
    /// Duration of the file's presentation in seconds.
    [[nodiscard]] virtual double durationSeconds() const = 0;
};

/// Every frame of a video in presentation order, at the size and in the orientation in which they
/// are stored. Decoding runs a few frames ahead on a thread of its own, which ends with this.
class FrameReader {
public:
    virtual ~FrameReader() = default;
    /// Waits for the next frame; one without a frame at the end. Times are exact and those of
    /// the file's presentation, the pixels those of a common screen (BT.709, sRGB for high dynamic
    /// range). InvalidData when nothing can be decoded or the video breaks off.
    [[nodiscard]] virtual Result<CMSampleBuffer> next() = 0;
    /// From any thread: next() fails with Cancelled from now on.
    virtual void cancel() = 0;
    /// Returns the notes so far: damage that was left out.
    [[nodiscard]] virtual Notes notes() const = 0;
};

/// The settings of a video that is made of frames.
struct VideoWriterSettings {
    ExportContainer container = ExportContainer::QuickTimeMovie;
    QSize size; ///< of the stored frames; an odd side loses a line
    /// Display matrix of the track, {a b u c d v x y w}; identity: none.
    std::array<double, 9> preferredTransform{1, 0, 0, 0, 1, 0, 0, 0, 1};
    bool moovFirst = false;
    /// Header dates of the video are those of this file; empty: none.
    QString headerDatesOf;
};

/// Makes a video of one H.264 track (BT.709, the quality of ExportVideo's default) out of frames.
/// Colours are changed and frames encoded and written on threads of their own. Dropped without
/// finish() it leaves no file. append() and finish() from one thread, the rest from any.
class VideoWriter {
public:
    virtual ~VideoWriter() = default;
    /// False while as many frames wait as are kept at most. True after a failure, so that nobody
    /// waits for ever.
    [[nodiscard]] virtual bool isReady() const = 0;
    /// Takes a frame without waiting. All are of the size of the first, which is fitted into that
    /// of the video; what is shown before time 0 is left out. LimitExceeded when it is not ready;
    /// InvalidArgument for another size and a time that is not later than the last one, which fail
    /// the video; the failure itself when it has failed.
    [[nodiscard]] virtual Result<void> append(const CMSampleBuffer& sample) = 0;
    /// Waits for the complete file.
    [[nodiscard]] virtual Result<void> finish() = 0;
    /// finish() and append() fail with Cancelled from now on.
    virtual void cancel() = 0;
    [[nodiscard]] virtual std::optional<Error> failure() const = 0;
};

/// A QuickTime movie holds more codecs than MP4, uncompressed audio among them.
enum class RemuxTarget { Mp4, QuickTimeMovie };
/// What becomes of a stream that the target cannot hold. Videos and audio tracks always refuse.
enum class UnheldStreams { Refuse, LeaveOut };

/// The FFmpeg libraries behind one interface, in a module of their own. All calls are thread-safe.
class MediaEngine {
public:
    virtual ~MediaEngine() = default;
    /// Facts of any file that libavformat can open, headers only: bounded in bytes and time, tags
    /// mapped to the identifiers of the import. `reader` gives the bytes.
    [[nodiscard]] virtual Result<MediaFacts> probe(FileReader& reader) = 0;
    /// Copies all streams of `source` into a file at `target` without re-encoding; NotSupported
    /// when a stream cannot be held. `progress` (0 to 1) stops it by returning false. Returns what
    /// was left out.
    [[nodiscard]] virtual Result<Notes> remux(const QString& source, const QString& target,
                                              RemuxTarget kind, UnheldStreams unheld,
                                              const std::function<bool(double)>& progress) = 0;
    /// The audio of `source` alone as an MP4-family file at `target`: AAC, ALAC and AC-3 are
    /// copied, other lossless codecs become ALAC (16 or 24 bits), all others AAC at 256 kbit/s.
    /// Returns notes. NotSupported without an audio track or a decoder. `progress`
    /// as above.
    [[nodiscard]] virtual Result<Notes> audioToM4a(const QString& source, const QString& target,
                                                   const std::function<bool(double)>& progress) = 0;
    /// Carries out `plan` into a file at `target`, which is replaced and must be nobody's source.
    /// Returns notes (a stream that was left out, a colour conversion). The output
    /// has no metadata of the source but its header dates. `progress` (0 to 1) stops it by
    /// returning false. NotSupported without a decoder, InvalidData when a source breaks off.
    [[nodiscard]] virtual Result<Notes> runExport(const ExportPlan& plan, const QString& target,
                                                  const ExportResources& resources,
                                                  const std::function<bool(double)>& progress) = 0;
    /// Opens the first video that is not an attached picture; frames are scaled to `size` where
    /// given. NotSupported without a video or decoder.
    [[nodiscard]] virtual Result<std::unique_ptr<FrameSource>>
    openFrames(const QString& path, std::optional<QSize> size) = 0;
    /// All frames of a video; `stream` as ExportSegment has it. NotSupported without such a video
    /// or a decoder, LimitExceeded for frames beyond CVPixelBuffer's limits.
    [[nodiscard]] virtual Result<std::unique_ptr<FrameReader>>
    openFrameReader(const QString& path, int stream, const ExportResources& resources) = 0;
    /// Begins a video at `target`, which is replaced.
    [[nodiscard]] virtual Result<std::unique_ptr<VideoWriter>>
    openVideoWriter(const VideoWriterSettings& settings, const QString& target,
                    const ExportResources& resources) = 0;
    /// Writes a generated file at `target`, without metadata.
    [[nodiscard]] virtual Result<void> writeSample(const SampleMedia& sample,
                                                   const QString& target) = 0;
    /// The last keyframe of the video at or before `seconds` (the first one where there is none
    /// before; a somewhat earlier one where the container has no index), upright as the display
    /// matrix says, in its display proportions, scaled down so that no side is over `largestSide`
    /// pixels (1 to 8192). Bounded in bytes and time. NotSupported without a video or
    /// decoder, InvalidData when nothing could be decoded.
    [[nodiscard]] virtual Result<RawFrame> keyframeAt(const QString& path, double seconds,
                                                      int largestSide) = 0;
    /// The loudness of the audio from its start to its end, in `columns` (1 to 4096) equal parts of
    /// time: the largest magnitude of any channel, 255 for full scale. Decodes all of it, which
    /// takes some seconds for an hour of audio; `goOn` stops it by returning false (Cancelled).
    /// NotSupported without an audio track or decoder, LimitExceeded over three hours, over 30
    /// seconds of work, or when the duration of the file is unknown.
    [[nodiscard]] virtual Result<QByteArray> audioPeaks(const QString& path, int columns,
                                                        const std::function<bool()>& goOn) = 0;
};

/// The engine, loaded at the first call; NotSupported with the loader's text when the module or one
/// of its libraries is missing.
[[nodiscard]] Result<MediaEngine*> mediaEngine();

/// What the program lends the module, which has a copy of the foundation of its own: without it a
/// log line made there reaches no listener and a message worded there is worded plainly. The number
/// stands first in every version.
struct MediaEngineHost {
    int abi = kMediaEngineAbi;
    void (*log)(const LogLine& line) = nullptr;
    QString (*text)(const Message& message) = nullptr;
};

/// Entry point of the module. Sets `abi` to the number of the module; null when the host has
/// another one.
using MediaEngineEntry = MediaEngine* (*)(const MediaEngineHost& host, int& abi);
inline constexpr char kMediaEngineSymbol[] = "clipheaveMediaEngine";
inline constexpr char kMediaEngineModule[] = "clipheave-engine.so";

} // namespace clipheave::platform
