// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QImage>

namespace clipheave::platform {

/// Returns the pixels of a JPEG file of four components by its CMYK profile, as stored (not
/// rotated). Null when it is not such a file, is damaged before its end of header, or has more than
/// 100 million pixels. Qt's reader drops the profile's meaning: it takes inks for light.
[[nodiscard]] QImage cmykJpegInSrgb(const QByteArray& bytes, const QByteArray& profile);

} // namespace clipheave::platform
