// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace clipheave::photo {

/// The texts of the position sheet.
struct PlaceTexts {
    QString latitudelab, longtitudelab, altitudelab; ///< signed decimal numbers
    QString dateStamplab;                            ///< "YYYY:MM:DD"
    QString timeStamplab;                            ///< "HH:MM:SS", universal time
};

/// The texts of the photo pane and which of its sections were changed.
struct PaneTexts {
    QString artistlab, imageDescrilab, copyrightlab, commentslab, keywordslab, titlelab;
    QString cameraMakelab, cameraModelab, cameraDatelab;
    PlaceTexts place; ///< of gpsLatilab, gpsLongtlab, gpsAitlab
    bool basicInfoChange = false, cameraInfoChange = false, gpsInfoChange = false;
};

} // namespace clipheave::photo
