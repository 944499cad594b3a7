// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/asset/av_composition.h"

#include <QStringList>

namespace clipheave::platform {

inline constexpr char16_t AVAssetExportPresetPassthrough[] = u"AVAssetExportPresetPassthrough";
inline constexpr char16_t AVAssetExportPresetHighestQuality[] =
    u"AVAssetExportPresetHighestQuality";
inline constexpr char16_t AVAssetExportPresetMediumQuality[] = u"AVAssetExportPresetMediumQuality";
inline constexpr char16_t AVAssetExportPresetLowQuality[] = u"AVAssetExportPresetLowQuality";
inline constexpr char16_t AVAssetExportPresetAppleM4A[] = u"AVAssetExportPresetAppleM4A";

/// What an export session was asked for, before any file is opened for it.
struct ExportOrder {
    std::optional<AVURLAsset> asset; ///< the file, or
    AVMutableComposition composition;
    QString presetName;
    ExportContainer container = ExportContainer::Mp4;
    bool moovFirst = false;
    std::optional<CMTimeRange> timeRange;
    std::optional<AVMutableVideoComposition> videoComposition;
    std::optional<AVMutableAudioMix> audioMix;
};

struct PlannedExport {
    ExportPlan plan;
    Notes notes; ///< what of the source does not come along: "not carried over: 2 subtitles"
};

[[nodiscard]] bool isExportPreset(const QString& name);
/// The export as a value. InvalidArgument for a preset that is none, NotSupported when the order
/// asks for a frame or audio that the sources do not have, or for a transform that is no right
/// angle.
[[nodiscard]] Result<PlannedExport> planExport(const ExportOrder& order);

} // namespace clipheave::platform
