// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/image/photo_tags.h"

namespace Exiv2 {
class ExifData;
class IptcData;
} // namespace Exiv2

namespace clipheave::platform {

/// Adds the tags under their published names. May throw what Exiv2 throws.
void addExifDictionaries(const Exiv2::ExifData& data, PhotoTags& tags);
void addIptcDictionary(const Exiv2::IptcData& data, PhotoTags& tags);

} // namespace clipheave::platform
