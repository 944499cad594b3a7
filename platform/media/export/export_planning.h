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
    Notes notes; ///< what of the sources is not carried over: further tracks, chapters
};

[[nodiscard]] bool isExportPreset(const QString& name);
/// Returns the export as a value. InvalidArgument for an unknown preset, InvalidData for a file
/// without a duration, NotSupported when the sources have neither the video nor the audio that the
/// order asks for, or for a rotation that is not by right angles.
[[nodiscard]] Result<PlannedExport> planExport(const ExportOrder& order);

} // namespace clipheave::platform
