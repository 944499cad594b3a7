// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/image/photo_tags.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace Exiv2 {
class ExifData;
class IptcData;
} // namespace Exiv2

namespace clipheave::platform {

/// Adds the tags under their published names. May throw what Exiv2 throws.
void addExifDictionaries(const Exiv2::ExifData& data, PhotoTags& tags);
void addIptcDictionary(const Exiv2::IptcData& data, PhotoTags& tags);

/// A tag by its number and its type (TIFF 6.0, section 2).
struct TagNumber {
    std::uint16_t tag = 0, type = 0;
};
/// Returns the tag of a published name in the dictionary of a group ("Image": "{TIFF}", "Photo":
/// "{Exif}", "GPSInfo": "{GPS}"); nothing for names that are no tags of it.
[[nodiscard]] std::optional<TagNumber> tagOfProperty(const QString& name, const char* group);
/// Returns the tags that "{TIFF}" shows, but for the orientation and the image's own structure.
[[nodiscard]] std::vector<std::uint16_t> tagsOfTiffDictionary();

} // namespace clipheave::platform
