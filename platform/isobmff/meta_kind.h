// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/isobmff/box.h"

#include <cstdint>

namespace clipheave::platform {

/// Items that one file gives at most.
inline constexpr qsizetype kMaxItems = 10'000;

/// Whose a `meta` box is. Reader and writer ask the same function: a list that one shows and the
/// other carries as foreign would outlive every edit.
enum class MetaKind {
    Foreign,    ///< nobody here reads it: carried whole
    ITunesList, ///< `ilst` with four-character codes
    KeyedList,  ///< `ilst` with indexes into `keys`
};

/// What a `meta` box shows of itself: its handler (0 where it has none) and which children it has.
struct MetaSigns {
    std::uint32_t handler = 0;
    bool hasList = false, hasKeys = false, hasItemLocations = false;

    void see(std::uint32_t child) {
        hasList |= child == fourCc("ilst");
        hasKeys |= child == fourCc("keys");
        hasItemLocations |= child == fourCc("iloc");
    }
};

/// Some programs leave the handler out or write another, so a list counts whatever it says.
/// Item locations mean images, which are no metadata.
[[nodiscard]] constexpr MetaKind metaKind(const MetaSigns& signs) {
    if (signs.hasItemLocations)
        return MetaKind::Foreign;
    if (signs.handler == fourCc("mdta") || (signs.hasList && signs.hasKeys))
        return MetaKind::KeyedList;
    if (signs.handler == fourCc("mdir") || signs.hasList)
        return MetaKind::ITunesList;
    return MetaKind::Foreign;
}

/// The boxes in a `meta` of either form.
[[nodiscard]] ByteView metaChildren(ByteView metaPayload);
/// The kind of the `meta` with these children.
[[nodiscard]] MetaKind metaKindOf(ByteView children);

} // namespace clipheave::platform
