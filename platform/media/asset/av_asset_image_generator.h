// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/asset/av_url_asset.h"
#include "platform/media/model/cm_time.h"
#include "platform/media/model/media_engine.h"

#include <memory>
#include <optional>

namespace clipheave::platform {

/// Still frames of a video at exact times. Not thread-safe; the video is opened at the first
/// frame and stays open.
class AVAssetImageGenerator {
public:
    [[nodiscard]] static AVAssetImageGenerator initWithAsset(AVURLAsset asset);

    /// Returns frames upright, by the track's display matrix; off by default: as stored.
    void setAppliesPreferredTrackTransform(bool applies) { m_appliesTransform = applies; }
    /// Allows another frame within these times of the wanted one. The exact one is always returned,
    /// which any tolerance allows.
    void setRequestedTimeToleranceBefore(CMTime) {}
    void setRequestedTimeToleranceAfter(CMTime) {}

    /// Returns the frame that is shown at `time`; `actualTime` gets the time at which it begins.
    /// Times in rising order cost one pass through the video. InvalidArgument beyond the end,
    /// NotSupported without a video or decoder, InvalidData for what cannot be decoded.
    [[nodiscard]] Result<RawFrame> copyCGImageAtTime(CMTime time, CMTime* actualTime = nullptr);

private:
    explicit AVAssetImageGenerator(AVURLAsset asset) : m_asset(std::move(asset)) {}
    [[nodiscard]] Result<void> openFrames();

    AVURLAsset m_asset;
    bool m_appliesTransform = false;
    std::unique_ptr<FrameSource> m_frames;
    std::optional<Error> m_openError; ///< a video that cannot be opened is tried once
};

} // namespace clipheave::platform
