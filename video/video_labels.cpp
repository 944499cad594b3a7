// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/video_labels.h"

#include "platform/foundation/paths.h"
#include "platform/media/export/av_asset_export_session.h"

#include <algorithm>
#include <array>

namespace clipheave::video {

namespace {

using namespace platform;

template <class Value> struct Labelled {
    const char* title;
    Value value;
};

// Single precision: the times that come from these factors are the ones that the jobs have always
// used.
constexpr double kFifth = 0.2F;

constexpr std::array<Labelled<int>, 3> kRotations{{
    {"right (clockwise) by 90 degrees", 90},
    {"right (clockwise) by 180 degrees", 180},
    {"right (clockwise) by 270 degrees", 270},
}};
constexpr std::array<Labelled<double>, 6> kSpeedUps{
    {{"0.2X", kFifth}, {"0.5X", 0.5}, {"1X", 1}, {"2X", 2}, {"4X", 4}, {"8X", 8}}};
constexpr std::array<Labelled<double>, 3> kSlowDowns{{{"0.2X", kFifth}, {"0.5X", 0.5}, {"1X", 1}}};
constexpr std::array<Labelled<const char16_t*>, 3> kQualities{{
    {"High video quality", AVAssetExportPresetHighestQuality},
    {"Medium video quality", AVAssetExportPresetMediumQuality},
    {"Low video quality", AVAssetExportPresetLowQuality},
}};
constexpr std::array<Labelled<const char*>, 3> kConversions{
    {{"Convert to MP4", "mp4"}, {"Convert to MOV", "mov"}, {"Convert to M4V", "m4v"}}};
constexpr std::array<Labelled<double>, 5> kIntervals{{
    {"5 pics per second", kFifth},
    {"1 pic per second", 1},
    {"1 pic every 5 seconds", 5},
    {"1 pic every 10 seconds", 10},
    {"1 pic every 30 seconds", 30},
}};

template <class Table> QStringList titlesOf(const Table& table) {
    QStringList titles;
    for (const auto& row : table)
        titles.append(QLatin1String(row.title));
    return titles;
}

template <class Table> auto valueOf(const Table& table, const QString& title) {
    const auto row = std::find_if(table.begin(), table.end(), [&](const auto& candidate) {
        return title == QLatin1String(candidate.title);
    });
    using Value = decltype(row->value);
    return row == table.end() ? std::optional<Value>() : std::optional<Value>(row->value);
}

} // namespace

const QStringList& rotateTitles() {
    static const QStringList titles = titlesOf(kRotations);
    return titles;
}
const QStringList& speedUpTitles() {
    static const QStringList titles = titlesOf(kSpeedUps);
    return titles;
}
const QStringList& slowDownTitles() {
    static const QStringList titles = titlesOf(kSlowDowns);
    return titles;
}
const QStringList& compressTitles() {
    static const QStringList titles = titlesOf(kQualities);
    return titles;
}
const QStringList& convertTitles() {
    static const QStringList titles = titlesOf(kConversions);
    return titles;
}
const QStringList& extractImagesTitles() {
    static const QStringList titles = titlesOf(kIntervals);
    return titles;
}

std::optional<int> rotationOfTitle(const QString& title) {
    return valueOf(kRotations, title);
}
double speedUpFactor(const QString& title) {
    return valueOf(kSpeedUps, title).value_or(1);
}
double slowDownFactor(const QString& title) {
    return valueOf(kSlowDowns, title).value_or(1);
}
QString compressPreset(const QString& title) {
    const auto preset = valueOf(kQualities, title);
    return preset ? QString::fromUtf16(*preset) : QStringLiteral("High video quality");
}
QString convertExtension(const QString& title) {
    return QLatin1String(valueOf(kConversions, title).value_or("mp4"));
}
double extractInterval(const QString& title) {
    return valueOf(kIntervals, title).value_or(1);
}

QString outputFileTypeOfPath(const QString& path) {
    const QString extension = pathExtension(path).toLower();
    if (extension == u"mp4" || extension == u"mpeg")
        return QString::fromUtf16(AVFileTypeMPEG4);
    if (extension == u"m4v")
        return QString::fromUtf16(AVFileTypeAppleM4V);
    if (extension == u"mov")
        return QString::fromUtf16(AVFileTypeQuickTimeMovie);
    return {};
}

} // namespace clipheave::video
