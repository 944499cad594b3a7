// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/result.h"

#include <QString>
#include <QVariant>

// What stands in the property lists of photos, as pure functions of the property dictionaries.
namespace clipheave::photo {

/// The lists that a photo gives.
enum class PhotoList { Tiff, Exif, ExifAndTiff, ExifAndGps, Template, AllMetadata };

/// Returns the fixed name of the list's file.
[[nodiscard]] QString fileNameOf(PhotoList list);
/// Returns the content of a list of one photo from its property dictionaries; empty when the photo
/// has nothing for it. All but AllMetadata are flat: the keys of their dictionaries side by side.
/// Positions carry their sign besides their letter: south, west and below the sea are negative.
[[nodiscard]] QVariantMap contentOf(PhotoList list, const QVariantMap& properties);

/// What an imported list says of a photo.
struct ImportedList {
    /// By dictionary ("{Exif}", "{TIFF}", "{GPS}", "{IPTC}") the keys to write, with values in the
    /// form of the property dictionaries: positions absolute with their letters.
    QVariantMap properties;
    platform::Notes notes; ///< the keys that are not written
};
/// Returns what any of the lists says, its keys flat or in dictionaries. A value of another kind is
/// converted where its meaning is plain (numbers as text, dates, single values for arrays), else
/// its key is left out; so are unknown keys, and those that describe how the image is stored, which
/// each photo keeps. A position without a negative sign takes its letter's. InvalidData for a root
/// that is no dictionary and for a list without any usable key.
[[nodiscard]] platform::Result<ImportedList> propertiesFromPlist(const QVariant& list);

} // namespace clipheave::photo
