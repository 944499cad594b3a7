// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/asset/av_url_asset.h"
#include "platform/media/model/cm_time.h"
#include "platform/media/model/media_engine.h"

#include <memory>
#include <optional>

namespace clipheave::platform {

/// Still pictures of a film at exact times. Not thread-safe; the film is opened at the first
/// picture and stays open.
class AVAssetImageGenerator {
public:
    [[nodiscard]] static AVAssetImageGenerator initWithAsset(AVURLAsset asset);

    /// Upright as the track's display matrix says; off by default: as stored.
    void setAppliesPreferredTrackTransform(bool applies) { m_appliesTransform = applies; }
    /// Another picture within these times of the wanted one would do. The exact one is always
    /// given, which is what any tolerance allows.
    void setRequestedTimeToleranceBefore(CMTime) {}
    void setRequestedTimeToleranceAfter(CMTime) {}

    /// The picture that is shown at `time`; `actualTime` gets when it begins. Times in rising order
    /// cost one pass over the film. InvalidArgument beyond the end, NotSupported without a film or
    /// decoder, InvalidData for what cannot be decoded.
    [[nodiscard]] Result<RawPicture> copyCGImageAtTime(CMTime time, CMTime* actualTime = nullptr);

private:
    explicit AVAssetImageGenerator(AVURLAsset asset) : m_asset(std::move(asset)) {}
    [[nodiscard]] Result<void> openFrames();

    AVURLAsset m_asset;
    bool m_appliesTransform = false;
    std::unique_ptr<FrameSource> m_frames;
    std::optional<Error> m_openError; ///< a film that cannot be opened is tried once
};

} // namespace clipheave::platform
