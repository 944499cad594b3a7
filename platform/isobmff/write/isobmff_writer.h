// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/message.h"
#include "platform/media/model/field_identifiers.h"
#include "platform/media/model/metadata_item.h"

#include <QList>

#include <functional>
#include <optional>

namespace clipheave::platform {

enum class OutputContainer { QuickTimeMovie, M4V, M4A, Mp4 };

struct PassthroughRequest {
    QString source;
    QString target; ///< replaced in one step; must not be the source
    OutputContainer container = OutputContainer::M4V;
    /// No list keeps the source's metadata; a list replaces it, the empty list leaves none.
    std::optional<QList<AVMetadataItem>> metadata;
    FieldIdentifiers fields; ///< items of the source that a new item of the list replaces
    /// Hidden copies of old texts go as well (an empty list implies it), and a location that the
    /// list does not name stays even when the list is empty.
    bool removesMetadata = false;
    bool moovFirst = false;
    /// For a newly encoded source its original, when that is of this family: the XMP packet at file
    /// level comes along from there.
    QString xmpPacketOf;
    /// Extended attributes come from this file instead of `source`; empty: from `source`.
    QString attributesOf;
    /// Fraction done, 0 to 1; returning false stops (Cancelled) and leaves nothing behind.
    std::function<bool(double)> progress;
};

struct PassthroughOutcome {
    Notes notes; ///< no failures: "Location kept"
};

/// Writes `source` as `target` with other metadata: `ftyp` of the container, `moov` rebuilt,
/// every other box byte for byte, the payload copied by the kernel.
[[nodiscard]] Result<PassthroughOutcome> writePassthrough(const PassthroughRequest& request);

} // namespace clipheave::platform
