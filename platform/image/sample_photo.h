// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"

#include <QByteArray>
#include <QSize>
#include <QString>

namespace clipheave::platform {

/// A demonstration photo. Texts are UTF-8, null for none.
struct SamplePhoto {
    QSize size;
    int pattern;                  ///< chooses among the drawn scenes
    const char* dateTimeOriginal; ///< "yyyy:MM:dd HH:mm:ss"
    const char* make = nullptr;   ///< null, as the texts below: the photo has no such tag
    const char* model = nullptr;
    const char* description = nullptr;
    const char* artist = nullptr;
    bool hasPosition = false;
    double latitude = 0, longitude = 0; ///< signed degrees
    double altitude = 0;                ///< signed metres
    int orientation = 1;                ///< 1 to 8
};

/// Writes the photo; the name's extension chooses the format (jpg, png, tif).
[[nodiscard]] Result<void> writeSamplePhoto(const SamplePhoto& photo, const QString& target);
/// Returns a drawn landscape, encoded ("jpeg", "png").
[[nodiscard]] Result<QByteArray> drawSampleImage(QSize size, int pattern, const QString& format);

} // namespace clipheave::platform
