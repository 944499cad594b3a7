// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"
#include "platform/media/model/encoded_image.h"
#include "platform/media/model/media_engine.h"

namespace clipheave::platform {

/// The picture as a TIFF file (losslessly packed); a picture that is TIFF keeps its bytes.
/// InvalidData when it cannot be decoded, LimitExceeded over 100 million pixels.
[[nodiscard]] Result<EncodedPicture> TIFFRepresentation(const EncodedPicture& picture);
/// The picture as an uncompressed TIFF file, 8 bits for each of red, green and blue (TIFF 6.0).
/// InvalidArgument for a picture without pixels, LimitExceeded over 4 GB.
[[nodiscard]] Result<QByteArray> TIFFRepresentation(const RawPicture& picture);
/// The picture as an MPEG-4 list of tags holds it: JPEG and PNG keep their bytes, others become
/// PNG. Errors as above.
[[nodiscard]] Result<EncodedPicture> pictureForItemList(const EncodedPicture& picture);

} // namespace clipheave::platform
