// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace clipheave::media {

/// Which groups of fields an edit has begun in. Only ever set by editing; cleared with another
/// item.
struct ChangeFlags {
    bool basicInfoChange = false;
    bool cameraInfoChange = false;
    bool gpsInfoChange = false;
};

} // namespace clipheave::media
