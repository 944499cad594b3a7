// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "photo/photo_order.h"

namespace clipheave::app {

/// What the position sheet was opened for. Main thread.
struct GpsState {
    bool bAddGPS = false;     ///< to add, not to edit
    bool removesExif = false; ///< it writes no time stamp and drops EXIF
    /// The selection of that moment; without items while the sheet is closed.
    photo::PhotoRequest request;
};

} // namespace clipheave::app
