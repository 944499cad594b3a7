// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"
#include "platform/media/model/av_video_settings.h"
#include "platform/media/model/cm_sample_buffer.h"

#include <array>
#include <functional>
#include <memory>
#include <thread>

namespace clipheave::platform {

enum class AVAssetWriterStatus {
    Unknown = 0,
    Writing = 1,
    Completed = 2,
    Failed = 3,
    Cancelled = 4,
};

class AVAssetWriter;

/// The frames of the video that a writer makes.
class AVAssetWriterInput {
public:
    /// `outputSettings`: AVVideoCodecKey with AVVideoCodecTypeH264, AVVideoWidthKey and
    /// AVVideoHeightKey. AVAssetWriter::addInput() refuses what does not fit.
    [[nodiscard]] static std::shared_ptr<AVAssetWriterInput>
    assetWriterInputWithMediaType(QString mediaType, AVVideoSettings outputSettings);

    /// Sets the display matrix of the video, {a b u c d v x y w} as a track's preferredTransform;
    /// before the start.
    void setTransform(const std::array<double, 9>& matrix) { m_transform = matrix; }

    /// Returns false before the start and while the queue of frames is full. Once the writer has
    /// failed it is true, so that a loop which waits for it ends with the append that fails.
    [[nodiscard]] bool isReadyForMoreMediaData() const;
    /// Returns false, without another effect, before the session's start, after markAsFinished()
    /// and while it is not ready. A frame of another size than the first or a time that is not
    /// later than the last one fails the writer. The pixels must not be changed any more.
    [[nodiscard]] bool appendSampleBuffer(const CMSampleBuffer& sample);
    void markAsFinished();

private:
    friend class AVAssetWriter;
    AVAssetWriterInput() = default;
    struct State;

    QString m_mediaType;
    AVVideoSettings m_settings;
    std::array<double, 9> m_transform{1, 0, 0, 0, 1, 0, 0, 0, 1};
    std::weak_ptr<State> m_state; ///< the writer's, once added
};

/// Makes a video out of frames. It appears under its name in one step when it is complete; until
/// then a file of that name stays as it is, also when the writer fails, is cancelled or destroyed.
/// Set up, append and finish on one thread; status(), error(), cancelWriting() are for any.
class AVAssetWriter {
public:
    /// `fileType`: AVFileTypeQuickTimeMovie, AVFileTypeMPEG4 or AVFileTypeAppleM4V, else
    /// NotSupported. InvalidArgument without a name.
    [[nodiscard]] static Result<std::unique_ptr<AVAssetWriter>>
    initWithURL(const QString& path, const QString& fileType);
    /// Waits for a video that is being finished; cancels one that is not.
    ~AVAssetWriter();
    AVAssetWriter(const AVAssetWriter&) = delete;
    AVAssetWriter& operator=(const AVAssetWriter&) = delete;

    /// Adds the one input, before the start. NotSupported for anything but H.264, InvalidArgument
    /// for sides beyond 2 to 16384 pixels.
    [[nodiscard]] Result<void> addInput(const std::shared_ptr<AVAssetWriterInput>& input);
    void setShouldOptimizeForNetworkUse(bool optimize); ///< movie header first; off by default
    /// Takes the dates in the video's header and the permissions of the output from this file.
    void setHeaderDatesOf(const QString& path);

    /// Returns false when it was started before, has no input or the file cannot be created:
    /// error() has the reason.
    [[nodiscard]] bool startWriting();
    /// Makes this time of the frames the video's time 0. What is shown before is left out.
    void startSessionAtSourceTime(CMTime time);
    /// Completes the video; `handler` runs when status() is final, on a thread of the writer, or at
    /// once where nothing is being written. It may destroy the writer.
    void finishWritingWithCompletionHandler(std::function<void()> handler);
    /// Stops and removes what was written; a video that is being finished is stopped if it can be.
    void cancelWriting();
    [[nodiscard]] AVAssetWriterStatus status() const;
    [[nodiscard]] Error error() const; ///< why it failed or refused

private:
    AVAssetWriter() = default;

    std::shared_ptr<AVAssetWriterInput::State> m_state;
    std::shared_ptr<AVAssetWriterInput> m_input;
    std::thread m_finishing;
};

} // namespace clipheave::platform
