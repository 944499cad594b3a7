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
    const char* make;
    const char* model;
    const char* description;
    const char* artist;
    bool hasPosition;
    double latitude, longitude; ///< signed degrees
    double altitude;            ///< signed metres
    int orientation;            ///< 1 to 8
};

/// Writes the photo; the name's extension chooses the format (jpg, png, tif).
[[nodiscard]] Result<void> writeSamplePhoto(const SamplePhoto& photo, const QString& target);
/// A drawn landscape, encoded ("jpeg", "png").
[[nodiscard]] Result<QByteArray> drawSampleImage(QSize size, int pattern, const QString& format);

} // namespace clipheave::platform
