// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"
#include "platform/isobmff/write/isobmff_writer.h"
#include "platform/isobmff/write/write_moov.h"
#include "platform/isobmff/write/write_source_metadata.h"

namespace clipheave::platform {

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
/// The boxes of the request's list, which replaces the metadata of the source.
[[nodiscard]] Result<RenderedList> renderMetadataList(const PassthroughRequest& request,
                                                      const SourceUserData& source);

} // namespace clipheave::platform
