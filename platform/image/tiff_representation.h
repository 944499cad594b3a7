// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"
#include "platform/media/model/encoded_image.h"
#include "platform/media/model/media_engine.h"

namespace clipheave::platform {

/// The image as a TIFF file (losslessly packed); an image that is TIFF keeps its bytes.
/// InvalidData when it cannot be decoded, LimitExceeded over 100 million pixels.
[[nodiscard]] Result<EncodedImage> TIFFRepresentation(const EncodedImage& image);
/// The image as an uncompressed TIFF file, 8 bits for each of red, green and blue (TIFF 6.0).
/// InvalidArgument for an image without pixels, LimitExceeded over 4 GB.
[[nodiscard]] Result<QByteArray> TIFFRepresentation(const RawFrame& image);
/// The image as an MPEG-4 list of tags holds it: JPEG and PNG keep their bytes, HEIF becomes JPEG,
/// others PNG. Errors as above.
[[nodiscard]] Result<EncodedImage> artworkForItemList(const EncodedImage& image);

} // namespace clipheave::platform
