// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/image/write/tiff_editor.h"

#include <QStringList>
#include <QVariantMap>

#include <map>
#include <optional>
#include <set>

namespace clipheave::platform {

/// A value as it is asked for, before the byte order is known.
struct AskedTag {
    std::uint16_t tag = 0, type = 0;
    QVariant value; ///< invalid: the tag goes
    QString name;   ///< as in the property dictionary
};

/// A data set of record 2 of IPTC.
using IptcChanges = std::map<std::uint8_t, QStringList>; ///< an empty list: the data set goes

/// What a rewrite asks for, block by block.
struct PhotoChange {
    bool dropsExif = false, dropsGps = false, dropsTiff = false, dropsIptc = false;
    /// Nothing personal stays: XMP, comments, thumbnails, trailers go as well. Orientation and
    /// colour stay.
    bool dropsEverything = false;
    std::vector<AskedTag> image, exif, gps;
    IptcChanges iptc;
    QStringList unknownKeys; ///< that this system has no tag for, or whose value does not fit

    [[nodiscard]] bool setsTags() const { return !image.empty() || !exif.empty() || !gps.empty(); }
    [[nodiscard]] bool changesTags() const {
        return setsTags() || dropsExif || dropsGps || dropsTiff || dropsEverything;
    }
    /// Returns whether IPTC data sets may change: some repeat tags.
    [[nodiscard]] bool touchesIptc() const {
        return !iptc.empty() || !image.empty() || !exif.empty() || dropsIptc || dropsEverything;
    }
    [[nodiscard]] bool removesBlocks() const { return dropsExif || dropsGps || dropsEverything; }
    /// Returns whether metadata goes of which XMP may hold a copy.
    [[nodiscard]] bool removesAny() const { return removesBlocks() || dropsIptc || dropsTiff; }
};

/// Reads properties as CGImageDestinationAddImageFromSource() takes them: by dictionary ("{Exif}",
/// "{TIFF}", "{GPS}", "{IPTC}") a map of the keys that override or add, or an invalid value
/// (kCFNull), which removes the block; an invalid value of a key removes the key. Removing every
/// dictionary (everyDictionaryRemoved()) removes everything.
[[nodiscard]] PhotoChange changeOf(const QVariantMap& properties);

/// Returns the published name of a data set of record 2, its number for an unknown one.
[[nodiscard]] QString iptcName(std::uint8_t dataSet);

/// Returns the block with the change, empty when nothing of it is left; `block` may be empty.
[[nodiscard]] Result<QByteArray> changedTiffBlock(const QByteArray& block,
                                                  const PhotoChange& change);
/// Gathers the change of one structure.
void applyChange(const PhotoChange& change, TiffEditor& editor);
/// Returns the part of a change that concerns what a further image of a file holds: blocks go, tags
/// that it has are renewed.
[[nodiscard]] PhotoChange changeOfFurtherImage(const PhotoChange& change, const TiffEditor& editor);

} // namespace clipheave::platform
