// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_reader.h"
#include "platform/foundation/result.h"

#include <QImage>

namespace clipheave::platform {

/// What a decoder must know of a photo besides its pixels.
struct PhotoHints {
    int orientation = 1; ///< 1 to 8, as CGImageSource gives it
    /// The tags name Adobe RGB, which cameras then often do not embed.
    bool isAdobeRgb = false;
};

/// Returns the main image of a photo as people see it: upright, in the colours of sRGB, opaque over
/// white, QImage::Format_RGB32 with the file's resolution. Qt's readers take JPEG, PNG, WebP, TIFF
/// and simpler formats, libheif HEIF and AVIF, libraw raw photos. LimitExceeded over 100 million
/// pixels, NotSupported for a format without a decoder, Truncated for a JPEG file that is cut in
/// its image, else InvalidData with the decoder's reason. For worker threads.
[[nodiscard]] Result<QImage> decodedPhoto(FileReader& reader, const PhotoHints& hints);

/// Returns the photo upright with about `side` to twice as many pixels on its longer side, never
/// enlarged, fast: of the preview that a raw or HEIF file holds, of a JPEG decoded at a fraction of
/// its size. Null when it cannot be shown. Transparent parts stay so. For worker threads.
[[nodiscard]] QImage photoThumbnail(FileReader& reader, int side);
/// The same of an encoded image in memory.
[[nodiscard]] QImage imageThumbnail(const QByteArray& bytes, int side);

} // namespace clipheave::platform
