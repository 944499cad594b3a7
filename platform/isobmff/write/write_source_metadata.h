// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/byte_view.h"
#include "platform/foundation/message.h"
#include "platform/isobmff/write/isobmff_writer.h"

#include <QByteArray>

#include <vector>

// What of the source's movie header stays when its metadata are replaced.
namespace clipheave::platform {

/// What the metadata boxes of a source hold beside the items of a list.
struct SourceUserData {
    struct KeyEntry {
        QByteArray name;
        QByteArray values; ///< the `data` boxes
    };
    std::vector<QByteArray> structural;      ///< children of `udta` that always stay
    std::vector<QByteArray> location;        ///< children of `udta` that say where
    std::vector<QByteArray> places;          ///< `loci` among them, one for each language
    std::vector<QByteArray> locationEntries; ///< the same of the iTunes list
    std::vector<KeyEntry> locationKeys;      ///< the same of QuickTime metadata
    std::vector<QByteArray> localeTables;    ///< `ctry` and `lang`, which values refer to
    std::vector<QByteArray> besideList;      ///< in the `meta` of the iTunes list, read by nobody
    std::vector<QByteArray> besideKeys;      ///< the same for QuickTime metadata
    std::vector<QByteArray> foreignMeta;     ///< `meta` that nobody here reads
    std::vector<QByteArray> foreignUserDataMeta; ///< the same inside `udta`
    qsizetype entries = 0;                       ///< of all lists
    Message problem; ///< why some of them gave no items; null when all did
};
[[nodiscard]] SourceUserData readSourceUserData(ByteView moovPayload);

/// `ftyp` of a container; brands of the source that its samples need stay in the list.
[[nodiscard]] QByteArray renderFileType(OutputContainer container, ByteView sourceFtyp);

} // namespace clipheave::platform
