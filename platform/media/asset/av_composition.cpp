// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/asset/av_composition.h"

#include "platform/media/messages.h"

#include <algorithm>
#include <cmath>

namespace clipheave::platform {

namespace {

constexpr std::int32_t kMicroseconds = 1'000'000;

/// Returns the time in the segment's source of a `time` of the composition.
CMTime sourceTime(const ExportSegment& segment, CMTime time) {
    const CMTime into = CMTimeSubtract(time, segment.target.start);
    if (CMTimeCompare(segment.source.duration, segment.target.duration) == 0)
        return CMTimeAdd(segment.source.start, into);
    const double factor =
        CMTimeGetSeconds(segment.source.duration) / CMTimeGetSeconds(segment.target.duration);
    return CMTimeAdd(segment.source.start, CMTimeMultiplyByFloat64(into, factor));
}

/// Returns what `time` becomes when `range` is stretched by `factor`.
CMTime scaledTime(CMTime time, CMTimeRange range, double factor) {
    if (CMTimeCompare(time, range.start) <= 0)
        return time;
    const CMTime end = CMTimeRangeGetEnd(range);
    const CMTime inside = CMTimeCompare(time, end) < 0 ? time : end;
    const CMTime moved = CMTimeAdd(
        range.start, CMTimeMultiplyByFloat64(CMTimeSubtract(inside, range.start), factor));
    return CMTimeCompare(time, end) < 0 ? moved : CMTimeAdd(moved, CMTimeSubtract(time, end));
}

void addAsset(std::vector<AVURLAsset>& assets, const AVURLAsset& asset) {
    const bool known = std::any_of(assets.begin(), assets.end(), [&asset](const AVURLAsset& other) {
        return other.path() == asset.path();
    });
    if (!known)
        assets.push_back(asset);
}

} // namespace

std::vector<AVAssetTrack> tracksWithMediaType(const AVURLAsset& asset, const QString& mediaType) {
    std::vector<AVAssetTrack> found;
    for (const AVAssetTrack& track : asset.tracks())
        if (track.mediaType == mediaType && !track.isAttachedPicture)
            found.push_back(track);
    return found;
}

CMTime assetDuration(const AVURLAsset& asset) {
    const double seconds = asset.durationSeconds();
    return std::isfinite(seconds) && seconds > 0 ? CMTimeMakeWithSeconds(seconds, kMicroseconds)
                                                 : kCMTimeZero;
}

Result<void> AVMutableCompositionTrack::insertTimeRange_ofTrack_atTime(CMTimeRange range,
                                                                       const AVURLAsset& asset,
                                                                       const AVAssetTrack& track,
                                                                       CMTime at) {
    const auto refused = [&](MessageCode why) {
        return failure(ErrorCode::InvalidArgument, kInsertTrack, asset.path(), why);
    };
    if (track.mediaType != m_mediaType)
        return refused(kTrackOfOtherKind);
    if (CMTimeCompare(range.duration, kCMTimeZero) <= 0)
        return refused(kNoDuration);
    if (CMTimeCompare(range.start, kCMTimeZero) < 0 || CMTimeCompare(at, kCMTimeZero) < 0)
        return refused(kNegativeTime);
    const auto siblings = tracksWithMediaType(asset, m_mediaType);
    const auto stream =
        std::find_if(siblings.begin(), siblings.end(), [&](const AVAssetTrack& candidate) {
            return candidate.trackID == track.trackID;
        });
    if (stream == siblings.end())
        return refused(kTrackOfOtherFile);
    splitAt(at);
    const auto place = std::find_if(m_segments.begin(), m_segments.end(), [&](const auto& segment) {
        return CMTimeCompare(segment.target.start, at) >= 0;
    });
    for (auto later = place; later != m_segments.end(); ++later)
        later->target.start = CMTimeAdd(later->target.start, range.duration);
    m_sources.insert(m_sources.begin() + (place - m_segments.begin()), track);
    addAsset(m_assets, asset);
    m_segments.insert(place, {asset.path(), static_cast<int>(stream - siblings.begin()), range,
                              CMTimeRangeMake(at, range.duration)});
    return {};
}

/// Splits the segment that runs across `time`.
void AVMutableCompositionTrack::splitAt(CMTime time) {
    for (std::size_t i = 0; i < m_segments.size(); ++i) {
        const ExportSegment whole = m_segments[i];
        const CMTime end = CMTimeRangeGetEnd(whole.target);
        if (CMTimeCompare(whole.target.start, time) >= 0 || CMTimeCompare(end, time) <= 0)
            continue;
        const CMTime cut = sourceTime(whole, time);
        ExportSegment rest = whole;
        rest.source = {cut, CMTimeSubtract(CMTimeRangeGetEnd(whole.source), cut)};
        rest.target = {time, CMTimeSubtract(end, time)};
        m_segments[i].source.duration = CMTimeSubtract(cut, whole.source.start);
        m_segments[i].target.duration = CMTimeSubtract(time, whole.target.start);
        const auto next = static_cast<std::ptrdiff_t>(i) + 1;
        m_segments.insert(m_segments.begin() + next, rest);
        m_sources.insert(m_sources.begin() + next, m_sources[i]);
        return;
    }
}

void AVMutableCompositionTrack::scaleTimeRange_toDuration(CMTimeRange range, CMTime duration) {
    const double seconds = CMTimeGetSeconds(range.duration);
    if (!(seconds > 0) || CMTimeCompare(duration, kCMTimeZero) <= 0 ||
        CMTimeCompare(range.duration, duration) == 0)
        return;
    splitAt(range.start);
    splitAt(CMTimeRangeGetEnd(range));
    const double factor = CMTimeGetSeconds(duration) / seconds;
    for (ExportSegment& segment : m_segments) {
        const CMTime start = scaledTime(segment.target.start, range, factor);
        const CMTime end = scaledTime(CMTimeRangeGetEnd(segment.target), range, factor);
        segment.target = {start, CMTimeSubtract(end, start)};
    }
}

CMTime AVMutableCompositionTrack::duration() const {
    return m_segments.empty() ? kCMTimeZero : CMTimeRangeGetEnd(m_segments.back().target);
}

std::vector<AVURLAsset> AVMutableComposition::sourceAssets() const {
    std::vector<AVURLAsset> all;
    for (const AVMutableCompositionTrack& track : m_tracks)
        for (const AVURLAsset& asset : track.sourceAssets())
            addAsset(all, asset);
    return all;
}

AVMutableCompositionTrack&
AVMutableComposition::addMutableTrackWithMediaType(const QString& mediaType) {
    return m_tracks.emplace_back(mediaType);
}

void AVMutableComposition::scaleTimeRange_toDuration(CMTimeRange range, CMTime duration) {
    for (AVMutableCompositionTrack& track : m_tracks)
        track.scaleTimeRange_toDuration(range, duration);
}

CMTime AVMutableComposition::duration() const {
    CMTime longest = kCMTimeZero;
    for (const AVMutableCompositionTrack& track : m_tracks)
        if (CMTimeCompare(track.duration(), longest) > 0)
            longest = track.duration();
    return longest;
}

const AVMutableCompositionTrack* AVMutableComposition::trackOfType(const QString& mediaType) const {
    for (const AVMutableCompositionTrack& track : m_tracks)
        if (track.mediaType() == mediaType && !track.segments().empty())
            return &track;
    return nullptr;
}

void AVMutableVideoCompositionLayerInstruction::setTransform_atTime(
    const CGAffineTransform& transform, CMTime time) {
    if (CMTimeCompare(time, kCMTimeZero) <= 0)
        m_transform = transform;
}

void AVMutableAudioMixInputParameters::setVolume_atTime(double volume, CMTime time) {
    if (CMTimeCompare(time, kCMTimeZero) <= 0)
        m_volume = volume;
}

} // namespace clipheave::platform
