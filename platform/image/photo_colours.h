// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QImage>

namespace clipheave::platform {

/// Returns the image in the colours of sRGB, 8 bits a component, opaque (QImage::Format_RGB32):
/// converted from the ICC profile, transparent parts over white. A profile that cannot be read, or
/// is for other components than the image has, counts as none. Null for a null image.
[[nodiscard]] QImage opaqueInSrgb(QImage image, const QByteArray& profile);
/// Returns the profile of Adobe RGB (1998): of photos that name it without embedding it.
[[nodiscard]] QByteArray adobeRgbProfile();

/// Returns the four components of a CMYK image of `size` as sRGB. `rows` holds 4 bytes a pixel, of
/// which 0 is no ink, or, `inverted`, 255. Null without a CMYK profile.
[[nodiscard]] QImage srgbOfCmyk(const QByteArray& rows, QSize size, bool inverted,
                                const QByteArray& profile);
/// Returns whether the ICC profile is for CMYK.
[[nodiscard]] bool isCmykProfile(const QByteArray& profile);

} // namespace clipheave::platform
