// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_reader.h"

#include <QByteArray>
#include <QString>

namespace clipheave::platform {

/// Components and bits of a pixel; 0 where unknown.
struct ImageLayout {
    int components = 0;
    int bitsPerComponent = 0;
};

/// From the frame header of JPEG or the IHDR of PNG; nothing known for other files.
[[nodiscard]] ImageLayout imageLayout(FileReader& reader);
/// "Gray", "RGB" or "CMYK"; empty when unknown. Transparency does not count.
[[nodiscard]] QString colorModel(const ImageLayout& layout);
/// The description of an ICC profile ("sRGB IEC61966-2.1"); empty when it has none. Source: ICC.1,
/// 9.2.41 (profileDescriptionTag), and the textDescriptionType of version 2.
[[nodiscard]] QString iccProfileName(const QByteArray& profile);

} // namespace clipheave::platform
