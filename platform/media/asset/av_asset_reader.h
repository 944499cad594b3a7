// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/asset/av_url_asset.h"
#include "platform/media/model/av_video_settings.h"
#include "platform/media/model/cm_sample_buffer.h"

#include <QStringList>

#include <memory>
#include <optional>

namespace clipheave::platform {

enum class AVAssetReaderStatus {
    Unknown = 0,
    Reading = 1,
    Completed = 2,
    Failed = 3,
    Cancelled = 4,
};

class AVAssetReader;

/// The frames of one video track, as they are stored: neither rotated nor stretched.
class AVAssetReaderTrackOutput {
public:
    /// `outputSettings`: kCVPixelBufferPixelFormatTypeKey with kCVPixelFormatType_32BGRA, the only
    /// format there is. AVAssetReader::addOutput() refuses what does not fit.
    [[nodiscard]] static std::shared_ptr<AVAssetReaderTrackOutput>
    assetReaderTrackOutputWithTrack(AVAssetTrack track, AVVideoSettings outputSettings);

    /// Waits for the next frame in the order they are shown. None at the end, and when the reader
    /// is not reading, has failed or was cancelled: see its status.
    [[nodiscard]] std::optional<CMSampleBuffer> copyNextSampleBuffer();

    [[nodiscard]] const AVAssetTrack& track() const { return m_track; }

private:
    friend class AVAssetReader;
    AVAssetReaderTrackOutput() = default;
    struct State;

    AVAssetTrack m_track;
    AVVideoSettings m_settings;
    std::shared_ptr<State> m_state; ///< the reader's, once added
};

/// Reads the frames of a video one after the other. Decoding runs a few frames ahead. Set it up and
/// read on one thread; status(), error() and cancelReading() are for any. The destructor cancels.
class AVAssetReader {
public:
    /// NotFound and the like when the file cannot be opened any more.
    [[nodiscard]] static Result<std::unique_ptr<AVAssetReader>> initWithAsset(AVURLAsset asset);
    ~AVAssetReader();
    AVAssetReader(const AVAssetReader&) = delete;
    AVAssetReader& operator=(const AVAssetReader&) = delete;

    /// Adds the one output, before the start. InvalidArgument for a second one and for a track of
    /// another file or type, NotSupported for another pixel format.
    [[nodiscard]] Result<void> addOutput(const std::shared_ptr<AVAssetReaderTrackOutput>& output);
    /// Returns false when it was started before, has no output or fails: see error() (NotSupported
    /// without a decoder, InvalidData, LimitExceeded for frames that are too large).
    [[nodiscard]] bool startReading();
    /// Returns Completed once copyNextSampleBuffer() has reached the end.
    [[nodiscard]] AVAssetReaderStatus status() const;
    [[nodiscard]] Error error() const; ///< why it failed or refused
    void cancelReading();
    /// Returns the notes so far, none of them a failure: damaged packets that were left out.
    [[nodiscard]] Notes notes() const;

private:
    explicit AVAssetReader(AVURLAsset asset);

    AVURLAsset m_asset;
    int m_stream = 0;
    std::shared_ptr<AVAssetReaderTrackOutput::State> m_state;
    bool m_hasOutput = false;
};

} // namespace clipheave::platform
