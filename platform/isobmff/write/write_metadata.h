// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"
#include "platform/isobmff/write/isobmff_writer.h"
#include "platform/isobmff/write/write_moov.h"

#include <vector>

namespace clipheave::platform {

/// What the metadata boxes of a source hold beside the items of a list.
struct SourceUserData {
    struct KeyEntry {
        QByteArray name;
        QByteArray values; ///< the `data` boxes
    };
    std::vector<QByteArray> structural;          ///< children of `udta` that always stay
    std::vector<QByteArray> location;            ///< children of `udta` that say where
    std::vector<KeyEntry> locationKeys;          ///< the same of QuickTime metadata
    std::vector<QByteArray> localeTables;        ///< `ctry` and `lang`, which values refer to
    std::vector<QByteArray> foreignMeta;         ///< `meta` with a handler that nobody here reads
    std::vector<QByteArray> foreignUserDataMeta; ///< the same inside `udta`
};
[[nodiscard]] SourceUserData readSourceUserData(ByteView moovPayload);

/// The payload of `moov` without the metadata of its tracks (camera and lens, titles); what else
/// stands in their user data (names, roles, hints) stays.
[[nodiscard]] QByteArray withoutTrackMetadata(ByteView moovPayload);

/// Where an item goes.
struct ItemTarget {
    enum class Place { Nowhere, List, UserData, Keys };
    Place place = Place::Nowhere;
    QByteArray key; ///< four bytes, or the name of a key
};
/// For `carried` items the place they came from; for others what the container has for them.
[[nodiscard]] ItemTarget itemTarget(const QString& identifier, OutputContainer container,
                                    bool carried);

struct RenderedList {
    MovieMetadata boxes;
    Notes notes;
    bool stripped = false; ///< hidden copies of old texts go too
};
/// The boxes of a list of items that replaces the metadata of the source; `removes` as in
/// PassthroughRequest::removesMetadata.
[[nodiscard]] Result<RenderedList> renderMetadataList(const QList<AVMetadataItem>& items,
                                                      OutputContainer container,
                                                      const SourceUserData& source, bool removes);

/// `ftyp` of a container; brands of the source that its samples need stay in the list.
[[nodiscard]] QByteArray renderFileType(OutputContainer container, ByteView sourceFtyp);

} // namespace clipheave::platform
