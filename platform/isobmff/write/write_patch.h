// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/isobmff/write/write_offsets.h"

namespace clipheave::platform {

/// Patches the absolute offsets of one whole box in place; the size never changes. Handles `meta`
/// (its `iloc`), `mfra` (`tfra`), `moof` (`tfhd` base data offsets) and `gps ` of dashboard
/// cameras; returns whether anything was changed. NotSupported when an offset has no room.
[[nodiscard]] Result<bool> patchBox(QByteArray& box, const OffsetMap& map);
/// The distance in a `sidx` from its end to the first referenced byte, when they move apart.
[[nodiscard]] Result<bool> patchSegmentIndex(QByteArray& box, std::uint64_t sourceEnd,
                                             const OffsetMap& map);
/// True for the types that patchBox() and patchSegmentIndex() know.
[[nodiscard]] bool holdsOffsets(std::uint32_t type);

} // namespace clipheave::platform
