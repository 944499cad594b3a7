// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/video_labels.h"

#include "platform/foundation/paths.h"
#include "video/video_titles.h"

#include <cstddef>

namespace clipheave::video {

namespace {

using namespace platform;

template <class Value, std::size_t count>
std::optional<Value> valueOf(const Title<Value> (&table)[count], const QString& title) {
    for (const Title<Value>& row : table)
        if (title == QLatin1String(row.title))
            return row.value;
    return {};
}

} // namespace

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
