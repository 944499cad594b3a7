// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/asset/av_url_asset.h"
#include "platform/media/model/affine_transform.h"
#include "platform/media/model/export_plan.h"

#include <deque>
#include <optional>
#include <vector>

namespace clipheave::platform {

inline constexpr char16_t AVMediaTypeVideo[] = u"vide";
inline constexpr char16_t AVMediaTypeAudio[] = u"soun";

/// Returns the tracks of this type in file order, without cover art that is stored as a track.
[[nodiscard]] std::vector<AVAssetTrack> tracksWithMediaType(const AVURLAsset& asset,
                                                            const QString& mediaType);
/// Returns the file's duration, to the microsecond; zero when it is unknown.
[[nodiscard]] CMTime assetDuration(const AVURLAsset& asset);

/// One track of a composition: segments of source tracks, one after the other.
class AVMutableCompositionTrack {
public:
    explicit AVMutableCompositionTrack(QString mediaType) : m_mediaType(std::move(mediaType)) {}

    /// Inserts `range` of a file's track at `at`. A segment there is split and its rest moves
    /// later; beyond the end a gap comes before it. InvalidArgument for a track of another type or
    /// file, an empty range or a negative time.
    [[nodiscard]] Result<void> insertTimeRange_ofTrack_atTime(CMTimeRange range,
                                                              const AVURLAsset& asset,
                                                              const AVAssetTrack& track, CMTime at);
    /// Stretches what lies in `range` to `duration`; what follows moves along.
    void scaleTimeRange_toDuration(CMTimeRange range, CMTime duration);

    /// The display matrix of the output's track.
    std::array<double, 9> preferredTransform{1, 0, 0, 0, 1, 0, 0, 0, 1};

    [[nodiscard]] const QString& mediaType() const { return m_mediaType; }
    [[nodiscard]] const std::vector<ExportSegment>& segments() const { return m_segments; }
    /// Returns the source track of each segment.
    [[nodiscard]] const std::vector<AVAssetTrack>& sourceTracks() const { return m_sources; }
    /// Returns every file of which a segment was inserted, once, in that order.
    [[nodiscard]] const std::vector<AVURLAsset>& sourceAssets() const { return m_assets; }
    [[nodiscard]] CMTime duration() const; ///< end of the last segment

private:
    void splitAt(CMTime time);

    QString m_mediaType;
    std::vector<ExportSegment> m_segments; ///< in time order
    std::vector<AVAssetTrack> m_sources;   ///< of each
    std::vector<AVURLAsset> m_assets;
};

/// Tracks put together from files. Copies are independent.
class AVMutableComposition {
public:
    /// Returns a track that is valid as long as the composition.
    AVMutableCompositionTrack& addMutableTrackWithMediaType(const QString& mediaType);
    void scaleTimeRange_toDuration(CMTimeRange range, CMTime duration); ///< of every track
    [[nodiscard]] CMTime duration() const;                              ///< of the longest track
    [[nodiscard]] const std::deque<AVMutableCompositionTrack>& tracks() const { return m_tracks; }
    /// Returns every file of which a track holds a segment, once.
    [[nodiscard]] std::vector<AVURLAsset> sourceAssets() const;
    /// Returns the first track of this type that has segments; null when there is none.
    [[nodiscard]] const AVMutableCompositionTrack* trackOfType(const QString& mediaType) const;

private:
    std::deque<AVMutableCompositionTrack> m_tracks;
};

/// How one layer of the frame is drawn.
class AVMutableVideoCompositionLayerInstruction {
public:
    /// Sets the transform; ignored unless `time` is zero: it cannot change within the video.
    void setTransform_atTime(const CGAffineTransform& transform, CMTime time);
    [[nodiscard]] const std::optional<CGAffineTransform>& transform() const { return m_transform; }

private:
    std::optional<CGAffineTransform> m_transform;
};

struct AVMutableVideoCompositionInstruction {
    CMTimeRange timeRange;
    std::vector<AVMutableVideoCompositionLayerInstruction> layerInstructions;
};

/// How the frames of a composition become those of the output.
class AVMutableVideoComposition {
public:
    void setFrameDuration(CMTime duration) { m_frameDuration = duration; }
    void setRenderSize(QSize size) { m_renderSize = size; }
    std::vector<AVMutableVideoCompositionInstruction> instructions;

    [[nodiscard]] CMTime frameDuration() const { return m_frameDuration; }
    [[nodiscard]] QSize renderSize() const { return m_renderSize; }

private:
    CMTime m_frameDuration{0, 0};
    QSize m_renderSize;
};

/// Volumes of the audio; one factor for the whole track.
class AVMutableAudioMixInputParameters {
public:
    /// Sets the volume; ignored unless `time` is zero: it cannot change within the track.
    void setVolume_atTime(double volume, CMTime time);
    [[nodiscard]] double volume() const { return m_volume; }

private:
    double m_volume = 1;
};
struct AVMutableAudioMix {
    std::vector<AVMutableAudioMixInputParameters> inputParameters;
};

} // namespace clipheave::platform
