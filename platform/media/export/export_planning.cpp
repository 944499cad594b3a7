// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/export/export_planning.h"

#include "platform/foundation/paths.h"
#include "platform/media/messages.h"
#include "platform/media/model/frame_rotation.h"
#include "platform/media/model/messages.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace clipheave::platform {

namespace {

/// What a preset encodes to. The sizes are the largest that a frame gets, never scaled up.
struct Preset {
    std::u16string_view name;
    QSize largest; ///< empty: the size of the source
    int crf;
    std::int64_t videoBitRate, audioBitRate;
    int channels; ///< at most; 0: those of the source
    bool video;
};
const std::array kPresets{
    Preset{AVAssetExportPresetHighestQuality, {}, 18, 0, 192'000, 0, true},
    Preset{AVAssetExportPresetMediumQuality, QSize(568, 320), 0, 700'000, 64'000, 0, true},
    Preset{AVAssetExportPresetLowQuality, QSize(224, 128), 0, 128'000, 32'000, 1, true},
    Preset{AVAssetExportPresetAppleM4A, {}, 0, 0, 192'000, 0, false},
};

const Preset* presetOf(const QString& name) {
    const auto found = std::find_if(kPresets.begin(), kPresets.end(), [&](const Preset& preset) {
        return name == QStringView(preset.name);
    });
    return found == kPresets.end() ? nullptr : &*found;
}

bool isPassthrough(const QString& name) {
    return name == QStringView(AVAssetExportPresetPassthrough);
}

tl::unexpected<Error> unsupported(const QString& path, MessageCode why) {
    return failure(ErrorCode::NotSupported, kPlanExport, path, why);
}

/// Returns a file as a composition: its first video and its first audio track in full.
AVMutableComposition compositionOf(const AVURLAsset& asset) {
    AVMutableComposition composition;
    const CMTimeRange whole = CMTimeRangeMake(kCMTimeZero, assetDuration(asset));
    for (const char16_t* type : {AVMediaTypeVideo, AVMediaTypeAudio}) {
        const auto tracks = tracksWithMediaType(asset, QString::fromUtf16(type));
        if (tracks.empty())
            continue;
        auto& track = composition.addMutableTrackWithMediaType(QString::fromUtf16(type));
        track.preferredTransform = tracks.front().preferredTransform;
        ignoreFailure(
            track.insertTimeRange_ofTrack_atTime(whole, asset, tracks.front(), kCMTimeZero),
            "the file has a duration, and the missing track would be reported by the plan");
    }
    return composition;
}

template <class Track>
bool holdsSomethingOf(const std::optional<Track>& track, const QString& path) {
    return track && std::any_of(track->segments.begin(), track->segments.end(),
                                [&](const ExportSegment& segment) { return segment.path == path; });
}

/// Tracks of one file that the output does not hold, by their kinds.
struct LeftTracks {
    int videos = 0, audios = 0, others = 0;
};

LeftTracks leftTracks(const AVURLAsset& asset, const ExportPlan& plan) {
    LeftTracks left;
    left.videos = holdsSomethingOf(plan.video, asset.path()) ? -1 : 0;
    left.audios = holdsSomethingOf(plan.audio, asset.path()) ? -1 : 0;
    for (const AVAssetTrack& track : asset.tracks()) {
        if (track.isAttachedPicture || track.isChapterTrack)
            continue;
        if (track.mediaType == QStringView(AVMediaTypeVideo))
            left.videos += plan.video ? 1 : 0;
        else if (track.mediaType == QStringView(AVMediaTypeAudio))
            ++left.audios;
        else
            ++left.others;
    }
    return left;
}

/// Returns one note per kind of track: a list inside one note could not be translated.
Notes notCarriedOver(const AVURLAsset& asset, const ExportPlan& plan, bool namesFile) {
    const LeftTracks left = leftTracks(asset, plan);
    const QStringList name =
        namesFile ? QStringList(lastPathComponent(asset.path())) : QStringList();
    Notes notes;
    const auto note = [&](int count, MessageCode alone, MessageCode ofFile) {
        if (count > 0)
            notes << Message(namesFile ? ofFile : alone,
                             QStringList(QString::number(count)) + name);
    };
    note(left.videos, kVideoTracksNotCarriedOver, kVideoTracksOfFileNotCarriedOver);
    note(left.audios, kAudioTracksNotCarriedOver, kAudioTracksOfFileNotCarriedOver);
    note(left.others, kDataTracksNotCarriedOver, kDataTracksOfFileNotCarriedOver);
    if (asset.file()->facts().hasChapters && plan.chaptersOf != asset.path())
        notes << Message(namesFile ? kChaptersOfFileNotCarriedOver : kChaptersNotCarriedOver, name);
    return notes;
}

/// As above for each file; notes name the file when there are several.
Notes notCarriedOver(const std::vector<AVURLAsset>& assets, const ExportPlan& plan) {
    Notes notes;
    for (const AVURLAsset& asset : assets)
        notes << notCarriedOver(asset, plan, assets.size() > 1);
    return notes;
}

/// Returns the part of the segments that lies in `range`, whose start becomes zero.
std::vector<ExportSegment> trimmed(const std::vector<ExportSegment>& segments, CMTimeRange range) {
    std::vector<ExportSegment> kept;
    const CMTime end = CMTimeRangeGetEnd(range);
    for (ExportSegment segment : segments) {
        const CMTime start = segment.target.start, stop = CMTimeRangeGetEnd(segment.target);
        const CMTime from = CMTimeCompare(start, range.start) > 0 ? start : range.start;
        const CMTime to = CMTimeCompare(stop, end) < 0 ? stop : end;
        if (CMTimeCompare(from, to) >= 0)
            continue;
        const bool scaled = CMTimeCompare(segment.source.duration, segment.target.duration) != 0;
        const double speed = scaled ? CMTimeGetSeconds(segment.source.duration) /
                                          CMTimeGetSeconds(segment.target.duration)
                                    : 1;
        const auto inSource = [&](CMTime time) {
            return scaled ? CMTimeMultiplyByFloat64(time, speed) : time;
        };
        segment.source = {CMTimeAdd(segment.source.start, inSource(CMTimeSubtract(from, start))),
                          inSource(CMTimeSubtract(to, from))};
        segment.target = {CMTimeSubtract(from, range.start), CMTimeSubtract(to, from)};
        kept.push_back(std::move(segment));
    }
    return kept;
}

/// Returns the size in square pixels of the frame as it is stored, before rotation.
QSizeF displaySize(const AVAssetTrack& track) {
    const double aspect = track.pixelAspect > 0 ? track.pixelAspect : 1;
    // As players do: no direction is squeezed, the other one is stretched.
    return aspect >= 1 ? QSizeF(track.naturalSize.width() * aspect, track.naturalSize.height())
                       : QSizeF(track.naturalSize.width(), track.naturalSize.height() / aspect);
}

int evenSide(double side) {
    return std::max(2, static_cast<int>(std::lround(side / 2)) * 2);
}

/// Returns the frame's size scaled into `largest`, which takes the frame's orientation: 568x320 is
/// 320x568 for a portrait frame. Empty when the frame is not larger.
QSize fittedSize(const AVAssetTrack& track, QSize largest) {
    const QSizeF shown = displaySize(track);
    if (largest.isEmpty() || shown.isEmpty())
        return {};
    if (shown.height() > shown.width())
        largest.transpose();
    if (shown.width() <= largest.width() && shown.height() <= largest.height())
        return {};
    const QSizeF fitted = shown.scaled(largest, Qt::KeepAspectRatio);
    return {evenSide(fitted.width()), evenSide(fitted.height())};
}

bool sameFrame(const AVAssetTrack& a, const AVAssetTrack& b) {
    return a.naturalSize == b.naturalSize && std::abs(a.pixelAspect - b.pixelAspect) < 1e-3 &&
           a.preferredTransform == b.preferredTransform;
}

Result<void> applyVideoComposition(const AVMutableVideoComposition& instructions,
                                   const QString& path, ExportVideo& video) {
    if (instructions.frameDuration().timescale > 0 && instructions.frameDuration().value > 0)
        video.frameDuration = instructions.frameDuration();
    video.preferredTransform = ExportVideo{}.preferredTransform; // what is drawn stands upright
    for (const auto& instruction : instructions.instructions)
        for (const auto& layer : instruction.layerInstructions) {
            if (!layer.transform())
                continue;
            const auto rotation = rotationOfTransform(*layer.transform());
            if (!rotation)
                return unsupported(path, kRightAnglesOnly);
            video.rotations = {rotation->degrees};
            video.mirrored = {rotation->mirrored};
        }
    return {};
}

/// Clips of several sizes, aspect ratios or rotations are drawn upright into the size of the first.
void drawUpright(const AVMutableCompositionTrack& track, ExportVideo& video) {
    const AVAssetTrack& first = track.sourceTracks().front();
    const bool alike =
        std::all_of(track.sourceTracks().begin(), track.sourceTracks().end(),
                    [&first](const AVAssetTrack& other) { return sameFrame(first, other); });
    if (alike)
        return;
    for (const AVAssetTrack& source : track.sourceTracks()) {
        const auto rotation = rotationOfTransform(transformOfMatrix(source.preferredTransform));
        video.rotations.push_back(rotation ? rotation->degrees : 0);
        video.mirrored.push_back(rotation && rotation->mirrored);
    }
    QSizeF size = displaySize(first);
    if (video.rotations.front() % 180 != 0)
        size.transpose();
    video.size = {evenSide(size.width()), evenSide(size.height())};
    video.preferredTransform = ExportVideo{}.preferredTransform;
}

Result<ExportVideo> planVideo(const ExportOrder& order, const AVMutableCompositionTrack& track,
                              const Preset* preset) {
    ExportVideo video;
    video.segments = track.segments();
    video.preferredTransform = track.preferredTransform;
    if (!preset) {
        video.mode = ExportMode::Copy;
        return video;
    }
    video.crf = preset->crf;
    video.bitRate = preset->videoBitRate;
    if (order.videoComposition) {
        const auto applied =
            applyVideoComposition(*order.videoComposition, video.segments.front().path, video);
        if (!applied)
            return tl::unexpected(applied.error());
        return video;
    }
    drawUpright(track, video);
    if (video.size.isEmpty())
        video.size = fittedSize(track.sourceTracks().front(), preset->largest);
    return video;
}

bool isAac(const AVAssetTrack& track) {
    return track.codec == u"mp4a" || track.codec.compare(u"aac", Qt::CaseInsensitive) == 0;
}

/// Returns true where a stream copy gives what was asked for.
bool copiesAudio(const ExportOrder& order, const ExportAudio& audio,
                 const AVMutableCompositionTrack& track, const Preset* preset) {
    if (audio.volume != 1 || audio.segments.size() != 1)
        return false;
    const ExportSegment& only = audio.segments.front();
    if (CMTimeCompare(only.source.duration, only.target.duration) != 0)
        return false;
    if (!preset)
        return true;
    // AAC that a preset for audio alone would only encode once more.
    return !preset->video && !order.timeRange && isAac(track.sourceTracks().front());
}

ExportAudio planAudio(const ExportOrder& order, const AVMutableCompositionTrack& track,
                      const Preset* preset) {
    ExportAudio audio;
    audio.segments = track.segments();
    if (order.audioMix && !order.audioMix->inputParameters.empty() && preset)
        audio.volume = order.audioMix->inputParameters.front().volume();
    if (preset) {
        audio.bitRate = preset->audioBitRate;
        audio.channels = preset->channels;
    }
    audio.mode = copiesAudio(order, audio, track, preset) ? ExportMode::Copy : ExportMode::Encode;
    return audio;
}

void trim(ExportPlan& plan, CMTimeRange range) {
    if (plan.video)
        plan.video->segments = trimmed(plan.video->segments, range);
    if (plan.audio)
        plan.audio->segments = trimmed(plan.audio->segments, range);
    if (plan.video && plan.video->segments.empty())
        plan.video.reset();
    if (plan.audio && plan.audio->segments.empty())
        plan.audio.reset();
}

/// Returns the one file whose timestamps the output keeps; null when there is none.
QString chapterSource(const ExportPlan& plan) {
    if (!plan.video && !plan.audio)
        return {};
    const auto& segments = plan.video ? plan.video->segments : plan.audio->segments;
    if (segments.size() != 1)
        return {};
    const ExportSegment& only = segments.front();
    const bool keepsTimes = CMTimeCompare(only.source.start, only.target.start) == 0 &&
                            CMTimeCompare(only.source.duration, only.target.duration) == 0;
    return keepsTimes ? only.path : QString();
}

QString firstPath(const ExportOrder& order) {
    if (order.asset)
        return order.asset->path();
    for (const auto& track : order.composition.tracks())
        if (!track.segments().empty())
            return track.segments().front().path;
    return {};
}

} // namespace

bool isExportPreset(const QString& name) {
    return isPassthrough(name) || presetOf(name) != nullptr;
}

Result<PlannedExport> planExport(const ExportOrder& order) {
    const Preset* preset = presetOf(order.presetName);
    if (!isExportPreset(order.presetName))
        return failure(ErrorCode::InvalidArgument, kPlanExport, firstPath(order),
                       Message(kUnknownPreset, {order.presetName}));
    if (order.asset && CMTimeCompare(assetDuration(*order.asset), kCMTimeZero) <= 0)
        return failure(ErrorCode::InvalidData, kPlanExport, order.asset->path(), kNoDuration);
    const AVMutableComposition composition =
        order.asset ? compositionOf(*order.asset) : order.composition;
    PlannedExport planned;
    ExportPlan& plan = planned.plan;
    plan.container = order.container;
    plan.moovFirst = order.moovFirst;
    plan.headerDatesOf = firstPath(order);
    const auto* videoTrack = composition.trackOfType(QString::fromUtf16(AVMediaTypeVideo));
    const auto* audioTrack = composition.trackOfType(QString::fromUtf16(AVMediaTypeAudio));
    if (preset && !preset->video)
        videoTrack = nullptr;
    if (videoTrack) {
        auto video = planVideo(order, *videoTrack, preset);
        if (!video)
            return tl::unexpected(video.error());
        plan.video = std::move(*video);
    }
    if (audioTrack)
        plan.audio = planAudio(order, *audioTrack, preset);
    if (order.timeRange)
        trim(plan, *order.timeRange);
    plan.chaptersOf = chapterSource(plan);
    planned.notes = notCarriedOver(composition.sourceAssets(), plan);
    if (plan.video || plan.audio)
        return planned;
    return unsupported(firstPath(order), preset && !preset->video ? kNoAudioTrack : kNoVideoTrack);
}

} // namespace clipheave::platform
