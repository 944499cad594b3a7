// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/image/write/heif_structure.h"
#include "platform/image/write/photo_change.h"

#include <map>
#include <set>

namespace clipheave::platform {

/// What a change makes of the items of a HEIF file.
struct HeifEdits {
    struct NewItem {
        std::uint32_t type = 0;
        QByteArray contentType, payload;
    };
    std::map<std::uint32_t, QByteArray> changed; ///< the new payload by item
    std::set<std::uint32_t> removed;
    std::vector<NewItem> added; ///< that describe the main image
    Notes notes;

    [[nodiscard]] bool isEmpty() const {
        return changed.empty() && removed.empty() && added.empty();
    }
};

/// Reads the Exif and XMP items and changes them. NotSupported for encrypted ones, InvalidData for
/// those that cannot be read and are not removed whole, LimitExceeded for more than 64 MiB of them.
/// Source: ISO/IEC 23008-12:2017, annex A.
[[nodiscard]] Result<HeifEdits> heifEdits(FileReader& reader, const HeifStructure& structure,
                                          const PhotoChange& change);

} // namespace clipheave::platform
