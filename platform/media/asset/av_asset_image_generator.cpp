// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/asset/av_asset_image_generator.h"

#include "platform/media/model/frame_rotation.h"

#include <algorithm>

namespace clipheave::platform {

namespace {

FrameRotation rotationOfVideo(const AVURLAsset& asset) {
    const auto& tracks = asset.tracks();
    const auto video = std::find_if(tracks.begin(), tracks.end(), [](const AVAssetTrack& track) {
        return track.mediaType == u"vide" && !track.isAttachedPicture;
    });
    return video == tracks.end() ? FrameRotation{} : nearestRotation(video->preferredTransform);
}

} // namespace

AVAssetImageGenerator AVAssetImageGenerator::initWithAsset(AVURLAsset asset) {
    return AVAssetImageGenerator(std::move(asset));
}

Result<void> AVAssetImageGenerator::openFrames() {
    if (m_openError)
        return tl::unexpected(*m_openError);
    if (m_frames)
        return {};
    auto frames = mediaEngine().and_then(
        [&](MediaEngine* engine) { return engine->openFrames(m_asset.path(), std::nullopt); });
    if (!frames) {
        m_openError = frames.error();
        return tl::unexpected(*m_openError);
    }
    m_frames = std::move(*frames);
    return {};
}

Result<RawFrame> AVAssetImageGenerator::copyCGImageAtTime(CMTime time, CMTime* actualTime) {
    if (const auto opened = openFrames(); !opened)
        return tl::unexpected(opened.error());
    auto frame = m_frames->frameAt(time);
    if (!frame)
        return frame;
    if (actualTime != nullptr)
        *actualTime = m_frames->shownTime();
    return m_appliesTransform ? std::move(frame)
                              : rotatedFrame(*frame, rotationOfVideo(m_asset).inverted());
}

} // namespace clipheave::platform
