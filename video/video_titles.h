// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/media/export/av_asset_export_session.h"

#include <QStringList>

#include <cstddef>

// The fixed titles of the menu entries that start video jobs, in menu order, and what each stands
// for. The menus show them; a worker compares the title that started it.
namespace clipheave::video {

template <class Value> struct Title {
    const char* title;
    Value value;
};

// Single precision: the times that come from these factors are the ones that the jobs have always
// used.
inline constexpr double kFifth = 0.2F;

/// Degrees clockwise.
inline constexpr Title<int> kRotations[] = {
    {"right (clockwise) by 90 degrees", 90},
    {"right (clockwise) by 180 degrees", 180},
    {"right (clockwise) by 270 degrees", 270},
};
/// Factors of the speed.
inline constexpr Title<double> kSpeedUps[] = {
    {"0.2X", kFifth}, {"0.5X", 0.5}, {"1X", 1}, {"2X", 2}, {"4X", 4}, {"8X", 8},
};
inline constexpr Title<double> kSlowDowns[] = {{"0.2X", kFifth}, {"0.5X", 0.5}, {"1X", 1}};
/// Export presets.
inline constexpr Title<const char16_t*> kQualities[] = {
    {"High video quality", platform::AVAssetExportPresetHighestQuality},
    {"Medium video quality", platform::AVAssetExportPresetMediumQuality},
    {"Low video quality", platform::AVAssetExportPresetLowQuality},
};
/// Extensions of the outputs.
inline constexpr Title<const char*> kConversions[] = {
    {"Convert to MP4", "mp4"},
    {"Convert to MOV", "mov"},
    {"Convert to M4V", "m4v"},
};
/// Seconds between two frames that are extracted.
inline constexpr Title<double> kIntervals[] = {
    {"5 pics per second", kFifth},  {"1 pic per second", 1},        {"1 pic every 5 seconds", 5},
    {"1 pic every 10 seconds", 10}, {"1 pic every 30 seconds", 30},
};

/// Returns the titles of a table, in its order.
template <class Value, std::size_t count>
[[nodiscard]] QStringList titlesOf(const Title<Value> (&table)[count]) {
    QStringList titles;
    for (const Title<Value>& row : table)
        titles.append(QLatin1String(row.title));
    return titles;
}

} // namespace clipheave::video
